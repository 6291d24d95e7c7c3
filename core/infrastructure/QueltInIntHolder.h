#pragma once

#include "infrastructure/QueltInObjectVal.h"

class QueltInIntHolder;
extern template class QUELT_CORE_API QueltInTyped<QueltInIntHolder, QueltInObjectVal>;

/// An unsigned 32-bit number as a value object: the key of domain maps and of maps by sequence number.
class QUELT_CORE_API QueltInIntHolder : public QueltInTyped<QueltInIntHolder, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInIntHolder";

    /// Holds `value`.
    explicit QueltInIntHolder(unsigned int value) noexcept : m_value(value) {}

    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

    /// The held number, read and written directly.
    unsigned int m_value;
};
