#include "effectivity/QueltEeIntervalSet.h"

#include <algorithm>

namespace quelt {

namespace {

/// Walks the bounds of a set from below: inside after the first, outside after the second, and so on.
class BoundCursor {
public:
    explicit BoundCursor(std::span<const IntervalSet::Interval> intervals) noexcept
        : m_intervals(intervals) {}

    [[nodiscard]] bool isAtEnd() const noexcept { return m_passed == 2 * m_intervals.size(); }
    [[nodiscard]] bool isInside() const noexcept { return m_passed % 2 != 0; }
    [[nodiscard]] std::int64_t bound() const noexcept {
        const IntervalSet::Interval& interval = m_intervals[m_passed / 2];
        return isInside() ? interval.to : interval.from;
    }
    void pass(std::int64_t position) noexcept {
        if (!isAtEnd() && bound() == position) {
            ++m_passed;
        }
    }

private:
    std::span<const IntervalSet::Interval> m_intervals;
    std::size_t m_passed = 0;
};

std::int64_t nextBound(const BoundCursor& left, const BoundCursor& right) noexcept {
    if (left.isAtEnd() || right.isAtEnd()) {
        return left.isAtEnd() ? right.bound() : left.bound();
    }
    return std::min(left.bound(), right.bound());
}

} // namespace

void IntervalSet::normalise() {
    std::sort(m_intervals.begin(), m_intervals.end(),
              [](const Interval& left, const Interval& right) { return left.from < right.from; });
    std::uint32_t kept = 0;
    for (const Interval& interval : m_intervals) {
        if (kept > 0 && interval.from <= m_intervals[kept - 1].to) {
            m_intervals[kept - 1].to = std::max(m_intervals[kept - 1].to, interval.to);
        } else {
            m_intervals[kept++] = interval;
        }
    }
    m_intervals.truncate(kept);
}

IntervalSet IntervalSet::combine(const IntervalSet& left, const IntervalSet& right, SetOperation operation) {
    BoundCursor leftBounds(left.intervals());
    BoundCursor rightBounds(right.intervals());
    IntervalSet result;
    std::int64_t start = 0;
    bool inside = false;
    while (!leftBounds.isAtEnd() || !rightBounds.isAtEnd()) {
        const std::int64_t position = nextBound(leftBounds, rightBounds);
        leftBounds.pass(position);
        rightBounds.pass(position);
        const bool insideNow = combineMember(operation, leftBounds.isInside(), rightBounds.isInside());
        if (insideNow && !inside) {
            start = position;
        } else if (inside && !insideNow) {
            result.m_intervals.push_back({start, position});
        }
        inside = insideNow;
    }
    return result;
}

IntervalSet IntervalSet::complementWithin(const Interval& domain) const {
    return combine(IntervalSet(domain), *this, SetOperation::difference);
}

bool operator==(const IntervalSet& left, const IntervalSet& right) noexcept {
    return std::ranges::equal(left.intervals(), right.intervals());
}

} // namespace quelt
