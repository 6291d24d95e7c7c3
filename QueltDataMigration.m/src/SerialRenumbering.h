#pragma once

#include "MigrationTrace.h"

#include "infrastructure/QueltInMemory.h"

#include <map>
#include <optional>
#include <source_location>

class QueltEeSerialEff;
class QueltEeSerialVar;
class QueltInListVal;
class QueltInMap;
class QueltInSerialInterval;

namespace quelt {

/// What differs between the places that rewrite serial intervals.
struct SerialRewriteRules {
    /// Whose lines are written, and where an error report says it comes from.
    const MigrationTrace& trace;
    std::source_location where;
    /// Whether bounds are translated through model years (CGE_MigRen, as that place has read it).
    bool renumbers;
    /// Whether each bound is traced after its shift.
    bool tracesShiftedBounds;
    /// Whether an upper bound is compared with the range of the model years by its number before the shift.
    /// It makes a difference only for the lowest 32-bit number, whose shift wraps round.
    bool comparesUpperBoundUnshifted;
};

/// The model years of one series: from renumbered sequence number (year - 1) to the dictionary's own sequence
/// number.
class SerialRenumbering {
public:
    /// Reads the revision table of the series, as getSeqNb2Revisions gives it; texts that are no numbers are
    /// skipped, and of two revisions with one year the first counts. E_FAIL when the table holds anything
    /// else than revisions.
    long read(const QueltInMap& revisions, const SerialRewriteRules& rules);
    /// The dictionary's number for the lower bound `a`, which has been shifted; nothing when it stays.
    [[nodiscard]] std::optional<unsigned int> findLower(int a) const;
    /// The dictionary's number behind the upper bound `b`, which has been shifted; nothing when there is
    /// none.
    [[nodiscard]] std::optional<unsigned int> findAbove(int b) const;
    /// The smallest and the largest renumbered number; the first lies above the second when there is none.
    [[nodiscard]] int smallest() const noexcept { return m_smallest; }
    [[nodiscard]] int largest() const noexcept { return m_largest; }

private:
    using Numbers = std::map<unsigned int, unsigned int, std::less<>,
                             QueltInAllocator<std::pair<const unsigned int, unsigned int>>>;
    [[nodiscard]] std::optional<unsigned int> find(int number) const;

    Numbers m_numbers;
    int m_smallest = 2000000;
    int m_largest = 0;
};

/// Rewrites the intervals of `effectivity`, in place, when its series `variable` is of the external type 12
/// or 14: each finite bound becomes one lower and, where the rules say so, is translated through the model
/// years of the series. Lower bounds become inclusive; upper bounds too, unless they were translated to the
/// next model year. Intervals of other series are left alone. S_OK, or the reported failure's result.
long rewriteSerialIntervals(QueltEeSerialEff& effectivity, const QueltEeSerialVar& variable,
                            const SerialRewriteRules& rules);

} // namespace quelt
