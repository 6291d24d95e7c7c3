#pragma once

#include "infrastructure/QueltInObjectVal.h"

class QueltInSerialInterval;
extern template class QUELT_CORE_API QueltInTyped<QueltInSerialInterval, QueltInObjectVal>;

/// One interval of sequence numbers as a value object, taken as given: nothing is sorted or refused, a lower
/// bound above the upper one included. 2000000000 and -2000000000 are open ends.
class QUELT_CORE_API QueltInSerialInterval : public QueltInTyped<QueltInSerialInterval, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInSerialInterval";
    /// The upper bound of an interval without upper end.
    static constexpr int s_openUpper = 2000000000;
    /// The lower bound of an interval without lower end.
    static constexpr int s_openLower = -2000000000;

    /// [0, 0].
    QueltInSerialInterval() = default;

    /// The lower bound.
    [[nodiscard]] const int& getA() const noexcept { return m_a; }
    /// The upper bound.
    [[nodiscard]] const int& getB() const noexcept { return m_b; }
    /// Non-zero when the lower bound itself belongs to the interval.
    [[nodiscard]] unsigned char getAIncl() const noexcept { return m_aIncl; }
    /// Non-zero when the upper bound itself belongs to the interval.
    [[nodiscard]] unsigned char getBIncl() const noexcept { return m_bIncl; }
    /// Sets both bounds with their inclusive flags. S_OK always.
    long setInterval(const int& a, const unsigned char& aIncl, const int& b,
                     const unsigned char& bIncl) noexcept;

    /// In mathematical brackets: "[10, 20)", "[-inf, 20]".
    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

private:
    int m_a = 0;
    int m_b = 0;
    unsigned char m_aIncl = 1;
    unsigned char m_bIncl = 1;
};
