#include "compiled/QueltCompiledBinaryWriter.h"

#include "infrastructure/QueltInResult.h"

long QueltCompiledBinaryWriter::Write(const QueltFltEffectivity& /*effectivity*/,
                                      QueltBioBuffer& /*buffer*/) {
    return E_NOTIMPL;
}
