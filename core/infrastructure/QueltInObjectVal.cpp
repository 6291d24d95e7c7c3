#include "infrastructure/QueltInObjectVal.h"

#include "infrastructure/QueltInHashIndex.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltInObjectVal, QueltInObject>;

std::uint64_t QueltInObjectVal::BinHashFunc() const {
    return quelt::mixBits(hash());
}
