// Combining two leaves, and turning one round, as a new tree and in place, with random leaves.

#include "core/support/Effort.h"
#include "core/support/RandomExpressions.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using Leaf = QueltEeNodeElementaryLeaf;

/// One of the two operations on two leaves.
struct Operation {
    const char* name;
    long (Leaf::*makeTree)(const Leaf&, QueltEeNodeRef*&) const;
    long (Leaf::*inPlace)(const Leaf&);
    bool (*onValues)(bool, bool);
    bool isAnd;
};

void PrintTo(const Operation& operation, std::ostream* stream) {
    *stream << operation.name;
}

OwnedReference heldLeaf(Leaf* leaf) {
    return OwnedReference(leaf->getNodeRef());
}

Leaf& leafIn(const OwnedReference& reference) {
    return *Leaf::cast(reference->getNode());
}

bool holdsIn(const SampleConfiguration& configuration, const QueltEeNode& node) {
    return PlainMeaning(configuration).holds(node);
}

/// Whether the two can be said as one leaf, or a constant.
bool dependOnTheSame(const Leaf& left, const Leaf& right) {
    if (const auto* const one = dynamic_cast<const QueltEeEffLeaf*>(&left)) {
        const auto* const other = dynamic_cast<const QueltEeEffLeaf*>(&right);
        return other != nullptr && one->getTargetEff() == other->getTargetEff() &&
               one->getReferencedContext() == other->getReferencedContext();
    }
    const auto* const one = dynamic_cast<const QueltEeVarEffLeaf*>(&left);
    const auto* const other = dynamic_cast<const QueltEeVarEffLeaf*>(&right);
    return other != nullptr && one->getVarEff()->dType() == other->getVarEff()->dType() &&
           one->getVarEff()->getVar() == other->getVarEff()->getVar();
}

class LeafCombination : public testing::TestWithParam<Operation> {};

} // namespace

TEST_P(LeafCombination, MakesATreeThatMeansBoth) {
    const SampleWorld world;
    RandomExpressions random(world, 41);
    int asOne = 0;
    for (int round = 0; round < effort(20000); ++round) {
        const OwnedReference left = heldLeaf(random.criterion());
        const OwnedReference right = heldLeaf(random.criterion());
        const std::string texts = textOf(*left) + " with " + textOf(*right);
        QueltEeNodeRef* made = nullptr;
        ASSERT_EQ((leafIn(left).*GetParam().makeTree)(leafIn(right), made), S_OK) << texts;
        const OwnedReference tree(made);
        ASSERT_EQ(textOf(*left) + " with " + textOf(*right), texts);
        for (int sample = 0; sample < 6; ++sample) {
            const SampleConfiguration configuration = random.configuration();
            const bool expected = GetParam().onValues(holdsIn(configuration, *left->getNode()),
                                                      holdsIn(configuration, *right->getNode()));
            ASSERT_EQ(holdsIn(configuration, *tree->getNode()), expected) << texts << ": " << textOf(*tree);
        }
        const auto* const group = dynamic_cast<const QueltEeGroupOp*>(tree->getNode());
        if (group != nullptr) {
            ASSERT_EQ(group->isAnd(), GetParam().isAnd);
            ASSERT_EQ(group->getChildren().GetLength(), 2) << texts;
            ASSERT_FALSE(dependOnTheSame(leafIn(left), leafIn(right))) << texts;
        } else {
            ASSERT_NE(dynamic_cast<const QueltEeNodeLeaf*>(tree->getNode()), nullptr) << texts;
        }
        asOne += group == nullptr ? 1 : 0;
    }
    EXPECT_GT(asOne, effort(1000));
}

TEST_P(LeafCombination, CombinesInPlaceOrChangesNothing) {
    const SampleWorld world;
    RandomExpressions random(world, 42);
    int combined = 0;
    for (int round = 0; round < effort(20000); ++round) {
        const OwnedReference left = heldLeaf(random.criterion());
        const OwnedReference right = heldLeaf(random.criterion());
        const std::string leftText = textOf(*left);
        const std::string rightText = textOf(*right);
        const OwnedReference before(left->getNode()->clone());
        const QueltEeNode* const node = left->getNode();
        const long result = (leafIn(left).*GetParam().inPlace)(leafIn(right));
        ASSERT_EQ(left->getNode(), node);
        ASSERT_EQ(textOf(*right), rightText);
        if (result < 0) {
            ASSERT_EQ(result, E_INVALIDARG);
            ASSERT_EQ(textOf(*left), leftText);
            continue;
        }
        ++combined;
        for (int sample = 0; sample < 6; ++sample) {
            const SampleConfiguration configuration = random.configuration();
            const bool expected = GetParam().onValues(holdsIn(configuration, *before->getNode()),
                                                      holdsIn(configuration, *right->getNode()));
            ASSERT_EQ(holdsIn(configuration, *left->getNode()), expected)
                << leftText << " with " << rightText;
        }
    }
    EXPECT_GT(combined, effort(500));
}

INSTANTIATE_TEST_SUITE_P(Operations, LeafCombination,
                         testing::Values(Operation{"opAnd", &Leaf::opAnd, &Leaf::opAnd,
                                                   [](bool a, bool b) { return a && b; }, true},
                                         Operation{"opOr", &Leaf::opOr, &Leaf::opOr,
                                                   [](bool a, bool b) { return a || b; }, false}),
                         [](const auto& instance) { return instance.param.name; });

TEST(LeafNegation, TurnsALeafRoundBothWays) {
    const SampleWorld world;
    RandomExpressions random(world, 43);
    for (int round = 0; round < effort(20000); ++round) {
        const OwnedReference leaf = heldLeaf(random.criterion());
        const OwnedReference before(leaf->getNode()->clone());
        const std::string text = textOf(*leaf);
        QueltEeNodeRef* made = nullptr;
        ASSERT_EQ(leafIn(leaf).opNot(made), S_OK);
        const OwnedReference tree(made);
        ASSERT_EQ(textOf(*leaf), text);
        ASSERT_NE(dynamic_cast<const QueltEeNodeLeaf*>(tree->getNode()), nullptr) << text;
        ASSERT_EQ(leafIn(leaf).opNot(), S_OK);
        for (int sample = 0; sample < 6; ++sample) {
            const SampleConfiguration configuration = random.configuration();
            const bool expected = !holdsIn(configuration, *before->getNode());
            ASSERT_EQ(holdsIn(configuration, *tree->getNode()), expected) << text;
            ASSERT_EQ(holdsIn(configuration, *leaf->getNode()), expected) << text;
        }
    }
}

TEST(LeafConstancy, IsWhatEveryConfigurationSays) {
    const SampleWorld world;
    RandomExpressions random(world, 44);
    int constants = 0;
    for (int round = 0; round < effort(20000); ++round) {
        const OwnedReference reference = heldLeaf(random.criterion());
        const Leaf& leaf = leafIn(reference);
        const auto* const varEffLeaf = dynamic_cast<const QueltEeVarEffLeaf*>(&leaf);
        const bool isTrue = varEffLeaf != nullptr && isConstant(*varEffLeaf->getVarEff(), true);
        const bool isFalse = varEffLeaf != nullptr && isConstant(*varEffLeaf->getVarEff(), false);
        ASSERT_EQ(leaf.isEquivalentToTrue() != 0, isTrue) << textOf(leaf);
        ASSERT_EQ(leaf.isEquivalentToFalse() != 0, isFalse) << textOf(leaf);
        constants += isTrue || isFalse ? 1 : 0;
        ASSERT_EQ(leafIn(reference).convertToTrueFalse() != 0, isTrue || isFalse);
        if (isTrue || isFalse) {
            ASSERT_EQ(textOf(*reference), isTrue ? "TRUE" : "FALSE");
        }
    }
    EXPECT_GT(constants, effort(500));
}
