#pragma once

#include "effectivity/QueltEeVarEff.h"
#include "infrastructure/QueltInSmallVector.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace quelt {
class IntervalSet;
enum class SetOperation;
} // namespace quelt

/// A point in time, to the second, as seconds since 1970-01-01T00:00:00Z in the proleptic Gregorian calendar.
struct QUELT_CORE_API QueltEeDate {
    /// Before all points: the start of an interval that is open below.
    static constexpr std::int64_t s_openBelow = std::numeric_limits<std::int64_t>::min();
    /// After all points: the end of an interval that is open above.
    static constexpr std::int64_t s_openAbove = std::numeric_limits<std::int64_t>::max();

    /// Reads "YYYY-MM-DD" or "YYYY-MM-DDThh:mm:ssZ" (ISO 8601), years 0000 to 9999, days that exist, no leap
    /// seconds; nothing for any other text.
    [[nodiscard]] static std::optional<std::int64_t> parse(std::string_view text) noexcept;
    /// The shorter of the two forms that says it exactly. Outside the years 0000 to 9999, which neither form
    /// can say, the number of seconds.
    [[nodiscard]] static std::string format(std::int64_t seconds);
};

class QueltEeDateEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeDateEff, QueltEeVarEff>;

/// A date effectivity: intervals of time, closed below and open above, kept as given. It has no variable. An
/// interval that does not end after its start holds nothing.
class QUELT_CORE_API QueltEeDateEff : public QueltInTyped<QueltEeDateEff, QueltEeVarEff> {
public:
    static constexpr const char* s_className = "QueltEeDateEff";

    /// One interval, [from, to), in seconds as QueltEeDate has them.
    struct Interval {
        std::int64_t from; ///< the first second that is in, or QueltEeDate::s_openBelow
        std::int64_t to;   ///< the first second that is not in any more, or QueltEeDate::s_openAbove
        /// True when both bounds are equal.
        friend bool operator==(const Interval&, const Interval&) = default;
    };

    /// No intervals.
    QueltEeDateEff() = default;

    /// Appends an interval.
    void addInterval(const Interval& interval) { m_intervals.push_back(interval); }
    /// The intervals as given.
    [[nodiscard]] std::span<const Interval> intervals() const noexcept { return m_intervals.values(); }
    /// True when the point in time `seconds` is in.
    [[nodiscard]] bool holdsFor(std::int64_t seconds) const;

    /// "date in [2020-01-01, 2021-01-01) | [2024-06-01, +inf)", with the flags.
    [[nodiscard]] QueltInString toString() const override;

    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override;
    /// Null.
    [[nodiscard]] const QueltEeDicoObject* getVar() const override { return nullptr; }
    [[nodiscard]] unsigned char equals(const QueltEeVarEff& other) const override;
    long opAnd(const QueltEeVarEff& other) override;
    long opOr(const QueltEeVarEff& other) override;
    long opCut(const QueltEeVarEff& other) override;
    [[nodiscard]] unsigned char isAllFalse() const override;
    [[nodiscard]] unsigned char isAllTrue() const override;

private:
    [[nodiscard]] quelt::IntervalSet denotedTimes() const;
    long combine(const QueltEeVarEff& other, quelt::SetOperation operation);

    QueltInSmallVector<Interval, 2> m_intervals;
};
