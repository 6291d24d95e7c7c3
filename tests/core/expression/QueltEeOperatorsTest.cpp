#include "expression/QueltEeOperators.h"

#include "expression/QueltEeGenericExpression.h"

#include "core/expression/ExpressionSamples.h"

namespace {

class QueltEeOperatorsTest : public testing::Test {
protected:
    using CountedTrue = Counted<QueltEeTrue>;
    using CountedAnd = Counted<QueltEeAndOp>;

    [[nodiscard]] OwnedReference counted() { return held(new CountedTrue(m_alive)); }

    int m_alive = 0;
};

/// Takes the child that it is shown out of its group.
class Remover : public Recorder {
public:
    explicit Remover(QueltEeGroupOp& group) : m_group(group) {}
    long visitTrue(QueltEeTrue& node) override {
        for (unsigned int position = 0; m_group.getChildren().Get(position) != nullptr; ++position) {
            if (m_group.getChildren().Get(position) == node.getNodeRef()) {
                EXPECT_EQ(m_group.getChildren().Remove(position), S_OK);
            }
        }
        Recorder::visitTrue(node);
        delete node.getNodeRef();
        return S_OK;
    }

private:
    QueltEeGroupOp& m_group;
};

} // namespace

TEST_F(QueltEeOperatorsTest, AddChildTakesANodeThatStandsAloneWithItsReference) {
    OwnedReference group = allOf();
    auto* const node = new CountedTrue(m_alive);
    QueltEeNodeRef* const reference = node->getNodeRef();
    EXPECT_EQ(groupIn(*group).addChild(*node), S_OK);
    EXPECT_EQ(&childOf(groupIn(*group), 0), reference);
    EXPECT_FALSE(reference->standsAlone());
    group.reset();
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeOperatorsTest, AddChildTakesANodeThatHasNoReferenceYet) {
    OwnedReference group = anyOf();
    EXPECT_EQ(groupIn(*group).addChild(*new CountedTrue(m_alive)), S_OK);
    EXPECT_TRUE(childOf(groupIn(*group), 0).ownsNode());
    group.reset();
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeOperatorsTest, AddChildMakesAnAliasOfANodeThatHasAParent) {
    const OwnedReference parent = notOf(counted());
    QueltEeNode& node = *singleIn(*parent).getChildRef()->getNode();
    OwnedReference group = allOf();
    EXPECT_EQ(groupIn(*group).addChild(node), S_OK);
    EXPECT_EQ(groupIn(*group).addChild(node), S_OK);
    for (const unsigned int position : {0U, 1U}) {
        EXPECT_EQ(childOf(groupIn(*group), position).getNode(), &node);
        EXPECT_FALSE(childOf(groupIn(*group), position).ownsNode());
        EXPECT_FALSE(childOf(groupIn(*group), position).standsAlone());
    }
    EXPECT_EQ(node.getNodeRef(), singleIn(*parent).getChildRef());
    group.reset();
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(textOf(*parent), "NOT(TRUE)");
}

TEST_F(QueltEeOperatorsTest, NothingBecomesItsOwnAncestor) {
    const OwnedReference root = allOf(anyOf(notOf(allOf(always()))));
    QueltEeGroupOp& top = groupIn(*root);
    QueltEeGroupOp& middle = groupIn(childOf(top, 0));
    QueltEeSingleOp& operation = singleIn(childOf(middle, 0));
    QueltEeGroupOp& bottom = groupIn(*operation.getChildRef());
    for (QueltEeNode* const above : std::initializer_list<QueltEeNode*>{&bottom, &operation, &middle, &top}) {
        EXPECT_EQ(bottom.addChild(*above), E_INVALIDARG);
        EXPECT_EQ(bottom.getChildren().Set(0, *above->getNodeRef()), E_INVALIDARG);
    }
    EXPECT_EQ(operation.setChildRef(*operation.getNodeRef()), E_INVALIDARG);
    EXPECT_EQ(operation.setChildRef(*root), E_INVALIDARG);
    EXPECT_EQ(textOf(*root), "AND(OR(NOT(AND(TRUE))))");
    EXPECT_TRUE(root->standsAlone());
    EXPECT_EQ(top.addChild(bottom), S_OK); // below is not above
    EXPECT_EQ(textOf(*root), "AND(OR(NOT(AND(TRUE))), AND(TRUE))");
}

TEST_F(QueltEeOperatorsTest, NothingBecomesItsOwnAncestorHoweverFarAbove) {
    constexpr std::size_t depth = 30;
    const OwnedReference root = allOf();
    const OwnedReference stranger = allOf(always());
    std::vector<QueltEeGroupOp*> levels{&groupIn(*root)};
    while (levels.size() < depth) {
        auto* const next = new QueltEeAndOp;
        ASSERT_EQ(levels.back()->addChild(*next), S_OK);
        levels.push_back(next);
        for (QueltEeGroupOp* const above : levels) {
            EXPECT_EQ(next->addChild(*above), E_INVALIDARG);
            EXPECT_TRUE(above->isAtOrAbove(*next));
        }
        EXPECT_FALSE(stranger->getNode()->isAtOrAbove(*next));
    }
    for (QueltEeGroupOp* const aliased : levels) { // from there on there are two ways up
        const OwnedReference alias(QueltEeNodeRef::makeAlias(*aliased));
        for (QueltEeGroupOp* const above : levels) {
            EXPECT_TRUE(above->isAtOrAbove(*levels.back()));
        }
        EXPECT_FALSE(stranger->getNode()->isAtOrAbove(*levels.back()));
    }
}

TEST_F(QueltEeOperatorsTest, ReferencesKnowTheOperatorThatHoldsThem) {
    OwnedReference group = allOf(notOf(always()));
    const QueltEeNodeRef& operation = childOf(groupIn(*group), 0);
    EXPECT_EQ(group->getHolder(), nullptr);
    EXPECT_EQ(operation.getHolder(), group->getNode());
    EXPECT_EQ(singleIn(operation).getChildRef()->getHolder(), operation.getNode());
    const OwnedReference alias(QueltEeNodeRef::makeAlias(*operation.getNode()));
    EXPECT_EQ(alias->getHolder(), nullptr);
    groupIn(*group).removeChildren();
    const OwnedReference alone(operation.getNode()->getNodeRef());
    EXPECT_EQ(alone->getHolder(), nullptr);
    QueltEeGenericExpression expression(group.get());
    EXPECT_EQ(group.release()->getHolder(), nullptr);
}

TEST_F(QueltEeOperatorsTest, NothingBecomesItsOwnAncestorThroughAliases) {
    const OwnedReference owner = allOf(anyOf(always()));
    QueltEeGroupOp& shared = groupIn(childOf(groupIn(*owner), 0));
    const OwnedReference other = notOf(allOf());
    QueltEeGroupOp& holderOfAlias = groupIn(*singleIn(*other).getChildRef());
    EXPECT_EQ(holderOfAlias.addChild(shared), S_OK);
    EXPECT_EQ(shared.addChild(*other->getNode()), E_INVALIDARG);
    EXPECT_EQ(shared.addChild(holderOfAlias), E_INVALIDARG);
    const OwnedReference alias(QueltEeNodeRef::makeAlias(holderOfAlias));
    EXPECT_EQ(shared.getChildren().PutBack(*alias), E_INVALIDARG);
    EXPECT_TRUE(alias->standsAlone());
}

TEST_F(QueltEeOperatorsTest, SetPutsBeforeAndTakesOver) {
    const OwnedReference group = allOf(always(), never());
    EXPECT_EQ(groupIn(*group).getChildren().Set(1, *notOf(always()).release()), S_OK);
    EXPECT_EQ(groupIn(*group).getChildren().Set(3, *anyOf().release()), S_OK);
    EXPECT_EQ(textOf(*group), "AND(TRUE, NOT(TRUE), FALSE, OR())");
    EXPECT_FALSE(childOf(groupIn(*group), 1).standsAlone());
}

TEST_F(QueltEeOperatorsTest, SetMakesAnAliasOfWhatIsHeldElsewhere) {
    const OwnedReference parent = allOf(always());
    const OwnedReference group = anyOf();
    QueltEeNodeRef& heldElsewhere = childOf(groupIn(*parent), 0);
    EXPECT_EQ(groupIn(*group).getChildren().Set(0, heldElsewhere), S_OK);
    EXPECT_NE(&childOf(groupIn(*group), 0), &heldElsewhere);
    EXPECT_EQ(childOf(groupIn(*group), 0).getNode(), heldElsewhere.getNode());
    EXPECT_FALSE(childOf(groupIn(*group), 0).ownsNode());
}

TEST_F(QueltEeOperatorsTest, ListsOfChildrenRefuseWhatIsNoReferenceOnANode) {
    const OwnedReference group = allOf(always());
    QueltInLinkList& children = groupIn(*group).getChildren();
    QueltEeNodeRef empty;
    QueltEeTrue node;
    const OwnedReference tooFar = never();
    EXPECT_EQ(children.PutBack(node), E_INVALIDARG);
    EXPECT_EQ(children.PutBack(empty), E_POINTER);
    EXPECT_EQ(children.Set(2, *tooFar), E_INVALIDARG);
    EXPECT_TRUE(tooFar->standsAlone());
    EXPECT_EQ(children.Remove(1), E_INVALIDARG);
    EXPECT_EQ(textOf(*group), "AND(TRUE)");
}

TEST_F(QueltEeOperatorsTest, WhatIsRemovedStandsAloneAndIsTheCallers) {
    OwnedReference group = allOf(counted(), counted());
    QueltInLinkList& children = groupIn(*group).getChildren();
    OwnedReference first(&childOf(groupIn(*group), 0));
    EXPECT_EQ(children.Remove(0), S_OK);
    EXPECT_TRUE(first->standsAlone());
    OwnedReference second(QueltEeNodeRef::cast(children.PopBack()));
    EXPECT_TRUE(second->standsAlone());
    EXPECT_EQ(children.PopBack(), nullptr);
    EXPECT_EQ(m_alive, 2);

    EXPECT_EQ(children.Set(0, *second.release()), S_OK); // and may come back
    group.reset();
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(textOf(*first), "TRUE");
}

TEST_F(QueltEeOperatorsTest, ManyMayBeRemovedAndComeBackInOnePassEach) {
    OwnedReference group = allOf(counted(), notOf(counted()), anyOf(counted()));
    QueltInLinkList& children = groupIn(*group).getChildren();
    QueltEeNodeRef* const first = &childOf(groupIn(*group), 0);
    QueltEeNodeRef* const last = &childOf(groupIn(*group), 2);
    const std::string whole = textOf(*group);
    EXPECT_EQ(children.RemoveEach(std::array{0U, 2U}), S_OK);
    EXPECT_EQ(textOf(*group), "AND(NOT(TRUE))");
    EXPECT_TRUE(first->standsAlone());
    EXPECT_TRUE(last->standsAlone());
    QueltEeNodeRef empty;
    using Placed = QueltInLinkList::Placed;
    EXPECT_EQ(children.SetEach(std::array{Placed{0, first}, Placed{1, group.get()}}), E_INVALIDARG)
        << "a group is no child of its own";
    EXPECT_EQ(children.SetEach(std::array{Placed{0, first}, Placed{1, &empty}}), E_POINTER);
    EXPECT_EQ(children.SetEach(std::array{Placed{0, first}, Placed{3, last}}), E_INVALIDARG);
    EXPECT_TRUE(first->standsAlone());
    EXPECT_EQ(children.SetEach(std::array{Placed{0, first}, Placed{2, last}}), S_OK);
    EXPECT_EQ(textOf(*group), whole);
    EXPECT_EQ(&childOf(groupIn(*group), 0), first);
    EXPECT_FALSE(last->standsAlone());
    EXPECT_EQ(m_alive, 3);
    group.reset();
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeOperatorsTest, AnAliasedLeafCountsAsItsConstantAndStaysALeaf) {
    auto* const always = new QueltEeDateEff;
    ASSERT_EQ(always->opNot(), S_OK); // of nothing
    const OwnedReference owner = anyOf(held(new QueltEeVarEffLeaf(always)));
    QueltEeNode& leaf = *childOf(groupIn(*owner), 0).getNode();
    const OwnedReference conjunction = allOf(counted());
    const OwnedReference disjunction = anyOf();
    ASSERT_EQ(groupIn(*conjunction).addChild(leaf), S_OK);
    ASSERT_EQ(groupIn(*disjunction).addChild(leaf), S_OK);
    EXPECT_EQ(groupIn(*conjunction).removeWeakNodes(E_DoNotMakeTF), 1) << "the counted TRUE";
    EXPECT_EQ(groupIn(*conjunction).getChildren().GetLength(), 1);
    EXPECT_EQ(groupIn(*conjunction).removeWeakNodes(E_DoMakeTF), 1);
    EXPECT_EQ(groupIn(*conjunction).getChildren().GetLength(), 0);
    EXPECT_EQ(groupIn(*disjunction).hasStrongNode(E_DoNotMakeTF), 0);
    EXPECT_EQ(groupIn(*disjunction).hasStrongNode(E_DoMakeTF), 1);
    EXPECT_EQ(childOf(groupIn(*owner), 0).getNode(), &leaf);
}

TEST_F(QueltEeOperatorsTest, ARemovedAliasMayComeBack) {
    const OwnedReference parent = allOf(counted());
    OwnedReference group = allOf();
    EXPECT_EQ(groupIn(*group).addChild(*childOf(groupIn(*parent), 0).getNode()), S_OK);
    QueltEeNodeRef* const alias = &childOf(groupIn(*group), 0);
    EXPECT_EQ(groupIn(*group).getChildren().Remove(0), S_OK);
    EXPECT_TRUE(alias->standsAlone());
    EXPECT_EQ(groupIn(*group).getChildren().Set(0, *alias), S_OK);
    EXPECT_EQ(&childOf(groupIn(*group), 0), alias);
    group.reset(); // the leak check tells when the alias stays
    EXPECT_EQ(m_alive, 1);
}

TEST_F(QueltEeOperatorsTest, DeleteChildrenDeletesWhatIsOwned) {
    const OwnedReference parent = allOf(counted());
    const OwnedReference group = anyOf(counted(), allOf(counted(), notOf(counted())));
    EXPECT_EQ(groupIn(*group).addChild(*childOf(groupIn(*parent), 0).getNode()), S_OK);
    EXPECT_EQ(m_alive, 4);
    groupIn(*group).deleteChildren();
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(textOf(*group), "OR()");
    groupIn(*group).deleteChildren();
}

TEST_F(QueltEeOperatorsTest, RemoveChildrenLeavesThemAlive) {
    const OwnedReference parent = allOf(counted());
    const OwnedReference group = anyOf(counted());
    OwnedReference own(&childOf(groupIn(*group), 0));
    EXPECT_EQ(groupIn(*group).addChild(*childOf(groupIn(*parent), 0).getNode()), S_OK);
    groupIn(*group).removeChildren();
    EXPECT_EQ(m_alive, 2);
    EXPECT_EQ(textOf(*group), "OR()");
    EXPECT_TRUE(own->standsAlone());
    EXPECT_FALSE(childOf(groupIn(*parent), 0).standsAlone());
}

TEST_F(QueltEeOperatorsTest, RemoveChildrenKeepsNoReferenceWithoutNode) {
    const OwnedReference group = anyOf(counted(), counted());
    OwnedReference own(&childOf(groupIn(*group), 0));
    delete childOf(groupIn(*group), 1).getNode();
    groupIn(*group).removeChildren(); // the leak check tells when the empty reference stays
    EXPECT_EQ(m_alive, 1);
}

TEST_F(QueltEeOperatorsTest, DeletingAGroupDirectlyKeepsWhatWasRemoved) {
    auto* const group = new QueltEeAndOp;
    const OwnedReference child = counted();
    EXPECT_EQ(group->addChild(*child->getNode()), S_OK);
    group->removeChildren();
    delete group;
    EXPECT_EQ(m_alive, 1);
}

TEST_F(QueltEeOperatorsTest, ChildrenRefsAreAppendedAndStayTheNodes) {
    const OwnedReference group = allOf(always(), never());
    const OwnedReference operation = notOf(anyOf());
    QueltInLinkList references(QueltEeNodeRef::sType());
    groupIn(*group).getChildrenRefs(references);
    singleIn(*operation).getChildrenRefs(references);
    singleIn(*held(new QueltEeNotOp)).getChildrenRefs(references);
    ASSERT_EQ(references.GetLength(), 3);
    EXPECT_EQ(references.Get(0), &childOf(groupIn(*group), 0));
    EXPECT_EQ(references.Get(1), &childOf(groupIn(*group), 1));
    EXPECT_EQ(references.Get(2), singleIn(*operation).getChildRef());
    EXPECT_FALSE(childOf(groupIn(*group), 0).standsAlone());
}

TEST_F(QueltEeOperatorsTest, ChildrenAcceptTheVisitorInOrder) {
    const OwnedReference group = allOf(always(), anyOf(never()), never());
    Recorder recorder;
    EXPECT_EQ(groupIn(*group).childrenAcceptVisitor(recorder), S_OK);
    EXPECT_EQ(recorder.m_visits, (std::vector<std::string>{"TRUE TRUE", "OR OR(FALSE)", "FALSE FALSE"}));
}

TEST_F(QueltEeOperatorsTest, TheFirstNegativeResultEndsTheWalk) {
    const OwnedReference group = allOf(always(), never(), anyOf());
    Recorder failing;
    failing.m_results = {1, E_FAIL, S_OK};
    EXPECT_EQ(groupIn(*group).childrenAcceptVisitor(failing), E_FAIL);
    EXPECT_EQ(failing.m_visits.size(), 2U);

    Recorder last;
    last.m_results = {S_OK, S_OK, 1};
    EXPECT_EQ(groupIn(*group).childrenAcceptVisitor(last), 1);
    EXPECT_EQ(groupIn(*allOf()).childrenAcceptVisitor(last), S_OK);
}

TEST_F(QueltEeOperatorsTest, AMissingNodeEndsTheWalk) {
    const OwnedReference group = allOf(always(), never(), always());
    delete childOf(groupIn(*group), 1).getNode();
    Recorder recorder;
    EXPECT_EQ(groupIn(*group).childrenAcceptVisitor(recorder), E_POINTER);
    EXPECT_EQ(recorder.m_visits, (std::vector<std::string>{"TRUE TRUE"}));

    const OwnedReference operation = notOf(always());
    delete singleIn(*operation).getChildRef()->getNode();
    EXPECT_EQ(singleIn(*operation).childrenAcceptVisitor(recorder), E_POINTER);
}

TEST_F(QueltEeOperatorsTest, AVisitMayTakeItsChildOut) {
    const OwnedReference group = allOf(counted(), never(), counted(), counted(), anyOf());
    Remover remover(groupIn(*group));
    EXPECT_EQ(groupIn(*group).childrenAcceptVisitor(remover), S_OK);
    EXPECT_EQ(remover.m_visits,
              (std::vector<std::string>{"TRUE TRUE", "FALSE FALSE", "TRUE TRUE", "TRUE TRUE", "OR OR()"}));
    EXPECT_EQ(textOf(*group), "AND(FALSE, OR())");
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeOperatorsTest, EachClassIsVisitedAsWhatItIs) {
    Catalogue catalogue;
    const OwnedReference tree = allOf(always(), never(), allOf(), anyOf(), held(new QueltEeNotDomainOp),
                                      held(new QueltEeNotOp), held(new QueltEeEffLeaf(nullptr, nullptr)),
                                      leafOf(nullptr), held(new QueltEeRestrictionEffLeaf("x")));
    Recorder recorder;
    EXPECT_EQ(groupIn(*tree).childrenAcceptVisitor(recorder), S_OK);
    EXPECT_EQ(recorder.m_visits,
              (std::vector<std::string>{"TRUE TRUE", "FALSE FALSE", "AND AND()", "OR OR()",
                                        "NOTDOMAIN NOTDOMAIN()", "NOT NOT()", "eff eff(null)",
                                        "variable empty", "restriction restriction(x)"}));
}

TEST_F(QueltEeOperatorsTest, SetChildRefTakesOverAndDeletesTheFormerChild) {
    OwnedReference operation = notOf(counted());
    QueltEeNodeRef* const second = anyOf(counted()).release();
    EXPECT_EQ(singleIn(*operation).setChildRef(*second), S_OK);
    EXPECT_EQ(singleIn(*operation).getChildRef(), second);
    EXPECT_FALSE(second->standsAlone());
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(singleIn(*operation).setChildRef(*second), S_OK); // itself again
    EXPECT_EQ(singleIn(*operation).getChildRef(), second);
    EXPECT_EQ(textOf(*operation), "NOT(OR(TRUE))");
    operation.reset();
    EXPECT_EQ(m_alive, 0);
}

TEST_F(QueltEeOperatorsTest, SetChildRefMakesAnAliasOfWhatIsHeld) {
    const OwnedReference parent = allOf(counted());
    OwnedReference operation = notOf(counted());
    EXPECT_EQ(singleIn(*operation).setChildRef(childOf(groupIn(*parent), 0)), S_OK);
    EXPECT_EQ(m_alive, 1);
    EXPECT_FALSE(singleIn(*operation).getChildRef()->ownsNode());
    EXPECT_EQ(singleIn(*operation).setChildRef(*never().release()), S_OK);
    EXPECT_EQ(m_alive, 1);
    EXPECT_EQ(textOf(*operation), "NOT(FALSE)");
}

TEST_F(QueltEeOperatorsTest, SetChildRefRefusesAReferenceWithoutNode) {
    const OwnedReference operation = notOf(always());
    QueltEeNodeRef empty;
    EXPECT_EQ(singleIn(*operation).setChildRef(empty), E_POINTER);
    EXPECT_EQ(textOf(*operation), "NOT(TRUE)");
}

TEST_F(QueltEeOperatorsTest, ASingleOperatorWithoutChildIsAccepted) {
    const OwnedReference operation = held(new QueltEeNotDomainOp);
    Recorder recorder;
    EXPECT_EQ(singleIn(*operation).getChildRef(), nullptr);
    EXPECT_EQ(singleIn(*operation).childrenAcceptVisitor(recorder), S_OK);
    EXPECT_TRUE(recorder.m_visits.empty());
    singleIn(*operation).deleteChildren();
    singleIn(*operation).removeChildren();
}

TEST_F(QueltEeOperatorsTest, SingleOperatorsDeleteAndDetachTheirChild) {
    const OwnedReference operation = notOf(counted());
    OwnedReference child(singleIn(*operation).getChildRef());
    singleIn(*operation).removeChildren();
    EXPECT_EQ(singleIn(*operation).getChildRef(), nullptr);
    EXPECT_TRUE(child->standsAlone());
    EXPECT_EQ(singleIn(*operation).setChildRef(*child.release()), S_OK);
    singleIn(*operation).deleteChildren();
    EXPECT_EQ(m_alive, 0);
    EXPECT_EQ(textOf(*operation), "NOT()");
}
