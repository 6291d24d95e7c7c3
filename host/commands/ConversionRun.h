#pragma once

#include "commands/ByteStreams.h"
#include "commands/LineConverter.h"
#include "commands/Progress.h"
#include "commands/Tally.h"

#include <optional>

namespace quelt::host {

/// What a run came to.
struct RunResult {
    Counts counts;
    FailureTally failures;
    /// Why the run ended before the input did, if so.
    std::optional<StreamFailure> readFailure;
    std::optional<StreamFailure> writeFailure;
};

/// Converts all records of `input`, one a line, and writes their answers to `output` in the same order.
/// Reads, converts and writes in batches, of which few are in memory at a time, however long the input is.
/// With `jobs` 1 everything happens on the calling thread; with more, so many threads convert, each with a
/// converter of its own, and one more writes.
[[nodiscard]] RunResult runConversion(const MakeLineConverter& makeConverter, unsigned jobs,
                                      ByteSource& input, ByteSink& output, Progress& progress);

} // namespace quelt::host
