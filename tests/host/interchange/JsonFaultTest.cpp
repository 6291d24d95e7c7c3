#include "interchange/JsonFault.h"

#include "host/support/Samples.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

namespace quelt::host {
namespace {

using test::repeated;

struct FaultRow {
    std::string text;
    std::string what;
    std::size_t offset;
    std::string pointer;
};

class JsonFaultTest : public testing::TestWithParam<FaultRow> {};

TEST_P(JsonFaultTest, saysWhatIsWrongAndWhere) {
    const FaultRow& row = GetParam();
    const std::optional<JsonFault> fault = findJsonFault(row.text);
    ASSERT_TRUE(fault.has_value()) << row.text;
    EXPECT_EQ(fault->what, row.what);
    EXPECT_EQ(fault->offset, row.offset);
    EXPECT_EQ(fault->pointer, row.pointer);
}

INSTANTIATE_TEST_SUITE_P(
    faults, JsonFaultTest,
    testing::Values(
        FaultRow{"", "nothing to read", 0, ""}, FaultRow{" \r\n\t", "nothing to read", 4, ""},
        FaultRow{"{", "the text ends too early", 1, ""},
        FaultRow{R"({"a")", "the text ends too early", 4, ""},
        FaultRow{R"({"a":)", "the text ends too early", 5, ""},
        FaultRow{R"({"a":tru)", "the text ends too early", 8, ""},
        FaultRow{R"({"a":[1,)", "the text ends too early", 8, "/a"},
        FaultRow{R"({"a":"b)", "the text ends too early", 7, ""},
        FaultRow{R"({"a":"b\)", "the text ends too early", 8, ""},
        FaultRow{R"({"a":"\u12)", "the text ends too early", 10, ""},
        FaultRow{R"({"a":"\ud83d)", "the text ends too early", 6, ""},
        FaultRow{R"({"a":1.)", "the text ends too early", 7, ""},
        FaultRow{R"({"a":-)", "the text ends too early", 6, ""},
        FaultRow{R"({a:1})", "expected a key in double quotes", 1, ""},
        FaultRow{R"({"a":1,})", "expected a key in double quotes", 7, ""},
        FaultRow{R"({"a" 1})", "expected ':' behind the key", 5, ""},
        FaultRow{R"({"a":1 "b":2})", "expected ',' or '}'", 7, ""},
        FaultRow{R"({"x":[{"a":1 2}]})", "expected ',' or '}'", 13, "/x/0"},
        FaultRow{R"([1 2])", "expected ',' or ']'", 3, ""},
        FaultRow{R"({"l":[0,[1 2]]})", "expected ',' or ']'", 11, "/l/1"},
        FaultRow{R"([1,])", "expected a value", 3, ""}, FaultRow{R"([,])", "expected a value", 1, ""},
        FaultRow{R"({"a":nul})", "expected a value", 5, ""},
        FaultRow{R"({"a":'b'})", "expected a value", 5, ""},
        FaultRow{R"({"a":+1})", "expected a value", 5, ""},
        FaultRow{R"({"a":NaN})", "expected a value", 5, ""},
        FaultRow{R"({} {})", "text behind the end of the document", 3, ""},
        FaultRow{R"(1 x)", "text behind the end of the document", 2, ""},
        FaultRow{R"({"a":01})", "a number must not begin with 0", 6, ""},
        FaultRow{R"({"a":-x})", "expected a digit", 6, ""},
        FaultRow{R"({"a":1.x})", "expected a digit behind the decimal point", 7, ""},
        FaultRow{R"({"a":1e})", "expected a digit in the exponent", 7, ""},
        FaultRow{R"({"a":1e+})", "expected a digit in the exponent", 8, ""},
        FaultRow{R"({"a":[0,99999999999999999999]})", "number out of range", 8, "/a/1"},
        FaultRow{R"({"a":-9223372036854775809})", "number out of range", 5, "/a"},
        FaultRow{R"({"a/b":1e999})", "number out of range", 7, "/a~1b"},
        FaultRow{"{\"a\":\"x\ty\"}", "control character in a text", 7, ""},
        FaultRow{std::string("{\"a\":\"x\0y\"}", 11), "control character in a text", 7, ""},
        FaultRow{R"({"a":"\x"})", "unknown escape", 7, ""},
        FaultRow{R"({"a":"\u12G4"})", "expected four hexadecimal digits behind \\u", 10, ""},
        FaultRow{R"({"a":"\ud800"})", "half of a surrogate pair", 6, ""},
        FaultRow{R"({"a":"\ud800A"})", "half of a surrogate pair", 6, ""},
        FaultRow{R"({"a":"\ud800\ud800"})", "half of a surrogate pair", 6, ""},
        FaultRow{R"({"a":"\udc00"})", "half of a surrogate pair", 6, ""},
        FaultRow{"\xEF\xBB\xBF{}", "expected a value", 0, ""}, FaultRow{"\xFF\xFE{\0}\0", "not UTF-8", 0, ""},
        FaultRow{"{\"a\":\"\xC3\"}", "not UTF-8", 6, ""},
        FaultRow{"{\"a\":\"\xC0\x80\"}", "not UTF-8", 6, ""},         // longer than needed
        FaultRow{"{\"a\":\"\xE0\x9F\xBF\"}", "not UTF-8", 6, ""},     // longer than needed
        FaultRow{"{\"a\":\"\xED\xA0\x80\"}", "not UTF-8", 6, ""},     // a surrogate
        FaultRow{"{\"a\":\"\xF0\x8F\xBF\xBF\"}", "not UTF-8", 6, ""}, // longer than needed
        FaultRow{"{\"a\":\"\xF4\x90\x80\x80\"}", "not UTF-8", 6, ""}, // past U+10FFFF
        FaultRow{"{\"a\":\"\xF5\x80\x80\x80\"}", "not UTF-8", 6, ""},
        FaultRow{"{\"a\":\"\x80\"}", "not UTF-8", 6, ""},
        FaultRow{repeated("[", 4097), "objects and arrays nested more than 4096 deep", 4096, ""}));

TEST(JsonFaultTest, findsNothingInGoodDocuments) {
    const std::vector<std::string> documents{"null",
                                             " true\r\n",
                                             "false",
                                             "-0",
                                             "0.5e-3",
                                             "1E+2",
                                             "18446744073709551615",
                                             "-9223372036854775808",
                                             "1e-999",
                                             R"("\"\\\/\b\f\n\r\té😀")",
                                             "\"\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80\"",
                                             "[]",
                                             "{}",
                                             R"({"a":[1,{"b":[]},"c"],"a":2})",
                                             repeated("[", 4096) + repeated("]", 4096)};
    for (const std::string& document : documents) {
        EXPECT_FALSE(findJsonFault(document).has_value()) << document.substr(0, 80);
    }
}

TEST(JsonFaultTest, givesTheIdThatStandsBeforeTheFault) {
    const auto idOf = [](std::string_view text) { return findJsonFault(text)->id.value_or("none"); };
    EXPECT_EQ(idOf(R"({"id":"P-1","tree":)"), "P-1");
    EXPECT_EQ(idOf(R"({"id":"\u00fc\ud83d\ude00\n","tree":)"), "\xC3\xBC\xF0\x9F\x98\x80\n");
    EXPECT_EQ(idOf(R"({"tree":{"id":"inner"},)"), "none");
    EXPECT_EQ(idOf(R"([{"id":"inner"},)"), "none");
    EXPECT_EQ(idOf(R"(["id",)"), "none");
    EXPECT_EQ(idOf(R"({"id":7,"tree":)"), "none");
    EXPECT_EQ(idOf(R"({"id":"a","id":"b","tree":)"), "none");
    EXPECT_EQ(idOf(R"({"tree":x,"id":"behind"})"), "none");
}

TEST(JsonFaultTest, positionCountsLinesAndCharacters) {
    const std::string_view text = "ab\nc\xC3\xBC\xF0\x9F\x98\x80"
                                  "d";
    const auto position = [&](std::size_t offset) {
        const TextPosition found = positionOf(text, offset);
        return std::to_string(found.line) + ":" + std::to_string(found.column);
    };
    EXPECT_EQ(position(0), "1:1");
    EXPECT_EQ(position(2), "1:3");
    EXPECT_EQ(position(3), "2:1");
    EXPECT_EQ(position(6), "2:3");
    EXPECT_EQ(position(10), "2:4");
    EXPECT_EQ(position(text.size()), "2:5");
}

/// Every text made of these pieces, up to a length: the scanner and the parser agree on what is a document.
TEST(JsonFaultTest, agreesWithTheParserOnSmallTexts) {
    const std::vector<std::string> pieces{"{",     "}", "[", "]", ",",    ":",
                                          "\"a\"", "1", " ", "-", "true", "\xC3"};
    simdjson::dom::parser parser;
    std::size_t good = 0;
    std::size_t texts = 0;
    constexpr std::size_t length = 5;
    std::size_t count = 1;
    for (std::size_t position = 0; position < length; ++position) {
        count *= pieces.size() + 1;
    }
    for (std::size_t number = 0; number < count; ++number) {
        std::string text;
        for (std::size_t rest = number, position = 0; position < length;
             ++position, rest /= pieces.size() + 1) {
            const std::size_t piece = rest % (pieces.size() + 1);
            text += piece < pieces.size() ? pieces[piece] : "";
        }
        const bool isGood = parser.parse(text).error() == simdjson::SUCCESS;
        ASSERT_EQ(findJsonFault(text).has_value(), !isGood) << text;
        good += isGood ? 1 : 0;
        ++texts;
    }
    EXPECT_EQ(texts, 371293U);
    EXPECT_GT(good, 500U);
}

} // namespace
} // namespace quelt::host
