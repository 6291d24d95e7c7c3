#include "commands/RecordConverter.h"

#include "QueltEeTarselMigrationServices.h"
#include "interchange/ReportedLines.h"

#include <string>

namespace quelt::host {

namespace {

std::string describe(const SyntaxRefusal& refusal, bool isUnfinished) {
    if (refusal.isJson()) {
        return refusal.reason();
    }
    std::string text = "not JSON";
    if (refusal.position()) {
        text += " at column " + std::to_string(refusal.position()->column);
    }
    text += ": ";
    text += refusal.reason();
    if (isUnfinished) {
        text += " (the input's last line, without a line end)";
    }
    return text;
}

} // namespace

RecordConverter::RecordConverter(const LoadedContext& context, AnswerOptions options)
    : m_options(options), m_context(context), m_reader(context), m_answerWriter(context), m_writer(m_none),
      m_capture(options.withTrace ? QueltInTraceCapture::Wanted::everything
                                  : QueltInTraceCapture::Wanted::unconditionalLines) {}

void RecordConverter::convert(const Line& line, PaddedText text, TextBuffer& answers, Counts& counts) {
    m_writer.begin(answers);
    std::optional<std::string_view> id;
    const auto refuse = [&](std::optional<std::string_view> knownId, std::string_view what) {
        AnswerWriter::writeMalformed(m_writer, line.number, knownId, what);
        ++counts.malformed;
    };
    try {
        if (line.isTooLong) {
            throw Refusal("longer than " + std::to_string(s_maxLineSize >> 20U) + " MiB");
        }
        const simdjson::dom::element root = m_parser.parse(text);
        id = RecordReader::findId(root);
        convertRecord(root, counts);
    } catch (const SyntaxRefusal& refusal) {
        refuse(refusal.id(), describe(refusal, line.isUnfinished));
    } catch (const Refusal& refusal) {
        refuse(id, refusal.reason());
    }
    answers.Put('\n');
    m_arena.reset();
}

void RecordConverter::convertRecord(simdjson::dom::element root, Counts& counts) {
    const QueltInArenaScope scope(m_arena);
    Record record = m_reader.read(root);
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
