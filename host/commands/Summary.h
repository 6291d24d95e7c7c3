#pragma once

#include "commands/Tally.h"

#include <iosfwd>

namespace quelt::host {

/// So many reasons for failures are named one by one.
inline constexpr std::size_t s_maxReasonsShown = 64;

/// Writes what became of the records of a run that took `seconds`. Of the records, `kept` were answered by an
/// earlier run.
void writeSummary(std::ostream& out, const Counts& counts, const FailureTally& failures, double seconds,
                  bool hasColours, std::uint64_t kept = 0);

} // namespace quelt::host
