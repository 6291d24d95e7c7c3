// The same records give the same answers in an arena and on the heap, by one thread and by two, with the
// trace and without.

#include "support/ConversionInput.h"
#include "support/Conversions.h"
#include "support/Expect.h"

#include <rapidjson/document.h>
#include <string>

namespace {

using namespace quelt::host;

/// On the heap a failed conversion leaves something behind, and finding that this is forgiven takes its time:
/// one input in so many takes it.
constexpr std::size_t s_oftenFailed = 8;

rapidjson::Document parse(std::string_view line) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseIterativeFlag>(line.data(), line.size());
    expect(document.IsObject(), "an answer is a JSON object", line);
    return document;
}

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    expect(end != std::string_view::npos, "answers end with a line end", text);
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return line;
}

/// The one thing that a trace may change: the service shows what it obtained, which may fail where everything
/// else is done. Then the map is the same, but for branching, which comes only after success.
bool hasFailedToShowTheMap(const rapidjson::Document& traced, const rapidjson::Document& untraced) {
    const auto resultOf = [](const rapidjson::Document& answer) { return answer["result"].GetInt(); };
    if (!traced.HasMember("errors") || resultOf(traced) != E_FAIL || resultOf(untraced) < 0) {
        return false;
    }
    const auto& errors = traced["errors"];
    const std::string_view last = errors[errors.Size() - 1].GetString();
    return (last == "ERROR" || last == "ERROR : error") &&
           (untraced.HasMember("branchResult") || traced["map"] == untraced["map"]);
}

void expectSameButForTheTrace(std::string_view traced, std::string_view untraced) {
    while (!untraced.empty()) {
        const std::string_view line = takeLine(untraced);
        const std::string_view tracedLine = takeLine(traced);
        const rapidjson::Document answer = parse(line);
        rapidjson::Document tracedAnswer = parse(tracedLine);
        tracedAnswer.RemoveMember("trace");
        const bool isSame = answer == tracedAnswer;
        expect(isSame || (answer.HasMember("result") && hasFailedToShowTheMap(tracedAnswer, answer)),
               "a trace changes nothing but what it may", line, tracedLine);
    }
    expect(traced.empty(), "there are as many answers with a trace as without", traced);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::ConversionInput input = fuzz::readInput(data, size);
    if (input.context == nullptr || input.records.empty()) {
        return 0;
    }
    const auto answers = [&](const fuzz::Way& way) {
        return fuzz::answersTo(*input.context, input.records, way);
    };
    const ConvertOptions plain{.withInput = true};
    const ConvertOptions traced{.withInput = true, .withTrace = true};
    const std::string reference = answers({.options = plain});
    const bool takesFailed = size % s_oftenFailed == 0;
    const fuzz::Unfailed some = takesFailed ? fuzz::Unfailed{std::string(input.records), reference}
                                            : fuzz::withoutFailed(input.records, reference);
    const std::string onHeap =
        fuzz::answersTo(*input.context, some.records, {.options = plain, .usesArena = false}, takesFailed);
    expect(onHeap == some.answers, "the heap and an arena give the same answers", some.answers, onHeap);
    const std::string byTwo = answers({.options = plain, .jobs = 2});
    expect(byTwo == reference, "one thread and two give the same answers", reference, byTwo);
    expectSameButForTheTrace(answers({.options = traced}), reference);
    return 0;
}
