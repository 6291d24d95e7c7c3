#include "commands/KeptAnswers.h"

#include "commands/Progress.h"
#include "infrastructure/QueltInResult.h"
#include "interchange/AnswerWriter.h"
#include "interchange/RecordReader.h"

#include <optional>
#include <string>

namespace quelt::host {

namespace {

constexpr std::size_t s_readSize = std::size_t{1} << 20U;

/// The lines of an input, one after the other.
class LineCursor {
public:
    explicit LineCursor(LineReader& reader) noexcept : m_reader(reader) {}

    /// The next line; null at the end. The one before is gone when its batch was used up.
    [[nodiscard]] const Line* next() {
        if (m_next == m_batch.lines().size()) {
            m_next = 0;
            if (!m_reader.fill(m_batch)) {
                return nullptr;
            }
        }
        return &m_batch.lines()[m_next++];
    }
    [[nodiscard]] bool isLastOfBatch() const noexcept { return m_next == m_batch.lines().size(); }
    [[nodiscard]] PaddedText textOf(const Line& line) const noexcept { return m_batch.textOf(line); }
    [[nodiscard]] std::uint64_t endOfInput() const noexcept { return m_batch.endOfInput(); }
    /// Leaves the lines that were not asked for to the reader.
    void leave() { m_reader.giveBack(m_batch, m_next); }

private:
    LineReader& m_reader;
    LineBatch m_batch;
    std::size_t m_next = 0;
};

/// What an answer says of its record: that it was converted, or why it failed.
struct Verdict {
    std::string_view id;
    std::optional<std::string> failure;
    bool isOfExhaustion = false; // made again, it would be another one
};

/// Nothing when the answer alone does not tell.
std::optional<Verdict> verdictOf(simdjson::dom::element answer) {
    const std::optional<std::string_view> id = RecordReader::findId(answer);
    std::int64_t branchResult = 0;
    std::string_view malformed;
    // Which of the errors belongs to the branching that failed, and not to the conversion, is not in the
    // answer.
    if (!id || answer["malformed"].get(malformed) == simdjson::SUCCESS ||
        (answer["branchResult"].get(branchResult) == simdjson::SUCCESS && branchResult < 0)) {
        return std::nullopt;
    }
    Verdict verdict{.id = *id, .failure = {}};
    std::int64_t result = 0;
    if (answer["result"].get(result) == simdjson::SUCCESS && result < 0) {
        std::string_view error;
        verdict.failure = answer["errors"].at(0).get(error) == simdjson::SUCCESS
                              ? std::string(error)
                              : reasonWithoutText(static_cast<long>(result));
        verdict.isOfExhaustion = result == E_OUTOFMEMORY && error == s_outOfMemoryError;
    }
    return verdict;
}

/// Whether this is the answer to the line with this number, and with this id as far as it could be read, when
/// the memory did not suffice to read it.
bool isMalformedByExhaustion(simdjson::dom::element answer, std::uint64_t line,
                             std::optional<std::string_view> id) {
    std::string_view malformed;
    std::uint64_t number = 0;
    const std::optional<std::string_view> answered = RecordReader::findId(answer);
    simdjson::dom::object object;
    return answer.get(object) == simdjson::SUCCESS && object.size() == (answered ? 3U : 2U) &&
           answer["malformed"].get(malformed) == simdjson::SUCCESS && malformed == s_outOfMemory &&
           answer["line"].get(number) == simdjson::SUCCESS && number == line && (!answered || answered == id);
}

/// The answer up to its trace, which is the last in it, and which shows addresses: each run has others.
std::string_view withoutTrace(std::string_view answer) {
    return answer.substr(0, answer.find(R"(,"trace":[)"));
}

class Comparison {
public:
    Comparison(LineReader& answers, LineReader& records, LineConverter& converter)
        : m_answers(answers), m_records(records), m_converter(converter) {}

    KeptAnswers run() && {
        std::uint64_t number = 0;
        while (const Line* const answer = m_answers.next()) {
            ++number;
            const Line* const record = m_records.next();
            if (record == nullptr) {
                throw Refusal("it holds more answers than there are records");
            }
            if (answer->number != number || answer->isUnfinished ||
                !(take(*answer, *record) || makeAgain(*answer, *record))) {
                refuse(number, record->number);
            }
            if (m_answers.isLastOfBatch()) {
                check();
            }
            m_kept.endOfRecords = m_records.endOfInput();
        }
        m_records.leave();
        return std::move(m_kept);
    }

private:
    /// An answer that was taken for what it says, and can be made again.
    struct Taken {
        std::uint64_t number = 0; // 0: none
        std::string answer;
        Line record{};
        std::string recordText; // and padding
    };

    [[noreturn]] static void refuse(std::uint64_t answer, std::uint64_t record) {
        throw Refusal("its line " + formatCount(answer) + " is not the answer that line " +
                      formatCount(record) + " of the records gets now");
    }

    /// Counts the answer by what it says. False when it has to be made again for that.
    bool take(const Line& answer, const Line& record) {
        if (answer.isTooLong) {
            return false;
        }
        try {
            const simdjson::dom::element said = m_answerParser.parse(m_answers.textOf(answer));
            const std::optional<std::string_view> id = idOf(record);
            if (isMalformedByExhaustion(said, record.number, id)) {
                ++m_kept.counts.malformed;
                return true;
            }
            const std::optional<Verdict> verdict = verdictOf(said);
            if (!verdict || id != verdict->id || (m_answers.isLastOfBatch() && !verdict->isOfExhaustion)) {
                return false;
            }
            if (verdict->failure) {
                ++m_kept.counts.failed;
                m_kept.failures.add(*verdict->failure);
            } else {
                ++m_kept.counts.converted;
            }
            if (!verdict->isOfExhaustion) {
                note(answer, record);
            }
            return true;
        } catch (const SyntaxRefusal&) {
            return false;
        }
    }

    std::optional<std::string_view> idOf(const Line& record) {
        if (record.isTooLong) {
            return std::nullopt;
        }
        try {
            return RecordReader::findId(m_recordParser.parse(m_records.textOf(record)));
        } catch (const SyntaxRefusal&) {
            return std::nullopt;
        }
    }

    void note(const Line& answer, const Line& record) {
        m_taken.number = answer.number;
        m_taken.answer = m_answers.textOf(answer).view();
        m_taken.record = record;
        m_taken.recordText = m_records.textOf(record).view();
    }

    /// Makes the answer again and counts it. False when it is another one.
    bool makeAgain(const Line& answer, const Line& record) {
        m_taken.number = 0; // this one tells as much
        const std::string_view again = answerTo(record, m_records.textOf(record), m_kept.counts);
        m_kept.failures.add(m_converter.takeFailures());
        return answer.isTooLong ? again.size() > s_maxLineSize
                                : withoutTrace(m_answers.textOf(answer).view()) == withoutTrace(again);
    }

    /// Makes the last answer again that was taken for what it says, where none behind it could be.
    void check() {
        if (m_taken.number == 0) {
            return;
        }
        const std::size_t size = m_taken.recordText.size();
        m_taken.recordText.append(simdjson::SIMDJSON_PADDING, ' ');
        Counts counted; // already
        const std::string_view again = answerTo(m_taken.record, {m_taken.recordText.data(), size}, counted);
        static_cast<void>(m_converter.takeFailures());
        if (withoutTrace(m_taken.answer) != withoutTrace(again)) {
            refuse(m_taken.number, m_taken.record.number);
        }
        m_taken.number = 0;
    }

    /// The answer to a record, without its line end.
    std::string_view answerTo(const Line& record, PaddedText text, Counts& counts) {
        m_again.clear();
        m_converter.convert(record, text, m_again, counts);
        return m_again.view().substr(0, m_again.view().size() - 1);
    }

    LineCursor m_answers;
    LineCursor m_records;
    LineConverter& m_converter;
    JsonParser m_answerParser;
    JsonParser m_recordParser;
    TextBuffer m_again;
    Taken m_taken;
    KeptAnswers m_kept;
};

} // namespace

KeptAnswers skipAnswered(ByteSource& answers, LineReader& records, LineConverter& converter) {
    LineReader answersReader(answers, s_readSize);
    return Comparison(answersReader, records, converter).run();
}

} // namespace quelt::host
