#include "commands/LineConverter.h"

#include "interchange/AnswerWriter.h"
#include "interchange/RecordReader.h"

#include <optional>
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

void LineConverter::convert(const Line& line, PaddedText text, TextBuffer& answers, Counts& counts) {
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

} // namespace quelt::host
