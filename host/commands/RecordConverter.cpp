#include "commands/RecordConverter.h"

#include "QueltEeTarselMigrationServices.h"
#include "QueltReconstituteEffectivityFromCompiledBinary.h"
#include "infrastructure/QueltInResult.h"
#include "interchange/ReportedLines.h"

#include <new>
#include <string>

namespace quelt::host {

RecordConverter::RecordConverter(const LoadedContext& context, ConvertOptions options)
    : m_options(options), m_context(context), m_reader(context, options.branchesAll), m_answerWriter(context),
      m_capture(options.withTrace ? QueltInTraceCapture::Wanted::everything
                                  : QueltInTraceCapture::Wanted::reports) {}

void RecordConverter::convertRecord(simdjson::dom::element root, Counts& counts) {
    const QueltInArenaScope scope(m_arena);
    Record record = m_reader.read(root);
    m_capture.clear();
    if (record.binary != nullptr) {
        retrieveOperations(record, counts);
    } else {
        convertExpression(record, counts);
    }
}

bool RecordConverter::answerExhausted(simdjson::dom::element root, std::string_view id, Counts& counts) {
    static constexpr QueltInTraceLine reason{.className = "RecordConverter",
                                             .domainName = "QueltDataMigration",
                                             .methodName = {},
                                             .level = 0,
                                             .lineNumber = 0,
                                             .text = s_outOfMemoryError};
    m_capture.clear();
    const CompiledContent none;
    const bool isBinary =
        !root.at_key(nameOf(Key::binary)).error() || !root.at_key(nameOf(Key::compiled)).error();
    writeAnswer({.id = id,
                 .result = E_OUTOFMEMORY,
                 .content = isBinary ? &none : nullptr,
                 .lines = {&reason, 1},
                 .showTrace = m_options.withTrace},
                0, counts);
    return true;
}

void RecordConverter::convertExpression(Record& record, Counts& counts) {
    const QueltEeGenericExpression* const expression = record.expression.release(); // goes with the arena
    QueltInMap* map = nullptr;
    const long result = QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
        *expression, m_context.expressionContext(), record.isChange ? 1 : 0, map, record.basicEffectivity);

    const std::size_t linesOfConversion = m_capture.lines().size();
    std::optional<long> branchResult;
    if (record.isBranched && result >= 0) {
        branchResult = QueltEeTarselMigrationServices::ConvertFromFlatSeriesExprToBranchingExpr(
            m_context.expressionContext(), *map);
    }
    // A conversion that was a success may have reported errors, which are no reason.
    writeAnswer({.id = record.id,
                 .result = result,
                 .branchResult = branchResult,
                 .map = map,
                 .lines = m_capture.lines(),
                 .input = m_options.withInput ? expression : nullptr,
                 .showTrace = m_options.withTrace},
                result < 0 ? 0 : linesOfConversion, counts);
}

void RecordConverter::retrieveOperations(const Record& record, Counts& counts) {
    CompiledContent content; // its elements go with the arena
    const long result = QueltReconstituteEffectivityFromCompiledBinary::RetrieveChangeOperations(
        *record.binary, content.operations, content.contexts);
    writeAnswer({.id = record.id,
                 .result = result,
                 .content = &content,
                 .lines = m_capture.lines(),
                 .binaryInput = m_options.withInput ? record.binary.get() : nullptr,
                 .showTrace = m_options.withTrace},
                0, counts);
}

/// Writes the answer and counts it; a failure's reason stands in the lines from `firstOfReason` on.
void RecordConverter::writeAnswer(const Answer& answer, std::size_t firstOfReason, Counts& counts) {
    if (m_capture.isIncomplete()) {
        throw std::bad_alloc();
    }
    m_answerWriter.write(m_writer, answer);
    const long decisive = decisiveResult(answer);
    if (decisive >= 0) {
        ++counts.converted;
        return;
    }
    ++counts.failed;
    noteFailure(decisive, answer.lines.subspan(firstOfReason));
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
        m_failures.add(reasonWithoutText(result));
    }
}

} // namespace quelt::host
