#pragma once

#include "commands/RecordConverter.h"

namespace quelt::host::test {

/// Converts records as a RecordConverter does, but with every object on the plain heap, where each must be
/// given back.
class HeapRecordConverter : public LineConverter {
public:
    /// Records refer to `context`, which must outlive the converter.
    HeapRecordConverter(const LoadedContext& context, ConvertOptions options);

private:
    void convertRecord(simdjson::dom::element root, Counts& counts) override;
    void convertExpression(const Record& record, Counts& counts);
    void retrieveOperations(const Record& record, Counts& counts);
    void writeAnswer(const Answer& answer, Counts& counts);

    ConvertOptions m_options;
    const LoadedContext& m_context;
    RecordReader m_reader;
    AnswerWriter m_answerWriter;
    QueltInTraceCapture m_capture;
};

} // namespace quelt::host::test
