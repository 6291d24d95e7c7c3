#include "interchange/ContextReader.h"

#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "host/support/Samples.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::contextOf;
using test::refusalOfContext;
using test::repeated;
using test::sampleContext;

constexpr const char* s_guid = R"("guid": "00000000-0000-4000-8000-0000000000aa")";

/// A context with one dictionary that holds `variable`.
std::string withVariable(const std::string& variable) {
    return R"({"format": "quelt-context/1", "dictionaries": [{"name": "D", )" + std::string(s_guid) +
           R"(, "variables": [)" + variable + "]}]}";
}

/// `keys` as a variable named V, or an effectivity named E, with a GUID.
std::string variable(const std::string& keys) {
    return R"({"name": "V", )" + std::string(s_guid) + ", " + keys + "}";
}
std::string withEffectivity(const std::string& keys) {
    return R"({"format": "quelt-context/1", "dictionaries": [{"name": "D", )" + std::string(s_guid) +
           R"(}], "effectivities": [{"name": "E", )" + s_guid + ", " + keys + "}]}";
}
std::string withExpression(const std::string& body) {
    return withEffectivity(R"("kind": "basic", "expression": )" + body);
}

TEST(ContextReaderTest, readsEveryKindOfVariable) {
    const auto context = contextOf(sampleContext());
    const QueltEeModelDico& truck = *context->findDictionary("Truck");
    EXPECT_EQ(truck.getGuid().toString().view(), "00000000-0000-4000-8000-000000000001");

    const auto* const engine = QueltEeCatOptionVar::cast(truck.getVariable("Engine"));
    ASSERT_NE(engine, nullptr);
    EXPECT_EQ(engine->getGuid().toString().view(), "00000000-0000-4000-8000-000000000011");
    EXPECT_EQ(engine->getHolderDico(), &truck);
    ASSERT_EQ(engine->getValueCount(), 2U);
    EXPECT_EQ(engine->getValueName(1), "V8");

    const auto* const package = QueltEeSelectionVar::cast(truck.getVariable("Package"));
    ASSERT_NE(package, nullptr);
    EXPECT_EQ(package->getValueName(0), "Sport");

    const auto* const unit = QueltEeSerialVar::cast(truck.getVariable("Unit"));
    ASSERT_NE(unit, nullptr);
    EXPECT_EQ(unit->getExternalType(), QueltEeSerialVar::SerialExternalType::productSeries);
    const QueltInMap* revisions = nullptr;
    ASSERT_EQ(unit->getSeqNb2Revisions(revisions), 0);
    QueltInMap::const_iterator iterator = revisions->cBegin();
    const auto* const first = QueltEeSerialVarValue::cast(iterator.GetValGoToNext());
    const auto* const second = QueltEeSerialVarValue::cast(iterator.GetValGoToNext());
    ASSERT_TRUE(first != nullptr && second != nullptr);
    EXPECT_EQ(first->getRev().view(), "2010");
    EXPECT_EQ(first->getSeqNumber(), 5U);
    EXPECT_EQ(second->getSeqNumber(), 7U);
    EXPECT_NE(iterator.IsEnd(), 0);

    const auto* const line = QueltEeTreeSeriesVar::cast(truck.getVariable("Line"));
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->getNumber(), 18U);
    ASSERT_EQ(line->getElements().size(), 4U);
    EXPECT_EQ(line->getElements()[2]->getSeqNumber(), 7U);
    EXPECT_EQ(line->getElements()[2]->getParent(), line->getElements()[1].get());
    EXPECT_EQ(line->getRootTreeSeriesElement()->getSeqNumber(), 1U);

    const QueltEeVariable* const loose = context->findTopVariable("Loose");
    EXPECT_EQ(loose->getHolderDico(), nullptr);
}

TEST(ContextReaderTest, revisionsLeftOutDifferFromNone) {
    const auto tableOf = [](const char* keys) {
        const auto context = contextOf(withVariable(variable(keys)));
        const QueltInMap* revisions = nullptr;
        QueltEeSerialVar::cast(*context->findDictionary("D")->getVariable("V"))
            ->getSeqNb2Revisions(revisions);
        return revisions != nullptr ? std::to_string(revisions->GetLength()) : "none";
    };
    EXPECT_EQ(tableOf(R"("kind": "serial", "externalType": 14)"), "none");
    EXPECT_EQ(tableOf(R"("kind": "serial", "externalType": 14, "revisions": [])"), "0");
    // A number given twice is one revision.
    EXPECT_EQ(tableOf(R"("kind": "serial", "externalType": 14, "revisions": [{"rev": "a", "seq": 4294967295},
                         {"rev": "b", "seq": 4294967295}])"),
              "1");
}

TEST(ContextReaderTest, readsEffectivities) {
    const auto context = contextOf(sampleContext());
    QueltEeExpression* expression = nullptr;
    context->findEffectivity("ECO-1")->getExpr(expression);
    ASSERT_NE(expression, nullptr);
    EXPECT_EQ(expression->toString().view(), "change(Truck: own Engine in {V6})");
    context->findEffectivity("ECO-2")->getExpr(expression);
    EXPECT_EQ(expression, nullptr);
    const auto* const basic = QueltEeBasicEff::cast(context->findEffectivity("EFF-7"));
    ASSERT_NE(basic, nullptr);
    EXPECT_NE(basic->getOwnNodeRef(), nullptr);
    const QueltInMap* dictionaries = nullptr;
    context->expressionContext().GetAllDictionariesForInheritedEffectivity(*basic, dictionaries);
    ASSERT_EQ(dictionaries->GetLength(), 1);
    EXPECT_EQ(dictionaries->Get(QueltInString("Truck")), context->findDictionary("Truck"));
}

TEST(ContextReaderTest, expressionsMayNameEffectivitiesThatComeLater) {
    const auto context = contextOf(
        R"({"format": "quelt-context/1", "effectivities": [
            {"kind": "predefined", "name": "A", "guid": "00000000-0000-4000-8000-000000000001",
             "expression": {"tree": {"and": [{"eff": "B"}, {"eff": "A"}]}}},
            {"kind": "predefined", "name": "B", "guid": "00000000-0000-4000-8000-000000000002"}]})");
    QueltEeExpression* expression = nullptr;
    context->findEffectivity("A")->getExpr(expression);
    EXPECT_EQ(expression->toString().view(), "generic(AND(eff(B), eff(A)))");
}

TEST(ContextReaderTest, whatIsLeftOutIsNone) {
    const auto context = contextOf(R"({"format": "quelt-context/1"})");
    EXPECT_TRUE(context->dictionaries().empty());
    EXPECT_TRUE(context->topVariables().empty());
    EXPECT_TRUE(context->effectivities().empty());
}

TEST(ContextReaderTest, byteOrderMarkAndCarriageReturnsAreSkipped) {
    EXPECT_EQ(refusalOfContext("\xEF\xBB\xBF{\r\n\"format\":\r\n\"quelt-context/1\"\r\n}\r\n"), "accepted");
}

TEST(ContextReaderTest, namesOfAnyScriptAreFine) {
    const auto context = contextOf(withVariable(
        R"({"kind": "option", "name": "Größe \ud83d\ude9a/~\n\u0000", "guid": "00000000-0000-4000-8000-0000000000AA",
            "values": ["", "大", "a\"b"]})"));
    const std::string_view name("Gr\xC3\xB6\xC3\x9F"
                                "e \xF0\x9F\x9A\x9A/~\n\0",
                                16);
    const auto* const variable = QueltEeCatOptionVar::cast(context->findDictionary("D")->getVariable(name));
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable->findValue("\xE5\xA4\xA7"), 1U);
    EXPECT_EQ(variable->findValue(""), 0U);
    EXPECT_EQ(variable->findValue("a\"b"), 2U);
}

struct RefusalRow {
    std::string json;
    std::string refusal;
};
class ContextRefusalTest : public testing::TestWithParam<RefusalRow> {};

TEST_P(ContextRefusalTest, namesWhatIsWrongAndWhere) {
    EXPECT_EQ(refusalOfContext(GetParam().json), GetParam().refusal);
}

INSTANTIATE_TEST_SUITE_P(
    outside, ContextRefusalTest,
    testing::Values(
        RefusalRow{"[]", "expected an object, found an array at the root"},
        RefusalRow{"{}", "missing key 'format' at the root"},
        RefusalRow{R"({"format": 1})", "expected text, found a number at /format"},
        RefusalRow{R"({"format": "quelt-context/2"})",
                   "unknown format 'quelt-context/2', expected 'quelt-context/1' at /format"},
        RefusalRow{R"({"format": "quelt-context/1", "dictionary": []})",
                   "unknown key 'dictionary' at /dictionary"},
        RefusalRow{R"({"format": "quelt-context/1", "a/b~": []})", "unknown key 'a/b~' at /a~1b~0"},
        RefusalRow{R"({"format": "quelt-context/1", "format": "quelt-context/1"})",
                   "key 'format' given twice at /format"},
        RefusalRow{R"({"format": "quelt-context/1", "dictionaries": {}})",
                   "expected an array, found an object at /dictionaries"},
        RefusalRow{R"({"format": "quelt-context/1", "dictionaries": [true]})",
                   "expected an object, found true at /dictionaries/0"},
        RefusalRow{R"({"format": "quelt-context/1", "dictionaries": [{"guid": "x"}]})",
                   "missing key 'name' at /dictionaries/0"},
        RefusalRow{R"({"format": "quelt-context/1", "dictionaries": [{"name": "D"}]})",
                   "missing key 'guid' at /dictionaries/0"},
        RefusalRow{R"({"format": "quelt-context/1", "dictionaries": [{"name": "D", "guid": "x"}]})",
                   "'x' is no GUID at /dictionaries/0/guid"},
        RefusalRow{R"({"format": "quelt-context/1", "dictionaries": [
                       {"name": "D", "guid": "00000000-0000-4000-8000-000000000001"},
                       {"name": "D", "guid": "00000000-0000-4000-8000-000000000002"}]})",
                   "dictionary 'D' given twice at /dictionaries/1/name"},
        RefusalRow{R"({"format": "quelt-context/1", "variables": [
                       {"kind": "option", "name": "V", "guid": "00000000-0000-4000-8000-000000000001", "values": []},
                       {"kind": "option", "name": "V", "guid": "00000000-0000-4000-8000-000000000001", "values": []}]})",
                   "variable 'V' given twice at /variables/1/name"}));

INSTANTIATE_TEST_SUITE_P(
    variables, ContextRefusalTest,
    testing::Values(
        RefusalRow{withVariable(R"({"kind": "option"})"),
                   "missing key 'name' at /dictionaries/0/variables/0"},
        RefusalRow{withVariable(variable(R"("values": [])")),
                   "missing key 'kind' at /dictionaries/0/variables/0"},
        RefusalRow{withVariable(variable(R"("kind": "opt")")),
                   "unknown kind 'opt' (option, selection, serial and treeSeries are known) at "
                   "/dictionaries/0/variables/0/kind"},
        RefusalRow{withVariable(variable(R"("kind": "option")")),
                   "missing key 'values' at /dictionaries/0/variables/0"},
        RefusalRow{withVariable(variable(R"("kind": "option", "values": ["a", 1])")),
                   "expected text, found a number at /dictionaries/0/variables/0/values/1"},
        RefusalRow{withVariable(variable(R"("kind": "selection", "values": ["a", "b", "a"])")),
                   "value 'a' given twice at /dictionaries/0/variables/0/values/2"},
        RefusalRow{withVariable(variable(R"("kind": "option", "values": [], "number": 1)")),
                   "key 'number' does not belong to an option at /dictionaries/0/variables/0/number"},
        RefusalRow{withVariable(variable(R"("kind": "selection", "values": [], "elements": 1)")),
                   "key 'elements' does not belong to a selection at /dictionaries/0/variables/0/elements"},
        RefusalRow{withVariable(variable(R"("kind": "serial", "externalType": 12, "values": [])")),
                   "key 'values' does not belong to a serial variable at /dictionaries/0/variables/0/values"},
        RefusalRow{
            withVariable(variable(R"("kind": "treeSeries", "number": 18, "elements": [], "revisions": [])")),
            "key 'revisions' does not belong to a tree series at /dictionaries/0/variables/0/revisions"},
        RefusalRow{withVariable(variable(R"("kind": "option", "values": [])") + "," +
                                variable(R"("kind": "selection", "values": [])")),
                   "variable 'V' given twice at /dictionaries/0/variables/1/name"},
        RefusalRow{withVariable(variable(R"("kind": "serial")")),
                   "missing key 'externalType' at /dictionaries/0/variables/0"},
        RefusalRow{withVariable(variable(R"("kind": "serial", "externalType": 12.0)")),
                   "expected a whole number, found a number with fraction or exponent at "
                   "/dictionaries/0/variables/0/externalType"},
        RefusalRow{
            withVariable(variable(R"("kind": "serial", "externalType": 2147483648)")),
            "number out of range (-2147483648 to 2147483647) at /dictionaries/0/variables/0/externalType"},
        RefusalRow{withVariable(variable(R"("kind": "serial", "externalType": 12, "revisions": null)")),
                   "expected an array, found null at /dictionaries/0/variables/0/revisions"},
        RefusalRow{
            withVariable(variable(R"("kind": "serial", "externalType": 12, "revisions": [{"rev": "a"}])")),
            "missing key 'seq' at /dictionaries/0/variables/0/revisions/0"},
        RefusalRow{withVariable(variable(
                       R"("kind": "serial", "externalType": 12, "revisions": [{"rev": "a", "seq": -1}])")),
                   "number out of range (0 to 4294967295) at /dictionaries/0/variables/0/revisions/0/seq"},
        RefusalRow{
            withVariable(variable(
                R"("kind": "serial", "externalType": 12, "revisions": [{"rev": "a", "seq": 4294967296}])")),
            "number out of range (0 to 4294967295) at /dictionaries/0/variables/0/revisions/0/seq"},
        RefusalRow{
            withVariable(variable(
                R"("kind": "serial", "externalType": 12, "revisions": [{"rev": "a", "seq": 18446744073709551615}])")),
            "number out of range (0 to 4294967295) at /dictionaries/0/variables/0/revisions/0/seq"},
        RefusalRow{withVariable(variable(R"("kind": "treeSeries", "elements": [{"seq": 1}])")),
                   "missing key 'number' at /dictionaries/0/variables/0"},
        RefusalRow{withVariable(variable(R"("kind": "treeSeries", "number": 18)")),
                   "missing key 'elements' at /dictionaries/0/variables/0"},
        RefusalRow{withVariable(variable(R"("kind": "treeSeries", "number": 18, "elements": [])")),
                   "no element without parent at /dictionaries/0/variables/0/elements"},
        RefusalRow{withVariable(variable(
                       R"("kind": "treeSeries", "number": 18, "elements": [{"seq": 1}, {"seq": 2}])")),
                   "a second element without parent at /dictionaries/0/variables/0/elements/1"},
        RefusalRow{
            withVariable(variable(
                R"("kind": "treeSeries", "number": 18, "elements": [{"seq": 1}, {"seq": 1, "parent": 1}])")),
            "element 1 given twice at /dictionaries/0/variables/0/elements/1/seq"},
        RefusalRow{
            withVariable(variable(R"("kind": "treeSeries", "number": 18, "elements": [{"seq": 1}, {"seq": 3,
                       "parent": 2}, {"seq": 2, "parent": 1}])")),
            "no element 2 stands before this one at /dictionaries/0/variables/0/elements/1/parent"},
        RefusalRow{
            withVariable(variable(R"("kind": "treeSeries", "number": 18, "elements": [{"seq": 2, "parent": 1},
                       {"seq": 1}])")),
            "no element 1 stands before this one at /dictionaries/0/variables/0/elements/0/parent"},
        RefusalRow{withVariable(
                       variable(R"("kind": "treeSeries", "number": 18, "elements": [{"seq": 1, "up": 2}])")),
                   "unknown key 'up' at /dictionaries/0/variables/0/elements/0/up"}));

INSTANTIATE_TEST_SUITE_P(
    effectivities, ContextRefusalTest,
    testing::Values(
        RefusalRow{withEffectivity(R"("kind": "other")"),
                   "unknown kind 'other' (predefined and basic are known) at /effectivities/0/kind"},
        RefusalRow{
            withEffectivity(R"("kind": "predefined", "inheritedIn": [])"),
            "key 'inheritedIn' does not belong to a predefined effectivity at /effectivities/0/inheritedIn"},
        RefusalRow{withEffectivity(R"("kind": "basic", "inheritedIn": ["X"])"),
                   "no dictionary 'X' at /effectivities/0/inheritedIn/0"},
        RefusalRow{withEffectivity(R"("kind": "basic", "inheritedIn": ["D", "D"])"),
                   "dictionary 'D' given twice at /effectivities/0/inheritedIn/1"},
        RefusalRow{R"({"format": "quelt-context/1", "effectivities": [
                       {"kind": "basic", "name": "E", "guid": "00000000-0000-4000-8000-000000000001"},
                       {"kind": "predefined", "name": "E", "guid": "00000000-0000-4000-8000-000000000002"}]})",
                   "effectivity 'E' given twice at /effectivities/1/name"},
        RefusalRow{withExpression("true"), "expected an object, found true at /effectivities/0/expression"},
        RefusalRow{withExpression("{}"),
                   "expected 'tree', 'list' or 'multiModel' at /effectivities/0/expression"},
        RefusalRow{withExpression(R"({"id": "x", "tree": true})"),
                   "unknown key 'id' at /effectivities/0/expression/id"},
        RefusalRow{withExpression(R"({"change": true, "tree": true})"),
                   "unknown key 'change' at /effectivities/0/expression/change"},
        RefusalRow{withExpression(R"({"list": [], "tree": true})"),
                   "key 'list' does not belong to 'tree' at /effectivities/0/expression/list"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "change"}, "mode": 1})"),
                   "key 'mode' does not belong to 'multiModel' at /effectivities/0/expression/mode"},
        RefusalRow{withExpression(R"({"tree": {"eff": "X"}})"),
                   "no effectivity 'X' at /effectivities/0/expression/tree/eff"},
        RefusalRow{withExpression(R"({"multiModel": {}})"),
                   "missing key 'kind' at /effectivities/0/expression/multiModel"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "generic"}})"),
                   "unknown kind 'generic' (effectivity, change and filter are known) at "
                   "/effectivities/0/expression/multiModel/kind"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "change", "operations": []}})"),
                   "key 'operations' does not belong to a change at "
                   "/effectivities/0/expression/multiModel/operations"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "effectivity", "dictionary": "D"}})"),
                   "key 'dictionary' does not belong to an effectivity at "
                   "/effectivities/0/expression/multiModel/dictionary"},
        RefusalRow{
            withExpression(R"({"multiModel": {"kind": "filter", "global": true, "criteria": []}})"),
            "key 'global' does not belong to a filter at /effectivities/0/expression/multiModel/global"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "filter"}})"),
                   "missing key 'criteria' at /effectivities/0/expression/multiModel"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "change", "global": null}})"),
                   "expected a node (true, false or an object), found null at "
                   "/effectivities/0/expression/multiModel/global"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "change", "criteria": [{"own": true}]}})"),
                   "missing key 'dictionary' at /effectivities/0/expression/multiModel/criteria/0"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "change", "criteria": [{"dictionary": "X"}]}})"),
                   "no dictionary 'X' at /effectivities/0/expression/multiModel/criteria/0/dictionary"},
        RefusalRow{
            withExpression(R"({"multiModel": {"kind": "change", "criteria": [{"dictionary": "D", "own": true},
                                      {"dictionary": "D", "inherited": false}]}})"),
            "dictionary 'D' given twice at /effectivities/0/expression/multiModel/criteria/1/dictionary"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "effectivity", "operations": [{"kind": 1}]}})"),
                   "missing key 'effectivity' at /effectivities/0/expression/multiModel/operations/0"},
        RefusalRow{withExpression(R"({"multiModel": {"kind": "effectivity", "operations":
                                      [{"kind": 1, "effectivity": "X"}]}})"),
                   "no effectivity 'X' at /effectivities/0/expression/multiModel/operations/0/effectivity"}));

TEST(ContextReaderTest, nestingIsLimited) {
    const auto nested = [](std::size_t levels) {
        return withExpression(R"({"multiModel": {"kind": "change", "global": )" +
                              repeated(R"({"not": )", levels - 1) + "true" + repeated("}", levels - 1) +
                              "}}");
    };
    EXPECT_EQ(refusalOfContext(nested(1000)), "accepted");
    EXPECT_EQ(refusalOfContext(nested(1001)), "nested more than 1000 levels deep at "
                                              "/effectivities/0/expression/multiModel/global" +
                                                  repeated("/not", 1000));
}

} // namespace
} // namespace quelt::host
