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
    /// The run ended before the input did because the program was asked to end (see InterruptionScope).
    bool isInterrupted = false;

    /// Takes `failure` for the reason, be it an interruption.
    void noteReadFailure(const StreamFailure& failure);
    /// Whether every record of the input was answered.
    [[nodiscard]] bool isWhole() const noexcept { return !readFailure && !writeFailure && !isInterrupted; }
};

/// In such pieces a run with so many jobs reads its input best, in bytes.
[[nodiscard]] std::size_t readSizeFor(unsigned jobs) noexcept;

/// Converts all records of `input`, one a line, and writes their answers to `output` in the same order.
/// Reads, converts and writes in batches, of which few are in memory at a time, however long the input is.
/// With `jobs` 1 everything happens on the calling thread; with more, it is one of so many threads, each with
/// a converter of its own, which read and write in turn. When the program is asked to end, no further record
/// is converted; the answers to those before are written. Whatever ends the run, `output` was given whole
/// lines, in whole with each call.
[[nodiscard]] RunResult runConversion(const MakeLineConverter& makeConverter, unsigned jobs,
                                      LineReader& input, ByteSink& output, Progress& progress);
/// The same for an input from its beginning.
[[nodiscard]] RunResult runConversion(const MakeLineConverter& makeConverter, unsigned jobs,
                                      ByteSource& input, ByteSink& output, Progress& progress);

} // namespace quelt::host
