// Whole conversions: every case of every tests/conformance/*.json is a test of its own.

#include "conformance/Answers.h"
#include "conformance/Cases.h"
#include "conformance/JsonDifference.h"

#include <gtest/gtest.h>

#include <string>

namespace quelt::host::test {
namespace {

/// The answer to the case's record.
rapidjson::Document answerTo(const Case& one, ConvertOptions options) {
    const std::string text = test::answerTo(*loadContext(one.context), one.record, options);
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
