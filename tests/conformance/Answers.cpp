#include "conformance/Answers.h"

#include "interchange/ContextReader.h"

#include <regex>

namespace quelt::host::test {

namespace {

std::string withoutAddresses(const std::string& answer) {
    if (answer.find(", back-up : 0x") == std::string::npos) {
        return answer;
    }
    static const std::regex null("(: |, back-up : )0x0(?=[,\"])");
    static const std::regex address("(: |, back-up : )0x[0-9a-f]+(?=[,\"])");
    return std::regex_replace(std::regex_replace(answer, null, "$1<null>"), address, "$1<pointer>");
}

} // namespace

std::unique_ptr<LoadedContext> loadContext(std::string text) {
    text.reserve(text.size() + simdjson::SIMDJSON_PADDING);
    return readContext({text.data(), text.size()});
}

std::string answerTo(const LoadedContext& context, std::string record, ConvertOptions options) {
    record.reserve(record.size() + simdjson::SIMDJSON_PADDING);
    RecordConverter converter(context, options);
    TextBuffer answers;
    Counts counts;
    converter.convert(Line{0, record.size(), 1, false, false}, {record.data(), record.size()}, answers,
                      counts);
    return withoutAddresses(std::string(answers.view()));
}

} // namespace quelt::host::test
