#include "expression/QueltEeFilterExpression.h"

#include "core/expression/ExpressionSamples.h"

#include "infrastructure/QueltInIntHolder.h"

namespace {

class QueltEeFilterExpressionTest : public testing::Test {
protected:
    QueltEeFilterExpressionTest() {
        QueltEeVarEff* criterion = m_catalogue.engineIn({"V6"});
        EXPECT_EQ(m_list->addVarEff(criterion), S_OK);
        criterion = m_catalogue.unitIn(10, 20);
        EXPECT_EQ(m_list->addVarEff(criterion), S_OK);
        EXPECT_EQ(m_list->getNamedEffectivities().Put(m_catalogue.change), 1);
    }

    Catalogue m_catalogue;
    QueltQmSpecList* m_list = new QueltQmSpecList;
    QueltEeFilterExpression m_filter{&m_catalogue.truck, m_list};
};

/// Turns every variable effectivity round; the unit's is replaced by a new one.
class Turner : public Recorder {
public:
    long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) override {
        const long result = Recorder::visitVarEffLeaf(leaf);
        if (QueltEeSerialEff::cast(leaf.getVarEff()) != nullptr) {
            QueltEeVarEff* const copy = leaf.getVarEff()->createVarEffClone();
            copy->opNot();
            leaf.setVarEff(*copy);
            return result;
        }
        leaf.opNot();
        return result;
    }
};

/// What a visit may do to a leaf so that it holds no criterion afterwards.
class Spoiler : public Recorder {
public:
    enum class Way { release, convert, remove };
    explicit Spoiler(Way way) : m_way(way) {}
    long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) override {
        switch (m_way) {
        case Way::release:
            delete leaf.releaseVarEff();
            break;
        case Way::convert:
            leaf.getVarEff()->opAnd(*negation(leaf));
            EXPECT_EQ(leaf.convertToTrueFalse(), 1);
            break;
        case Way::remove:
            delete &leaf;
            break;
        }
        return S_OK;
    }

private:
    [[nodiscard]] static std::unique_ptr<QueltEeVarEff> negation(const QueltEeVarEffLeaf& leaf) {
        std::unique_ptr<QueltEeVarEff> copy(leaf.getVarEff()->createVarEffClone());
        copy->opNot();
        return copy;
    }
    Way m_way;
};

/// Keeps the leaves that it is shown in a tree of its own.
class Keeper : public Recorder {
public:
    long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) override { return m_kept->addChild(leaf); }
    OwnedReference m_tree = allOf();
    QueltEeGroupOp* m_kept = &groupIn(*m_tree);
};

} // namespace

TEST_F(QueltEeFilterExpressionTest, SaysWhatItFilters) {
    EXPECT_EQ(textOf(m_filter), "filter(Truck: all: Engine in {V6}, Unit in [10, 20), eff(ECO-1))");
    m_filter.setListMode(1);
    m_filter.setDictionary(nullptr);
    EXPECT_EQ(textOf(m_filter), "filter(at least one: Engine in {V6}, Unit in [10, 20), eff(ECO-1))");
    m_filter.setListMode(2);
    m_filter.setDictionary(&m_catalogue.van);
    m_filter.setSpecList(new QueltQmSpecList);
    EXPECT_EQ(textOf(m_filter), "filter(Van: at least one)");
    m_filter.setSpecList(nullptr);
    EXPECT_EQ(textOf(m_filter), "filter(Van: at least one)");
}

TEST_F(QueltEeFilterExpressionTest, HoldsDictionaryListAndMode) {
    EXPECT_EQ(m_filter.getDictionary(), &m_catalogue.truck);
    EXPECT_EQ(m_filter.getSpecList(), m_list);
    EXPECT_EQ(m_filter.getListMode(), 0);
    m_filter.setSpecList(m_list); // itself again
    EXPECT_EQ(textOf(*m_filter.getSpecList()), "Engine in {V6}, Unit in [10, 20), eff(ECO-1)");
}

TEST_F(QueltEeFilterExpressionTest, ShowsEachCriterionThenTheNamedOnes) {
    Recorder recorder;
    recorder.m_results = {S_OK, S_OK, 1};
    EXPECT_EQ(m_filter.runConstVisitor(recorder), 1);
    const std::vector<std::string> visits{"variable Engine in {V6}", "variable Unit in [10, 20)",
                                          "eff eff(ECO-1, Truck)"};
    EXPECT_EQ(recorder.m_visits, visits);
    Recorder other;
    EXPECT_EQ(m_filter.runVisitor(other), S_OK);
    EXPECT_EQ(other.m_visits, visits);
}

TEST_F(QueltEeFilterExpressionTest, WithoutListNothingIsShown) {
    QueltEeFilterExpression filter(nullptr, nullptr);
    Recorder recorder;
    EXPECT_EQ(filter.runConstVisitor(recorder), S_OK);
    EXPECT_EQ(filter.runVisitor(recorder), S_OK);
    EXPECT_TRUE(recorder.m_visits.empty());
}

TEST_F(QueltEeFilterExpressionTest, TheConstantWalkShowsCopies) {
    const std::string before = textOf(m_filter);
    Turner turner;
    EXPECT_EQ(m_filter.runConstVisitor(turner), S_OK);
    EXPECT_EQ(textOf(m_filter), before);
}

TEST_F(QueltEeFilterExpressionTest, TheOtherWalkStoresBackWhatTheLeavesHold) {
    Turner turner;
    EXPECT_EQ(m_filter.runVisitor(turner), S_OK);
    for (const unsigned int position : {0U, 1U}) {
        EXPECT_EQ(QueltEeVarEff::cast(m_list->getVarEffs().Get(QueltInIntHolder(position)))->isNegated(), 1);
    }
}

TEST_F(QueltEeFilterExpressionTest, AFailedVisitLeavesItsCriterion) {
    Turner turner;
    turner.m_results = {S_OK, E_NOTIMPL};
    EXPECT_EQ(m_filter.runVisitor(turner), E_NOTIMPL);
    EXPECT_EQ(turner.m_visits.size(), 2U);
    EXPECT_EQ(QueltEeVarEff::cast(m_list->getVarEffs().Get(QueltInIntHolder(0)))->isNegated(), 1);
    EXPECT_EQ(QueltEeVarEff::cast(m_list->getVarEffs().Get(QueltInIntHolder(1)))->isNegated(), 0);
}

TEST_F(QueltEeFilterExpressionTest, ALeafThatHoldsNothingAfterwardsLeavesTheCriterion) {
    const std::string before = textOf(m_filter);
    for (const Spoiler::Way way : {Spoiler::Way::release, Spoiler::Way::convert, Spoiler::Way::remove}) {
        Spoiler spoiler(way);
        EXPECT_EQ(m_filter.runVisitor(spoiler), S_OK);
        EXPECT_EQ(textOf(m_filter), before);
        EXPECT_EQ(m_filter.runConstVisitor(spoiler), S_OK);
    }
}

TEST_F(QueltEeFilterExpressionTest, TheLeavesAreTheWalksOwn) {
    Keeper keeper;
    EXPECT_EQ(m_filter.runConstVisitor(keeper), S_OK);
    EXPECT_EQ(m_filter.runVisitor(keeper), S_OK);
    EXPECT_EQ(textOf(*keeper.m_tree), "AND(null, null, null, null)");
}

TEST_F(QueltEeFilterExpressionTest, TheTreeIsMadeOfCopies) {
    const OwnedReference all(m_filter.makeTree());
    EXPECT_EQ(textOf(*all), "AND(Engine in {V6}, Unit in [10, 20), eff(ECO-1, Truck))");
    m_filter.setListMode(1);
    m_filter.setSpecList(nullptr);
    EXPECT_EQ(textOf(*OwnedReference(m_filter.makeTree())), "OR()");
    EXPECT_EQ(textOf(*all), "AND(Engine in {V6}, Unit in [10, 20), eff(ECO-1, Truck))");
}
