#include "commands/LineConverter.h"

#include "interchange/AnswerWriter.h"
#include "interchange/RecordReader.h"

#include <new>
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

/// Takes back what is written to `answers` behind the place where it stands now, unless it is kept.
class Rollback {
public:
    explicit Rollback(TextBuffer& answers) noexcept : m_answers(answers), m_size(answers.size()) {}
    ~Rollback() {
        if (!m_isKept) {
            takeBack();
        }
    }
    Rollback(const Rollback&) = delete;
    Rollback& operator=(const Rollback&) = delete;
    void takeBack() noexcept { m_answers.truncate(m_size); }
    void keep() noexcept { m_isKept = true; }

private:
    TextBuffer& m_answers;
    std::size_t m_size;
    bool m_isKept = false;
};

} // namespace

void LineConverter::convert(const Line& line, PaddedText text, TextBuffer& answers, Counts& counts) {
    Rollback rollback(answers);
    Counts ofLine;
    m_root.reset();
    m_id.reset();
    try {
        m_writer.begin(answers);
        answer(line, text, ofLine);
    } catch (const std::bad_alloc&) {
        rollback.takeBack();
        ofLine = {};
        m_arena.reset();
        m_arena.reset(); // gives back what the first one keeps for another conversion of that size
        m_writer.begin(answers);
        answerExhausted(line, ofLine);
    }
    answers.append('\n');
    rollback.keep();
    counts += ofLine;
    m_arena.reset();
}

void LineConverter::answer(const Line& line, PaddedText text, Counts& counts) {
    try {
        if (line.isTooLong) {
            throw Refusal("longer than " + std::to_string(s_maxLineSize >> 20U) + " MiB");
        }
        m_root = m_parser.parse(text);
        m_id = RecordReader::findId(*m_root);
        convertRecord(*m_root, counts);
    } catch (const SyntaxRefusal& refusal) {
        m_id = refusal.id();
        refuse(line, describe(refusal, line.isUnfinished), counts);
    } catch (const Refusal& refusal) {
        refuse(line, refusal.reason(), counts);
    }
}

void LineConverter::answerExhausted(const Line& line, Counts& counts) {
    if (!m_root) {
        m_id.reset(); // what it referred to went with the refusal
    }
    if (!m_id || !answerExhausted(*m_root, *m_id, counts)) {
        refuse(line, s_outOfMemory, counts);
    }
}

bool LineConverter::answerExhausted(simdjson::dom::element /*root*/, std::string_view /*id*/,
                                    Counts& /*counts*/) {
    return false;
}

void LineConverter::refuse(const Line& line, std::string_view what, Counts& counts) {
    AnswerWriter::writeMalformed(m_writer, line.number, m_id, what);
    ++counts.malformed;
}

} // namespace quelt::host
