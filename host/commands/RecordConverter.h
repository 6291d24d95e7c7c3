#pragma once

#include "commands/LineConverter.h"
#include "infrastructure/QueltInTraceSink.h"
#include "interchange/AnswerWriter.h"
#include "interchange/RecordReader.h"

namespace quelt::host {

/// What is done with all records, and what answers show beside what a record was converted to.
struct ConvertOptions {
    bool branchesAll = false;
    bool withInput = false;
    bool withTrace = false;
};

/// Converts records in the light of a context. Converters of several threads may share one. Each record's
/// objects stand in the arena, which is dropped when its answer is written.
class RecordConverter : public LineConverter {
public:
    /// Records refer to `context`, which must outlive the converter.
    RecordConverter(const LoadedContext& context, ConvertOptions options);

private:
    void convertRecord(simdjson::dom::element root, Counts& counts) override;
    bool answerExhausted(simdjson::dom::element root, std::string_view id, Counts& counts) override;
    void convertExpression(Record& record, Counts& counts);
    void retrieveOperations(const Record& record, Counts& counts);
    void writeAnswer(const Answer& answer, std::size_t firstOfReason, Counts& counts);
    void noteFailure(long result, std::span<const QueltInTraceLine> lines);

    ConvertOptions m_options;
    const LoadedContext& m_context;
    RecordReader m_reader;
    AnswerWriter m_answerWriter;
    QueltInTraceCapture m_capture;
};

} // namespace quelt::host
