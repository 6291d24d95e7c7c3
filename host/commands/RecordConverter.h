#pragma once

#include "commands/LineReader.h"
#include "commands/Tally.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInTraceSink.h"
#include "interchange/AnswerWriter.h"
#include "interchange/RecordReader.h"

namespace quelt::host {

/// What answers show beside what a record was converted to.
struct AnswerOptions {
    bool withInput = false;
    bool withTrace = false;
};

/// Converts records, one after the other. Each record's objects stand in an arena that is dropped when its
/// answer is written. A converter belongs to the thread that made it; those of several threads may share a
/// context.
class RecordConverter {
public:
    /// Records refer to `context`, which must outlive the converter.
    RecordConverter(const LoadedContext& context, AnswerOptions options);

    /// Converts what stands on `line` (with the text `text`) and appends its answer, one line, to `answers`.
    /// Counts the record in `counts`.
    void convert(const Line& line, PaddedText text, TextBuffer& answers, Counts& counts);
    /// Why records failed so far.
    [[nodiscard]] const FailureTally& failures() const noexcept { return m_failures; }

private:
    void convertRecord(simdjson::dom::element root, Counts& counts);
    void noteFailure(long result, std::span<const QueltInTraceLine> lines);

    AnswerOptions m_options;
    const LoadedContext& m_context;
    JsonParser m_parser;
    RecordReader m_reader;
    AnswerWriter m_answerWriter;
    TextBuffer m_none;
    JsonWriter m_writer;
    QueltInArena m_arena;
    QueltInTraceCapture m_capture;
    FailureTally m_failures;
};

} // namespace quelt::host
