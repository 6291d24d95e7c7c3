#pragma once

#include "effectivity/QueltEeSetOperation.h"
#include "infrastructure/QueltInSmallVector.h"

#include <cstdint>
#include <span>

namespace quelt {

/// A set of signed 64-bit whole numbers as half-open intervals: ascending, none empty, none touching the
/// next. The same numbers are always the same intervals.
class IntervalSet {
public:
    /// From `from` on, up to but not including `to`.
    struct Interval {
        std::int64_t from; ///< the first number that is in
        std::int64_t to;   ///< the first number that is not in any more
        /// True when both bounds are equal.
        friend bool operator==(const Interval&, const Interval&) = default;
    };

    /// The empty set.
    IntervalSet() = default;
    /// The numbers of one interval; none when `to` is not above `from`.
    explicit IntervalSet(const Interval& interval) { gather(interval); }

    /// Adds an interval, in any order; the set is not to be used before normalise().
    void gather(const Interval& interval) {
        if (interval.from < interval.to) {
            m_intervals.push_back(interval);
        }
    }
    /// Puts what was gathered in order: sorts, and joins intervals that touch.
    void normalise();

    /// The numbers that `operation` makes of those of `left` and `right`. Takes linear time.
    [[nodiscard]] static IntervalSet combine(const IntervalSet& left, const IntervalSet& right,
                                             SetOperation operation);
    /// The numbers of `domain` that are not in this set.
    [[nodiscard]] IntervalSet complementWithin(const Interval& domain) const;

    /// The intervals, ascending.
    [[nodiscard]] std::span<const Interval> intervals() const noexcept { return m_intervals.values(); }

    /// True when both hold the same numbers; takes linear time.
    friend bool operator==(const IntervalSet& left, const IntervalSet& right) noexcept;

private:
    QueltInSmallVector<Interval, 4> m_intervals;
};

} // namespace quelt
