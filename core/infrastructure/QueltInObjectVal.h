#pragma once

#include "infrastructure/QueltInTyped.h"

#include <cstdint>

class QueltInObjectVal;
extern template class QUELT_CORE_API QueltInTyped<QueltInObjectVal, QueltInObject>;

/// Root of the value objects: those that containers copy and compare by what they hold.
class QUELT_CORE_API QueltInObjectVal : public QueltInTyped<QueltInObjectVal, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltInObjectVal";

    /// A copy of the value, of the same class; the caller owns it. `reuse` is null, or an object of the
    /// caller's that may be overwritten and returned instead of a new one; when another is returned, `reuse`
    /// is as it was and stays the caller's.
    [[nodiscard]] virtual QueltInObjectVal* clone(QueltInObjectVal* reuse) const = 0;
    /// Non-zero when `other` is of exactly the same class and holds the same.
    [[nodiscard]] virtual int equals(const QueltInObjectVal& other) const = 0;
    /// A number that equal values share.
    [[nodiscard]] virtual unsigned int hash() const = 0;
    /// As hash(), mixed over all bits, for tables whose size is a power of two.
    [[nodiscard]] virtual std::uint64_t BinHashFunc() const;
};
