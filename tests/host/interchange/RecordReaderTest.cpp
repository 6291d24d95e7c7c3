#include "interchange/RecordReader.h"

#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "host/support/Samples.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::contextOf;
using test::Padded;
using test::refusalOf;
using test::repeated;
using test::sampleContext;

/// Reads lines with the sample context.
class RecordReaderTest : public testing::Test {
protected:
    Record read(std::string_view line) {
        m_lines.emplace_back(line);
        return RecordReader(*context).read(m_parser.parse(m_lines.back().text()));
    }
    /// The expression of the record with this body.
    std::string readExpression(const std::string& body) {
        return std::string(read(R"({"id": "x", )" + body + "}").expression->toString().view());
    }
    std::string readCriterion(const std::string& criterion) {
        const std::string text = readExpression(R"("tree": )" + criterion);
        return text.substr(8, text.size() - 9); // without "generic(" and ")"
    }

    std::unique_ptr<LoadedContext> context = contextOf(sampleContext());

private:
    JsonParser m_parser;
    std::vector<Padded> m_lines;
};

TEST_F(RecordReaderTest, readsWhatIsToBeDone) {
    const Record plain = read(R"({"id": "P-1", "tree": true})");
    EXPECT_EQ(plain.id, "P-1");
    EXPECT_FALSE(plain.isChange);
    EXPECT_EQ(plain.basicEffectivity, nullptr);
    const Record full =
        read(R"({"basicEff": "EFF-7", "branch": false, "change": true, "tree": true, "id": ""})");
    EXPECT_EQ(full.id, "");
    EXPECT_TRUE(full.isChange);
    EXPECT_EQ(full.basicEffectivity, context->findEffectivity("EFF-7"));
    EXPECT_FALSE(full.isBranched);
}

TEST_F(RecordReaderTest, whatIsBranchedRefersToEffectivitiesOfItsOwn) {
    const auto targetOf = [](const Record& record) {
        return QueltEeEffLeaf::cast(record.expression->GetNodeRef()->getNode())->getTargetEff();
    };
    constexpr const char* line = R"({"id": "x", "tree": {"eff": "EFF-7"}, "basicEff": "EFF-7"})";
    const QueltEeEffectivity* const shared = context->findEffectivity("EFF-7");
    EXPECT_EQ(targetOf(read(line)), shared);
    const Record asked =
        read(R"({"id": "x", "branch": true, "basicEff": "EFF-7", "tree": {"eff": "EFF-7"}})");
    EXPECT_TRUE(asked.isBranched);
    EXPECT_NE(targetOf(asked), shared);
    EXPECT_EQ(&targetOf(asked)->getOrigin(), shared);
    EXPECT_EQ(targetOf(asked), asked.basicEffectivity);
    const Padded text(line);
    JsonParser parser;
    const Record all = RecordReader(*context, true).read(parser.parse(text.text()));
    EXPECT_TRUE(all.isBranched);
    EXPECT_EQ(&targetOf(all)->getOrigin(), shared);
    EXPECT_NE(targetOf(all), targetOf(asked)) << "each record has its own";
}

TEST_F(RecordReaderTest, readsEveryNode) {
    EXPECT_EQ(readCriterion("true"), "TRUE");
    EXPECT_EQ(readCriterion("false"), "FALSE");
    EXPECT_EQ(readCriterion(R"({"and": [true, {"or": []}, {"not": false}]})"), "AND(TRUE, OR(), NOT(FALSE))");
    EXPECT_EQ(readCriterion(R"({"notDomain": {"not": {"option": "Engine", "in": ["V6"]}}})"),
              "NOTDOMAIN(NOT(Engine in {V6}))");
    EXPECT_EQ(readCriterion(R"({"eff": "ECO-1"})"), "eff(ECO-1)");
    EXPECT_EQ(readCriterion(R"({"eff": "ECO-1", "of": "Truck", "negated": false})"), "eff(ECO-1, Truck)");
    EXPECT_EQ(readCriterion(R"({"eff": "ECO-1", "of": "Truck", "negated": true})"),
              "not (eff(ECO-1, Truck))");
    EXPECT_EQ(readCriterion(R"({"restriction": "Largo"})"), "restriction(Largo)");
}

TEST_F(RecordReaderTest, readsEmptyPlaces) {
    const Record record = read(R"({"id": "x", "tree": {"and": [{"empty": true}, {"not": null}]}})");
    const auto* const root = QueltEeAndOp::cast(record.expression->GetNodeRef()->getNode());
    ASSERT_NE(root, nullptr);
    ASSERT_EQ(root->getChildren().GetLength(), 2);
    const auto* const leaf =
        QueltEeVarEffLeaf::cast(QueltEeNodeRef::cast(root->getChildren().Get(0))->getNode());
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->getVarEff(), nullptr);
    const auto* const inverse =
        QueltEeNotOp::cast(QueltEeNodeRef::cast(root->getChildren().Get(1))->getNode());
    ASSERT_NE(inverse, nullptr);
    EXPECT_EQ(inverse->getChildRef(), nullptr);
    EXPECT_EQ(read(R"({"id": "x", "tree": null})").expression->GetNodeRef(), nullptr);
}

TEST_F(RecordReaderTest, readsNamedValues) {
    // The order and the repetitions are those of the record.
    EXPECT_EQ(readCriterion(R"({"option": "Engine", "in": ["V8", "V6", "V8"]})"), "Engine in {V8, V6, V8}");
    EXPECT_EQ(readCriterion(R"({"in": [], "selection": "Package"})"), "Package in {}");
    EXPECT_EQ(readCriterion(R"({"option": "Engine", "in": ["V6"], "negated": true})"),
              "not (Engine in {V6})?");
    EXPECT_EQ(readCriterion(R"({"option": "Engine", "in": ["V6"], "noVar": true})"), "Engine in {V6}?");
}

TEST_F(RecordReaderTest, flagsAreStoredAsGiven) {
    const auto flagsOf = [this](const char* flags) {
        const Record record =
            read(R"({"id": "x", "tree": {"option": "Engine", "in": ["V6"])" + std::string(flags) + "}}");
        const auto* const leaf = QueltEeVarEffLeaf::cast(record.expression->GetNodeRef()->getNode());
        return std::pair(leaf->getVarEff()->isNegated() != 0, leaf->getVarEff()->getNoVar() != 0);
    };
    EXPECT_EQ(flagsOf(""), std::pair(false, false));
    EXPECT_EQ(flagsOf(R"(, "negated": true)"), std::pair(true, false));
    EXPECT_EQ(flagsOf(R"(, "noVar": true)"), std::pair(false, true));
    EXPECT_EQ(flagsOf(R"(, "negated": true, "noVar": true)"), std::pair(true, true));
    EXPECT_EQ(flagsOf(R"(, "negated": false, "noVar": false)"), std::pair(false, false));
}

TEST_F(RecordReaderTest, readsSerialIntervals) {
    EXPECT_EQ(readCriterion(R"({"serial": "Unit", "in": [[10, 20], [30, null], [null, 5], [null, null]]})"),
              "Unit in [10, 20] | [30, +inf] | [-inf, 5] | [-inf, +inf]");
    EXPECT_EQ(readCriterion(
                  R"({"serial": "Unit", "in": [{"from": 10, "to": 20, "fromIncl": false, "toIncl": true}]})"),
              "Unit in (10, 20]");
    EXPECT_EQ(
        readCriterion(
            R"({"serial": "Unit", "in": [{"from": null, "to": 20, "toIncl": false}, {"from": 1, "to": 2}]})"),
        "Unit in [-inf, 20) | [1, 2]");
    EXPECT_EQ(
        readCriterion(R"({"serial": "Unit", "in": [[2147483647, -2147483648], [-2000000000, 2000000000]]})"),
        "Unit in [2147483647, -2147483648] | [-inf, +inf]");
}

TEST_F(RecordReaderTest, readsTreeSeriesSelections) {
    EXPECT_EQ(
        readCriterion(
            R"({"treeSeries": "Line", "in": [{"single": 5}, {"from": 5, "to": 7}, {"from": 7}, {"to": 7}]})"),
        "Line in [5] | [5, 7] | [7, +inf] | [-inf, 7]");
    EXPECT_EQ(readCriterion(R"({"treeSeries": "Line", "in": [{"single": 5, "singleIncl": false},
                               {"from": 5, "fromIncl": false, "to": 7, "toIncl": false}, {"to": 7, "toIncl": true}]})"),
              "Line in (5) | (5, 7) | [-inf, 7]");
}

TEST_F(RecordReaderTest, readsDates) {
    EXPECT_EQ(
        readCriterion(
            R"({"date": [["2020-01-01", "2021-01-01"], ["2024-06-01", null], [null, "1999-12-31T23:59:59Z"]]})"),
        "date in [2020-01-01, 2021-01-01) | [2024-06-01, +inf) | [-inf, 1999-12-31T23:59:59Z)");
    EXPECT_EQ(readCriterion(R"({"date": [["2020-01-01", null]], "noVar": true})"),
              "date in [2020-01-01, +inf)?");
}

TEST_F(RecordReaderTest, ofSaysWhichVariable) {
    const auto variableOf = [this](const char* criterion) {
        const Record record = read(R"({"id": "x", "list": [)" + std::string(criterion) + "]}");
        const QueltQmSpecList* list = nullptr;
        record.expression->GetList(list);
        return QueltEeVarEff::cast(list->getVarEffs().cBegin().GetValGoToNext())->getVar();
    };
    const QueltEeModelDico& truck = *context->findDictionary("Truck");
    const QueltEeModelDico& bus = *context->findDictionary("Bus");
    EXPECT_EQ(variableOf(R"({"option": "Engine", "in": []})"), truck.getVariable("Engine"));
    EXPECT_EQ(variableOf(R"({"option": "Engine", "of": "Bus", "in": []})"), bus.getVariable("Engine"));
    EXPECT_EQ(variableOf(R"({"option": "Loose", "in": []})"), context->findTopVariable("Loose"));
    EXPECT_EQ(variableOf(R"({"option": "Loose", "of": null, "in": []})"), context->findTopVariable("Loose"));
    EXPECT_EQ(variableOf(R"({"option": "Seats", "of": null, "in": []})"), context->findTopVariable("Seats"));
    EXPECT_EQ(variableOf(R"({"option": "Seats", "of": "Bus", "in": []})"), bus.getVariable("Seats"));
    EXPECT_EQ(variableOf(R"({"option": null, "in": []})"), nullptr);
    EXPECT_EQ(variableOf(R"({"selection": null, "in": []})"), nullptr);
    EXPECT_EQ(variableOf(R"({"serial": null, "in": [[1, 2]]})"), nullptr);
    EXPECT_EQ(variableOf(R"({"treeSeries": null, "in": []})"), nullptr);
}

TEST_F(RecordReaderTest, readsLists) {
    EXPECT_EQ(readExpression(R"("list": [{"option": "Engine", "in": ["V6"]}])"),
              "generic(all: Engine in {V6})");
    EXPECT_EQ(
        readExpression(R"("list": [{"option": "Engine", "in": ["V6"]}, {"serial": "Unit", "in": [[1, 2]]}],
                                 "named": ["ECO-2", "EFF-7"], "mode": 2)"),
        "generic(at least one: Engine in {V6}, Unit in [1, 2], eff(ECO-2), eff(EFF-7))");
}

TEST_F(RecordReaderTest, emptyListIsAList) {
    const Record record = read(R"({"id": "x", "list": []})");
    const QueltQmSpecList* list = nullptr;
    EXPECT_EQ(record.expression->GetList(list), 0);
    ASSERT_NE(list, nullptr);
    EXPECT_NE(list->getVarEffs().IsEmpty(), 0);
    EXPECT_NE(list->getNamedEffectivities().IsEmpty(), 0);
}

TEST_F(RecordReaderTest, listWithoutListKeepsItsMode) {
    const Record record = read(R"({"id": "x", "list": null, "mode": 7, "named": []})");
    const QueltQmSpecList* list = nullptr;
    auto mode = QueltEeGenericExpression::ListMode::all;
    EXPECT_NE(record.expression->IsList(), 0);
    EXPECT_EQ(record.expression->GetList(list), 0);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(record.expression->GetMode(mode), 0);
    EXPECT_EQ(static_cast<int>(mode), 7);
}

TEST(RecordReaderIdTest, idIsFoundWhateverElseIsWrong) {
    JsonParser parser;
    const auto idOf = [&parser](const char* text) {
        const Padded padded(text);
        return std::string(RecordReader::findId(parser.parse(padded.text())).value_or("none"));
    };
    EXPECT_EQ(idOf(R"({"lst": [], "id": "P-1"})"), "P-1");
    EXPECT_EQ(idOf(R"({"id": 5})"), "none");
    EXPECT_EQ(idOf(R"({"id": "a", "id": "b"})"), "none");
    EXPECT_EQ(idOf(R"({"id": "a", "id": 5})"), "none");
    EXPECT_EQ(idOf(R"([{"id": "a"}])"), "none");
    EXPECT_EQ(idOf("7"), "none");
    EXPECT_EQ(idOf("{}"), "none");
}

struct RefusalRow {
    std::string line;
    std::string refusal;
};
class RecordRefusalTest : public testing::TestWithParam<RefusalRow> {};

TEST_P(RecordRefusalTest, namesWhatIsWrongAndWhere) {
    EXPECT_EQ(refusalOf(GetParam().line), GetParam().refusal);
}

/// A record with this tree, with a list of this one criterion.
std::string tree(const std::string& node) {
    return R"({"id": "x", "tree": )" + node + "}";
}
std::string list(const std::string& criterion) {
    return R"({"id": "x", "list": [)" + criterion + "]}";
}

INSTANTIATE_TEST_SUITE_P(
    records, RecordRefusalTest,
    testing::Values(
        RefusalRow{"[]", "expected an object, found an array at the root"},
        RefusalRow{"null", "expected an object, found null at the root"},
        RefusalRow{"\"x\"", "expected an object, found text at the root"},
        RefusalRow{R"({"tree": true})", "missing key 'id' at the root"},
        RefusalRow{R"({"id": null, "tree": true})", "expected text, found null at /id"},
        RefusalRow{R"({"id": 7, "tree": true})", "expected text, found a number at /id"},
        RefusalRow{R"({"id": "x", "id": "x", "tree": true})", "key 'id' given twice at /id"},
        RefusalRow{R"({"id": "x"})", "expected 'tree', 'list', 'binary' or 'compiled' at the root"},
        RefusalRow{R"({"id": "x", "lst": []})", "unknown key 'lst' at /lst"},
        RefusalRow{R"({"id": "x", "in": []})", "unknown key 'in' at /in"},
        RefusalRow{R"({"id": "x", "multiModel": {}})", "unknown key 'multiModel' at /multiModel"},
        RefusalRow{R"({"id": "x", "tree": true, "list": []})",
                   "key 'list' does not belong to 'tree' at /list"},
        RefusalRow{R"({"id": "x", "mode": 1, "tree": true})",
                   "key 'mode' does not belong to 'tree' at /mode"},
        RefusalRow{R"({"id": "x", "named": [], "tree": true})",
                   "key 'named' does not belong to 'tree' at /named"},
        RefusalRow{R"({"id": "x", "list": [], "binary": ""})",
                   "key 'binary' does not belong to 'list' at /binary"},
        RefusalRow{R"({"id": "x", "compiled": {}, "tree": true})",
                   "key 'compiled' does not belong to 'tree' at /compiled"},
        RefusalRow{R"({"id": "x", "compiled": {}, "binary": ""})",
                   "key 'compiled' does not belong to 'binary' at /compiled"},
        RefusalRow{R"({"id": "x", "binary": "", "change": true})",
                   "key 'change' does not belong to 'binary' at /change"},
        RefusalRow{R"({"id": "x", "binary": "", "basicEff": "EFF-7"})",
                   "key 'basicEff' does not belong to 'binary' at /basicEff"},
        RefusalRow{R"({"id": "x", "binary": "", "branch": false})",
                   "key 'branch' does not belong to 'binary' at /branch"},
        RefusalRow{R"({"id": "x", "compiled": {}, "mode": 1})",
                   "key 'mode' does not belong to 'compiled' at /mode"},
        RefusalRow{R"({"id": "x", "compiled": {}, "branch": true})",
                   "key 'branch' does not belong to 'compiled' at /branch"},
        RefusalRow{R"({"id": "x", "binary": null})", "expected text, found null at /binary"},
        RefusalRow{R"({"id": "x", "binary": "A-A="})",
                   "not base64: character 2 has no meaning there at /binary"},
        RefusalRow{R"({"id": "x", "compiled": {"domains": [{"domain": 2}]}})",
                   "missing key 'views' at /compiled/domains/0"},
        RefusalRow{R"({"id": "x", "tree": true, "branch": 1})",
                   "expected true or false, found a number at /branch"},
        RefusalRow{R"({"id": "x", "tree": true, "change": "yes"})",
                   "expected true or false, found text at /change"},
        RefusalRow{R"({"id": "x", "tree": true, "basicEff": "X"})", "no effectivity 'X' at /basicEff"},
        RefusalRow{R"({"id": "x", "tree": true, "basicEff": "ECO-1"})",
                   "'ECO-1' is not a basic effectivity at /basicEff"},
        RefusalRow{R"({"id": "x", "tree": true, "basicEff": null})",
                   "expected text, found null at /basicEff"},
        RefusalRow{R"({"id": "x", "list": {}})", "expected an array, found an object at /list"},
        RefusalRow{R"({"id": "x", "list": [], "mode": "all"})",
                   "expected a whole number, found text at /mode"},
        RefusalRow{R"({"id": "x", "list": [], "mode": 1.5})",
                   "expected a whole number, found a number with fraction or exponent at /mode"},
        RefusalRow{R"({"id": "x", "list": [], "mode": 1e0})",
                   "expected a whole number, found a number with fraction or exponent at /mode"},
        RefusalRow{R"({"id": "x", "list": [], "mode": -2147483649})",
                   "number out of range (-2147483648 to 2147483647) at /mode"},
        RefusalRow{R"({"id": "x", "list": [], "named": "ECO-1"})", "expected an array, found text at /named"},
        RefusalRow{R"({"id": "x", "list": [], "named": ["ECO-1", "X"]})", "no effectivity 'X' at /named/1"},
        RefusalRow{R"({"id": "x", "list": [], "named": ["ECO-1", "ECO-1"]})",
                   "effectivity 'ECO-1' given twice at /named/1"},
        RefusalRow{R"({"id": "x", "list": null, "named": ["ECO-1"]})",
                   "a list that is null names no effectivities at /named/0"}));

INSTANTIATE_TEST_SUITE_P(
    nodes, RecordRefusalTest,
    testing::Values(
        RefusalRow{tree("1"), "expected a node (true, false or an object), found a number at /tree"},
        RefusalRow{tree("[]"), "expected a node (true, false or an object), found an array at /tree"},
        RefusalRow{tree("{}"), "no key says what this node is at /tree"},
        RefusalRow{tree(R"({"of": "Truck"})"), "no key says what this node is at /tree"},
        RefusalRow{tree(R"({"xor": []})"), "unknown key 'xor' at /tree/xor"},
        RefusalRow{tree(R"({"or": [], "and": []})"), "key 'or' does not belong to 'and' at /tree/or"},
        RefusalRow{tree(R"({"and": [], "negated": true})"),
                   "key 'negated' does not belong to 'and' at /tree/negated"},
        RefusalRow{tree(R"({"and": {}})"), "expected an array, found an object at /tree/and"},
        RefusalRow{tree(R"({"and": [true, {"or": [null]}]})"),
                   "expected a node (true, false or an object), found null at /tree/and/1/or/0"},
        RefusalRow{tree(R"({"notDomain": null})"),
                   "expected a node (true, false or an object), found null at /tree/notDomain"},
        RefusalRow{tree(R"({"eff": "X"})"), "no effectivity 'X' at /tree/eff"},
        RefusalRow{tree(R"({"eff": null})"), "expected text, found null at /tree/eff"},
        RefusalRow{tree(R"({"eff": "ECO-1", "of": "X"})"), "no dictionary 'X' at /tree/of"},
        RefusalRow{tree(R"({"eff": "ECO-1", "of": null})"), "expected text, found null at /tree/of"},
        RefusalRow{tree(R"({"eff": "ECO-1", "noVar": true})"),
                   "key 'noVar' does not belong to 'eff' at /tree/noVar"},
        RefusalRow{tree(R"({"restriction": 1})"), "expected text, found a number at /tree/restriction"},
        RefusalRow{tree(R"({"empty": false})"), "expected true at /tree/empty"},
        RefusalRow{tree(R"({"empty": true, "of": "Truck"})"),
                   "key 'of' does not belong to 'empty' at /tree/of"},
        RefusalRow{list("true"), "expected a criterion (an object), found true at /list/0"},
        RefusalRow{list(R"({"and": []})"), "expected a criterion, found 'and' at /list/0"},
        RefusalRow{list(R"({"eff": "ECO-1"})"), "expected a criterion, found 'eff' at /list/0"},
        RefusalRow{list(R"({"empty": true})"), "expected a criterion, found 'empty' at /list/0"}));

INSTANTIATE_TEST_SUITE_P(
    variables, RecordRefusalTest,
    testing::Values(
        RefusalRow{list(R"({"option": "Engin", "in": []})"), "no variable 'Engin' at /list/0/option"},
        RefusalRow{list(R"({"option": "Loose", "of": "Truck", "in": []})"),
                   "no variable 'Loose' in dictionary 'Truck' at /list/0/option"},
        RefusalRow{list(R"({"option": "Engine", "of": null, "in": []})"),
                   "no variable 'Engine' at the top at /list/0/option"},
        RefusalRow{list(R"({"option": "Engine", "of": "Truk", "in": []})"),
                   "no dictionary 'Truk' at /list/0/of"},
        RefusalRow{list(R"({"option": "Engine", "of": 1, "in": []})"),
                   "expected text, found a number at /list/0/of"},
        RefusalRow{list(R"({"option": 1, "in": []})"), "expected text, found a number at /list/0/option"},
        RefusalRow{list(R"({"option": "Colour", "in": []})"),
                   "ambiguous: 'Colour' in 'Truck' and in 'Bus' are different features, 'of' must say which "
                   "is meant "
                   "at /list/0/option"},
        RefusalRow{
            list(R"({"option": "Mixed", "in": []})"),
            "ambiguous: 'Mixed' in 'Truck' and in 'Bus' are different features, 'of' must say which is meant "
            "at /list/0/option"},
        RefusalRow{
            list(R"({"option": "Seats", "in": []})"),
            "ambiguous: 'Seats' in 'Bus' and at the top are different features, 'of' must say which is meant "
            "at /list/0/option"},
        RefusalRow{list(R"({"option": "Unit", "in": []})"),
                   "'Unit' is a serial variable, not of the kind 'option' at /list/0/option"},
        RefusalRow{list(R"({"selection": "Engine", "in": []})"),
                   "'Engine' is an option, not of the kind 'selection' at /list/0/selection"},
        RefusalRow{list(R"({"serial": "Line", "in": []})"),
                   "'Line' is a tree series, not of the kind 'serial' at /list/0/serial"},
        RefusalRow{list(R"({"treeSeries": "Package", "in": []})"),
                   "'Package' is a selection, not of the kind 'treeSeries' at /list/0/treeSeries"},
        RefusalRow{list(R"({"option": null, "of": "Truck", "in": []})"),
                   "an effectivity without variable has no 'of' at /list/0/of"},
        RefusalRow{list(R"({"option": null, "in": ["V6"]})"),
                   "an effectivity without variable has no values at /list/0/in/0"},
        RefusalRow{list(R"({"treeSeries": null, "in": [{"single": 1}]})"),
                   "an effectivity without variable has no elements at /list/0/in/0"}));

INSTANTIATE_TEST_SUITE_P(
    criteria, RecordRefusalTest,
    testing::Values(
        RefusalRow{list(R"({"option": "Engine"})"), "missing key 'in' at /list/0"},
        RefusalRow{list(R"({"serial": "Unit"})"), "missing key 'in' at /list/0"},
        RefusalRow{list(R"({"treeSeries": "Line"})"), "missing key 'in' at /list/0"},
        RefusalRow{list(R"({"option": "Engine", "in": "V6"})"),
                   "expected an array, found text at /list/0/in"},
        RefusalRow{list(R"({"option": "Engine", "in": ["V6", "V9"]})"),
                   "'Engine' has no value 'V9' at /list/0/in/1"},
        RefusalRow{list(R"({"option": "Engine", "in": [6]})"),
                   "expected text, found a number at /list/0/in/0"},
        RefusalRow{list(R"({"option": "Engine", "in": [], "negated": 1})"),
                   "expected true or false, found a number at /list/0/negated"},
        RefusalRow{list(R"({"option": "Engine", "in": [], "noVar": null})"),
                   "expected true or false, found null at /list/0/noVar"},
        RefusalRow{list(R"({"option": "Engine", "selection": "Package", "in": []})"),
                   "key 'selection' does not belong to 'option' at /list/0/selection"},
        RefusalRow{list(R"({"serial": "Unit", "in": [1]})"),
                   "expected an interval (an array or an object), found a number at /list/0/in/0"},
        RefusalRow{list(R"({"serial": "Unit", "in": [[1]]})"),
                   "an interval has two bounds, not 1 at /list/0/in/0"},
        RefusalRow{list(R"({"serial": "Unit", "in": [[1, 2, 3]]})"),
                   "an interval has two bounds, not 3 at /list/0/in/0"},
        RefusalRow{list(R"({"serial": "Unit", "in": [[1, 2], [1, "2"]]})"),
                   "expected a whole number, found text at /list/0/in/1/1"},
        RefusalRow{list(R"({"serial": "Unit", "in": [[1, 2147483648]]})"),
                   "number out of range (-2147483648 to 2147483647) at /list/0/in/0/1"},
        RefusalRow{list(R"({"serial": "Unit", "in": [[1, 99999999999999999999]]})"),
                   "number out of range at /list/0/in/0/1"},
        RefusalRow{list(R"({"serial": "Unit", "in": [{"from": 1}]})"), "missing key 'to' at /list/0/in/0"},
        RefusalRow{list(R"({"serial": "Unit", "in": [{"to": 1}]})"), "missing key 'from' at /list/0/in/0"},
        RefusalRow{list(R"({"serial": "Unit", "in": [{"from": 1, "to": 2, "singleIncl": true}]})"),
                   "unknown key 'singleIncl' at /list/0/in/0/singleIncl"},
        RefusalRow{list(R"({"serial": "Unit", "in": [{"from": 1, "to": 2, "toIncl": 0}]})"),
                   "expected true or false, found a number at /list/0/in/0/toIncl"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [5]})"),
                   "expected an object, found a number at /list/0/in/0"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [{}]})"),
                   "expected 'single', 'from' or 'to' at /list/0/in/0"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [{"toIncl": true}]})"),
                   "expected 'single', 'from' or 'to' at /list/0/in/0"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [{"single": 5, "to": 7}]})"),
                   "key 'to' does not belong to 'single' at /list/0/in/0/to"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [{"from": 5, "toIncl": true}]})"),
                   "key 'toIncl' does not belong to the bounds that are given at /list/0/in/0/toIncl"},
        RefusalRow{
            list(R"({"treeSeries": "Line", "in": [{"to": 5, "singleIncl": true}]})"),
            "key 'singleIncl' does not belong to the bounds that are given at /list/0/in/0/singleIncl"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [{"single": 2}]})"),
                   "tree series 'Line' has no element 2 at /list/0/in/0/single"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [{"from": 5, "to": 99}]})"),
                   "tree series 'Line' has no element 99 at /list/0/in/0/to"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [{"from": null}]})"),
                   "expected a whole number, found null at /list/0/in/0/from"},
        RefusalRow{list(R"({"treeSeries": "Line", "in": [{"single": -1}]})"),
                   "number out of range (0 to 4294967295) at /list/0/in/0/single"},
        RefusalRow{list(R"({"date": [["2020-01-01", "2021-01-01"]], "of": "Truck"})"),
                   "key 'of' does not belong to 'date' at /list/0/of"},
        RefusalRow{list(R"({"date": [["2020-01-01", "2021-01-01"]], "in": []})"),
                   "key 'in' does not belong to 'date' at /list/0/in"},
        RefusalRow{list(R"({"date": [["2020-02-30", null]]})"),
                   "'2020-02-30' is no date (YYYY-MM-DD or YYYY-MM-DDThh:mm:ssZ) at /list/0/date/0/0"},
        RefusalRow{
            list(R"({"date": [[null, "2020-01-01 00:00:00"]]})"),
            "'2020-01-01 00:00:00' is no date (YYYY-MM-DD or YYYY-MM-DDThh:mm:ssZ) at /list/0/date/0/1"},
        RefusalRow{list(R"({"date": [[2020, null]]})"), "expected text, found a number at /list/0/date/0/0"},
        RefusalRow{list(R"({"date": ["2020-01-01"]})"), "expected an array, found text at /list/0/date/0"},
        RefusalRow{list(R"({"date": null})"), "expected an array, found null at /list/0/date"}));

TEST(RecordNestingTest, levelsAreLimited) {
    const auto nested = [](std::size_t levels) {
        return tree(repeated(R"({"and": [)", levels - 1) + "true" + repeated("]}", levels - 1));
    };
    EXPECT_EQ(refusalOf(nested(1001)),
              "nested more than 1000 levels deep at /tree" + repeated("/and/0", 1000));
    EXPECT_EQ(refusalOf(nested(1500)),
              "nested more than 1000 levels deep at /tree" + repeated("/and/0", 1000));
    EXPECT_EQ(refusalOf(nested(3000)), "objects and arrays nested more than 4096 deep");
    EXPECT_EQ(refusalOf(nested(1000)).find("malformed"), std::string::npos);
}

} // namespace
} // namespace quelt::host
