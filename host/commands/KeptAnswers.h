#pragma once

#include "commands/LineConverter.h"
#include "commands/LineReader.h"
#include "commands/Tally.h"

#include <cstdint>

namespace quelt::host {

/// What the answers come to that an earlier run has left.
struct KeptAnswers {
    Counts counts;
    FailureTally failures;
    /// How far into the records they reach, in bytes.
    std::uint64_t endOfRecords = 0;
};

/// Reads `answers`, one a line, and as many of `records`, whose next line is then the first without an
/// answer. Both must fit together: the ids of all are compared, and now and then, near the end always, an
/// answer is made again with `converter`, which other options or another context would give away. Made again
/// is also what an answer alone does not tell. An answer that was given for want of memory stays as it is.
/// Throws a Refusal when they do not fit, and a StreamFailure when the records cannot be read.
[[nodiscard]] KeptAnswers skipAnswered(ByteSource& answers, LineReader& records, LineConverter& converter);

} // namespace quelt::host
