// Whole conversions: every case of every tests/conformance/*.json is a test of its own.

#include "conformance/Cases.h"
#include "conformance/JsonDifference.h"

#include "commands/RecordConverter.h"
#include "interchange/ContextReader.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

namespace quelt::host::test {
namespace {

/// The text with the addresses that some trace lines show as "<null>" and "<pointer>", which is how the cases
/// have them.
std::string withoutAddresses(const std::string& answer) {
    static const std::regex null("(: |, back-up : )0x0(?=[,\"])");
    static const std::regex address("(: |, back-up : )0x[0-9a-f]+(?=[,\"])");
    return std::regex_replace(std::regex_replace(answer, null, "$1<null>"), address, "$1<pointer>");
}

/// The answer to the case's record.
rapidjson::Document answerTo(const Case& one, ConvertOptions options) {
    std::string context = one.context;
    context.reserve(context.size() + simdjson::SIMDJSON_PADDING);
    const std::unique_ptr<LoadedContext> loaded = readContext({context.data(), context.size()});
    std::string line = one.record;
    line.reserve(line.size() + simdjson::SIMDJSON_PADDING);

    RecordConverter converter(*loaded, options);
    TextBuffer answers;
    Counts counts;
    converter.convert(Line{0, line.size(), 1, false, false}, {line.data(), line.size()}, answers, counts);
    const std::string text = withoutAddresses({answers.GetString(), answers.GetSize()});
    rapidjson::Document answer;
    answer.Parse(text.data(), text.size());
    return answer;
}

void expectEqual(const rapidjson::Value& expected, const rapidjson::Value& actual, const char* what) {
    const std::optional<std::string> difference = findDifference(expected, actual);
    EXPECT_FALSE(difference.has_value()) << what << " differs first " << *difference << "\nexpected:\n"
                                         << pretty(expected) << "\nactual:\n"
                                         << pretty(actual);
}

class ConformanceTest : public testing::TestWithParam<Case> {};

TEST_P(ConformanceTest, convertsAsExpected) {
    const Case& one = GetParam();
    ASSERT_EQ(one.problem, "") << one.file;
    SCOPED_TRACE(one.file + ": " + one.name + "\n" + one.why);

    rapidjson::Document expected;
    expected.Parse(one.expected.data(), one.expected.size());
    expectEqual(expected, answerTo(one, {.withInput = true, .withTrace = true}), "the answer");

    rapidjson::Document untraced;
    untraced.Parse(one.untraced.data(), one.untraced.size());
    expectEqual(untraced, answerTo(one, {.withInput = true, .withTrace = false}), "the answer without trace");
}

INSTANTIATE_TEST_SUITE_P(cases, ConformanceTest,
                         testing::ValuesIn(loadCases(QUELT_SOURCE_DIR "/tests/conformance")),
                         [](const auto& one) { return one.param.testName; });

TEST(ConformanceSuite, hasCases) {
    EXPECT_FALSE(loadCases(QUELT_SOURCE_DIR "/tests/conformance").empty());
}

} // namespace
} // namespace quelt::host::test
