#include "support/AnswerRules.h"

#include "commands/LineReader.h"
#include "host/support/MemoryStreams.h"
#include "host/support/Samples.h"
#include "support/Expect.h"

#include <initializer_list>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <set>
#include <string>
#include <vector>

namespace quelt::host::fuzz {

namespace {

using Json = rapidjson::Value;

std::string_view textOf(const Json& value) {
    return {value.GetString(), value.GetStringLength()};
}

std::string compact(const Json& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

rapidjson::Document parse(std::string_view text) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(text.data(),
                                                                                           text.size());
    return document;
}

bool isOrHolds(const Json& object, const char* key, bool value) {
    return object.HasMember(key) && object[key].IsBool() && object[key].GetBool() == value;
}

/// What `write` writes into an object of its own.
template <class Write>
std::string written(Write write) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.beginObject();
    write(writer);
    writer.endObject();
    return std::string(buffer.view());
}

/// For all that is read here; each document is done with before the next.
JsonParser& parser() {
    static JsonParser s_parser;
    return s_parser;
}

/// Calls `read`, which may find the text nested too deep: what a conversion makes may be a little deeper than
/// what it was given.
template <class Read>
void readUnlessTooDeep(const std::string& text, Read read) {
    try {
        read();
    } catch (const Refusal& refusal) {
        const bool isTooDeep = refusal.reason().find("nested more than") != std::string::npos ||
                               refusal.reason().find("deeper than") != std::string::npos;
        expect(isTooDeep, "what was written can be read", text, refusal.reason());
    }
}

/// The rules for one answer.
class AnswerRules {
public:
    AnswerRules(const LoadedContext& context, ConvertOptions options)
        : m_context(context), m_options(options) {}

    void check(const Line& line, std::string_view record, std::string_view answer) {
        m_text = answer;
        const rapidjson::Document document = parse(answer);
        expect(!document.HasParseError() && document.IsObject(), "an answer is a JSON object", answer);
        if (document.HasMember("malformed")) {
            checkMalformed(document, line);
            return;
        }
        const rapidjson::Document asked = parse(record);
        expect(asked.IsObject() && asked.HasMember("id"), "what is converted is an object with an id",
               answer);
        demand(document.HasMember("id") && document["id"] == asked["id"], "an answer bears its record's id");
        checkResult(document, asked);
        checkContent(document, asked);
        checkInput(document);
        demand(document.HasMember("trace") == m_options.withTrace, "the trace is there when it is asked for");
    }

private:
    void demand(bool holds, const char* what) const { expect(holds, what, m_text); }

    void checkKeys(const Json& object, std::initializer_list<std::string_view> known) const {
        std::set<std::string_view> left(known);
        for (const auto& member : object.GetObject()) {
            demand(left.erase(textOf(member.name)) == 1, "an answer's keys are known, and each there once");
        }
    }

    void checkMalformed(const Json& answer, const Line& line) const {
        checkKeys(answer, {"line", "id", "malformed"});
        demand(answer.HasMember("line") && answer["line"].IsUint64() &&
                   answer["line"].GetUint64() == line.number,
               "a malformed record is answered with its line");
        demand(!answer.HasMember("id") || answer["id"].IsString(), "an id is text");
        demand(answer["malformed"].IsString() && answer["malformed"].GetStringLength() > 0,
               "a malformed record is answered with the reason");
    }

    void checkMessages(const Json& answer, const char* key) const {
        if (!answer.HasMember(key)) {
            return;
        }
        demand(answer[key].IsArray() && !answer[key].Empty(), "messages are there when there are any");
        for (const Json& message : answer[key].GetArray()) {
            demand(message.IsString(), "a message is text");
        }
    }

    void checkResult(const Json& answer, const Json& record) const {
        demand(answer.HasMember("result") && answer["result"].IsInt(), "there is a result");
        const int result = answer["result"].GetInt();
        const bool isExpression = record.HasMember("list") || record.HasMember("tree");
        const bool isBranched =
            isExpression && result >= 0 && (m_options.branchesAll || isOrHolds(record, "branch", true));
        demand(answer.HasMember("branchResult") == isBranched,
               "what was converted is branched when asked for");
        demand(!isBranched || answer["branchResult"].IsInt(), "the result of branching is a number");
        const int decisive = isBranched ? answer["branchResult"].GetInt() : result;
        demand(answer.HasMember("code") == (decisive < 0), "a failure has a code, and nothing else has");
        checkMessages(answer, "errors");
        checkMessages(answer, "warnings");
        if (decisive < 0) {
            demand(answer["code"].IsString() && textOf(answer["code"]) == formatCode(decisive),
                   "the code is the result's");
            demand(answer.HasMember("errors"), "a failure has an error text");
        }
    }

    void checkContent(const Json& answer, const Json& record) const {
        if (!record.HasMember("list") && !record.HasMember("tree")) {
            checkKeys(answer, {"id", "result", "code", "errors", "warnings", "operations", "contexts",
                               "input", "trace"});
            demand(answer.HasMember("operations") && answer["operations"].IsArray(), "there are operations");
            demand(answer.HasMember("contexts") && answer["contexts"].IsArray(), "there are contexts");
            return;
        }
        checkKeys(answer,
                  {"id", "result", "branchResult", "code", "errors", "warnings", "map", "input", "trace"});
        demand(answer.HasMember("map") && answer["map"].IsArray(), "there is a map");
        const char* const kind = record.HasMember("list")            ? "filter"
                                 : isOrHolds(record, "change", true) ? "change"
                                                                     : "effectivity";
        std::set<int> domains;
        for (const Json& entry : answer["map"].GetArray()) {
            demand(domains.insert(entry["domain"].GetInt()).second, "a domain is filed once");
            demand(textOf(entry["expression"]["kind"]) == kind, "expressions are of the kind asked for");
            checkExpression(entry["expression"]);
        }
    }

    void checkExpression(const Json& expression) const {
        const std::string text = compact(expression);
        readUnlessTooDeep(text, [&] {
            const test::Padded padded(text);
            const Value value(parser().parse(padded.text()), Place());
            const auto read = ExpressionReader(m_context).readMultiModel(value);
            TextBuffer buffer;
            JsonWriter writer(buffer);
            ExpressionWriter(m_context).writeMultiModel(writer, *read);
            expect(buffer.view() == text, "an expression that was read is written the same", text,
                   buffer.view());
        });
    }

    void checkInput(const Json& answer) const {
        demand(answer.HasMember("input") == m_options.withInput, "the input is there when it is asked for");
        if (!m_options.withInput || answer["input"].HasMember("binary")) {
            return;
        }
        const std::string text = compact(answer["input"]);
        const std::string record = R"({"id":"",)" + text.substr(1);
        readUnlessTooDeep(text, [&] {
            const test::Padded padded(record);
            const Record read = RecordReader(m_context).read(parser().parse(padded.text()));
            const std::string again = written(
                [&](JsonWriter& writer) { ExpressionWriter(m_context).writeBody(writer, *read.expression); });
            expect(again == text, "an input that was read is written the same", text, again);
        });
    }

    const LoadedContext& m_context;
    ConvertOptions m_options;
    std::string_view m_text;
};

} // namespace

void expectAnswers(const LoadedContext& context, std::string_view records, std::string_view answers,
                   ConvertOptions options) {
    AnswerRules rules(context, options);
    test::TextSource source(records);
    LineReader reader(source, records.size() + 1);
    for (LineBatch batch; reader.fill(batch);) {
        for (const Line& line : batch.lines()) {
            const std::size_t end = answers.find('\n');
            expect(end != std::string_view::npos, "every record has an answer on a line of its own", records);
            rules.check(line, batch.textOf(line).view(), answers.substr(0, end));
            answers.remove_prefix(end + 1);
        }
    }
    expect(answers.empty(), "there are no more answers than records", records, answers);
}

} // namespace quelt::host::fuzz
