#include "expression/QueltQmSpecList.h"

#include "core/expression/ExpressionSamples.h"

#include "infrastructure/QueltInIntHolder.h"

namespace {

class QueltQmSpecListTest : public testing::Test {
protected:
    void add(QueltEeVarEff* effectivity) { EXPECT_EQ(m_list.addVarEff(effectivity), S_OK); }

    Catalogue m_catalogue;
    QueltQmSpecList m_list;
};

} // namespace

TEST_F(QueltQmSpecListTest, CriteriaStandByPositionInOrder) {
    add(m_catalogue.engineIn({"V6"}));
    add(m_catalogue.unitIn(10, 20));
    add(m_catalogue.engineIn({"V8"})); // the same variable once more
    EXPECT_EQ(m_list.getNamedEffectivities().Put(m_catalogue.change), 1);
    EXPECT_EQ(m_list.getNamedEffectivities().Put(m_catalogue.plain), 1);
    EXPECT_EQ(textOf(m_list),
              "Engine in {V6}, Unit in [10, 20), Engine in {V8}, eff(ECO-1), eff(\"Base line\")");
    EXPECT_EQ(m_list.getVarEffs().GetLength(), 3);
    EXPECT_EQ(textOf(*m_list.getVarEffs().Get(QueltInIntHolder(2))), "Engine in {V8}");
    unsigned int position = 0;
    for (QueltInMap::const_iterator criteria = m_list.getVarEffs().cBegin(); criteria.IsEnd() == 0;
         criteria.Next()) {
        EXPECT_EQ(QueltInIntHolder::cast(criteria.GetKey())->m_value, position++);
    }
    EXPECT_EQ(position, 3U);
}

TEST_F(QueltQmSpecListTest, AnEmptyListSaysNothing) {
    EXPECT_EQ(textOf(m_list), "");
    EXPECT_EQ(m_list.getVarEffs().GetLength(), 0);
    QueltEeVarEff* none = nullptr;
    EXPECT_EQ(m_list.addVarEff(none), E_POINTER);
    EXPECT_EQ(m_list.getVarEffs().GetLength(), 0);
}

TEST_F(QueltQmSpecListTest, ReplacingKeepsThePlace) {
    add(m_catalogue.engineIn({"V6"}));
    add(m_catalogue.unitIn(10, 20));
    EXPECT_EQ(m_list.replaceVarEff(0, *m_catalogue.sport()), S_OK);
    EXPECT_EQ(textOf(m_list), "Package in {Sport}, Unit in [10, 20)");
    QueltEeVarEff* const same = QueltEeVarEff::cast(m_list.getVarEffs().Get(QueltInIntHolder(1)));
    EXPECT_EQ(m_list.replaceVarEff(1, *same), S_OK);
    EXPECT_EQ(textOf(m_list), "Package in {Sport}, Unit in [10, 20)");
    const std::unique_ptr<QueltEeVarEff> refused(m_catalogue.unitIn(1, 2));
    EXPECT_EQ(m_list.replaceVarEff(2, *refused), E_INVALIDARG);
}

TEST_F(QueltQmSpecListTest, NamedEffectivitiesOnly) {
    EXPECT_EQ(m_list.getNamedEffectivities().Put(m_catalogue.truck), 0);
    EXPECT_EQ(m_list.getNamedEffectivities().badCastErr(), 1);
    EXPECT_EQ(m_list.getNamedEffectivities().Put(m_catalogue.basic), 1);
    EXPECT_EQ(textOf(m_list), "eff(EFF-7)");
}

TEST_F(QueltQmSpecListTest, CopiesAreTheirOwn) {
    add(m_catalogue.engineIn({"V6"}));
    EXPECT_EQ(m_list.getNamedEffectivities().Put(m_catalogue.change), 1);
    const std::unique_ptr<QueltQmSpecList> copy(m_list.clone());
    EXPECT_EQ(textOf(*copy), "Engine in {V6}, eff(ECO-1)");
    EXPECT_EQ(QueltEeVarEff::cast(m_list.getVarEffs().Get(QueltInIntHolder(0)))->opNot(), S_OK);
    m_list.getNamedEffectivities().Clear();
    EXPECT_EQ(textOf(*copy), "Engine in {V6}, eff(ECO-1)");
}

TEST_F(QueltQmSpecListTest, ManyCriteriaAreQuickToAppend) {
    constexpr int count = 100'000;
    for (int number = 0; number < count; ++number) {
        add(m_catalogue.unitIn(number, number + 1));
    }
    EXPECT_EQ(m_list.getVarEffs().GetLength(), count);
    EXPECT_EQ(textOf(*m_list.getVarEffs().Get(QueltInIntHolder(count - 1))), "Unit in [99999, 100000)");
}
