#include "interchange/AnswerWriter.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "host/support/Samples.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInResult.h"
#include "interchange/ExpressionReader.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::contextOf;
using test::sampleContext;

QueltInTraceLine line(std::string_view text, int level = 0, std::string_view method = "convert") {
    QueltInTraceLine result;
    result.className = "Service";
    result.domainName = "QueltDataMigration";
    result.methodName = method;
    result.level = level;
    result.text = text;
    return result;
}

class AnswerWriterTest : public testing::Test {
protected:
    std::string written(const Answer& answer) {
        TextBuffer buffer;
        JsonWriter writer(buffer);
        AnswerWriter(*context).write(writer, answer);
        return std::string(buffer.view());
    }
    std::unique_ptr<LoadedContext> context = contextOf(sampleContext());
};

TEST_F(AnswerWriterTest, successIsShort) {
    EXPECT_EQ(written({.id = "P-1"}), R"({"id":"P-1","result":0,"map":[]})");
    EXPECT_EQ(written({.id = "\"\n\xC3\xBC", .result = 1}), R"({"id":"\"\n)"
                                                            "\xC3\xBC"
                                                            R"(","result":1,"map":[]})");
}

TEST_F(AnswerWriterTest, failureHasACode) {
    EXPECT_EQ(written({.id = "x", .result = E_FAIL}),
              R"({"id":"x","result":-2147467259,"code":"0x80004005","map":[]})");
    EXPECT_EQ(formatCode(E_NOTIMPL), "0x80004001");
    EXPECT_EQ(formatCode(E_UNEXPECTED), "0x8000FFFF");
    EXPECT_EQ(formatCode(E_ALREADYTHERE), "0x800700B7");
}

TEST_F(AnswerWriterTest, theCodeIsThatOfTheResultThatFailed) {
    EXPECT_EQ(written({.id = "x", .result = 3, .branchResult = 1}),
              R"({"id":"x","result":3,"branchResult":1,"map":[]})");
    EXPECT_EQ(written({.id = "x", .result = 0, .branchResult = E_OUTOFMEMORY}),
              R"({"id":"x","result":0,"branchResult":-2147024882,"code":"0x8007000E","map":[]})");
    EXPECT_EQ(decisiveResult({.result = 3}), 3);
    EXPECT_EQ(decisiveResult({.result = E_FAIL}), E_FAIL);
    EXPECT_EQ(decisiveResult({.result = 3, .branchResult = 0}), 0);
    EXPECT_EQ(decisiveResult({.result = 3, .branchResult = E_FAIL}), E_FAIL);
}

TEST_F(AnswerWriterTest, errorsAndWarningsComeInOrderBesideAnyResult) {
    const std::vector<QueltInTraceLine> lines{line("WARNING : first"), line("[ERROR] src/A.cpp(3)"),
                                              line("        ERROR : deep"), line("WARNING : second"),
                                              line("ERROR : plain")};
    EXPECT_EQ(written({.id = "x", .lines = lines}),
              R"({"id":"x","result":0,"errors":["ERROR : deep","ERROR : plain"],)"
              R"("warnings":["WARNING : first","WARNING : second"],"map":[]})");
}

TEST_F(AnswerWriterTest, traceShowsEveryLineOfTheModule) {
    std::vector<QueltInTraceLine> lines{line("", 1),
                                        line("text"),
                                        line("[ERROR] src/A.cpp(3)", 0, ""),
                                        line("        ERROR : deep", 0, ""),
                                        line("", 2),
                                        line("elsewhere")};
    lines.back().domainName = "QueltCore";
    EXPECT_EQ(written({.id = "x", .lines = lines, .showTrace = true}),
              R"({"id":"x","result":0,"errors":["ERROR : deep"],"map":[],"trace":[)"
              R"({"class":"Service","method":"convert","level":1,"text":""},)"
              R"({"class":"Service","method":"convert","level":0,"text":"text"},)"
              R"({"class":"Service","method":"","level":0,"text":"ERROR : deep"},)"
              R"({"class":"Service","method":"convert","level":2,"text":""}]})");
    EXPECT_EQ(written({.id = "x", .showTrace = true}), R"({"id":"x","result":0,"map":[],"trace":[]})");
}

TEST_F(AnswerWriterTest, mapStandsInItsOrder) {
    QueltInMap map(QueltInIntHolder::sType(), QueltEeExpression::sType());
    QueltEeEffectivityExpression effectivity;
    effectivity.setGlobalCriteria((new QueltEeTrue())->getNodeRef());
    QueltInObject* change = context->findEffectivity("ECO-1");
    effectivity.addOperation(QueltEeExpressionOperation::OperationKind::apply, change);
    const QueltEeFilterExpression filter(context->findDictionary("Bus"), new QueltQmSpecList());
    map.Put(QueltInIntHolder(3), effectivity);
    map.Put(QueltInIntHolder(1), filter);
    EXPECT_EQ(written({.id = "x", .map = &map}),
              R"({"id":"x","result":0,"map":[{"domain":3,"expression":{"kind":"effectivity","global":true,)"
              R"("operations":[{"kind":1,"effectivity":"ECO-1"}]}},)"
              R"({"domain":1,"expression":{"kind":"filter","dictionary":"Bus","criteria":[]}}]})");
}

TEST_F(AnswerWriterTest, inputStandsInTheRecordsForm) {
    const QueltEeGenericExpression tree((new QueltEeFalse())->getNodeRef());
    EXPECT_EQ(written({.id = "x", .input = &tree}),
              R"({"id":"x","result":0,"map":[],"input":{"tree":false}})");
    const QueltEeGenericExpression nothing;
    EXPECT_EQ(written({.id = "x", .input = &nothing}),
              R"({"id":"x","result":0,"map":[],"input":{"tree":null}})");
    const QueltEeGenericExpression list(new QueltQmSpecList(),
                                        QueltEeGenericExpression::ListMode::atLeastOne);
    EXPECT_EQ(written({.id = "x", .input = &list}),
              R"({"id":"x","result":0,"map":[],"input":{"list":[],"mode":2}})");
}

TEST_F(AnswerWriterTest, malformedLines) {
    const auto malformed = [](std::uint64_t number, std::optional<std::string_view> id,
                              std::string_view what) {
        TextBuffer buffer;
        JsonWriter writer(buffer);
        AnswerWriter::writeMalformed(writer, number, id, what);
        return std::string(buffer.view());
    };
    EXPECT_EQ(malformed(17, std::nullopt, "unknown key 'lst' at /lst"),
              R"({"line":17,"malformed":"unknown key 'lst' at /lst"})");
    EXPECT_EQ(malformed(5'000'000'000, "", "x"), R"({"line":5000000000,"id":"","malformed":"x"})");
}

} // namespace
} // namespace quelt::host
