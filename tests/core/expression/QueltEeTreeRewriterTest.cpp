#include "expression/QueltEeTreeRewriter.h"

#include "core/support/Effort.h"
#include "core/support/RandomExpressions.h"

#include "expression/QueltEVCClassification.h"
#include "expression/QueltEeEvaluator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

struct RewriteCase {
    const char* before;
    const char* after;
    std::function<OwnedReference(const Catalogue&)> make;
};

void PrintTo(const RewriteCase& one, std::ostream* stream) {
    *stream << one.before;
}

OwnedReference v6(const Catalogue& catalogue) {
    return leafOf(catalogue.engineIn({"V6"}));
}

OwnedReference v6OrV8(const Catalogue& catalogue) {
    return leafOf(catalogue.engineIn({"V6", "V8"}));
}

OwnedReference v8OrV12(const Catalogue& catalogue) {
    return leafOf(catalogue.engineIn({"V8", "V12"}));
}

OwnedReference sport(const Catalogue& catalogue) {
    return leafOf(catalogue.sport());
}

OwnedReference anyEngine(const Catalogue& catalogue) {
    QueltEeVarEff* const effectivity = catalogue.engineIn({"V6", "V8", "V12"});
    effectivity->switchNoVar();
    return leafOf(effectivity);
}

OwnedReference change(const Catalogue& catalogue, const QueltEeModelDico* dictionary = nullptr) {
    return held(new QueltEeEffLeaf(const_cast<QueltEePredefEff*>(&catalogue.change), dictionary));
}

OwnedReference noChange(const Catalogue& catalogue) {
    OwnedReference leaf = change(catalogue);
    EXPECT_EQ(dynamic_cast<QueltEeEffLeaf*>(leaf->getNode())->opNot(), S_OK);
    return leaf;
}

OwnedReference text() {
    return held(new QueltEeRestrictionEffLeaf("text"));
}

OwnedReference notDomainOf(OwnedReference child) {
    return notOf<QueltEeNotDomainOp>(std::move(child));
}

const std::vector<RewriteCase>& rewriteCases() {
    using C = const Catalogue&;
    static const std::vector<RewriteCase> cases{
        // constants
        {"TRUE", "TRUE", [](C) { return always(); }},
        {"AND()", "TRUE", [](C) { return allOf(); }},
        {"OR()", "FALSE", [](C) { return anyOf(); }},
        {"NOT(TRUE)", "FALSE", [](C) { return notOf(always()); }},
        {"NOTDOMAIN(FALSE)", "TRUE", [](C) { return notDomainOf(never()); }},
        {"NOT(NOTDOMAIN(TRUE))", "TRUE", [](C) { return notOf(notDomainOf(always())); }},
        {"AND(TRUE, Engine in {V6})", "Engine in {V6}", [](C c) { return allOf(always(), v6(c)); }},
        {"AND(Engine in {V6}, FALSE)", "FALSE", [](C c) { return allOf(v6(c), never()); }},
        {"OR(Engine in {V6}, FALSE, FALSE)", "Engine in {V6}",
         [](C c) { return anyOf(v6(c), never(), never()); }},
        {"OR(Engine in {V6}, TRUE)", "TRUE", [](C c) { return anyOf(v6(c), always()); }},
        {"Engine in {V6, V8, V12}?", "TRUE", [](C c) { return anyEngine(c); }},
        {"AND(Package in {Sport}, Engine in {V6, V8, V12}?)", "Package in {Sport}",
         [](C c) { return allOf(sport(c), anyEngine(c)); }},
        {"OR(Engine in {}, Package in {Sport})", "Package in {Sport}",
         [](C c) { return anyOf(leafOf(c.engineIn({})), sport(c)); }},
        // groups
        {"AND(Engine in {V6})", "Engine in {V6}", [](C c) { return allOf(v6(c)); }},
        {"AND(OR(AND(OR(Engine in {V6}))))", "Engine in {V6}",
         [](C c) { return allOf(anyOf(allOf(anyOf(v6(c))))); }},
        {"AND(Engine in {V6}, AND(Package in {Sport}, AND(eff(ECO-1))))",
         "AND(Engine in {V6}, Package in {Sport}, eff(ECO-1))",
         [](C c) { return allOf(v6(c), allOf(sport(c), allOf(change(c)))); }},
        {"AND(OR(AND(Engine in {V6}, Package in {Sport}), FALSE), eff(ECO-1))",
         "AND(Engine in {V6}, Package in {Sport}, eff(ECO-1))",
         [](C c) { return allOf(anyOf(allOf(v6(c), sport(c)), never()), change(c)); }},
        {"AND(eff(ECO-1), OR(Engine in {V6}, AND()), Package in {Sport})",
         "AND(eff(ECO-1), Package in {Sport})",
         [](C c) { return allOf(change(c), anyOf(v6(c), allOf()), sport(c)); }},
        {"OR(AND(Engine in {V6}, Package in {Sport}), eff(ECO-1))",
         "OR(AND(Engine in {V6}, Package in {Sport}), eff(ECO-1))",
         [](C c) { return anyOf(allOf(v6(c), sport(c)), change(c)); }},
        // negations
        {"NOT(NOT(Engine in {V6}))", "Engine in {V6}", [](C c) { return notOf(notOf(v6(c))); }},
        {"NOT(Engine in {V6})", "not (Engine in {V6})?", [](C c) { return notOf(v6(c)); }},
        {"NOTDOMAIN(Engine in {V6})", "not (Engine in {V6})", [](C c) { return notDomainOf(v6(c)); }},
        {"NOTDOMAIN(NOTDOMAIN(Engine in {V6}))", "Engine in {V6}",
         [](C c) { return notDomainOf(notDomainOf(v6(c))); }},
        {"NOT(NOTDOMAIN(Engine in {V6}))", "Engine in {V6}?", [](C c) { return notOf(notDomainOf(v6(c))); }},
        {"NOT(AND(Engine in {V6}, eff(ECO-1)))", "OR(not (Engine in {V6})?, not (eff(ECO-1)))",
         [](C c) { return notOf(allOf(v6(c), change(c))); }},
        {"NOTDOMAIN(OR(Engine in {V6}, eff(ECO-1)))", "AND(not (Engine in {V6}), not (eff(ECO-1)))",
         [](C c) { return notDomainOf(anyOf(v6(c), change(c))); }},
        {"NOT(AND(Engine in {V6}, NOT(OR(Package in {Sport}, NOT(eff(ECO-1))))))",
         "OR(not (Engine in {V6})?, Package in {Sport}, not (eff(ECO-1)))",
         [](C c) { return notOf(allOf(v6(c), notOf(anyOf(sport(c), notOf(change(c)))))); }},
        // leaves on one criterion
        {"AND(Engine in {V6, V8}, Package in {Sport}, Engine in {V8, V12})",
         "AND(Engine in {V8}, Package in {Sport})",
         [](C c) { return allOf(v6OrV8(c), sport(c), v8OrV12(c)); }},
        {"OR(Engine in {V6}, Engine in {V8, V12})", "Engine in {V6, V8, V12}",
         [](C c) { return anyOf(v6(c), v8OrV12(c)); }},
        {"AND(Engine in {V6}, OR(Package in {Sport}, eff(ECO-1)), Engine in {V8, V12})", "FALSE",
         [](C c) { return allOf(v6(c), anyOf(sport(c), change(c)), v8OrV12(c)); }},
        {"OR(Engine in {V6}, NOT(Engine in {V6}))", "TRUE", [](C c) { return anyOf(v6(c), notOf(v6(c))); }},
        {"OR(Engine in {V6}, NOTDOMAIN(Engine in {V6}))", "Engine in {V6, V8, V12}",
         [](C c) { return anyOf(v6(c), notDomainOf(v6(c))); }},
        {"NOTDOMAIN(AND(Engine in {V6}, NOT(Engine in {V6})))", "TRUE",
         [](C c) { return notDomainOf(allOf(v6(c), notOf(v6(c)))); }},
        {"AND(eff(ECO-1), eff(ECO-1))", "eff(ECO-1)", [](C c) { return allOf(change(c), change(c)); }},
        {"AND(eff(ECO-1), eff(ECO-1, Truck))", "AND(eff(ECO-1), eff(ECO-1, Truck))",
         [](C c) { return allOf(change(c), change(c, &c.truck)); }},
        {"OR(eff(ECO-1), Package in {Sport}, not (eff(ECO-1)))", "TRUE",
         [](C c) { return anyOf(change(c), sport(c), noChange(c)); }},
        {"AND(eff(ECO-1), NOT(eff(ECO-1)))", "FALSE", [](C c) { return allOf(change(c), notOf(change(c))); }},
        {"AND(Unit in [0, 10), Unit in [5, 20))", "Unit in [5, 9]",
         [](C c) { return allOf(leafOf(c.unitIn(0, 10)), leafOf(c.unitIn(5, 20))); }},
        // what nobody knows stays, and nothing is assumed of it
        {"restriction(text)", "restriction(text)", [](C) { return text(); }},
        {"AND(TRUE, restriction(text))", "restriction(text)", [](C) { return allOf(always(), text()); }},
        {"AND(restriction(text), restriction(text))", "AND(restriction(text), restriction(text))",
         [](C) { return allOf(text(), text()); }},
        {"OR(restriction(text), NOT(restriction(text)))", "OR(restriction(text), NOT(restriction(text)))",
         [](C) { return anyOf(text(), notOf(text())); }},
        {"AND(Engine in {V6}, restriction(text), FALSE)", "AND(FALSE, restriction(text))",
         [](C c) { return allOf(v6(c), text(), never()); }},
        {"AND(Engine in {V6}, restriction(text), Engine in {V8, V12})", "AND(FALSE, restriction(text))",
         [](C c) { return allOf(v6(c), text(), v8OrV12(c)); }},
        {"NOT(NOT(AND(restriction(text), TRUE)))", "restriction(text)",
         [](C) { return notOf(notOf(allOf(text(), always()))); }},
        {"NOT(AND(restriction(text), Engine in {V6}, TRUE))", "NOT(AND(restriction(text), Engine in {V6}))",
         [](C c) { return notOf(allOf(text(), v6(c), always())); }},
        {"NOT(NOTDOMAIN(NOT(OR(restriction(text)))))", "NOTDOMAIN(restriction(text))",
         [](C) { return notOf(notDomainOf(notOf(anyOf(text())))); }},
        {"AND(empty, empty)", "AND(empty, empty)",
         [](C) { return allOf(held(new QueltEeVarEffLeaf), held(new QueltEeVarEffLeaf)); }},
        {"NOT(eff(null))", "NOT(eff(null))",
         [](C) { return notOf(held(new QueltEeEffLeaf(nullptr, nullptr))); }},
        // Below a NOT-domain that stays, the leaves are [V8, V12] with and [V12] without "no variable", one
        // of which is to
        // hold: [V8, V12] with it. So the leaf that stands for both is [V6] with it, written as what it
        // leaves out.
        {"NOTDOMAIN(AND(restriction(text), Engine in {V6}?, Engine in {V6, V8}))",
         "NOTDOMAIN(AND(restriction(text), not (Engine in {V8, V12})?))",
         [](C c) {
             QueltEeVarEff* const withNoVariable = c.engineIn({"V6"});
             withNoVariable->switchNoVar();
             return notDomainOf(allOf(text(), leafOf(withNoVariable), v6OrV8(c)));
         }},
        // There, "everything but no variable" is what FALSE is elsewhere, and the constant that means the
        // same is TRUE.
        {"NOTDOMAIN(AND(restriction(text), Engine in {V6, V8, V12}))", "NOTDOMAIN(restriction(text))",
         [](C c) {
             return notDomainOf(allOf(text(), leafOf(c.engineIn({"V6", "V8", "V12"}))));
         }},
    };
    return cases;
}

/// The operators and leaves of the tree, and its aliases.
std::size_t countNodes(const QueltEeNodeRef& root) {
    std::size_t count = 0;
    for (const QueltEeNode* const node : nodesOf(root)) {
        QueltInLinkList children(QueltEeNodeRef::sType());
        if (const auto* const operation = dynamic_cast<const QueltEeOperator*>(node)) {
            operation->getChildrenRefs(children);
        }
        count +=
            1 + static_cast<std::size_t>(std::ranges::count_if(children.elements(), [](QueltInObject* child) {
                return !dynamic_cast<QueltEeNodeRef&>(*child).ownsNode();
            }));
    }
    return count;
}

bool isConstantNode(const QueltEeNode& node) {
    return QueltEeTrue::isObjectOfThisType(node) != 0 || QueltEeFalse::isObjectOfThisType(node) != 0;
}

/// True when the rewriting has to leave the node as it is.
bool isFixed(const QueltEeNode& node) {
    return isUnknown(node) || node.hasAliases();
}

bool holdsFixed(const QueltEeNode& node) {
    if (isFixed(node)) {
        return true;
    }
    QueltInLinkList children(QueltEeNodeRef::sType());
    if (const auto* const operation = dynamic_cast<const QueltEeOperator*>(&node)) {
        operation->getChildrenRefs(children);
    }
    return std::ranges::any_of(children.elements(), [](QueltInObject* child) {
        return holdsFixed(*dynamic_cast<QueltEeNodeRef&>(*child).getNode());
    });
}

/// Whether the tree is as short as the rewriting promises.
testing::AssertionResult isShortest(const QueltEeNode& node, bool isRoot = true) {
    if (isFixed(node)) {
        return testing::AssertionSuccess();
    }
    if (isConstantNode(node)) {
        return isRoot ? testing::AssertionSuccess() : testing::AssertionFailure() << "a constant in the tree";
    }
    if (const auto* const single = dynamic_cast<const QueltEeSingleOp*>(&node)) {
        const QueltEeNode& below = *single->getChildRef()->getNode();
        if (!holdsFixed(below)) {
            return testing::AssertionFailure() << "a negation that could have been carried out";
        }
        const bool isTwice = below.dType() == node.dType() && !isFixed(below);
        return isTwice ? testing::AssertionFailure() << "twice the same negation" : isShortest(below, false);
    }
    const auto* const group = dynamic_cast<const QueltEeGroupOp*>(&node);
    if (group == nullptr) {
        return testing::AssertionSuccess();
    }
    const auto children = group->getChildren().elements();
    if (children.size() < 2) {
        return testing::AssertionFailure() << "a group with a single child";
    }
    const QueltEeNode& first = *childOf(*group, 0).getNode();
    const bool isDecided = isConstantNode(first) && !isFixed(first);
    for (QueltInObject* const child : children.subspan(isDecided ? 1 : 0)) {
        const QueltEeNode& below = *dynamic_cast<QueltEeNodeRef&>(*child).getNode();
        if (below.dType() == node.dType() && !isFixed(below)) {
            return testing::AssertionFailure() << "a group in a group of the same kind";
        }
        if (isDecided && !holdsFixed(below)) {
            return testing::AssertionFailure() << "something beside the constant that decides the group";
        }
        if (const auto result = isShortest(below, false); !result) {
            return result;
        }
    }
    return testing::AssertionSuccess();
}

/// The leaves and operators of a tree that have to stay.
std::vector<const QueltEeNode*> fixedNodesOf(const QueltEeNodeRef& root) {
    std::vector<const QueltEeNode*> fixed;
    for (const QueltEeNode* const node : nodesOf(root)) {
        if (isFixed(*node)) {
            fixed.push_back(node);
        }
    }
    std::ranges::sort(fixed);
    return fixed;
}

struct Sampling {
    TreeShape shape;
    std::uint32_t seed;
    int rounds;
};

class TreeRewriting : public testing::TestWithParam<Sampling> {};

} // namespace

class RewriteTable : public testing::TestWithParam<RewriteCase> {};

TEST_P(RewriteTable, Rewrites) {
    const Catalogue catalogue;
    const OwnedReference tree = GetParam().make(catalogue);
    ASSERT_EQ(textOf(*tree), GetParam().before);
    const bool isToChange = std::string(GetParam().before) != GetParam().after;
    EXPECT_EQ(quelt::simplifyTree(*tree), isToChange);
    EXPECT_EQ(textOf(*tree), GetParam().after);
    EXPECT_FALSE(quelt::simplifyTree(*tree));
    EXPECT_EQ(textOf(*tree), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(QueltEeTreeRewriter, RewriteTable, testing::ValuesIn(rewriteCases()));

TEST_P(TreeRewriting, KeepsTheMeaningAndMakesNothingLonger) {
    const SampleWorld world;
    RandomExpressions random(world, GetParam().seed);
    int changed = 0;
    for (int round = 0; round < effort(GetParam().rounds); ++round) {
        const OwnedReference tree = random.tree(GetParam().shape);
        const std::string before = textOf(*tree);
        const std::size_t length = countNodes(*tree);
        const std::vector<const QueltEeNode*> fixed = fixedNodesOf(*tree);
        const PlainMeaning::Unknowns unknowns = random.tell(unknownsOf(*tree->getNode()));
        std::vector<SampleConfiguration> configurations;
        std::vector<bool> expected;
        std::vector<std::pair<long, bool>> evaluated;
        for (int sample = 0; sample < 8; ++sample) {
            configurations.push_back(random.configuration());
            const PlainMeaning meaning(configurations.back(), unknowns);
            expected.push_back(meaning.holds(*tree->getNode()));
            bool holds = false;
            const long result = meaning.evaluate(*tree->getNode(), holds);
            evaluated.emplace_back(result, holds);
        }

        const bool isChanged = quelt::simplifyTree(*tree);

        const std::string after = textOf(*tree);
        SCOPED_TRACE(before + "\nbecame " + after);
        changed += isChanged ? 1 : 0;
        ASSERT_EQ(isChanged, before != after);
        ASSERT_LE(countNodes(*tree), length);
        ASSERT_EQ(fixedNodesOf(*tree), fixed);
        for (std::size_t sample = 0; sample < configurations.size(); ++sample) {
            const PlainMeaning meaning(configurations[sample], unknowns);
            ASSERT_EQ(meaning.holds(*tree->getNode()), expected[sample]);
            // Where the result was certain without what nobody knows, it stays so.
            bool holds = false;
            if (evaluated[sample].first >= 0) {
                ASSERT_EQ(meaning.evaluate(*tree->getNode(), holds), evaluated[sample].first);
                ASSERT_EQ(holds, evaluated[sample].second);
            }
        }
        if (!isFixed(*tree->getNode())) {
            ASSERT_TRUE(isShortest(*tree->getNode()));
        }
        ASSERT_FALSE(quelt::simplifyTree(*tree));
        ASSERT_EQ(textOf(*tree), after);
    }
    EXPECT_GT(changed, effort(GetParam().rounds) / 2);
}

INSTANTIATE_TEST_SUITE_P(QueltEeTreeRewriter, TreeRewriting,
                         testing::Values(Sampling{{3, 4, false, false, false}, 1, 10000},
                                         Sampling{{5, 4, true, false, false}, 2, 20000},
                                         Sampling{{7, 3, true, false, false}, 3, 4000},
                                         Sampling{{5, 4, true, true, false}, 4, 20000},
                                         Sampling{{5, 4, true, false, true}, 5, 8000},
                                         Sampling{{6, 4, true, true, true}, 6, 8000}));

namespace {

/// Calls `visit` with every tree of AND, OR, NOT and NOT-domain over at most two levels of operators, with at
/// most two children, and these leaves.
void forEachSmallTree(const std::function<OwnedReference(int leaf)>& makeLeaf, int leaves,
                      const std::function<void(OwnedReference)>& visit) {
    using Maker = std::function<OwnedReference()>;
    std::vector<Maker> makers;
    for (int leaf = 0; leaf < leaves; ++leaf) {
        makers.push_back([&makeLeaf, leaf] { return makeLeaf(leaf); });
    }
    const auto addLevel = [](const std::vector<Maker>& below) {
        std::vector<Maker> all = below;
        all.push_back([] { return allOf(); });
        all.push_back([] { return anyOf(); });
        for (const Maker& left : below) {
            all.push_back([left] { return allOf(left()); });
            all.push_back([left] { return anyOf(left()); });
            all.push_back([left] { return notOf(left()); });
            all.push_back([left] { return notDomainOf(left()); });
            for (const Maker& right : below) {
                all.push_back([left, right] { return allOf(left(), right()); });
                all.push_back([left, right] { return anyOf(left(), right()); });
            }
        }
        return all;
    };
    for (const Maker& maker : addLevel(addLevel(makers))) {
        visit(maker());
    }
}

} // namespace

TEST(QueltEeTreeRewriter, KeepsTheMeaningOfEverySmallTree) {
    // Two leaves on one variable that overlap, of which one includes "no variable"; a leaf that is TRUE only
    // with the others; one on something else; the constants.
    const Catalogue catalogue;
    const auto makeLeaf = [&catalogue](int leaf) {
        switch (leaf) {
        case 0: {
            QueltEeVarEff* const effectivity = catalogue.engineIn({"V6", "V8"});
            effectivity->switchNoVar();
            return leafOf(effectivity);
        }
        case 1:
            return v8OrV12(catalogue);
        case 2:
            return change(catalogue);
        default:
            return leaf == 3 ? always() : never();
        }
    };
    std::vector<SampleConfiguration> configurations;
    for (const char* const value : {"V6", "V8", "V12", ""}) {
        for (const bool isThere : {false, true}) {
            SampleConfiguration& configuration = configurations.emplace_back();
            if (*value != '\0') {
                configuration.values[catalogue.engine.getGuid()] = value;
            }
            if (isThere) {
                configuration.effectivities.insert(catalogue.change.getGuid());
            }
        }
    }
    int count = 0;
    forEachSmallTree(makeLeaf, 5, [&](OwnedReference tree) {
        ++count;
        std::vector<bool> expected;
        for (const SampleConfiguration& configuration : configurations) {
            expected.push_back(PlainMeaning(configuration).holds(*tree->getNode()));
        }
        const std::string before = textOf(*tree);
        quelt::simplifyTree(*tree);
        for (std::size_t at = 0; at < configurations.size(); ++at) {
            ASSERT_EQ(PlainMeaning(configurations[at]).holds(*tree->getNode()), expected[at])
                << before << " became " << textOf(*tree);
        }
        ASSERT_TRUE(isShortest(*tree->getNode())) << before << " became " << textOf(*tree);
    });
    // 5 leaves give 77 trees of one level (5, 2 empty groups, 4 * 5 with one child, 2 * 25 with two), and
    // those 12,245.
    EXPECT_EQ(count, 12245);
}

TEST(QueltEeTreeRewriter, LeavesReferencesWhereTheyAreWhenNothingChanges) {
    const Catalogue catalogue;
    const OwnedReference tree = anyOf(allOf(v6(catalogue), sport(catalogue)), change(catalogue));
    const std::vector<QueltEeNode*> before = nodesOf(*tree);
    EXPECT_FALSE(quelt::simplifyTree(*tree));
    EXPECT_EQ(nodesOf(*tree), before);
}

TEST(QueltEeTreeRewriter, RewritesAPartWithoutMovingTheRest) {
    const Catalogue catalogue;
    const OwnedReference tree =
        anyOf(allOf(v6(catalogue), sport(catalogue)), allOf(change(catalogue), always()));
    const QueltEeNode* const untouched = childOf(groupIn(*tree), 0).getNode();
    EXPECT_TRUE(quelt::simplifyTree(*tree));
    EXPECT_EQ(childOf(groupIn(*tree), 0).getNode(), untouched);
    EXPECT_EQ(textOf(*tree), "OR(AND(Engine in {V6}, Package in {Sport}), eff(ECO-1))");
}

TEST(QueltEeTreeRewriter, LeavesATreeWhoseRootIsAliased) {
    const OwnedReference tree = allOf(always());
    const OwnedReference alias(QueltEeNodeRef::makeAlias(*tree->getNode()));
    EXPECT_FALSE(quelt::simplifyTree(*tree));
    EXPECT_FALSE(quelt::simplifyTree(*alias));
    EXPECT_EQ(textOf(*tree), "AND(TRUE)");
}

TEST(QueltEeTreeRewriter, LeavesAnEmptyReference) {
    QueltEeNodeRef empty;
    EXPECT_FALSE(quelt::simplifyTree(empty));
}

TEST(QueltEeTreeRewriter, LeavesWhatAliasesRelyOn) {
    const Catalogue catalogue;
    const OwnedReference tree =
        allOf(allOf(v6(catalogue), always()), notOf(v8OrV12(catalogue)), notOf(notOf(sport(catalogue))));
    const OwnedReference other = allOf();
    EXPECT_EQ(groupIn(*other).addChild(*childOf(groupIn(*tree), 0).getNode()), S_OK);
    EXPECT_TRUE(quelt::simplifyTree(*tree));
    EXPECT_EQ(textOf(*tree),
              "AND(AND(Engine in {V6}, TRUE), not (Engine in {V8, V12})?, Package in {Sport})");
    EXPECT_EQ(textOf(*other), "AND(AND(Engine in {V6}, TRUE))");
    EXPECT_FALSE(quelt::simplifyTree(*tree));
}

TEST(QueltEeTreeRewriter, KeepsAliasesBelowNegations) {
    const OwnedReference target = allOf(always(), always());
    const OwnedReference tree = notOf(notOf(OwnedReference(QueltEeNodeRef::makeAlias(*target->getNode()))));
    EXPECT_TRUE(quelt::simplifyTree(*tree));
    EXPECT_EQ(textOf(*tree), "AND(TRUE, TRUE)");
    EXPECT_EQ(tree->getNode(), target->getNode());
    EXPECT_FALSE(tree->ownsNode());
}

TEST(QueltEeTreeRewriter, LeavesAGroupWithAMissingChildAsItIs) {
    const Catalogue catalogue;
    OwnedReference target = always();
    const OwnedReference tree = allOf(always(), anyOf(never(), v6(catalogue)), sport(catalogue));
    QueltEeGroupOp& inner = groupIn(childOf(groupIn(*tree), 1));
    EXPECT_EQ(inner.getChildren().PutBack(*QueltEeNodeRef::makeAlias(*target->getNode())), S_OK);
    target.reset();
    EXPECT_TRUE(quelt::simplifyTree(*tree));
    EXPECT_EQ(textOf(*tree), "AND(OR(FALSE, Engine in {V6}, null), Package in {Sport})");
}

TEST(QueltEeTreeRewriter, TellsTheClassifierOfItsChanges) {
    const Catalogue catalogue;
    const OwnedReference tree =
        anyOf(allOf(v6(catalogue), leafOf(catalogue.unitIn(1, 1))), change(catalogue));
    QueltEVCClassification before(0);
    EXPECT_EQ(QueltCoreEVC_NodeClassifier().classify(*tree, before), S_OK);
    EXPECT_TRUE(before.isVariant() != 0 && before.isEvolution() != 0);
    EXPECT_TRUE(quelt::simplifyTree(*tree)); // nothing is in [1, 1), so the conjunction goes
    EXPECT_EQ(textOf(*tree), "eff(ECO-1)");
    QueltEVCClassification after(0);
    EXPECT_EQ(QueltCoreEVC_NodeClassifier().classify(*tree, after), S_OK);
    EXPECT_TRUE(after.isVariant() == 0 && after.isEvolution() == 0 && after.isChange() != 0);
}

TEST(QueltEeTreeRewriter, CombinesVariablesWithOneGuidOnlyWhenTheirValuesAgree) {
    const SampleWorld world;
    const auto engineOf = [&world](std::size_t dictionary, const char* value) {
        const QueltEeCatOptionVar* const engine = world.options[dictionary];
        auto* const effectivity = new QueltEeOptionEff(engine);
        EXPECT_EQ(effectivity->addValue(engine->findValue(value).value()), S_OK);
        return leafOf(effectivity);
    };
    const OwnedReference agreeing = anyOf(engineOf(0, "V6"), engineOf(1, "V8"));
    EXPECT_TRUE(quelt::simplifyTree(*agreeing));
    EXPECT_EQ(textOf(*agreeing), "Engine in {V6, V8}");
    const OwnedReference disagreeing =
        anyOf(engineOf(2, "Diesel"), engineOf(0, "V6"), engineOf(2, "V8"), engineOf(1, "V8"));
    EXPECT_TRUE(quelt::simplifyTree(*disagreeing));
    EXPECT_EQ(textOf(*disagreeing), "OR(Engine in {V8, Diesel}, Engine in {V6, V8})");
}

TEST(QueltEeTreeRewriter, GoesAsDeepAsTheTree) {
    constexpr std::size_t depth = effort(1'000'000);
    const OwnedReference negations = singleChain<QueltEeNotOp>(depth + 1);
    EXPECT_TRUE(quelt::simplifyTree(*negations));
    EXPECT_EQ(textOf(*negations), "FALSE");

    OwnedReference groups = always();
    for (std::size_t level = 0; level < depth; ++level) {
        groups = level % 2 == 0 ? allOf(std::move(groups)) : anyOf(std::move(groups));
    }
    EXPECT_TRUE(quelt::simplifyTree(*groups));
    EXPECT_EQ(textOf(*groups), "TRUE");

    // A leaf that nobody knows at the bottom, and negations that have to stay.
    OwnedReference unknown = text();
    for (std::size_t level = 0; level < depth / 2; ++level) {
        unknown = notOf(allOf(std::move(unknown), always()));
    }
    EXPECT_TRUE(quelt::simplifyTree(*unknown));
    EXPECT_EQ(textOf(*unknown), "restriction(text)");
}

TEST(QueltEeTreeRewriter, TakesTimeInProportionToTheTree) {
    std::vector<std::unique_ptr<QueltEePredefEff>> changes;
    for (int number = 0; number < 2000; ++number) {
        changes.push_back(std::make_unique<QueltEePredefEff>("ECO-" + std::to_string(number), QueltInGuid()));
    }
    // Groups in groups of the same kind, which show as such only after those between them have become single
    // children.
    constexpr std::size_t depth = 100'000;
    OwnedReference tree = always();
    for (std::size_t level = 0; level < depth; ++level) {
        QueltEePredefEff* const effectivity = changes[level % changes.size()].get();
        tree = anyOf(allOf(held(new QueltEeEffLeaf(effectivity, nullptr)), std::move(tree)), never());
    }
    EXPECT_TRUE(quelt::simplifyTree(*tree));
    EXPECT_EQ(groupIn(*tree).getChildren().GetLength(), 2000);
    EXPECT_EQ(textOf(childOf(groupIn(*tree), 0)), "eff(ECO-1999)"); // the uppermost comes first

    // Negations that stay, each above a group that changes.
    tree = text();
    for (std::size_t level = 0; level < depth; ++level) {
        QueltEePredefEff* const effectivity = changes[level % changes.size()].get();
        tree = notOf(allOf(held(new QueltEeEffLeaf(effectivity, nullptr)), std::move(tree), always()));
    }
    EXPECT_TRUE(quelt::simplifyTree(*tree));
    EXPECT_EQ(countNodes(*tree), 1 + 3 * depth);
}

TEST(QueltEeTreeRewriter, CombinesManyLeavesOnOneVariable) {
    constexpr int count = 100'000;
    const Catalogue catalogue;
    const OwnedReference tree = anyOf();
    for (int number = 0; number < count; ++number) {
        EXPECT_EQ(groupIn(*tree).addChild(
                      *leafOf(catalogue.unitIn(2 * number, 2 * number + 1)).release()->getNode()),
                  S_OK);
    }
    EXPECT_TRUE(quelt::simplifyTree(*tree));
    const auto* const leaf = dynamic_cast<const QueltEeVarEffLeaf*>(tree->getNode());
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(dynamic_cast<const QueltEeSerialEff*>(leaf->getVarEff())->intervals().size(),
              std::size_t{count});
}

TEST(QueltEeTreeRewriter, StopsCombiningWhereItWouldTakeTooLong) {
    // Each level adds a number and, so that groups alternate, takes away another one far off: combined leaf
    // by leaf, a set of up to 20,000 intervals would be copied 40,000 times.
    constexpr int depth = 20'000;
    const Catalogue catalogue;
    OwnedReference tree = never();
    for (int level = 0; level < depth; ++level) {
        OwnedReference without = leafOf(catalogue.unitIn(1'000'000 + 2 * level, 1'000'000 + 2 * level + 1));
        tree = allOf(notOf(std::move(without)),
                     anyOf(leafOf(catalogue.unitIn(2 * level, 2 * level + 1)), std::move(tree)));
    }
    EXPECT_TRUE(quelt::simplifyTree(*tree));
    for (const std::int64_t number : {0, 1, 2, 2 * depth - 2, 2 * depth - 1, 1'000'000, 1'000'001}) {
        QueltEeConfiguration configuration;
        configuration.setSequenceNumber(catalogue.unit.getGuid(), number);
        bool holds = false;
        ASSERT_EQ(QueltEeEvaluator(configuration).evaluate(*tree->getNode(), holds), S_OK);
        EXPECT_EQ(holds, number % 2 == 0 && number < 2 * depth) << number;
    }
}
