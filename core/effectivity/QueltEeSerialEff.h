#pragma once

#include "dictionary/QueltEeSerialVar.h"
#include "effectivity/QueltEeVarEff.h"
#include "infrastructure/QueltInListVal.h"
#include "infrastructure/QueltInSerialInterval.h"
#include "infrastructure/QueltInSmallVector.h"

namespace quelt {
class IntervalSet;
enum class SetOperation;
} // namespace quelt

class QueltEeSerialEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeSerialEff, QueltEeVarEff>;

/// An effectivity on a flat series: intervals of sequence numbers, kept as given. As a set it holds the whole
/// numbers of its intervals, from -2147483648 to 2147483647; a lower bound of -2000000000 and an upper bound
/// of 2000000000 are open ends, whatever their flags. An interval whose lower bound is above its upper bound
/// holds nothing.
class QUELT_CORE_API QueltEeSerialEff : public QueltInTyped<QueltEeSerialEff, QueltEeVarEff> {
public:
    static constexpr const char* s_className = "QueltEeSerialEff";

    /// One interval as the effectivity keeps it; see QueltInSerialInterval.
    struct Interval {
        int a;               ///< the lower bound; -2000000000 for none
        int b;               ///< the upper bound; 2000000000 for none
        unsigned char aIncl; ///< non-zero when the lower bound itself is in
        unsigned char bIncl; ///< non-zero when the upper bound itself is in
        /// True when bounds and flags are equal, as they are kept.
        friend bool operator==(const Interval&, const Interval&) = default;
    };

    /// No intervals; `variable` (not owned, may be null) must outlive the effectivity.
    explicit QueltEeSerialEff(const QueltEeSerialVar* variable) noexcept : m_pVariable(variable) {}

    /// The serial variable, or null.
    [[nodiscard]] virtual const QueltEeSerialVar* getOrdVar() const { return m_pVariable; }
    /// Appends the intervals, as QueltInSerialInterval, to `intervals`. E_INVALIDARG when the list refuses
    /// them.
    virtual long getIntervals(QueltInListVal& intervals) const;
    /// Replaces the intervals by those of the list. E_INVALIDARG, and nothing is changed, when an element is
    /// not a QueltInSerialInterval.
    virtual long set(const QueltInListVal& intervals);
    /// Appends an interval.
    void addInterval(const Interval& interval) { m_intervals.push_back(interval); }
    /// The intervals as kept.
    [[nodiscard]] std::span<const Interval> intervals() const noexcept { return m_intervals.values(); }
    /// The intervals as kept, to be rewritten in place; for whoever knows that no derived class has a say in
    /// it.
    [[nodiscard]] std::span<Interval> intervals() noexcept {
        return {m_intervals.begin(), m_intervals.end()};
    }
    /// True when a configuration with this sequence number is in.
    [[nodiscard]] bool holdsFor(int sequenceNumber) const;

    /// "Unit in [10, 20) | [30, +inf]", with the flags; the brackets show the inclusive flags as they are
    /// kept.
    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override;
    [[nodiscard]] const QueltEeDicoObject* getVar() const override { return m_pVariable; }
    [[nodiscard]] unsigned char equals(const QueltEeVarEff& other) const override;
    long opAnd(const QueltEeVarEff& other) override;
    long opOr(const QueltEeVarEff& other) override;
    long opCut(const QueltEeVarEff& other) override;
    [[nodiscard]] unsigned char isAllFalse() const override;
    [[nodiscard]] unsigned char isAllTrue() const override;

private:
    [[nodiscard]] quelt::IntervalSet denotedNumbers() const;
    [[nodiscard]] bool isComparable(const QueltEeVarEff& other) const;
    long combine(const QueltEeVarEff& other, quelt::SetOperation operation);

    const QueltEeSerialVar* m_pVariable;
    QueltInSmallVector<Interval, 3> m_intervals;
};
