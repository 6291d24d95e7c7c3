#include "expression/QueltEeLeaves.h"

#include "core/expression/ExpressionSamples.h"

namespace {

/// A variable effectivity that gives no copy.
class UniqueDate : public QueltEeDateEff {
public:
    QueltEeVarEff* createVarEffClone() const override { return nullptr; }
};

class QueltEeLeavesTest : public testing::Test {
protected:
    [[nodiscard]] OwnedReference engine(std::initializer_list<const char*> values) const {
        return leafOf(m_catalogue.engineIn(values));
    }
    [[nodiscard]] OwnedReference eff(QueltEeEffectivity& effectivity) const {
        return held(new QueltEeEffLeaf(&effectivity, &m_catalogue.truck));
    }
    [[nodiscard]] static OwnedReference negated(OwnedReference leaf) {
        EXPECT_EQ(leafIn(leaf).opNot(), S_OK);
        return leaf;
    }
    /// Engine in {V6} or not, with or without "no variable": everything that the variable can say.
    [[nodiscard]] OwnedReference anyEngine() const {
        OwnedReference leaf = engine({"V6", "V8", "V12"});
        QueltEeVarEffLeaf::cast(leaf->getNode())->getVarEff()->switchNoVar();
        return leaf;
    }
    [[nodiscard]] static OwnedReference restriction() {
        return held(new QueltEeRestrictionEffLeaf("left hand drive"));
    }
    [[nodiscard]] static QueltEeNodeElementaryLeaf& leafIn(const OwnedReference& reference) {
        return *QueltEeNodeElementaryLeaf::cast(reference->getNode());
    }
    /// The text of the new tree that an operation of the leaf builds.
    [[nodiscard]] static std::string
    built(const OwnedReference& leaf, const OwnedReference& other,
          long (QueltEeNodeElementaryLeaf::*operation)(const QueltEeNodeElementaryLeaf&, QueltEeNodeRef*&)
              const) {
        const std::string before = textOf(*leaf);
        QueltEeNodeRef* result = nullptr;
        EXPECT_EQ((leafIn(leaf).*operation)(leafIn(other), result), S_OK);
        const OwnedReference tree(result);
        EXPECT_TRUE(tree->standsAlone());
        EXPECT_EQ(textOf(*leaf), before);
        return textOf(*tree);
    }
    [[nodiscard]] static std::string both(const OwnedReference& leaf, const OwnedReference& other) {
        return built(leaf, other, &QueltEeNodeElementaryLeaf::opAnd);
    }
    [[nodiscard]] static std::string either(const OwnedReference& leaf, const OwnedReference& other) {
        return built(leaf, other, &QueltEeNodeElementaryLeaf::opOr);
    }
    [[nodiscard]] static std::string opposite(const OwnedReference& leaf) {
        QueltEeNodeRef* result = nullptr;
        EXPECT_EQ(leafIn(leaf).opNot(result), S_OK);
        const OwnedReference tree(result);
        return textOf(*tree);
    }

    Catalogue m_catalogue;
};

} // namespace

TEST_F(QueltEeLeavesTest, TextsNameWhatTheLeafRefersTo) {
    EXPECT_EQ(textOf(*always()), "TRUE");
    EXPECT_EQ(textOf(*never()), "FALSE");
    EXPECT_EQ(textOf(*engine({"V6", "V8"})), "Engine in {V6, V8}");
    EXPECT_EQ(textOf(*leafOf(m_catalogue.unitIn(10, 20))), "Unit in [10, 20)");
    EXPECT_EQ(textOf(*leafOf(nullptr)), "empty");
    EXPECT_EQ(textOf(*eff(m_catalogue.change)), "eff(ECO-1, Truck)");
    EXPECT_EQ(textOf(*negated(eff(m_catalogue.change))), "not (eff(ECO-1, Truck))");
    EXPECT_EQ(textOf(*held(new QueltEeEffLeaf(&m_catalogue.change, nullptr))), "eff(ECO-1)");
    EXPECT_EQ(textOf(*eff(m_catalogue.plain)), "eff(\"Base line\", Truck)");
    EXPECT_EQ(textOf(*held(new QueltEeEffLeaf(nullptr, nullptr))), "eff(null)");
    EXPECT_EQ(textOf(*held(new QueltEeEffLeaf(nullptr, &m_catalogue.van))), "eff(null, Van)");
    EXPECT_EQ(textOf(*held(new QueltEeRestrictionEffLeaf("left"))), "restriction(left)");
    EXPECT_EQ(textOf(*restriction()), "restriction(\"left hand drive\")");
}

TEST_F(QueltEeLeavesTest, AnEffectivityLeafRefersToAnEffectivityInADictionary) {
    QueltEeEffLeaf leaf(&m_catalogue.change, &m_catalogue.truck);
    EXPECT_EQ(leaf.getTargetEff(), &m_catalogue.change);
    EXPECT_EQ(leaf.getReferencedContext(), &m_catalogue.truck);
    EXPECT_EQ(leaf.getConstraintCriterion(), &m_catalogue.change);
    EXPECT_EQ(leaf.isNegated(), 0);
    leaf.setReferencedContext(&m_catalogue.van);
    EXPECT_EQ(leaf.getReferencedContext(), &m_catalogue.van);
    EXPECT_EQ(leaf.opNot(), S_OK);
    EXPECT_EQ(leaf.isNegated(), 1);
    const OwnedReference copy(leaf.clone());
    EXPECT_EQ(textOf(*copy), "not (eff(ECO-1, Van))");
    EXPECT_EQ(leaf.opNot(), S_OK);
    EXPECT_EQ(leaf.isNegated(), 0);
}

TEST_F(QueltEeLeavesTest, AVariableLeafOwnsItsEffectivity) {
    QueltEeVarEff* const first = m_catalogue.engineIn({"V6"});
    QueltEeVarEffLeaf leaf(first);
    EXPECT_EQ(leaf.getVarEff(), first);
    EXPECT_EQ(leaf.getConstraintCriterion(), &m_catalogue.engine);
    leaf.setVarEff(*first); // itself again
    EXPECT_EQ(textOf(leaf), "Engine in {V6}");
    leaf.setVarEff(*m_catalogue.unitIn(1, 2));
    EXPECT_EQ(textOf(leaf), "Unit in [1, 2)");
    const std::unique_ptr<QueltEeVarEff> released(leaf.releaseVarEff());
    EXPECT_EQ(textOf(*released), "Unit in [1, 2)");
    EXPECT_EQ(leaf.getVarEff(), nullptr);
    EXPECT_EQ(leaf.releaseVarEff(), nullptr);
    EXPECT_EQ(leaf.getConstraintCriterion(), nullptr);
    leaf.setVarEff(*Catalogue::secondMinute());
    EXPECT_EQ(leaf.getConstraintCriterion(), nullptr); // dates have no variable
}

TEST_F(QueltEeLeavesTest, LeavesOnEverythingOrNothingAreConstants) {
    EXPECT_EQ(leafIn(anyEngine()).isEquivalentToTrue(), 1);
    EXPECT_EQ(leafIn(anyEngine()).isEquivalentToFalse(), 0);
    EXPECT_EQ(leafIn(engine({})).isEquivalentToFalse(), 1);
    EXPECT_EQ(leafIn(engine({})).isEquivalentToTrue(), 0);
    EXPECT_EQ(leafIn(engine({"V6", "V8", "V12"})).isEquivalentToTrue(), 0); // not without a value
    EXPECT_EQ(leafIn(leafOf(nullptr)).isEquivalentToTrue(), 0);
    EXPECT_EQ(leafIn(leafOf(nullptr)).isEquivalentToFalse(), 0);
    EXPECT_EQ(leafIn(eff(m_catalogue.change)).isEquivalentToTrue(), 0);
    EXPECT_EQ(leafIn(eff(m_catalogue.change)).isEquivalentToFalse(), 0);
    EXPECT_EQ(leafIn(restriction()).isEquivalentToTrue(), 0);
    EXPECT_EQ(leafIn(restriction()).isEquivalentToFalse(), 0);
}

TEST_F(QueltEeLeavesTest, TheReferenceOfAConvertedLeafHoldsTheConstant) {
    const OwnedReference tree = allOf(anyEngine(), engine({}), engine({"V6"}));
    QueltEeNodeRef* const first = &childOf(groupIn(*tree), 0);
    const OwnedReference alias(QueltEeNodeRef::makeAlias(*first->getNode()));
    for (const unsigned int position : {0U, 1U, 2U}) {
        QueltEeNodeElementaryLeaf* const leaf =
            QueltEeNodeElementaryLeaf::cast(childOf(groupIn(*tree), position).getNode());
        EXPECT_EQ(leaf->convertToTrueFalse(), position < 2 ? 1 : 0);
    }
    EXPECT_EQ(textOf(*tree), "AND(TRUE, FALSE, Engine in {V6})");
    EXPECT_EQ(&childOf(groupIn(*tree), 0), first);
    EXPECT_EQ(first->getNode()->getNodeRef(), first);
    EXPECT_FALSE(first->standsAlone());
    EXPECT_EQ(alias->getNode(), nullptr);
}

TEST_F(QueltEeLeavesTest, ALeafWithoutReferenceIsNotConverted) {
    QueltEeVarEffLeaf leaf(m_catalogue.engineIn({}));
    EXPECT_EQ(leaf.convertToTrueFalse(), 0);
    EXPECT_EQ(leaf.isEquivalentToFalse(), 1);
}

TEST_F(QueltEeLeavesTest, LeavesOnOneVariableCombineInPlace) {
    const OwnedReference leaf = engine({"V6", "V8"});
    EXPECT_EQ(leafIn(leaf).opAnd(leafIn(engine({"V8", "V12"}))), S_OK);
    EXPECT_TRUE(QueltEeVarEffLeaf::cast(leaf->getNode())
                    ->getVarEff()
                    ->equals(*QueltEeVarEffLeaf::cast(engine({"V8"})->getNode())->getVarEff()));
    EXPECT_EQ(leafIn(leaf).opOr(leafIn(engine({"V6"}))), S_OK);
    EXPECT_TRUE(QueltEeVarEffLeaf::cast(leaf->getNode())
                    ->getVarEff()
                    ->equals(*QueltEeVarEffLeaf::cast(engine({"V6", "V8"})->getNode())->getVarEff()));
    EXPECT_EQ(leafIn(leaf).opNot(), S_OK);
    EXPECT_EQ(QueltEeVarEffLeaf::cast(leaf->getNode())->getVarEff()->isNegated(), 1);
    EXPECT_EQ(leafIn(leaf).opOr(leafIn(leaf)), S_OK); // with itself
    EXPECT_EQ(leafIn(leaf).opAnd(leafIn(leaf)), S_OK);
    EXPECT_EQ(leafIn(leaf).isEquivalentToTrue() + leafIn(leaf).isEquivalentToFalse(), 0);
}

TEST_F(QueltEeLeavesTest, WhatIsNoLeafOfTheSameClassIsRefusedAndChangesNothing) {
    struct Pair {
        OwnedReference leaf;
        OwnedReference other;
    };
    std::vector<Pair> pairs;
    pairs.push_back({engine({"V6"}), leafOf(m_catalogue.sport())});
    pairs.push_back({engine({"V6"}), eff(m_catalogue.change)});
    pairs.push_back({engine({"V6"}), leafOf(nullptr)});
    pairs.push_back({leafOf(nullptr), engine({"V6"})});
    pairs.push_back({eff(m_catalogue.change), engine({"V6"})});
    pairs.push_back({eff(m_catalogue.change), eff(m_catalogue.basic)});
    pairs.push_back({eff(m_catalogue.change), negated(eff(m_catalogue.change))});
    pairs.push_back(
        {eff(m_catalogue.change), held(new QueltEeEffLeaf(&m_catalogue.change, &m_catalogue.van))});
    pairs.push_back({restriction(), restriction()});
    for (const Pair& pair : pairs) {
        const std::string before = textOf(*pair.leaf);
        EXPECT_EQ(leafIn(pair.leaf).opAnd(leafIn(pair.other)), E_INVALIDARG)
            << before << " and " << textOf(*pair.other);
        EXPECT_EQ(leafIn(pair.leaf).opOr(leafIn(pair.other)), E_INVALIDARG)
            << before << " or " << textOf(*pair.other);
        EXPECT_EQ(textOf(*pair.leaf), before);
    }
    EXPECT_EQ(leafIn(leafOf(nullptr)).opNot(), E_INVALIDARG);
    EXPECT_EQ(leafIn(restriction()).opNot(), E_INVALIDARG);
}

TEST_F(QueltEeLeavesTest, EqualEffectivityLeavesAreOne) {
    const OwnedReference leaf = negated(eff(m_catalogue.change));
    EXPECT_EQ(leafIn(leaf).opAnd(leafIn(negated(eff(m_catalogue.change)))), S_OK);
    EXPECT_EQ(leafIn(leaf).opOr(leafIn(leaf)), S_OK);
    EXPECT_EQ(textOf(*leaf), "not (eff(ECO-1, Truck))");
}

TEST_F(QueltEeLeavesTest, NewTreesSayItInOneLeafWhereOneCan) {
    EXPECT_EQ(both(engine({"V6", "V8"}), engine({"V8"})), "Engine in {V8}");
    EXPECT_EQ(either(engine({"V8"}), engine({"V8"})), "Engine in {V8}");
    EXPECT_EQ(both(engine({"V6"}), engine({"V8"})), "FALSE");
    EXPECT_EQ(either(engine({"V6"}), negated(engine({"V6"}))), "TRUE");
    EXPECT_EQ(both(eff(m_catalogue.change), eff(m_catalogue.change)), "eff(ECO-1, Truck)");
    EXPECT_EQ(both(eff(m_catalogue.change), negated(eff(m_catalogue.change))), "FALSE");
    EXPECT_EQ(either(negated(eff(m_catalogue.change)), eff(m_catalogue.change)), "TRUE");
    EXPECT_EQ(opposite(eff(m_catalogue.change)), "not (eff(ECO-1, Truck))");
    EXPECT_EQ(opposite(negated(eff(m_catalogue.change))), "eff(ECO-1, Truck)");
    EXPECT_EQ(opposite(negated(engine({"V8"}))), "Engine in {V8}");
    EXPECT_EQ(opposite(engine({})), "TRUE");
    EXPECT_EQ(opposite(anyEngine()), "FALSE");
}

TEST_F(QueltEeLeavesTest, NewTreesSkipWhatDecidesNothing) {
    EXPECT_EQ(both(anyEngine(), eff(m_catalogue.change)), "eff(ECO-1, Truck)");
    EXPECT_EQ(both(eff(m_catalogue.change), anyEngine()), "eff(ECO-1, Truck)");
    EXPECT_EQ(either(engine({}), restriction()), "restriction(\"left hand drive\")");
    EXPECT_EQ(either(restriction(), engine({})), "restriction(\"left hand drive\")");
    EXPECT_EQ(both(restriction(), engine({})), "FALSE");
    EXPECT_EQ(both(engine({}), restriction()), "FALSE");
    EXPECT_EQ(either(anyEngine(), restriction()), "TRUE");
    EXPECT_EQ(either(restriction(), anyEngine()), "TRUE");
    EXPECT_EQ(both(anyEngine(), anyEngine()), "TRUE");
    EXPECT_EQ(either(engine({}), engine({})), "FALSE");
}

TEST_F(QueltEeLeavesTest, NewTreesAreOperatorsWhereNoLeafSaysIt) {
    EXPECT_EQ(both(engine({"V6"}), leafOf(m_catalogue.sport())), "AND(Engine in {V6}, Package in {Sport})");
    EXPECT_EQ(either(leafOf(m_catalogue.sport()), engine({"V6"})), "OR(Package in {Sport}, Engine in {V6})");
    EXPECT_EQ(either(eff(m_catalogue.change), eff(m_catalogue.basic)),
              "OR(eff(ECO-1, Truck), eff(EFF-7, Truck))");
    EXPECT_EQ(both(restriction(), restriction()),
              "AND(restriction(\"left hand drive\"), restriction(\"left hand drive\"))");
    EXPECT_EQ(both(leafOf(nullptr), engine({"V6"})), "AND(empty, Engine in {V6})");
    EXPECT_EQ(opposite(restriction()), "NOT(restriction(\"left hand drive\"))");
    EXPECT_EQ(opposite(leafOf(nullptr)), "NOT(empty)");
    const OwnedReference nothing = held(new QueltEeEffLeaf(nullptr, nullptr));
    EXPECT_EQ(both(nothing, nothing), "AND(eff(null), eff(null))");
}

TEST_F(QueltEeLeavesTest, WithoutCopiesThereIsNoNewTree) {
    const OwnedReference unique = leafOf(new UniqueDate);
    QueltEeVarEffLeaf::cast(unique->getNode())->getVarEff()->switchNoVar(); // neither everything nor nothing
    EXPECT_EQ(unique->getNode()->clone(), nullptr);
    const OwnedReference other = restriction();
    for (const auto& [left, right] : {std::pair(&unique, &other), std::pair(&other, &unique)}) {
        QueltEeNodeRef* result = other.get();
        EXPECT_EQ(leafIn(*left).opAnd(leafIn(*right), result), E_FAIL);
        EXPECT_EQ(result, nullptr);
        EXPECT_EQ(leafIn(*left).opOr(leafIn(*right), result), E_FAIL);
    }
    QueltEeNodeRef* result = other.get();
    EXPECT_EQ(leafIn(unique).opNot(result), E_FAIL);
    EXPECT_EQ(result, nullptr);
}
