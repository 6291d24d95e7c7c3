#include "interchange/WorkingEffectivities.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltQmSpecList.h"
#include "host/support/RandomContext.h"
#include "host/support/Samples.h"
#include "host/support/StructureDump.h"
#include "interchange/ExpressionCopy.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::contextOf;

std::string expressionOf(const QueltEeEffectivity& effectivity) {
    QueltEeExpression* expression = nullptr;
    EXPECT_EQ(effectivity.getExpr(expression), S_OK);
    return expression != nullptr ? std::string(expression->toString().view()) : "none";
}

std::unique_ptr<QueltEeExpression> take(QueltEeEffectivity& effectivity) {
    QueltEeExpression* expression = nullptr;
    EXPECT_EQ(effectivity.removeExpr(expression), S_OK);
    return std::unique_ptr<QueltEeExpression>(expression);
}

class WorkingEffectivitiesTest : public testing::Test {
protected:
    [[nodiscard]] QueltEeEffectivity& own(const char* name) const { return *context->findEffectivity(name); }
    QueltEeEffectivity& working(const char* name) { return effectivities.of(own(name)); }

    std::unique_ptr<LoadedContext> context = contextOf(R"({"format": "quelt-context/1",
 "dictionaries": [{"name": "Truck", "guid": "00000000-0000-4000-8000-000000000001", "variables": [
   {"kind": "serial", "name": "Unit", "guid": "00000000-0000-4000-8000-000000000002", "externalType": 12}]}],
 "effectivities": [
  {"kind": "predefined", "name": "ECO-1", "guid": "00000000-0000-4000-8000-000000000011",
   "expression": {"tree": {"and": [{"eff": "EFF-7", "of": "Truck", "negated": true},
     {"not": {"eff": "ECO-1"}}, {"not": null}, {"serial": "Unit", "in": [[5, 9]]}]}}},
  {"kind": "predefined", "name": "ECO-2", "guid": "00000000-0000-4000-8000-000000000012"},
  {"kind": "basic", "name": "EFF-7", "guid": "00000000-0000-4000-8000-000000000013", "inheritedIn": ["Truck"],
   "expression": {"tree": {"eff": "ECO-1"}}},
  {"kind": "predefined", "name": "ECO-3", "guid": "00000000-0000-4000-8000-000000000014",
   "expression": {"list": [{"serial": "Unit", "in": [[5, 9]]}], "named": ["EFF-7", "ECO-3"], "mode": 2}},
  {"kind": "predefined", "name": "ECO-4", "guid": "00000000-0000-4000-8000-000000000015",
   "expression": {"multiModel": {"kind": "effectivity", "global": {"eff": "ECO-2"},
     "criteria": [{"dictionary": "Truck", "inherited": {"eff": "EFF-7"}, "own": {"eff": "ECO-4"}}],
     "operations": [{"kind": 2, "effectivity": "ECO-3"}]}}},
  {"kind": "predefined", "name": "ECO-5", "guid": "00000000-0000-4000-8000-000000000016",
   "expression": {"multiModel": {"kind": "filter", "dictionary": "Truck", "mode": 1, "criteria": [], "named": ["ECO-1"]}}}
 ]})");
    WorkingEffectivities effectivities;
};

TEST_F(WorkingEffectivitiesTest, standForThoseOfTheContext) {
    QueltEeEffectivity& change = working("ECO-1");
    EXPECT_NE(&change, &own("ECO-1"));
    EXPECT_EQ(&working("ECO-1"), &change);
    EXPECT_EQ(&change.getOrigin(), &own("ECO-1"));
    EXPECT_EQ(change.getName().view(), "ECO-1");
    EXPECT_EQ(change.getGuid(), own("ECO-1").getGuid());
    EXPECT_EQ(change.dType(), QueltEePredefEff::sType());
    EXPECT_EQ(working("EFF-7").dType(), QueltEeBasicEff::sType());
    const QueltInMap* dictionaries = nullptr;
    EXPECT_EQ(context->expressionContext().GetAllDictionariesForInheritedEffectivity(
                  *QueltEeBasicEff::cast(&working("EFF-7")), dictionaries),
              S_OK);
    EXPECT_EQ(dictionaries->GetLength(), 1) << "what was said of the one is said of the other";
}

TEST_F(WorkingEffectivitiesTest, showTheContextsExpressionUntilItIsTaken) {
    QueltEeExpression* shown = nullptr;
    QueltEeExpression* original = nullptr;
    EXPECT_EQ(working("ECO-1").getExpr(shown), S_OK);
    EXPECT_EQ(own("ECO-1").getExpr(original), S_OK);
    EXPECT_EQ(shown, original) << "reading costs nothing";
    const auto* const basic = QueltEeBasicEff::cast(&working("EFF-7"));
    EXPECT_EQ(basic->getOwnNodeRef(), QueltEeBasicEff::cast(&own("EFF-7"))->getOwnNodeRef());

    const std::unique_ptr<QueltEeExpression> taken = take(working("ECO-1"));
    ASSERT_NE(taken, nullptr);
    EXPECT_NE(taken.get(), original);
    EXPECT_EQ(taken->toString().view(), original->toString().view());
    EXPECT_EQ(expressionOf(working("ECO-1")), "none");
    EXPECT_EQ(take(working("ECO-1")), nullptr) << "it is out";
    EXPECT_EQ(expressionOf(own("ECO-1")),
              "generic(AND(not (eff(EFF-7, Truck)), NOT(eff(ECO-1)), NOT(), Unit in [5, 9]))");
}

TEST_F(WorkingEffectivitiesTest, keepWhatTheyAreGiven) {
    QueltEeEffectivity& basic = working("EFF-7");
    std::unique_ptr<QueltEeExpression> taken = take(basic);
    EXPECT_EQ(QueltEeBasicEff::cast(&basic)->getOwnNodeRef(), nullptr);
    QueltEeExpression* const given = taken.get();
    QueltEeExpression* back = taken.release();
    basic.setExpr(back);
    QueltEeExpression* shown = nullptr;
    EXPECT_EQ(basic.getExpr(shown), S_OK);
    EXPECT_EQ(shown, given);
    EXPECT_EQ(QueltEeBasicEff::cast(&basic)->getOwnNodeRef(),
              QueltEeGenericExpression::cast(given)->GetNodeRef());
    EXPECT_EQ(take(basic).get(), given);
    QueltEeExpression* contexts = nullptr;
    EXPECT_EQ(working("ECO-4").getExpr(contexts), S_OK);
    working("ECO-4").setExpr(contexts); // changes nothing, for it is the context's
    EXPECT_NE(take(working("ECO-4")).get(), contexts);
    QueltEeExpression* none = nullptr;
    working("ECO-3").setExpr(none);
    EXPECT_EQ(expressionOf(working("ECO-3")), "none") << "given nothing, it has none";
    EXPECT_EQ(take(working("ECO-2")), nullptr) << "neither has the context";
}

/// Every effectivity that an expression refers to.
void collectTargets(const QueltEeNodeRef* root, std::vector<const QueltEeEffectivity*>& targets) {
    if (root == nullptr || root->getNode() == nullptr) {
        return;
    }
    if (const auto* const leaf = QueltEeEffLeaf::cast(root->getNode())) {
        targets.push_back(leaf->getTargetEff());
        return;
    }
    QueltInLinkList children(QueltEeNodeRef::sType());
    if (const auto* const operation = QueltEeOperator::cast(root->getNode())) {
        operation->getChildrenRefs(children);
    }
    for (const QueltInObject* const child : children.elements()) {
        collectTargets(QueltEeNodeRef::cast(child), targets);
    }
}

void collectTargets(const QueltQmSpecList* list, std::vector<const QueltEeEffectivity*>& targets) {
    auto named = list->getNamedEffectivities().cBegin();
    while (const QueltInObject* const effectivity = named.GetGoToNext()) {
        targets.push_back(QueltEeEffectivity::cast(effectivity));
    }
}

std::vector<const QueltEeEffectivity*> targetsOf(const QueltEeExpression& expression) {
    std::vector<const QueltEeEffectivity*> targets;
    if (const auto* const generic = QueltEeGenericExpression::cast(&expression)) {
        const QueltQmSpecList* list = nullptr;
        generic->GetList(list);
        if (list != nullptr) {
            collectTargets(list, targets);
        }
        collectTargets(generic->GetNodeRef(), targets);
    } else if (const auto* const filter = QueltEeFilterExpression::cast(&expression)) {
        collectTargets(filter->getSpecList(), targets);
    } else if (const auto* const multi = QueltEeMultiModelExpression::cast(&expression)) {
        collectTargets(multi->getGlobalCriteria(), targets);
        for (const auto& filed : multi->getModelCriteria()) {
            collectTargets(filed.criteria->getInherited(), targets);
            collectTargets(filed.criteria->getOwn(), targets);
        }
    }
    if (const auto* const effectivity = QueltEeEffectivityExpression::cast(&expression)) {
        for (const QueltEeExpressionOperation* const operation : effectivity->getOperations()) {
            targets.push_back(QueltEeEffectivity::cast(operation->getObject()));
        }
    }
    return targets;
}

TEST_F(WorkingEffectivitiesTest, whatIsTakenRefersToWorkingEffectivities) {
    struct Row {
        const char* name;
        std::vector<const char*> targets;
    };
    const Row rows[] = {{"ECO-1", {"EFF-7", "ECO-1"}},
                        {"EFF-7", {"ECO-1"}},
                        {"ECO-3", {"EFF-7", "ECO-3"}},
                        {"ECO-4", {"ECO-2", "EFF-7", "ECO-4", "ECO-3"}},
                        {"ECO-5", {"ECO-1"}}};
    for (const Row& row : rows) {
        const std::string before = expressionOf(own(row.name));
        const std::unique_ptr<QueltEeExpression> taken = take(working(row.name));
        ASSERT_NE(taken, nullptr);
        EXPECT_EQ(taken->toString().view(), before);
        std::vector<const QueltEeEffectivity*> expected;
        std::vector<const QueltEeEffectivity*> originals;
        for (const char* const target : row.targets) {
            expected.push_back(&working(target));
            originals.push_back(&own(target));
        }
        EXPECT_EQ(targetsOf(*taken), expected) << row.name;
        QueltEeExpression* original = nullptr;
        own(row.name).getExpr(original);
        EXPECT_EQ(targetsOf(*original), originals) << row.name;
    }
}

/// Whether `copies` stand, one by one, for `originals`, and none is an original itself.
void expectReplaced(const std::vector<const QueltEeEffectivity*>& originals,
                    const std::vector<const QueltEeEffectivity*>& copies) {
    ASSERT_EQ(copies.size(), originals.size());
    for (std::size_t i = 0; i < originals.size(); ++i) {
        if (originals[i] == nullptr) {
            EXPECT_EQ(copies[i], nullptr);
            continue;
        }
        ASSERT_NE(copies[i], nullptr);
        EXPECT_NE(copies[i], originals[i]) << originals[i]->getName().view();
        EXPECT_EQ(&copies[i]->getOrigin(), originals[i]);
    }
}

TEST(ExpressionCopyTest, copiesEverythingAndReplacesEveryEffectivity) {
    std::size_t replaced = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        test::RandomContext random(seed);
        const std::string before = test::dump(random.context());
        WorkingEffectivities effectivities;
        const ReplaceEffectivity replace = [&](QueltEeEffectivity& effectivity) -> QueltEeEffectivity& {
            return effectivities.of(effectivity);
        };
        for (int number = 0; number < 20; ++number) {
            const std::unique_ptr<QueltEeExpression> original =
                number % 2 == 0 ? std::unique_ptr<QueltEeExpression>(random.genericExpression())
                                : random.multiModelExpression();
            const std::unique_ptr<QueltEeExpression> copy = copyExpression(*original, replace);
            ASSERT_NE(copy, nullptr);
            EXPECT_EQ(test::dump(*copy), test::dump(*original)) << "they have the same names";
            const std::vector<const QueltEeEffectivity*> originals = targetsOf(*original);
            expectReplaced(originals, targetsOf(*copy));
            replaced += originals.size();
        }
        EXPECT_EQ(test::dump(random.context()), before);
    }
    EXPECT_GT(replaced, 0U);
}

} // namespace
} // namespace quelt::host
