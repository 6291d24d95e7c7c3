#include "expression/QueltEVCClassification.h"

#include "core/expression/ExpressionSamples.h"

namespace {

class QueltCoreEVC_NodeClassifierTest : public testing::Test {
protected:
    /// The kinds that the subtree holds, or the refusal.
    [[nodiscard]] static std::string classify(const QueltEeNodeRef& reference) {
        QueltCoreEVC_NodeClassifier classifier;
        QueltEVCClassification classification(0);
        switch (classifier.classify(reference, classification)) {
        case S_OK:
            return textOf(classification);
        case E_NOTIMPL:
            return "not implemented";
        case E_UNEXPECTED:
            return "unexpected";
        case E_POINTER:
            return "missing";
        default:
            return "another failure";
        }
    }
    [[nodiscard]] static std::string classify(const OwnedReference& reference) {
        return classify(*reference);
    }
    [[nodiscard]] OwnedReference effLeaf(QueltEeEffectivity* effectivity) {
        return held(new QueltEeEffLeaf(effectivity, &m_catalogue.truck));
    }
    [[nodiscard]] OwnedReference variant() { return leafOf(m_catalogue.engineIn({"V6"})); }
    [[nodiscard]] static OwnedReference restriction() { return held(new QueltEeRestrictionEffLeaf("x")); }
    [[nodiscard]] static OwnedReference notDomain() { return notOf<QueltEeNotDomainOp>(restriction()); }

    Catalogue m_catalogue;
};

} // namespace

TEST(QueltEVCClassification, StartsWithAllFlagsOrNone) {
    EXPECT_EQ(textOf(QueltEVCClassification(0)), "none");
    const QueltEVCClassification all(1);
    EXPECT_EQ(textOf(all), "evolution, variant, change, history, effectivity, inherited effectivity");
    EXPECT_EQ(all.isEvolution() + all.isVariant() + all.isChange() + all.isHistory() + all.isEffectivity() +
                  all.isInheritedEff(),
              6);
}

TEST(QueltEVCClassification, EachFlagIsItsOwn) {
    using Set = void (QueltEVCClassification::*)(unsigned char) noexcept;
    using Get = unsigned char (QueltEVCClassification::*)() const noexcept;
    struct Flag {
        const char* name;
        Set set;
        Get get;
    };
    const std::vector<Flag> flags{
        {"evolution", &QueltEVCClassification::setEvolution, &QueltEVCClassification::isEvolution},
        {"variant", &QueltEVCClassification::setVariant, &QueltEVCClassification::isVariant},
        {"change", &QueltEVCClassification::setChange, &QueltEVCClassification::isChange},
        {"history", &QueltEVCClassification::setHistory, &QueltEVCClassification::isHistory},
        {"effectivity", &QueltEVCClassification::setEffectivity, &QueltEVCClassification::isEffectivity},
        {"inherited effectivity", &QueltEVCClassification::setInheritedEff,
         &QueltEVCClassification::isInheritedEff}};
    for (const Flag& flag : flags) {
        QueltEVCClassification classification(0);
        (classification.*flag.set)(2); // any non-zero value
        EXPECT_EQ((classification.*flag.get)(), 1);
        EXPECT_EQ(textOf(classification), flag.name);
        (classification.*flag.set)(0);
        EXPECT_EQ((classification.*flag.get)(), 0);
        EXPECT_EQ(textOf(classification), "none");
    }
}

TEST_F(QueltCoreEVC_NodeClassifierTest, EachLeafHasItsKind) {
    EXPECT_EQ(classify(variant()), "variant");
    EXPECT_EQ(classify(leafOf(m_catalogue.sport())), "variant");
    EXPECT_EQ(classify(leafOf(m_catalogue.unitIn(1, 2))), "evolution");
    EXPECT_EQ(classify(leafOf(m_catalogue.anyTrim())), "evolution");
    EXPECT_EQ(classify(leafOf(Catalogue::secondMinute())), "history");
    EXPECT_EQ(classify(effLeaf(&m_catalogue.change)), "change");
    EXPECT_EQ(classify(effLeaf(&m_catalogue.basic)), "inherited effectivity");
    EXPECT_EQ(classify(effLeaf(&m_catalogue.plain)), "effectivity");
    EXPECT_EQ(classify(always()), "none");
    EXPECT_EQ(classify(never()), "none");
    EXPECT_EQ(classify(leafOf(nullptr)), "none");
    EXPECT_EQ(classify(effLeaf(nullptr)), "none");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, OperatorsHaveTheKindsOfTheirChildren) {
    EXPECT_EQ(classify(allOf()), "none");
    EXPECT_EQ(classify(held(new QueltEeNotOp)), "none");
    EXPECT_EQ(classify(allOf(variant(), leafOf(Catalogue::secondMinute()))), "variant, history");
    EXPECT_EQ(classify(notOf(anyOf(effLeaf(&m_catalogue.change), allOf(leafOf(m_catalogue.unitIn(1, 2)))))),
              "evolution, change");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, KindsAreAddedToWhatWasSet) {
    QueltCoreEVC_NodeClassifier classifier;
    QueltEVCClassification classification(0);
    classification.setHistory(1);
    EXPECT_EQ(classifier.classify(*variant(), classification), S_OK);
    EXPECT_EQ(textOf(classification), "variant, history");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, RefusalsChangeNothing) {
    QueltCoreEVC_NodeClassifier classifier;
    QueltEVCClassification classification(0);
    classification.setHistory(1);
    EXPECT_EQ(classifier.classify(*allOf(variant(), restriction()), classification), E_UNEXPECTED);
    EXPECT_EQ(textOf(classification), "history");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, TheFirstRefusalMetCounts) {
    EXPECT_EQ(classify(restriction()), "unexpected");
    EXPECT_EQ(classify(held(new QueltEeNotDomainOp)), "not implemented");
    EXPECT_EQ(classify(notDomain()), "not implemented"); // the node before its children
    EXPECT_EQ(classify(allOf(restriction(), notDomain())), "unexpected");
    EXPECT_EQ(classify(allOf(notDomain(), restriction())), "not implemented");
    EXPECT_EQ(classify(allOf(variant(), anyOf(notOf(restriction())), notDomain())), "unexpected");
    EXPECT_EQ(classify(anyOf(allOf(variant(), notOf(notDomain())), restriction())), "not implemented");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, ARefusalIsAnsweredAgain) {
    const OwnedReference tree = allOf(variant(), notOf(restriction()), notDomain());
    EXPECT_EQ(classify(tree), "unexpected");
    EXPECT_EQ(classify(tree), "unexpected");
    EXPECT_EQ(classify(childOf(groupIn(*tree), 1)), "unexpected");
    EXPECT_EQ(classify(childOf(groupIn(*tree), 2)), "not implemented");
    EXPECT_EQ(classify(childOf(groupIn(*tree), 0)), "variant");
    EXPECT_EQ(classify(tree), "unexpected");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, AMissingNodeIsRefused) {
    EXPECT_EQ(classify(QueltEeNodeRef()), "missing");
    const OwnedReference tree = allOf(anyOf(always()), restriction());
    EXPECT_EQ(classify(tree), "unexpected");
    delete childOf(groupIn(childOf(groupIn(*tree), 0)), 0).getNode();
    EXPECT_EQ(classify(tree), "missing");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, ChangesOfChildrenAreSeenAbove) {
    const OwnedReference tree = notOf(allOf(anyOf(always())));
    QueltEeGroupOp& bottom = groupIn(childOf(groupIn(*singleIn(*tree).getChildRef()), 0));
    EXPECT_EQ(classify(tree), "none");
    EXPECT_EQ(bottom.addChild(*variant().release()->getNode()), S_OK);
    EXPECT_EQ(classify(tree), "variant");
    EXPECT_EQ(bottom.getChildren().Set(0, *leafOf(Catalogue::secondMinute()).release()), S_OK);
    EXPECT_EQ(classify(tree), "variant, history");
    delete bottom.getChildren().PopBack(); // the variant
    EXPECT_EQ(classify(tree), "history");
    const OwnedReference date(&childOf(bottom, 0));
    EXPECT_EQ(bottom.getChildren().Remove(0), S_OK);
    EXPECT_EQ(classify(tree), "none");
    EXPECT_EQ(bottom.addChild(*restriction().release()->getNode()), S_OK);
    EXPECT_EQ(classify(tree), "unexpected");
    bottom.deleteChildren();
    EXPECT_EQ(classify(tree), "none");
    EXPECT_EQ(bottom.addChild(*date->getNode()), S_OK);
    EXPECT_EQ(classify(tree), "history");
    bottom.removeChildren();
    EXPECT_EQ(classify(tree), "none");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, ChangesBelowSingleOperatorsAreSeenAbove) {
    const OwnedReference tree = allOf(notOf(always()));
    QueltEeSingleOp& operation = singleIn(childOf(groupIn(*tree), 0));
    EXPECT_EQ(classify(tree), "none");
    EXPECT_EQ(operation.setChildRef(*variant().release()), S_OK);
    EXPECT_EQ(classify(tree), "variant");
    const OwnedReference child(operation.getChildRef());
    operation.removeChildren();
    EXPECT_EQ(classify(tree), "none");
    EXPECT_EQ(operation.setChildRef(*leafOf(Catalogue::secondMinute()).release()), S_OK);
    EXPECT_EQ(classify(tree), "history");
    operation.deleteChildren();
    EXPECT_EQ(classify(tree), "none");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, ChangesOfALeafAreSeenAbove) {
    const OwnedReference tree = allOf(anyOf(variant()));
    QueltEeVarEffLeaf* const leaf =
        QueltEeVarEffLeaf::cast(childOf(groupIn(childOf(groupIn(*tree), 0)), 0).getNode());
    EXPECT_EQ(classify(tree), "variant");
    leaf->setVarEff(*m_catalogue.unitIn(1, 2));
    EXPECT_EQ(classify(tree), "evolution");
    delete leaf->releaseVarEff();
    EXPECT_EQ(classify(tree), "none");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, ChangesAreSeenThroughAliases) {
    OwnedReference owner = allOf(anyOf(always()));
    QueltEeGroupOp& shared = groupIn(childOf(groupIn(*owner), 0));
    const OwnedReference first = notOf(allOf());
    EXPECT_EQ(groupIn(*singleIn(*first).getChildRef()).addChild(shared), S_OK);
    const OwnedReference second = anyOf();
    EXPECT_EQ(groupIn(*second).addChild(*singleIn(*first).getChildRef()->getNode()), S_OK);
    const auto allAre = [&](const char* kinds) {
        EXPECT_EQ(classify(owner), kinds);
        EXPECT_EQ(classify(first), kinds);
        EXPECT_EQ(classify(second), kinds);
    };
    allAre("none");
    EXPECT_EQ(shared.addChild(*variant().release()->getNode()), S_OK);
    allAre("variant");
    EXPECT_EQ(shared.addChild(*restriction().release()->getNode()), S_OK);
    allAre("unexpected");
    delete shared.getChildren().PopBack();
    allAre("variant");
    owner.reset(); // the aliased node goes
    EXPECT_EQ(classify(first), "missing");
    EXPECT_EQ(classify(second), "missing");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, WhatStandsBehindARefusalIsSeenOnceTheRefusalIsGone) {
    const OwnedReference tree = allOf(restriction(), anyOf(always()));
    QueltEeGroupOp& behind = groupIn(childOf(groupIn(*tree), 1));
    EXPECT_EQ(classify(tree), "unexpected");
    EXPECT_EQ(behind.addChild(*variant().release()->getNode()), S_OK);
    EXPECT_EQ(classify(tree), "unexpected");
    delete childOf(groupIn(*tree), 0).getNode();
    EXPECT_EQ(classify(tree), "missing");
    const OwnedReference empty(&childOf(groupIn(*tree), 0));
    EXPECT_EQ(groupIn(*tree).getChildren().Remove(0), S_OK);
    EXPECT_EQ(classify(tree), "variant");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, ANodeThatBecomesItsOnlyChildIsSeenAbove) {
    const OwnedReference tree = allOf(anyOf(variant()), always());
    EXPECT_EQ(classify(tree), "variant");
    EXPECT_EQ(groupIn(childOf(groupIn(*tree), 0)).becomeIfSingleChild(), 1);
    EXPECT_EQ(classify(tree), "variant");
    QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(childOf(groupIn(*tree), 0).getNode());
    leaf->setVarEff(*Catalogue::secondMinute());
    EXPECT_EQ(classify(tree), "history");
}

TEST_F(QueltCoreEVC_NodeClassifierTest, RandomChangesNeverLeaveAStaleAnswer) {
    // Against a copy, of which nothing is known, after every change somewhere in a tree with aliases.
    Random random(11);
    const OwnedReference tree = allOf();
    std::vector<QueltEeGroupOp*> groups{&groupIn(*tree)};
    int aliases = 0;
    const auto makeLeaf = [&]() -> OwnedReference {
        switch (random.below(5)) {
        case 0:
            return variant();
        case 1:
            return leafOf(Catalogue::secondMinute());
        case 2:
            return random.below(6) == 0 ? restriction() : always();
        case 3:
            return random.below(6) == 0 ? notDomain() : effLeaf(&m_catalogue.change);
        default:
            return leafOf(m_catalogue.unitIn(1, 2));
        }
    };
    for (int step = 0; step < 3000; ++step) {
        QueltEeGroupOp& group = *random.oneOf(groups);
        const unsigned int action = random.below(8);
        if (action == 0 && groups.size() < 40) {
            auto* const child =
                random.flip() ? static_cast<QueltEeGroupOp*>(new QueltEeAndOp) : new QueltEeOrOp;
            EXPECT_EQ(group.getChildren().Set(0, *child->getNodeRef()), S_OK);
            groups.push_back(child);
        } else if (action == 1 && aliases < 10) { // a copy says each alias out in full
            const long added = group.addChild(*random.oneOf(groups));
            EXPECT_TRUE(added == S_OK || added == E_INVALIDARG);
            aliases += added == S_OK ? 1 : 0;
        } else if (action < 5) {
            const unsigned int last = static_cast<unsigned int>(group.getChildren().GetLength());
            if (last > 0 && QueltEeNodeLeaf::cast(childOf(group, last - 1).getNode()) != nullptr) {
                delete group.getChildren().PopBack();
            }
        } else {
            EXPECT_EQ(group.getChildren().PutBack(*makeLeaf().release()), S_OK);
        }
        const QueltEeNode& looked = random.flip() ? *tree->getNode() : *random.oneOf(groups);
        const OwnedReference copy(looked.clone());
        ASSERT_EQ(classify(*const_cast<QueltEeNode&>(looked).getNodeRef()), classify(copy))
            << "step " << step;
    }
}
