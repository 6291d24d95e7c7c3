#include "effectivity/QueltEeNamedValueEff.h"

#include <gtest/gtest.h>

#include "core/effectivity/EffectivityFamilies.h"
#include "infrastructure/QueltInResult.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

namespace {

class QueltEeNamedValueEffTest : public testing::Test {
protected:
    QueltEeNamedValueEffTest() {
        for (const char* const value : {"V6", "V8", "V12"}) {
            m_engine.addValue(value);
        }
    }
    [[nodiscard]] QueltEeOptionEff of(std::initializer_list<std::uint32_t> numbers) const {
        QueltEeOptionEff effectivity(&m_engine);
        for (const std::uint32_t number : numbers) {
            EXPECT_EQ(effectivity.addValue(number), S_OK);
        }
        return effectivity;
    }

    QueltEeCatOptionVar m_engine{"Engine", guidOf(1)};
};

TEST_F(QueltEeNamedValueEffTest, KeepsValuesAsGiven) {
    const QueltEeOptionEff effectivity = of({2, 0, 2});
    EXPECT_EQ(effectivity.getVar(), &m_engine);
    EXPECT_TRUE(std::ranges::equal(effectivity.getValues(), std::vector<std::uint32_t>{2, 0, 2}));
}

TEST_F(QueltEeNamedValueEffTest, RefusesValuesThatTheVariableDoesNotHave) {
    QueltEeOptionEff effectivity = of({2});
    EXPECT_EQ(effectivity.addValue(3), E_INVALIDARG);
    EXPECT_EQ(effectivity.addValue(0xFFFFFFFFU), E_INVALIDARG);
    EXPECT_EQ(effectivity.getValues().size(), 1U);
    EXPECT_FALSE(effectivity.holdsFor(3));
    EXPECT_EQ(effectivity.opNotDom(), S_OK);
    EXPECT_FALSE(effectivity.holdsFor(3)) << "what is no value is in neither";
    QueltEeOptionEff withoutVariable(nullptr);
    EXPECT_EQ(withoutVariable.addValue(0), E_INVALIDARG);
    EXPECT_FALSE(withoutVariable.holdsFor(0));
}

TEST_F(QueltEeNamedValueEffTest, PrintsNames) {
    EXPECT_EQ(of({}).toString().view(), "Engine in {}");
    EXPECT_EQ(of({1}).toString().view(), "Engine in {V8}");
    EXPECT_EQ(of({2, 0, 2}).toString().view(), "Engine in {V12, V6, V12}");
    EXPECT_EQ(QueltEeOptionEff(nullptr).toString().view(), "null in {}");

    QueltEeSelectionVar package("Winter package", guidOf(2));
    QueltEeSelectionEff effectivity(&package);
    EXPECT_EQ(effectivity.addValue(package.addValue("with \"studs\"")), S_OK);
    EXPECT_EQ(effectivity.addValue(package.addValue("")), S_OK);
    EXPECT_EQ(effectivity.addValue(package.addValue("plain")), S_OK);
    EXPECT_EQ(effectivity.toString().view(), "\"Winter package\" in {\"with \\\"studs\\\"\", \"\", plain}");
    EXPECT_EQ(effectivity.opNot(), S_OK);
    EXPECT_EQ(effectivity.toString().view(),
              "not (\"Winter package\" in {\"with \\\"studs\\\"\", \"\", plain})?");
}

TEST_F(QueltEeNamedValueEffTest, WritesResultsInNormalForm) {
    QueltEeOptionEff effectivity = of({2, 0, 2});
    ASSERT_EQ(effectivity.opAnd(effectivity), S_OK);
    EXPECT_EQ(effectivity.toString().view(), "Engine in {V6, V12}");
    ASSERT_EQ(effectivity.opNot(), S_OK);
    ASSERT_EQ(effectivity.opOr(effectivity), S_OK);
    EXPECT_EQ(effectivity.toString().view(), "Engine in {V8}?");
}

// All sets of three values with all flags, each with each.
TEST_F(QueltEeNamedValueEffTest, CombinesAllPairs) {
    struct Sample {
        QueltEeOptionEff effectivity;
        unsigned int members; // bits 0 to 2 the values, bit 3 "no variable"
    };
    std::vector<Sample> samples;
    for (unsigned int bits = 0; bits < 32; ++bits) {
        Sample sample{QueltEeOptionEff(&m_engine), bits & 15U};
        for (std::uint32_t number = 0; number < 3; ++number) {
            if ((bits >> number & 1U) != 0) {
                ASSERT_EQ(sample.effectivity.addValue(number), S_OK);
            }
        }
        if ((bits & 8U) != 0) {
            sample.effectivity.switchNoVar();
        }
        if ((bits & 16U) != 0) {
            sample.effectivity.opNot();
            sample.members = ~sample.members & 15U;
        }
        samples.push_back(sample);
    }
    const auto check = [](const QueltEeOptionEff& result, unsigned int expected) {
        for (std::uint32_t number = 0; number < 3; ++number) {
            ASSERT_EQ(result.holdsFor(number), (expected >> number & 1U) != 0) << result.toString().view();
        }
        ASSERT_EQ(result.isNoVarIncluded() != 0, (expected & 8U) != 0) << result.toString().view();
        ASSERT_EQ(result.isAllTrue() != 0, expected == 15U);
        ASSERT_EQ(result.isAllFalse() != 0, expected == 0);
    };
    for (const Sample& left : samples) {
        check(left.effectivity, left.members);
        for (const Sample& right : samples) {
            QueltEeOptionEff result = left.effectivity;
            ASSERT_EQ(result.opAnd(right.effectivity), S_OK);
            check(result, left.members & right.members);
            result = left.effectivity;
            ASSERT_EQ(result.opOr(right.effectivity), S_OK);
            check(result, left.members | right.members);
            result = left.effectivity;
            ASSERT_EQ(result.opCut(right.effectivity), S_OK);
            check(result, left.members & ~right.members);
            ASSERT_EQ(left.effectivity.equals(right.effectivity) != 0, left.members == right.members);
        }
    }
}

TEST_F(QueltEeNamedValueEffTest, GoesByNamesBetweenDictionaries) {
    QueltEeCatOptionVar same("Motor", guidOf(1));
    for (const char* const value : {"V12", "V6", "V8"}) {
        same.addValue(value);
    }
    QueltEeOptionEff there(&same);
    ASSERT_EQ(there.addValue(0), S_OK);
    ASSERT_EQ(there.addValue(2), S_OK); // V12 and V8
    EXPECT_NE(of({1, 2}).equals(there), 0);
    EXPECT_EQ(of({0, 2}).equals(there), 0);

    QueltEeOptionEff result = of({0, 1});
    EXPECT_EQ(result.opAnd(there), S_OK);
    EXPECT_EQ(result.toString().view(), "Engine in {V8}");
    EXPECT_EQ(there.opNotDom(), S_OK);
    EXPECT_EQ(result.opOr(there), S_OK);
    EXPECT_EQ(result.toString().view(), "Engine in {V6, V8}");
}

TEST_F(QueltEeNamedValueEffTest, RefusesVariablesThatDoNotAgree) {
    QueltEeCatOptionVar fewer("Engine", guidOf(1));
    QueltEeCatOptionVar others("Engine", guidOf(1));
    QueltEeCatOptionVar otherFeature("Engine", guidOf(2));
    for (const char* const value : {"V6", "V8"}) {
        fewer.addValue(value);
        others.addValue(value);
        otherFeature.addValue(value);
    }
    others.addValue("V10");
    otherFeature.addValue("V12");
    QueltEeOptionEff result = of({0});
    for (const QueltEeCatOptionVar* const variable :
         std::vector<const QueltEeCatOptionVar*>{&fewer, &others, &otherFeature, nullptr}) {
        QueltEeOptionEff alien(variable);
        expectNotCombinable(result, alien);
        EXPECT_EQ(result.toString().view(), "Engine in {V6}");
    }
}

TEST_F(QueltEeNamedValueEffTest, HasOnlyNoVariableWithoutVariable) {
    QueltEeSelectionEff nothing(nullptr);
    EXPECT_EQ(nothing.getVar(), nullptr);
    EXPECT_NE(nothing.isAllFalse(), 0);
    QueltEeSelectionEff everything(nullptr);
    everything.switchNoVar();
    EXPECT_NE(everything.isAllTrue(), 0);
    EXPECT_EQ(everything.equals(nothing), 0);
    EXPECT_EQ(nothing.opOr(everything), S_OK);
    EXPECT_NE(everything.equals(nothing), 0);
    EXPECT_EQ(nothing.opCut(everything), S_OK);
    EXPECT_NE(nothing.isAllFalse(), 0);
}

TEST_F(QueltEeNamedValueEffTest, SeesValuesThatComeLater) {
    QueltEeOptionEff effectivity = of({0, 1, 2});
    effectivity.switchNoVar();
    EXPECT_NE(effectivity.isAllTrue(), 0);
    m_engine.addValue("V16");
    EXPECT_EQ(effectivity.isAllTrue(), 0);
    EXPECT_EQ(effectivity.opNot(), S_OK);
    EXPECT_EQ(effectivity.opOr(effectivity), S_OK);
    EXPECT_EQ(effectivity.toString().view(), "Engine in {V16}");
}

TEST_F(QueltEeNamedValueEffTest, StopsAtTheLimit) {
    QueltEeCatOptionVar colour("Colour", guidOf(3));
    for (std::uint32_t number = 0; number < 1000001; ++number) {
        colour.addValue(std::to_string(number));
    }
    QueltEeOptionEff effectivity(&colour);
    ASSERT_EQ(effectivity.addValue(7), S_OK);
    ASSERT_EQ(effectivity.addValue(7), S_OK);
    ASSERT_EQ(effectivity.opNot(), S_OK);
    QueltEeOptionEff result = effectivity;
    EXPECT_EQ(result.opAnd(effectivity), S_OK);
    EXPECT_EQ(result.getValues().size(), 1000000U);
    QueltEeOptionEff seven(&colour);
    ASSERT_EQ(seven.addValue(7), S_OK);
    EXPECT_EQ(result.opOr(seven), E_OUTOFMEMORY);
    EXPECT_EQ(result.getValues().size(), 1000000U);
    EXPECT_FALSE(result.holdsFor(7));
    EXPECT_NE(result.isNoVarIncluded(), 0);
}

} // namespace
