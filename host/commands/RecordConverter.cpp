#include "commands/RecordConverter.h"

#include "QueltEeTarselMigrationServices.h"
#include "QueltReconstituteEffectivityFromCompiledBinary.h"
#include "interchange/ReportedLines.h"

#include <string>

namespace quelt::host {

RecordConverter::RecordConverter(const LoadedContext& context, AnswerOptions options)
    : m_options(options), m_context(context), m_reader(context), m_answerWriter(context),
      m_capture(options.withTrace ? QueltInTraceCapture::Wanted::everything
                                  : QueltInTraceCapture::Wanted::unconditionalLines) {}

void RecordConverter::convertRecord(simdjson::dom::element root, Counts& counts) {
    const QueltInArenaScope scope(m_arena);
    Record record = m_reader.read(root);
    if (record.binary != nullptr) {
        retrieveOperations(record, counts);
        return;
    }
    const QueltEeGenericExpression* const expression = record.expression.release(); // goes with the arena
    m_capture.clear();
    QueltInMap* map = nullptr;
    const long result = QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
        *expression, m_context.expressionContext(), record.isChange ? 1 : 0, map, record.basicEffectivity);

    m_answerWriter.write(m_writer, {.id = record.id,
                                    .result = result,
                                    .map = map,
                                    .lines = m_capture.lines(),
                                    .input = m_options.withInput ? expression : nullptr,
                                    .showTrace = m_options.withTrace});
    if (result < 0) {
        ++counts.failed;
        noteFailure(result, m_capture.lines());
    } else {
        ++counts.converted;
    }
}

void RecordConverter::retrieveOperations(const Record& record, Counts& counts) {
    const QueltInTraceCapture capture(m_options.withTrace ? QueltInTraceCapture::Wanted::everything
                                                          : QueltInTraceCapture::Wanted::unconditionalLines);
    CompiledContent content; // its elements go with the arena
    const long result = QueltReconstituteEffectivityFromCompiledBinary::RetrieveChangeOperations(
        *record.binary, content.operations, content.contexts);

    m_answerWriter.write(m_writer, {.id = record.id,
                                    .result = result,
                                    .content = &content,
                                    .lines = capture.lines(),
                                    .binaryInput = m_options.withInput ? record.binary.get() : nullptr,
                                    .showTrace = m_options.withTrace});
    if (result < 0) {
        ++counts.failed;
        noteFailure(result, capture.lines());
    } else {
        ++counts.converted;
    }
}

/// The first error is the reason; those behind it say what failed in consequence.
void RecordConverter::noteFailure(long result, std::span<const QueltInTraceLine> lines) {
    bool hasReason = false;
    eachReportedLine(lines, [&](const ReportedLine& reported) {
        if (reported.kind == LineKind::error) {
            m_failures.add(reported.text);
            hasReason = true;
        }
        return !hasReason;
    });
    if (!hasReason) {
        m_failures.add("no error text, " + formatCode(result));
    }
}

} // namespace quelt::host
