// The runner itself: a case that says too little, or differs, must not pass unnoticed.

#include "conformance/Cases.h"
#include "conformance/JsonDifference.h"

#include <gtest/gtest.h>

namespace quelt::host::test {
namespace {

/// The first case of a file with this one case, for the setting "migRen".
Case readOne(const std::string& text) {
    return readCases("file", R"({"contexts": {"c": {"a": 1}}, "cases": [)" + text + "]}", "migRen").at(0);
}
Case withExpect(const std::string& expect) {
    return readOne(R"({"name": "n", "why": "w", "context": "c", "record": {"id": 1}, "expect": )" + expect +
                   "}");
}
std::string problemOfFile(const std::string& text) {
    return readCases("file", text, "plain").at(0).problem;
}

TEST(CasesTest, picksTheAnswerOfTheSetting) {
    const Case all = withExpect(R"({"all": {"result": 0, "trace": []}})");
    EXPECT_EQ(all.problem, "");
    EXPECT_EQ(all.context, R"({"a":1})");
    EXPECT_EQ(all.record, R"({"id":1})");
    EXPECT_EQ(all.expected, R"({"result":0,"trace":[]})");
    EXPECT_EQ(all.untraced, R"({"result":0})");
    EXPECT_EQ(withExpect(R"({"plain,optimization": {"result": 0}, "migRen,both": {"result": 1}})").expected,
              R"({"result":1})");
}

TEST(CasesTest, untracedAnswerMayDiffer) {
    const Case one = readOne(R"({"name": "n", "why": "w", "context": {"b": 2}, "record": {},
        "expect": {"all": {"result": -1}}, "untraced": {"plain": {"result": 5}, "migRen": {"result": 0}}})");
    EXPECT_EQ(one.problem, "");
    EXPECT_EQ(one.context, R"({"b":2})");
    EXPECT_EQ(one.expected, R"({"result":-1})");
    EXPECT_EQ(one.untraced, R"({"result":0})");
}

TEST(CasesTest, namesWhatIsWrongWithACase) {
    EXPECT_EQ(withExpect(R"({"plain": {}})").problem, "'expect' has no answer for the setting 'migRen'");
    EXPECT_EQ(withExpect("{}").problem, "'expect' has no answer for the setting 'migRen'");
    EXPECT_EQ(withExpect(R"({"all": {}, "plain": {}})").problem, "'expect' names the setting 'plain' twice");
    EXPECT_EQ(withExpect(R"({"migren": {}})").problem, "'expect' names the unknown setting 'migren'");
    EXPECT_EQ(withExpect(R"({"plain, migRen": {}})").problem, "'expect' names the unknown setting ' migRen'");
    EXPECT_EQ(withExpect(R"({"all": 5})").problem, "'expect' has an answer that is no object");
    EXPECT_EQ(withExpect("[]").problem, "'expect' is no object");
    EXPECT_EQ(
        readOne(R"({"name": "n", "why": "w", "context": "d", "record": {}, "expect": {"all": {}}})").problem,
        "there is no context 'd'");
    EXPECT_EQ(readOne(R"({"name": "n", "why": "w", "context": "c", "record": {}})").problem,
              "the case lacks the key 'expect'");
    EXPECT_EQ(readOne(R"({"name": "n", "why": "w", "context": "c", "record": {}, "expected": {}})").problem,
              "the case has the unknown key 'expected'");
    EXPECT_EQ(readOne(R"({"name": "n", "name": "m"})").problem, "the case has the key 'name' more than once");
    EXPECT_EQ(readOne(R"({"name": "", "why": "w", "context": "c", "record": {}, "expect": {}})").problem,
              "'name' is no text");
    EXPECT_EQ(readOne("5").problem, "the case is no object");
}

TEST(CasesTest, namesWhatIsWrongWithAFile) {
    EXPECT_EQ(problemOfFile("{"), "Missing a name for object member. At byte 1");
    EXPECT_EQ(problemOfFile("{}"), "the file lacks the key 'cases'");
    EXPECT_EQ(problemOfFile(R"({"cases": []})"), "the file has no cases");
    EXPECT_EQ(problemOfFile(R"({"cases": {}})"), "the file has no cases");
    EXPECT_EQ(problemOfFile(R"({"cases": [{}], "context": {}})"), "the file has the unknown key 'context'");
    EXPECT_EQ(problemOfFile(R"({"cases": [{}], "contexts": []})"), "'contexts' is no object");
}

std::string differenceOf(const char* expected, const char* actual) {
    rapidjson::Document left;
    rapidjson::Document right;
    left.Parse(expected);
    right.Parse(actual);
    return findDifference(left, right).value_or("equal");
}

TEST(JsonDifferenceTest, findsTheFirstDifference) {
    EXPECT_EQ(differenceOf(R"({"a": [1, {"b": "x"}], "c": null})", R"({"c": null, "a": [1, {"b": "x"}]})"),
              "equal");
    EXPECT_EQ(differenceOf("1", "2"), "at the root: 2, not 1");
    EXPECT_EQ(differenceOf("0", "false"), "at the root: false, not 0");
    EXPECT_EQ(differenceOf("[]", "{}"), "at the root: {}, not []");
    EXPECT_EQ(differenceOf(R"({"a": 1, "b": 2})", R"({"a": 1})"), "at /b: missing");
    EXPECT_EQ(differenceOf(R"({"a": 1})", R"({"a": 1, "b": [2]})"), "at /b: [2], not expected");
    EXPECT_EQ(differenceOf(R"({"a/b": [1, [true, "x"]]})", R"({"a/b": [1, [true, "y"]]})"),
              R"(at /a~1b/1/1: "y", not "x")");
    EXPECT_EQ(differenceOf("[1, 2]", "[1]"), "at the root: 1 items, not 2");
    EXPECT_EQ(differenceOf(R"({"m": [1]})", R"({"m": [1, 2]})"), "at /m: 2 items, not 1");
}

} // namespace
} // namespace quelt::host::test
