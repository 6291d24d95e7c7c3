#include "commands/RecordConverter.h"

#include "compiled/QueltCompiledBinaryWriter.h"
#include "compiled/QueltFltEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeLeaves.h"
#include "host/support/RandomContext.h"
#include "host/support/Samples.h"
#include "host/support/StructureDump.h"
#include "interchange/Base64.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

namespace quelt::host {
namespace {

using test::answerTo;
using test::contextOf;
using test::Padded;
using test::repeated;
using test::sampleContext;

class RecordConverterTest : public testing::Test {
protected:
    std::string answer(std::string_view line, ConvertOptions options = {}) {
        return answerTo(*context, line, options);
    }
    std::unique_ptr<LoadedContext> context = contextOf(sampleContext());
};

TEST_F(RecordConverterTest, answersWithTheMap) {
    EXPECT_EQ(
        answer(R"({"id": "P-1", "list": [{"option": "Colour", "of": "Bus", "in": ["Blue"]}], "mode": 2})"),
        R"({"id":"P-1","result":0,"map":[{"domain":2,"expression":{"kind":"filter","dictionary":"Bus","mode":1,)"
        R"("criteria":[{"option":"Colour","of":"Bus","in":["Blue"]}]}}]})");
    EXPECT_EQ(answer(R"({"id": "P-2", "tree": true, "change": true})"),
              R"({"id":"P-2","result":0,"map":[{"domain":2,"expression":{"kind":"change","global":true}}]})");
}

TEST_F(RecordConverterTest, answersFailuresWithCodeAndErrors) {
    EXPECT_EQ(
        answer(R"({"id": "P-1", "tree": null})"),
        R"({"id":"P-1","result":-2147467259,"code":"0x80004005","errors":["ERROR : unexpected"],"map":[]})");
    EXPECT_EQ(
        answer(R"({"id": "P-2", "tree": {"restriction": "x"}})"),
        R"({"id":"P-2","result":-2147418113,"code":"0x8000FFFF",)"
        R"("errors":["ERROR : No RestrictionEffLeaf Expected at this level.","ERROR : acceptVisitor Failed"],)"
        R"("map":[]})");
}

TEST_F(RecordConverterTest, showsTheInputAsTheConversionLeftIt) {
    EXPECT_EQ(
        answer(R"({"id": "P-1", "tree": {"restriction": "x"}})", {.withInput = true}),
        R"({"id":"P-1","result":-2147418113,"code":"0x8000FFFF",)"
        R"("errors":["ERROR : No RestrictionEffLeaf Expected at this level.","ERROR : acceptVisitor Failed"],)"
        R"("map":[],"input":{"tree":{"restriction":"x"}}})");
    EXPECT_EQ(answer(R"({"id": "P-2", "list": []})", {.withInput = true}),
              R"({"id":"P-2","result":0,"map":[],"input":{"list":[]}})");
}

TEST_F(RecordConverterTest, showsTheTrace) {
    EXPECT_EQ(
        answer(R"({"id": "P-1", "list": []})", {.withTrace = true}),
        R"({"id":"P-1","result":0,"map":[],"trace":[)"
        R"({"class":"QueltEeTarselMigrationServices","method":"ConvertEeGenericExprToEeExpr","level":1,"text":""},)"
        R"({"class":"QueltEeTarselMigrationServices","method":"ConvertEeGenericExprToEeExpr","level":0,)"
        R"("text":"This is a filter => generating filter : "},)"
        R"({"class":"QueltEeTarselMigrationServices","method":"ConvertEeGenericExprToEeExpr","level":2,"text":""}]})");
}

/// Domain 2 with the full view of one context, with the conjunction of these literals.
std::string compiledOf(const std::string& literals) {
    return R"("compiled": {"domains": [{"domain": 2, "views": [{"view": 0, "contexts": [)"
           R"({"dictionary": "7A6C0001-0000-4000-8000-000000000001", "dnf": [[)" +
           literals + "]]}]}]}]}";
}
constexpr const char* s_eco1 = R"({"eff": "ec000001-0000-4000-8000-000000000001"})";
constexpr const char* s_notEco2 = R"({"eff": "ec000001-0000-4000-8000-000000000002", "negated": true})";

TEST_F(RecordConverterTest, answersCompiledChangesWithOperationsAndContexts) {
    EXPECT_EQ(answer(R"({"id": "B-1", )" + compiledOf(std::string(s_eco1) + "," + s_notEco2) + "}"),
              R"({"id":"B-1","result":0,"operations":[)"
              R"({"effectivity":"ec000001-0000-4000-8000-000000000001","positive":1},)"
              R"({"effectivity":"ec000001-0000-4000-8000-000000000002","positive":0}],)"
              R"("contexts":["7a6c0001-0000-4000-8000-000000000001"]})");
}

TEST_F(RecordConverterTest, answersWhatWasFoundBeforeAFailure) {
    const std::string text =
        answer(R"({"id": "B-1", )" +
               compiledOf(std::string(s_eco1) +
                          R"(, {"option": "ec000001-0000-4000-8000-000000000003", "in": []})") +
               "}");
    EXPECT_NE(text.find(R"({"id":"B-1","result":-2147467259,"code":"0x80004005","errors":[)"
                        R"("ERROR: Unsupported content of compiled binary.","DEBUG: Input compiled binary )"),
              std::string::npos)
        << text;
    EXPECT_NE(
        text.find(R"("operations":[{"effectivity":"ec000001-0000-4000-8000-000000000001","positive":1}],)"
                  R"("contexts":["7a6c0001-0000-4000-8000-000000000001"]})"),
        std::string::npos)
        << text;
}

TEST_F(RecordConverterTest, binariesConvertAsWhatTheyAreCompiledFromDoes) {
    const std::string compiled =
        answer(R"({"id": "B-1", )" + compiledOf(s_notEco2) + "}", {.withInput = true, .withTrace = true});
    const std::size_t begin = compiled.find(R"("binary":")");
    ASSERT_NE(begin, std::string::npos) << compiled;
    const std::string body = compiled.substr(begin, compiled.find('}', begin) - begin);
    EXPECT_EQ(answer(R"({"id": "B-1", )" + body + "}", {.withInput = true, .withTrace = true}), compiled);
}

TEST_F(RecordConverterTest, binariesThatCannotBeReadFail) {
    EXPECT_EQ(answer(R"({"id": "B-1", "binary": "bm9uZQ=="})", {.withInput = true}),
              R"({"id":"B-1","result":-2147024809,"code":"0x80070057","errors":[)"
              R"("ERROR: Call to QueltCompiledBinaryParser::Read() has failed.",)"
              R"("DEBUG: Input compiled binary 6e6f6e65"],"operations":[],"contexts":[],)"
              R"("input":{"binary":"bm9uZQ=="}})");
    RecordConverter converter(*context, {});
    TextBuffer answers;
    Counts counts;
    converter.convert({}, Padded(R"({"id": "B-1", "binary": ""})").text(), answers, counts);
    EXPECT_EQ(counts.failed, 1U);
    EXPECT_EQ(converter.failures().mostFrequent().at(0).first,
              "ERROR: Call to QueltCompiledBinaryParser::Read() has failed.");
}

/// Names in a binary may be any bytes; answers are UTF-8 all the same.
TEST_F(RecordConverterTest, tracesNamesOfNoEncodingReadably) {
    auto option = std::make_unique<QueltEeCatOptionVar>("Engine", QueltInGuid());
    auto criterion = std::make_unique<QueltEeOptionEff>(option.get());
    ASSERT_EQ(criterion->addValue(option->addValue("V\xFC")), S_OK);
    auto dnf = std::make_unique<QueltDnf>();
    ASSERT_EQ(dnf->addConjunction(), S_OK);
    ASSERT_EQ(dnf->addLiteral((new QueltEeVarEffLeaf(criterion.release()))->getNodeRef()), S_OK);
    auto view = std::make_unique<QueltFltEffectivityView>();
    ASSERT_EQ(view->addContext(QueltInGuid(), dnf.release()), S_OK);
    auto domain = std::make_unique<QueltFltDomainEffectivity>();
    ASSERT_EQ(domain->addView(QueltExpressionView::full, view.release()), S_OK);
    QueltFltEffectivity effectivity;
    ASSERT_EQ(effectivity.addDomain(2, domain.release()), S_OK);
    QueltBioBuffer binary;
    ASSERT_EQ(QueltCompiledBinaryWriter::Write(effectivity, binary), S_OK);

    const std::string text =
        answer(R"({"id": "B-1", "binary": ")" + encodeBase64(binary.getBytes()) + "\"}", {.withTrace = true});
    EXPECT_TRUE(simdjson::validate_utf8(text));
    EXPECT_NE(text.find("V\xEF\xBF\xBD"), std::string::npos) << text;
}

TEST_F(RecordConverterTest, answersMalformedLinesWithTheirNumber) {
    RecordConverter converter(*context, {});
    TextBuffer answers;
    Counts counts;
    const auto convert = [&](const Line& line, std::string_view text) {
        converter.convert(line, Padded(text).text(), answers, counts);
    };
    convert({.number = 17}, R"({"lst": []})");
    convert({.number = 18}, R"({"id": "P-1", "lst": []})");
    convert({.number = 19}, R"({"id": "P-2", "tree": tru})");
    convert({.number = 20, .isUnfinished = true}, R"({"id": "P-3", "tree": )");
    convert({.number = 21, .isTooLong = true}, "");
    convert({.number = 22}, R"({"id": "P-4", "list": []})");
    EXPECT_EQ(answers.view(),
              R"({"line":17,"malformed":"unknown key 'lst' at /lst"})"
              "\n"
              R"({"line":18,"id":"P-1","malformed":"unknown key 'lst' at /lst"})"
              "\n"
              R"({"line":19,"id":"P-2","malformed":"not JSON at column 23: expected a value"})"
              "\n"
              R"({"line":20,"id":"P-3","malformed":"not JSON at column 23: the text ends too early )"
              R"-((the input's last line, without a line end)"})-"
              "\n"
              R"({"line":21,"malformed":"longer than 64 MiB"})"
              "\n"
              R"({"id":"P-4","result":0,"map":[]})"
              "\n");
    EXPECT_EQ(counts.malformed, 5U);
    EXPECT_EQ(counts.converted, 1U);
    EXPECT_EQ(counts.failed, 0U);
}

TEST_F(RecordConverterTest, quotesZeroCharactersWhole) {
    const std::string text = answer(R"({"id": "P-1", "ls\u0000t": []})");
    EXPECT_NE(text.find(R"(unknown key 'ls\u0000t' at /ls\u0000t"})"), std::string::npos) << text;
}

TEST_F(RecordConverterTest, firstErrorIsTheReasonOfAFailure) {
    RecordConverter converter(*context, {});
    TextBuffer answers;
    Counts counts;
    for (const char* const tree : {"null", R"({"restriction": "x"})", "null"}) {
        converter.convert({}, Padded(R"({"id": "x", "tree": )" + std::string(tree) + "}").text(), answers,
                          counts);
    }
    EXPECT_EQ(counts.failed, 3U);
    const auto reasons = converter.failures().mostFrequent();
    ASSERT_EQ(reasons.size(), 2U);
    EXPECT_EQ(reasons[0], (std::pair<std::string_view, std::uint64_t>("ERROR : unexpected", 2)));
    EXPECT_EQ(reasons[1], (std::pair<std::string_view, std::uint64_t>(
                              "ERROR : No RestrictionEffLeaf Expected at this level.", 1)));
}

/// Trees as deep as may be, of every operator, on a thread with the stack that threads have.
TEST_F(RecordConverterTest, deepestTreesConvertOnAnyThread) {
    constexpr std::size_t levels = 999;
    const std::vector<std::string> trees{
        repeated(R"({"and":[)", levels) + "true" + repeated("]}", levels),
        repeated(R"({"or":[)", levels) + R"({"option":"Engine","of":"Truck","in":["V6"]})" +
            repeated("]}", levels),
        repeated(R"({"not":)", levels) + "false" + repeated("}", levels),
        R"({"not":)" + repeated(R"({"notDomain":)", levels - 1) + R"({"date":[]})" + repeated("}", levels),
        R"({"and":[)" + repeated(R"({"or":[true,)", levels - 1) + R"({"eff":"ECO-1"})" +
            repeated("]}", levels)};
    for (const std::string& tree : trees) {
        for (const char* const change : {"", R"(,"change":true)", R"(,"branch":true)"}) {
            const std::string line = R"({"id":"x","tree":)" + tree + change + "}";
            std::string answer;
            std::thread([&] {
                answer = answerTo(*context, line, {.withInput = true, .withTrace = true});
            }).join();
            EXPECT_EQ(answer.find("malformed"), std::string::npos) << answer.substr(0, 200);
            EXPECT_NE(answer.find(tree), std::string::npos) << answer.substr(0, 200);
        }
    }
}

constexpr const char* s_branchingContext = R"({"format": "quelt-context/1",
 "dictionaries": [{"name": "Truck", "guid": "00000000-0000-4000-8000-000000000001", "variables": [
   {"kind": "option", "name": "Engine", "guid": "00000000-0000-4000-8000-000000000002", "values": ["V6"]},
   {"kind": "serial", "name": "Unit", "guid": "00000000-0000-4000-8000-000000000003", "externalType": 99},
   {"kind": "treeSeries", "name": "Line", "guid": "00000000-0000-4000-8000-000000000004", "number": 18,
    "elements": [{"seq": 1}, {"seq": 5, "parent": 1}]}]}],
 "effectivities": [
  {"kind": "predefined", "name": "GOOD", "guid": "00000000-0000-4000-8000-000000000011",
   "expression": {"multiModel": {"kind": "change", "criteria": [
     {"dictionary": "Truck", "own": {"serial": "Unit", "in": [[5, 5]]}}]}}},
  {"kind": "predefined", "name": "BAD", "guid": "00000000-0000-4000-8000-000000000012",
   "expression": {"multiModel": {"kind": "effectivity", "criteria": [
     {"dictionary": "Truck", "own": {"eff": "GOOD"}}],
     "operations": [{"kind": 1, "effectivity": "WORSE"}]}}},
  {"kind": "predefined", "name": "WORSE", "guid": "00000000-0000-4000-8000-000000000013",
   "expression": {"multiModel": {"kind": "change", "criteria": [
     {"dictionary": "Truck", "own": {"serial": "Unit", "in": [[6, 6]]}}]}}},
  {"kind": "basic", "name": "BASE", "guid": "00000000-0000-4000-8000-000000000014", "inheritedIn": ["Truck"],
   "expression": {"tree": {"serial": "Unit", "in": [[5, 5]]}}}]})";

TEST(RecordConverterBranchTest, answersOfBothServicesStandTogether) {
    const std::unique_ptr<LoadedContext> context = contextOf(s_branchingContext);
    EXPECT_EQ(
        answerTo(*context, R"({"id":"x","tree":{"serial":"Unit","in":[[1,5]]},"branch":true})"),
        R"({"id":"x","result":0,"branchResult":0,"map":[{"domain":2,"expression":{"kind":"effectivity",)"
        R"("criteria":[{"dictionary":"Truck","own":{"treeSeries":"Line","of":"Truck",)"
        R"("in":[{"from":1,"to":5}]}}]}}]})");
    EXPECT_EQ(
        answerTo(*context, R"({"id":"x","list":[],"named":["GOOD"],"branch":true})"),
        R"({"id":"x","result":0,"branchResult":1,)"
        R"("warnings":["WARNING : Case of a filter with pure changes, all dictionaries of the first change will be )"
        R"(assigned to the possible list of MD for the filter."],)"
        R"("map":[{"domain":2,"expression":{"kind":"filter","dictionary":"Truck","criteria":[],)"
        R"("named":["GOOD"]}}]})");
    EXPECT_EQ(
        answerTo(*context, R"({"id":"x","tree":null,"branch":true})"),
        R"({"id":"x","result":-2147467259,"code":"0x80004005","errors":["ERROR : unexpected"],"map":[]})")
        << "a conversion that failed is not followed by branching";
    EXPECT_EQ(
        answerTo(*context, R"({"id":"x","tree":{"eff":"BASE"},"basicEff":"BASE","branch":true})"),
        R"({"id":"x","result":0,"branchResult":1,"map":[{"domain":2,"expression":{"kind":"effectivity",)"
        R"("criteria":[{"dictionary":"Truck","inherited":{"eff":"BASE","of":"Truck"}}]}}]})")
        << "the dictionaries of the context's effectivity are those of the one that the record works on";
    EXPECT_EQ(
        answerTo(*context, R"({"id":"x","tree":{"option":"Engine","in":["V6"]},"basicEff":"BASE"})",
                 {.branchesAll = true}),
        R"({"id":"x","result":0,"branchResult":0,"map":[{"domain":2,"expression":{"kind":"effectivity",)"
        R"("criteria":[{"dictionary":"Truck","own":{"option":"Engine","of":"Truck","in":["V6"]}}]}}]})");
}

TEST(RecordConverterBranchTest, reasonsAndCountsAreThoseOfWhatFailed) {
    const std::unique_ptr<LoadedContext> context = contextOf(s_branchingContext);
    RecordConverter converter(*context, {});
    TextBuffer answers;
    Counts counts;
    for (const char* const body :
         {R"("tree":{"serial":"Unit","in":[[6,6]]},"branch":true)",
          R"("tree":{"serial":"Unit","in":[[5,5]]},"branch":true)", R"("tree":null,"branch":true)",
          R"("tree":{"serial":"Unit","in":[[6,6]]},"branch":false)"}) {
        converter.convert({}, Padded(R"({"id":"x",)" + std::string(body) + "}").text(), answers, counts);
    }
    EXPECT_EQ(counts.converted, 2U);
    EXPECT_EQ(counts.failed, 2U);
    const auto reasons = converter.failures().mostFrequent();
    ASSERT_EQ(reasons.size(), 2U);
    EXPECT_EQ(reasons[0].first, "ERROR : No tree element found for this sequence number : 6");
    EXPECT_EQ(reasons[1].first, "ERROR : unexpected");
}

/// Branching rewrites the expressions of effectivities, and a failure leaves them without.
TEST(RecordConverterBranchTest, noRecordSeesWhatAnotherHasDone) {
    std::vector<std::string> lines;
    for (const char* const body :
         {R"("list":[],"named":["BAD"])", R"("list":[],"named":["WORSE"])", R"("list":[],"named":["GOOD"])",
          R"("list":[],"named":["BAD","GOOD"])", R"("tree":{"eff":"BAD"})", R"("tree":{"eff":"BASE"})",
          R"("tree":{"and":[{"option":"Engine","in":["V6"]},{"eff":"GOOD"},{"eff":"WORSE"}]})"}) {
        for (const char* const branch : {"", R"(,"branch":true)"}) {
            lines.push_back(R"({"id":"x",)" + std::string(body) + branch + "}");
        }
    }
    std::vector<std::string> alone;
    for (const std::string& line : lines) {
        alone.push_back(
            answerTo(*contextOf(s_branchingContext), line, {.withInput = true, .withTrace = true}));
    }
    const std::unique_ptr<LoadedContext> context = contextOf(s_branchingContext);
    const std::string before = test::dump(*context);
    const auto convertAll = [&] {
        RecordConverter converter(*context, {.withInput = true, .withTrace = true});
        for (int round = 0; round < 20; ++round) {
            for (std::size_t i = 0; i < lines.size(); ++i) {
                const std::size_t at = round % 2 == 0 ? i : lines.size() - 1 - i;
                TextBuffer answers;
                Counts counts;
                converter.convert({}, Padded(lines[at]).text(), answers, counts);
                EXPECT_EQ(answers.view(), alone[at] + "\n");
            }
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(convertAll);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(test::dump(*context), before);
}

/// Thousands of effectivities, each with an expression that refers to the next one.
TEST(RecordConverterBranchTest, chainsOfEffectivitiesEndOnAnyThread) {
    std::string json = R"({"format":"quelt-context/1","dictionaries":[],"effectivities":[)";
    constexpr int length = 10'000;
    for (int i = 0; i < length; ++i) {
        json += (i > 0 ? R"(,{"kind":"predefined","name":"E)" : R"({"kind":"predefined","name":"E)") +
                std::to_string(i) + R"(","guid":"00000000-0000-4000-8000-000000000001","expression":)" +
                (i % 2 == 0 ? R"({"tree":{"eff":"E)" : R"({"list":[],"named":["E)") +
                std::to_string((i + 1) % length) + (i % 2 == 0 ? R"("}}})" : R"("]}})");
    }
    const std::unique_ptr<LoadedContext> context = contextOf(json + "]}");
    std::string answer;
    std::thread([&] {
        answer = answerTo(*context, R"({"id":"x","tree":{"eff":"E0"}})", {.branchesAll = true});
    }).join();
    EXPECT_TRUE(answer.starts_with(R"({"id":"x","result":0,"branchResult":-2147024882,"code":"0x8007000E")"))
        << answer.substr(0, 200);
    std::thread([&] { answer = answerTo(*context, R"({"id":"x","tree":{"eff":"E0"}})"); }).join();
    EXPECT_EQ(answer.find("branchResult"), std::string::npos);
}

/// Every record sees the context as the file has it, whatever came before.
TEST(RecordConverterContextTest, contextStaysAsItIs) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        test::RandomContext random(seed);
        const std::string before = test::dump(random.context());
        std::vector<std::string> lines;
        for (unsigned number = 0; number < 25; ++number) {
            lines.push_back(random.record(number, number % 2 == 0, number % 3 != 0));
        }
        std::vector<std::string> answers;
        std::vector<std::string> answersBackwards;
        for (const std::string& line : lines) {
            answers.push_back(answerTo(random.context(), line, {.withInput = true}));
        }
        std::for_each(lines.rbegin(), lines.rend(), [&](const std::string& line) {
            answersBackwards.push_back(answerTo(random.context(), line, {.withInput = true}));
        });
        std::reverse(answersBackwards.begin(), answersBackwards.end());
        EXPECT_EQ(answers, answersBackwards);
        EXPECT_EQ(test::dump(random.context()), before);
    }
}

} // namespace
} // namespace quelt::host
