#include "expression/QueltEeNode.h"

#include "core/expression/ExpressionSamples.h"

namespace {

class QueltEeNodeTest : public testing::Test {
protected:
    using CountedTrue = Counted<QueltEeTrue>;
    using CountedAnd = Counted<QueltEeAndOp>;

    int m_alive = 0;
};

} // namespace

TEST_F(QueltEeNodeTest, GetNodeRefMakesOneOwningReference) {
    auto* const node = new CountedTrue(m_alive);
    EXPECT_FALSE(node->hasNodeRef());
    QueltEeNodeRef* const reference = node->getNodeRef();
    EXPECT_TRUE(node->hasNodeRef());
    EXPECT_EQ(node->getNodeRef(), reference);
    EXPECT_EQ(reference->getNode(), node);
    EXPECT_TRUE(reference->ownsNode());
    EXPECT_TRUE(reference->standsAlone());
    delete reference;
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeNodeTest, AnEmptyReferenceHoldsNothing) {
    QueltEeNodeRef reference;
    EXPECT_EQ(reference.getNode(), nullptr);
    EXPECT_EQ(reference.takeFor(nullptr), nullptr);
    EXPECT_TRUE(reference.standsAlone());
    EXPECT_EQ(textOf(reference), "null");
}

TEST_F(QueltEeNodeTest, ASecondReferenceIsAnAlias) {
    auto* const node = new CountedTrue(m_alive);
    const OwnedReference owner = held(node);
    {
        const QueltEeNodeRef second(node);
        EXPECT_FALSE(second.ownsNode());
        EXPECT_EQ(second.getNode(), node);
    }
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(node->getNodeRef(), owner.get());
}

TEST_F(QueltEeNodeTest, DeletingANodeDeletesTheReferenceThatStandsAlone) {
    auto* const node = new CountedTrue(m_alive);
    EXPECT_NE(node->getNodeRef(), nullptr); // the leak check tells when it stays
    delete node;
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeNodeTest, DeletingANodeEmptiesTheReferenceThatIsHeld) {
    const OwnedReference group = allOf(held(new CountedTrue(m_alive)), never());
    QueltEeNodeRef& child = childOf(groupIn(*group), 0);
    delete child.getNode();
    EXPECT_EQ(m_alive, 0);
    EXPECT_EQ(child.getNode(), nullptr);
    EXPECT_FALSE(child.standsAlone());
    EXPECT_EQ(groupIn(*group).getChildren().GetLength(), 2);
    EXPECT_EQ(textOf(*group), "AND(null, FALSE)");
}

TEST_F(QueltEeNodeTest, ANodeOnTheStackTakesItsReferenceWithIt) {
    const OwnedReference alias = [&] {
        CountedTrue node(m_alive);
        return OwnedReference(QueltEeNodeRef::makeAlias(node));
    }();
    EXPECT_EQ(alias->getNode(), nullptr);
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeNodeTest, AliasesDoNotOwnAndGoEmptyWithTheNode) {
    auto* const node = new CountedTrue(m_alive);
    OwnedReference owner = held(node);
    const OwnedReference first(QueltEeNodeRef::makeAlias(*node));
    OwnedReference second(QueltEeNodeRef::makeAlias(*node));
    const OwnedReference third(QueltEeNodeRef::makeAlias(*node));
    second.reset(); // out of the middle of the node's aliases
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(first->getNode(), node);
    EXPECT_EQ(third->getNode(), node);
    owner.reset();
    EXPECT_EQ(m_alive, 0);
    EXPECT_EQ(first->getNode(), nullptr);
    EXPECT_EQ(third->getNode(), nullptr);
    EXPECT_EQ(textOf(*first), "null");
}

TEST_F(QueltEeNodeTest, AliasesMayGoInAnyOrder) {
    Random random(7);
    for (int round = 0; round < 50; ++round) {
        const OwnedReference owner = held(new CountedTrue(m_alive));
        std::vector<OwnedReference> aliases;
        for (int count = 0; count < 6; ++count) {
            aliases.emplace_back(QueltEeNodeRef::makeAlias(*owner->getNode()));
        }
        while (!aliases.empty()) {
            aliases.erase(aliases.begin() + random.below(aliases.size()));
            for (const OwnedReference& alias : aliases) {
                EXPECT_EQ(alias->getNode(), owner->getNode());
            }
        }
        EXPECT_EQ(m_alive, 1);
    }
}

TEST_F(QueltEeNodeTest, TakeForTakesWhatStandsAloneAndAliasesWhatIsHeld) {
    QueltEeAndOp holder;
    const OwnedReference owner = always();
    EXPECT_EQ(owner->takeFor(&holder), owner.get());
    EXPECT_FALSE(owner->standsAlone());

    const OwnedReference alias(owner->takeFor(nullptr));
    ASSERT_NE(alias, nullptr);
    EXPECT_NE(alias, owner);
    EXPECT_EQ(alias->getNode(), owner->getNode());
    EXPECT_FALSE(alias->ownsNode());
    EXPECT_FALSE(alias->standsAlone());

    alias->letGo();
    EXPECT_TRUE(alias->standsAlone());
    EXPECT_EQ(alias->takeFor(nullptr), alias.get()); // an alias that stands alone is taken as it is
    owner->letGo();
    EXPECT_TRUE(owner->standsAlone());
}

TEST_F(QueltEeNodeTest, DeletingAnOwnerDeletesTheTreeButNoAliasedNode) {
    const OwnedReference elsewhere = allOf(held(new CountedTrue(m_alive)));
    QueltEeNode& shared = *childOf(groupIn(*elsewhere), 0).getNode();
    OwnedReference tree = allOf(notOf(held(new CountedTrue(m_alive))), anyOf(held(new CountedTrue(m_alive))));
    EXPECT_EQ(groupIn(*tree).addChild(shared), S_OK);
    EXPECT_EQ(m_alive, 3);
    tree.reset();
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(textOf(*elsewhere), "AND(TRUE)");
}

TEST_F(QueltEeNodeTest, ATreeWithAliasesOfItsOwnPartsIsDeletedOnce) {
    OwnedReference tree = anyOf(notOf(held(new CountedTrue(m_alive))));
    QueltEeNode& inner = *singleIn(childOf(groupIn(*tree), 0)).getChildRef()->getNode();
    EXPECT_EQ(groupIn(*tree).addChild(inner), S_OK);
    EXPECT_EQ(groupIn(*tree).getChildren().Set(0, *inner.getNodeRef()), S_OK);
    EXPECT_EQ(textOf(*tree), "OR(TRUE, NOT(TRUE), TRUE)");
    tree.reset();
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeNodeTest, IsAtOrAboveFollowsOwnersAndAliases) {
    const OwnedReference tree = allOf(anyOf(always()), never());
    QueltEeNode& root = *tree->getNode();
    QueltEeNode& middle = *childOf(groupIn(*tree), 0).getNode();
    QueltEeNode& leaf = *childOf(groupIn(childOf(groupIn(*tree), 0)), 0).getNode();
    QueltEeNode& other = *childOf(groupIn(*tree), 1).getNode();
    const OwnedReference elsewhere = allOf(allOf());
    QueltEeGroupOp& holderOfAlias = groupIn(childOf(groupIn(*elsewhere), 0));
    EXPECT_EQ(holderOfAlias.addChild(middle), S_OK);

    EXPECT_TRUE(root.isAtOrAbove(root));
    EXPECT_TRUE(root.isAtOrAbove(leaf));
    EXPECT_TRUE(middle.isAtOrAbove(leaf));
    EXPECT_TRUE(elsewhere->getNode()->isAtOrAbove(leaf));
    EXPECT_TRUE(holderOfAlias.isAtOrAbove(leaf));
    EXPECT_FALSE(leaf.isAtOrAbove(root));
    EXPECT_FALSE(middle.isAtOrAbove(other));
    EXPECT_FALSE(elsewhere->getNode()->isAtOrAbove(root));
    EXPECT_FALSE(root.isAtOrAbove(holderOfAlias));
}

TEST_F(QueltEeNodeTest, ClonesAreDeepAndStandAlone) {
    Catalogue catalogue;
    const OwnedReference tree =
        allOf(leafOf(catalogue.engineIn({"V6", "V8"})), notOf(anyOf(always(), never())),
              notOf<QueltEeNotDomainOp>(held(new QueltEeEffLeaf(&catalogue.change, &catalogue.truck))),
              held(new QueltEeNotOp), held(new QueltEeRestrictionEffLeaf("a b")), leafOf(nullptr), allOf());
    const std::string text = textOf(*tree);
    EXPECT_EQ(text, "AND(Engine in {V6, V8}, NOT(OR(TRUE, FALSE)), NOTDOMAIN(eff(ECO-1, Truck)), NOT(), "
                    "restriction(\"a b\"), empty, AND())");
    const OwnedReference copy(tree->getNode()->clone());
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->standsAlone());
    EXPECT_TRUE(copy->ownsNode());
    EXPECT_EQ(textOf(*copy), text);

    const auto effectivityIn = [](const QueltEeNodeRef& reference) {
        return QueltEeVarEffLeaf::cast(childOf(groupIn(reference), 0).getNode())->getVarEff();
    };
    EXPECT_NE(effectivityIn(*copy), effectivityIn(*tree));
    EXPECT_EQ(effectivityIn(*tree)->opNot(), S_OK);
    EXPECT_EQ(textOf(*copy), text);
}

TEST_F(QueltEeNodeTest, ClonesKeepWhatAnOperatorRemembers) {
    const OwnedReference generated = held(new QueltEeNotOp(1));
    const OwnedReference copy(generated->getNode()->clone());
    EXPECT_EQ(QueltEeNotOp::cast(copy->getNode())->isGenerated(), 1);
}

TEST_F(QueltEeNodeTest, AliasedChildrenBecomeCopiesOfTheClonesOwn) {
    const OwnedReference elsewhere = allOf(held(new CountedTrue(m_alive)));
    OwnedReference tree = allOf();
    EXPECT_EQ(groupIn(*tree).addChild(*childOf(groupIn(*elsewhere), 0).getNode()), S_OK);
    const OwnedReference copy(tree->getNode()->clone());
    EXPECT_TRUE(childOf(groupIn(*copy), 0).ownsNode());
    EXPECT_NE(childOf(groupIn(*copy), 0).getNode(), childOf(groupIn(*tree), 0).getNode());
}

TEST_F(QueltEeNodeTest, ALeafThatGivesItselfForACopyIsShared) {
    const OwnedReference tree = allOf(always(), held(new Shared), anyOf(held(new Shared), never()));
    OwnedReference copy(tree->getNode()->clone());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(textOf(*copy), "AND(TRUE, TRUE, OR(TRUE, FALSE))");
    EXPECT_TRUE(childOf(groupIn(*copy), 0).ownsNode());
    EXPECT_FALSE(childOf(groupIn(*copy), 1).ownsNode());
    EXPECT_EQ(childOf(groupIn(*copy), 1).getNode(), childOf(groupIn(*tree), 1).getNode());
    copy.reset();
    EXPECT_EQ(textOf(*tree), "AND(TRUE, TRUE, OR(TRUE, FALSE))");
}

TEST_F(QueltEeNodeTest, ClonesOfWideAndDeepTreesSayTheSame) {
    OwnedReference tree = allOf();
    for (int depth = 0; depth < 40; ++depth) {
        for (int width = 0; width <= depth; ++width) {
            EXPECT_EQ(groupIn(*tree).addChild(*new CountedTrue(m_alive)), S_OK);
        }
        tree = depth % 2 == 0 ? anyOf(std::move(tree)) : notOf(std::move(tree));
        tree = allOf(never(), std::move(tree), always());
    }
    const OwnedReference copy(tree->getNode()->clone());
    EXPECT_EQ(textOf(*copy), textOf(*tree));
}

TEST_F(QueltEeNodeTest, WhatCannotBeCopiedGivesNoClone) {
    const OwnedReference unique = allOf(anyOf(always(), never()), notOf(held(new Unique)), always());
    EXPECT_EQ(unique->getNode()->clone(), nullptr);

    const OwnedReference missing = allOf(always(), never());
    delete childOf(groupIn(*missing), 1).getNode();
    EXPECT_EQ(missing->getNode()->clone(), nullptr);
}

TEST_F(QueltEeNodeTest, TextsShowTheExactStructure) {
    EXPECT_EQ(textOf(*allOf()), "AND()");
    EXPECT_EQ(textOf(*anyOf(allOf(always()), notOf(never()), anyOf())), "OR(AND(TRUE), NOT(FALSE), OR())");
    EXPECT_EQ(textOf(*held(new QueltEeNotDomainOp)), "NOTDOMAIN()");
}
