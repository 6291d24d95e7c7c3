#include "compiled/QueltCompiledBinaryParser.h"

#include "compiled/QueltBioBuffer.h"
#include "infrastructure/QueltInResult.h"

long QueltCompiledBinaryParser::Read(QueltBioBuffer& buffer, QueltInObject*& object) {
    buffer.clear();
    object = nullptr;
    return E_NOTIMPL;
}
