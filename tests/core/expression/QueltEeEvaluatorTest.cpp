#include "expression/QueltEeEvaluator.h"

#include "core/support/Effort.h"
#include "core/support/RandomExpressions.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeMultiModelExpression.h"

#include <gtest/gtest.h>

namespace {

using OperationKind = QueltEeExpressionOperation::OperationKind;

/// Asks the evaluator; fails the test when it answers with a failure.
bool holdsIn(const QueltEeConfiguration& configuration, const QueltEeNode& node) {
    bool holds = false;
    EXPECT_EQ(QueltEeEvaluator(configuration).evaluate(node, holds), S_OK);
    return holds;
}

bool holdsIn(const QueltEeConfiguration& configuration, const QueltEeExpression& expression,
             const QueltEeModelDico* dictionary = nullptr) {
    bool holds = false;
    EXPECT_EQ(QueltEeEvaluator(configuration).evaluate(expression, dictionary, holds), S_OK);
    return holds;
}

void expectRefused(const QueltEeNode& node, long code) {
    const QueltEeConfiguration configuration;
    for (bool holds : {false, true}) {
        const bool before = holds;
        EXPECT_EQ(QueltEeEvaluator(configuration).evaluate(node, holds), code);
        EXPECT_EQ(holds, before);
    }
}

} // namespace

TEST(QueltEeConfiguration, SaysNothingOfWhatWasNotSaid) {
    const QueltEeConfiguration configuration;
    EXPECT_EQ(configuration.getValue(guidOf(1)), std::nullopt);
    EXPECT_EQ(configuration.getSequenceNumber(guidOf(1)), std::nullopt);
    EXPECT_EQ(configuration.getDate(), std::nullopt);
    EXPECT_FALSE(configuration.holds(guidOf(1)));
}

TEST(QueltEeConfiguration, KeepsWhatWasSaidLast) {
    QueltEeConfiguration configuration;
    configuration.setValue(guidOf(1), "V6");
    configuration.setValue(guidOf(1), "V8");
    configuration.setSequenceNumber(guidOf(2), 7);
    configuration.setSequenceNumber(guidOf(2), -5);
    configuration.setDate(60);
    configuration.setDate(61);
    configuration.setEffectivity(guidOf(3), true);
    configuration.setEffectivity(guidOf(4), true);
    configuration.setEffectivity(guidOf(4), false);
    EXPECT_EQ(configuration.getValue(guidOf(1)), "V8");
    EXPECT_EQ(configuration.getValue(guidOf(2)), std::nullopt);
    EXPECT_EQ(configuration.getSequenceNumber(guidOf(2)), -5);
    EXPECT_EQ(configuration.getDate(), 61);
    EXPECT_TRUE(configuration.holds(guidOf(3)));
    EXPECT_FALSE(configuration.holds(guidOf(4)));
}

TEST(QueltEeEvaluator, EvaluatesConstantsAndOperators) {
    const QueltEeConfiguration configuration;
    EXPECT_TRUE(holdsIn(configuration, *always()->getNode()));
    EXPECT_FALSE(holdsIn(configuration, *never()->getNode()));
    EXPECT_TRUE(holdsIn(configuration, *allOf()->getNode()));
    EXPECT_FALSE(holdsIn(configuration, *anyOf()->getNode()));
    EXPECT_TRUE(holdsIn(configuration, *allOf(always(), always())->getNode()));
    EXPECT_FALSE(holdsIn(configuration, *allOf(always(), never())->getNode()));
    EXPECT_TRUE(holdsIn(configuration, *anyOf(never(), always())->getNode()));
    EXPECT_FALSE(holdsIn(configuration, *anyOf(never(), never())->getNode()));
    EXPECT_TRUE(holdsIn(configuration, *notOf(never())->getNode()));
    EXPECT_TRUE(holdsIn(configuration, *notOf<QueltEeNotDomainOp>(never())->getNode()));
    EXPECT_TRUE(holdsIn(configuration, *notOf(notOf<QueltEeNotDomainOp>(always()))->getNode()));
}

TEST(QueltEeEvaluator, NotTurnsNoVariableRoundAndNotDomainDoesNot) {
    const Catalogue catalogue;
    const OwnedReference leaf = leafOf(catalogue.engineIn({"V6"}));
    const OwnedReference negated = notOf(leafOf(catalogue.engineIn({"V6"})));
    const OwnedReference inDomain = notOf<QueltEeNotDomainOp>(leafOf(catalogue.engineIn({"V6"})));
    QueltEeConfiguration v6;
    v6.setValue(catalogue.engine.getGuid(), "V6");
    QueltEeConfiguration v8;
    v8.setValue(catalogue.engine.getGuid(), "V8");
    const QueltEeConfiguration none;
    EXPECT_TRUE(holdsIn(v6, *leaf->getNode()));
    EXPECT_FALSE(holdsIn(v8, *leaf->getNode()));
    EXPECT_FALSE(holdsIn(none, *leaf->getNode()));
    EXPECT_FALSE(holdsIn(v6, *negated->getNode()));
    EXPECT_TRUE(holdsIn(v8, *negated->getNode()));
    EXPECT_TRUE(holdsIn(none, *negated->getNode()));
    EXPECT_FALSE(holdsIn(v6, *inDomain->getNode()));
    EXPECT_TRUE(holdsIn(v8, *inDomain->getNode()));
    EXPECT_FALSE(holdsIn(none, *inDomain->getNode()));
}

TEST(QueltEeEvaluator, NotDomainGoesDownToTheLeaves) {
    // Of two leaves on one variable, one includes "no variable". Below NOT-domain their AND is an OR, so that
    // "no variable" is in, although it is not in their intersection.
    const Catalogue catalogue;
    QueltEeVarEff* const withNoVariable = catalogue.engineIn({"V6"});
    withNoVariable->switchNoVar();
    const OwnedReference tree =
        notOf<QueltEeNotDomainOp>(allOf(leafOf(withNoVariable), leafOf(catalogue.engineIn({"V6", "V8"}))));
    const QueltEeConfiguration none;
    EXPECT_TRUE(holdsIn(none, *tree->getNode()));
    QueltEeConfiguration v8;
    v8.setValue(catalogue.engine.getGuid(), "V8");
    EXPECT_TRUE(holdsIn(v8, *tree->getNode()));
    QueltEeConfiguration v6;
    v6.setValue(catalogue.engine.getGuid(), "V6");
    EXPECT_FALSE(holdsIn(v6, *tree->getNode()));
}

TEST(QueltEeEvaluator, TakesValuesThatTheVariableDoesNotHaveForNone) {
    const Catalogue catalogue;
    QueltEeConfiguration strange;
    strange.setValue(catalogue.engine.getGuid(), "Steam");
    strange.setSequenceNumber(catalogue.unit.getGuid(), 5000000000);
    strange.setSequenceNumber(catalogue.trim.getGuid(), 99);
    strange.setDate(QueltEeDate::s_openAbove);
    QueltEeDateEff* const everAfter = new QueltEeDateEff;
    everAfter->addInterval({0, QueltEeDate::s_openAbove});
    QueltEeSerialEff* const upwards = new QueltEeSerialEff(&catalogue.unit);
    upwards->addInterval({0, 2000000000, 1, 1});
    for (QueltEeVarEff* const effectivity :
         {catalogue.engineIn({"V6", "V8", "V12"}), static_cast<QueltEeVarEff*>(upwards), catalogue.anyTrim(),
          static_cast<QueltEeVarEff*>(everAfter)}) {
        const OwnedReference leaf = leafOf(effectivity);
        EXPECT_FALSE(holdsIn(strange, *leaf->getNode())) << textOf(*effectivity);
        effectivity->switchNoVar();
        EXPECT_TRUE(holdsIn(strange, *leaf->getNode())) << textOf(*effectivity);
    }
    QueltEeConfiguration negative;
    negative.setSequenceNumber(catalogue.trim.getGuid(), -1);
    EXPECT_FALSE(holdsIn(negative, *leafOf(catalogue.anyTrim())->getNode()));
}

TEST(QueltEeEvaluator, RefusesWhatNobodyKnows) {
    expectRefused(QueltEeRestrictionEffLeaf("text"), E_UNEXPECTED);
    expectRefused(QueltEeVarEffLeaf(), E_INVALIDARG);
    expectRefused(QueltEeEffLeaf(nullptr, nullptr), E_INVALIDARG);
    expectRefused(QueltEeNotOp(), E_INVALIDARG);
    expectRefused(QueltEeNotDomainOp(), E_INVALIDARG);
    expectRefused(*allOf(always(), held(new QueltEeRestrictionEffLeaf("text")))->getNode(), E_UNEXPECTED);
}

TEST(QueltEeEvaluator, RefusesAChildWhoseNodeIsGone) {
    OwnedReference target = always();
    const OwnedReference group = allOf(always());
    EXPECT_EQ(groupIn(*group).getChildren().PutBack(*QueltEeNodeRef::makeAlias(*target->getNode())), S_OK);
    const QueltEeConfiguration configuration;
    EXPECT_TRUE(holdsIn(configuration, *group->getNode()));
    target.reset();
    expectRefused(*group->getNode(), E_INVALIDARG);
}

TEST(QueltEeEvaluator, LooksAtChildrenOnlyUntilTheResultIsCertain) {
    const QueltEeConfiguration configuration;
    const auto restriction = [] { return held(new QueltEeRestrictionEffLeaf("text")); };
    EXPECT_FALSE(holdsIn(configuration, *allOf(never(), restriction())->getNode()));
    EXPECT_TRUE(holdsIn(configuration, *anyOf(always(), restriction())->getNode()));
    EXPECT_TRUE(holdsIn(configuration, *notOf(allOf(never(), restriction()))->getNode()));
    EXPECT_FALSE(
        holdsIn(configuration, *notOf<QueltEeNotDomainOp>(anyOf(always(), restriction()))->getNode()));
}

TEST(QueltEeEvaluator, LooksAtAnAliasedNodeOnce) {
    // Each level holds the one below twice: 2^64 ways lead from the top to the bottom.
    std::vector<OwnedReference> levels;
    levels.push_back(allOf(never(), always()));
    for (int level = 0; level < 64; ++level) {
        QueltEeNode& below = *levels.back()->getNode();
        const bool isAnd = level % 2 == 0;
        levels.push_back(isAnd ? anyOf() : allOf());
        for (int times = 0; times < 2; ++times) {
            EXPECT_EQ(groupIn(*levels.back()).getChildren().PutBack(*QueltEeNodeRef::makeAlias(below)), S_OK);
        }
        levels.push_back(notOf<QueltEeNotDomainOp>(
            notOf(OwnedReference(QueltEeNodeRef::makeAlias(*levels.back()->getNode())))));
    }
    EXPECT_FALSE(holdsIn(QueltEeConfiguration(), *levels.back()->getNode()));
    while (!levels.empty()) {
        levels.pop_back();
    }
}

TEST(QueltEeEvaluator, AgreesWithThePlainMeaning) {
    const SampleWorld world;
    for (const bool hasUnknowns : {false, true}) {
        RandomExpressions random(world, hasUnknowns ? 11 : 12);
        TreeShape shape;
        shape.hasUnknowns = hasUnknowns;
        shape.hasAliases = true;
        int certain = 0;
        int held = 0;
        for (int round = 0; round < effort(20000); ++round) {
            const OwnedReference tree = random.tree(shape);
            const SampleConfiguration sample = random.configuration();
            const QueltEeConfiguration configuration = sample.toConfiguration();
            bool expected = round % 2 != 0;
            bool holds = expected;
            const long result = PlainMeaning(sample).evaluate(*tree->getNode(), expected);
            ASSERT_EQ(QueltEeEvaluator(configuration).evaluate(*tree->getNode(), holds), result)
                << textOf(*tree);
            ASSERT_EQ(holds, expected) << textOf(*tree);
            certain += result >= 0 ? 1 : 0;
            held += result >= 0 && holds ? 1 : 0;
            if (!hasUnknowns) {
                ASSERT_EQ(holds, PlainMeaning(sample).holds(*tree->getNode())) << textOf(*tree);
            }
        }
        EXPECT_GT(held, effort(3000));
        EXPECT_GT(certain - held, effort(3000));
    }
}

TEST(QueltEeEvaluator, EvaluatesListsAsTheirModeSays) {
    const SampleWorld world;
    RandomExpressions random(world, 13);
    for (int round = 0; round < effort(5000); ++round) {
        const std::unique_ptr<QueltQmSpecList> list = random.list();
        const SampleConfiguration sample = random.configuration();
        const QueltEeConfiguration configuration = sample.toConfiguration();
        for (const int mode : {0, 1}) {
            QueltEeFilterExpression filter(world.dictionaries[0], list->clone());
            filter.setListMode(mode);
            const auto genericMode = mode == 0 ? QueltEeGenericExpression::ListMode::all
                                               : QueltEeGenericExpression::ListMode::atLeastOne;
            const QueltEeGenericExpression generic(list->clone(), genericMode);
            const bool expected = PlainMeaning(sample).holds(*list, mode);
            ASSERT_EQ(holdsIn(configuration, filter), expected) << textOf(filter);
            ASSERT_EQ(holdsIn(configuration, generic, world.dictionaries[1]), expected) << textOf(generic);
        }
    }
}

TEST(QueltEeEvaluator, TakesMissingListsAndTreesForEmptyOnes) {
    const QueltEeConfiguration configuration;
    QueltEeFilterExpression filter(nullptr, nullptr);
    EXPECT_TRUE(holdsIn(configuration, filter));
    filter.setListMode(1);
    EXPECT_FALSE(holdsIn(configuration, filter));
    EXPECT_TRUE(holdsIn(configuration, QueltEeGenericExpression()));
    EXPECT_TRUE(
        holdsIn(configuration, QueltEeGenericExpression(nullptr, QueltEeGenericExpression::ListMode::all)));
    EXPECT_FALSE(holdsIn(configuration,
                         QueltEeGenericExpression(nullptr, QueltEeGenericExpression::ListMode::atLeastOne)));
    EXPECT_FALSE(holdsIn(configuration, QueltEeGenericExpression(never().release())));
    EXPECT_TRUE(holdsIn(configuration, QueltEeChangeExpression()));
    EXPECT_TRUE(holdsIn(configuration, QueltEeEffectivityExpression()));
}

TEST(QueltEeEvaluator, EvaluatesThePartsOfTheDictionary) {
    const SampleWorld world;
    const QueltEeModelDico* const truck = world.dictionaries[0];
    const QueltEeModelDico* const van = world.dictionaries[1];
    const QueltEeModelDico* const bus = world.dictionaries[2];
    const QueltEeConfiguration configuration;
    const auto reference = [](bool value) { return (value ? always() : never()).release(); };
    for (int bits = 0; bits < 8; ++bits) {
        const bool global = (bits & 1) != 0;
        const bool inherited = (bits & 2) != 0;
        const bool own = (bits & 4) != 0;
        QueltEeChangeExpression expression;
        EXPECT_EQ(expression.setGlobalCriteria(reference(global)), S_OK);
        EXPECT_EQ(holdsIn(configuration, expression, truck), global);
        QueltEeNodeRef* inheritedSlot = reference(inherited);
        QueltEeNodeRef* ownSlot = reference(own);
        EXPECT_EQ(expression.setModelCriteria(
                      *truck, new QueltEeMultiModelExpression::ModelCriteria(&inheritedSlot, &ownSlot)),
                  S_OK);
        EXPECT_EQ(expression.setModelCriteria(
                      *van, new QueltEeMultiModelExpression::ModelCriteria(nullptr, nullptr)),
                  S_OK);
        EXPECT_EQ(holdsIn(configuration, expression, truck), global && inherited && own);
        EXPECT_EQ(holdsIn(configuration, expression, van), global);
        EXPECT_FALSE(holdsIn(configuration, expression, bus));
        EXPECT_EQ(holdsIn(configuration, expression), global);
    }
}

TEST(QueltEeEvaluator, CountsOperationsByTheirKind) {
    const SampleWorld world;
    struct Case {
        std::vector<OperationKind> kinds; // of operations on the first, second, ... effectivity
        std::vector<int> present;         // which of them hold
        bool expected;
    };
    const auto remove = OperationKind::remove;
    const auto apply = OperationKind::apply;
    const auto either = OperationKind::applyAlternative;
    const std::vector<Case> cases{
        {{}, {}, true},
        {{apply}, {0}, true},
        {{apply}, {}, false},
        {{remove}, {}, true},
        {{remove}, {0}, false},
        {{either}, {0}, true},
        {{either}, {}, false},
        {{either, either}, {1}, true},
        {{either, either}, {}, false},
        {{apply, either, either}, {0, 2}, true},
        {{apply, either, either}, {1, 2}, false},
        {{apply, either, either}, {0}, false},
        {{apply, apply}, {0}, false},
        {{apply, remove}, {0}, true},
        {{apply, remove}, {0, 1}, false},
    };
    for (const Case& one : cases) {
        QueltEeConfiguration configuration;
        for (const int present : one.present) {
            configuration.setEffectivity(world.effectivities[static_cast<std::size_t>(present)]->getGuid(),
                                         true);
        }
        QueltEeEffectivityExpression expression;
        for (std::size_t at = 0; at < one.kinds.size(); ++at) {
            QueltInObject* change = world.effectivities[at];
            EXPECT_EQ(expression.addOperation(one.kinds[at], change), S_OK);
        }
        EXPECT_EQ(holdsIn(configuration, expression, world.dictionaries[0]), one.expected)
            << textOf(expression);
        EXPECT_EQ(holdsIn(configuration, expression), one.expected) << textOf(expression);
        EXPECT_EQ(expression.setGlobalCriteria(never().release()), S_OK);
        EXPECT_FALSE(holdsIn(configuration, expression));
    }
}

TEST(QueltEeEvaluator, RefusesWhatItCannotRead) {
    const SampleWorld world;
    const QueltEeConfiguration configuration;
    const QueltEeEvaluator evaluator(configuration);
    bool holds = true;
    QueltEeEffectivityExpression expression;
    QueltInObject* change = world.effectivities[0];
    EXPECT_EQ(expression.addOperation(static_cast<OperationKind>(3), change), S_OK);
    EXPECT_EQ(evaluator.evaluate(expression, nullptr, holds), E_INVALIDARG);
    QueltEeChangeExpression restricted;
    EXPECT_EQ(restricted.setGlobalCriteria(held(new QueltEeRestrictionEffLeaf("text")).release()), S_OK);
    EXPECT_EQ(evaluator.evaluate(restricted, nullptr, holds), E_UNEXPECTED);
    EXPECT_TRUE(holds);
}

TEST(QueltEeEvaluator, GoesAsDeepAsTheTree) {
    constexpr std::size_t depth = effort(1'000'000);
    const QueltEeConfiguration configuration;
    EXPECT_TRUE(holdsIn(configuration, *singleChain<QueltEeNotOp>(depth)->getNode()));
    EXPECT_FALSE(holdsIn(configuration, *singleChain<QueltEeNotDomainOp>(depth + 1)->getNode()));
    OwnedReference chain = never();
    for (std::size_t level = 0; level < depth; ++level) {
        chain = level % 2 == 0 ? allOf(always(), std::move(chain)) : anyOf(std::move(chain), never());
    }
    EXPECT_FALSE(holdsIn(configuration, *chain->getNode()));
}
