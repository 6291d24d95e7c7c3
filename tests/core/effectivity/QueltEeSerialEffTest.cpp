#include "effectivity/QueltEeSerialEff.h"

#include <gtest/gtest.h>

#include "core/effectivity/EffectivityFamilies.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInResult.h"

#include <vector>

namespace {

using Interval = QueltEeSerialEff::Interval;
using ExternalType = QueltEeSerialVar::SerialExternalType;

constexpr int minusInf = -2000000000;
constexpr int plusInf = 2000000000;
constexpr int smallest = std::numeric_limits<int>::min();
constexpr int greatest = std::numeric_limits<int>::max();

class QueltEeSerialEffTest : public testing::Test {
protected:
    [[nodiscard]] QueltEeSerialEff of(const std::vector<Interval>& intervals) const {
        QueltEeSerialEff effectivity(&m_unit);
        for (const Interval& interval : intervals) {
            effectivity.addInterval(interval);
        }
        return effectivity;
    }
    [[nodiscard]] static QueltEeSerialEff negated(QueltEeSerialEff effectivity) {
        effectivity.opNotDom();
        return effectivity;
    }

    QueltEeSerialVar m_unit{"Unit", guidOf(1), ExternalType::productSeries};
};

QueltInSerialInterval valueOf(const Interval& interval) {
    QueltInSerialInterval value;
    value.setInterval(interval.a, interval.aIncl, interval.b, interval.bIncl);
    return value;
}

TEST_F(QueltEeSerialEffTest, KnowsItsVariable) {
    const QueltEeSerialEff effectivity(&m_unit);
    EXPECT_EQ(effectivity.getOrdVar(), &m_unit);
    EXPECT_EQ(effectivity.getVar(), &m_unit);
    EXPECT_EQ(QueltEeSerialEff(nullptr).getOrdVar(), nullptr);
    EXPECT_EQ(QueltEeSerialEff(nullptr).getVar(), nullptr);
}

TEST_F(QueltEeSerialEffTest, TakesAndGivesIntervalsAsTheyAre) {
    const std::vector<Interval> given{
        {30, 20, 1, 0}, {5, 7, 0, 1}, {5, 7, 0, 1}, {minusInf, plusInf, 0, 0}, {smallest, greatest, 1, 1}};
    QueltInListVal list(QueltInSerialInterval::sType());
    for (const Interval& interval : given) {
        ASSERT_NE(list.PutBack(valueOf(interval)), nullptr);
    }
    QueltEeSerialEff effectivity = of({{1, 2, 1, 1}});
    EXPECT_EQ(effectivity.set(list), S_OK);
    EXPECT_TRUE(std::ranges::equal(effectivity.intervals(), given));

    QueltInListVal answer(QueltInSerialInterval::sType());
    ASSERT_NE(answer.PutBack(valueOf({0, 1, 1, 1})), nullptr);
    EXPECT_EQ(effectivity.getIntervals(answer), S_OK);
    ASSERT_EQ(answer.GetLength(), 6) << "what was in the list before stays";
    QueltInListVal::const_iterator values = answer.cBegin();
    EXPECT_NE(values.GetGoToNext()->equals(valueOf({0, 1, 1, 1})), 0);
    for (const Interval& interval : given) {
        EXPECT_NE(values.GetGoToNext()->equals(valueOf(interval)), 0);
    }

    EXPECT_EQ(effectivity.set(QueltInListVal(QueltInSerialInterval::sType())), S_OK);
    EXPECT_TRUE(effectivity.intervals().empty());
}

TEST_F(QueltEeSerialEffTest, RefusesListsOfSomethingElse) {
    QueltEeSerialEff effectivity = of({{1, 2, 1, 1}});
    QueltInListVal numbers(QueltInObjectVal::sType());
    ASSERT_NE(numbers.PutBack(valueOf({3, 4, 1, 1})), nullptr);
    ASSERT_NE(numbers.PutBack(QueltInIntHolder(5)), nullptr);
    EXPECT_EQ(effectivity.set(numbers), E_INVALIDARG);
    EXPECT_TRUE(std::ranges::equal(effectivity.intervals(), std::vector<Interval>{{1, 2, 1, 1}}));

    QueltInListVal holders(QueltInIntHolder::sType());
    EXPECT_EQ(effectivity.getIntervals(holders), E_INVALIDARG);
    EXPECT_EQ(holders.GetLength(), 0);
    EXPECT_EQ(QueltEeSerialEff(&m_unit).getIntervals(holders), S_OK) << "there is nothing to refuse";
}

TEST_F(QueltEeSerialEffTest, PrintsIntervalsAsTheyAre) {
    EXPECT_EQ(of({}).toString().view(), "Unit in {}");
    EXPECT_EQ(of({{10, 20, 1, 0}, {30, plusInf, 1, 1}}).toString().view(), "Unit in [10, 20) | [30, +inf]");
    EXPECT_EQ(of({{minusInf, plusInf, 0, 0}}).toString().view(), "Unit in (-inf, +inf)");
    EXPECT_EQ(of({{30, 20, 0, 2}}).toString().view(), "Unit in (30, 20]");
    EXPECT_EQ(of({{plusInf, minusInf, 1, 1}}).toString().view(), "Unit in [2000000000, -2000000000]");
    EXPECT_EQ(negated(of({{5, 5, 1, 1}})).toString().view(), "not (Unit in [5, 5])");

    const QueltEeSerialVar unusual("unit no.", guidOf(1), ExternalType::unitCounter);
    EXPECT_EQ(QueltEeSerialEff(&unusual).toString().view(), "\"unit no.\" in {}");
    QueltEeSerialEff withoutVariable(nullptr);
    withoutVariable.addInterval({10, 20, 1, 0});
    EXPECT_EQ(withoutVariable.toString().view(), "null in [10, 20)");
}

// Results are in normal form: closed bounds, open ends where the numbers end, and an exclusive neighbour
// where a closed bound would read as an open end.
TEST_F(QueltEeSerialEffTest, WritesResultsInNormalForm) {
    struct Case {
        QueltEeSerialEff effectivity;
        const char* text;
    };
    const Case cases[] = {
        {of({{10, 20, 0, 0}}), "Unit in [11, 19]"},
        {of({{5, 6, 1, 1}, {1, 2, 1, 1}, {3, 4, 1, 1}}), "Unit in [1, 6]"},
        {of({{5, 6, 1, 1}, {1, 3, 1, 1}, {2, 2, 1, 1}}), "Unit in [1, 3] | [5, 6]"},
        {of({{10, 11, 0, 0}, {7, 6, 1, 1}, {7, 7, 1, 0}}), "Unit in {}"},
        {of({{greatest, plusInf, 0, 1}, {minusInf, smallest, 1, 0}}), "Unit in {}"},
        {of({{minusInf, plusInf, 0, 0}}), "Unit in [-inf, +inf]"},
        {of({{smallest, greatest, 1, 1}}), "Unit in [-inf, +inf]"},
        {of({{smallest, greatest, 0, 0}}), "Unit in [-2147483647, 2147483646]"},
        {of({{minusInf, 5, 1, 1}, {6, plusInf, 1, 1}}), "Unit in [-inf, +inf]"},
        {negated(of({{10, 20, 1, 1}})), "Unit in [-inf, 9] | [21, +inf]"},
        {negated(of({})), "Unit in [-inf, +inf]"},
        // plain bounds at the open ends' numbers
        {of({{5, 2000000001, 1, 0}}), "Unit in [5, 2000000001)"},
        {of({{-2000000001, 5, 0, 1}}), "Unit in (-2000000001, 5]"},
        {of({{plusInf, 2000000001, 1, 0}}), "Unit in [2000000000, 2000000001)"},
        {of({{-2000000001, minusInf, 0, 1}}), "Unit in (-2000000001, -2000000000]"},
        {of({{plusInf, plusInf, 1, 1}}), "Unit in [2000000000, +inf]"},
        {of({{minusInf, minusInf, 1, 1}}), "Unit in [-inf, -2000000000]"},
        {of({{plusInf, minusInf, 1, 1}}), "Unit in {}"},
        {negated(of({{2000000001, plusInf, 1, 1}})), "Unit in [-inf, 2000000001)"},
        {negated(of({{minusInf, -2000000001, 1, 1}})), "Unit in (-2000000001, +inf]"},
        {negated(of({{plusInf, plusInf, 1, 1}})), "Unit in [-inf, 1999999999]"},
        {negated(of({{minusInf, minusInf, 1, 1}})), "Unit in [-1999999999, +inf]"},
        // numbers beyond the open ends' numbers
        {of({{2000000001, greatest, 1, 1}}), "Unit in [2000000001, +inf]"},
        {of({{2000000001, greatest, 1, 0}}), "Unit in [2000000001, 2147483646]"},
        {of({{smallest, -2000000001, 1, 1}}), "Unit in [-inf, -2000000001]"},
        {of({{smallest, -2000000001, 0, 1}}), "Unit in [-2147483647, -2000000001]"},
    };
    for (const Case& testCase : cases) {
        QueltEeSerialEff result = testCase.effectivity;
        ASSERT_EQ(result.opOr(result), S_OK);
        EXPECT_EQ(result.toString().view(), testCase.text) << "of " << testCase.effectivity.toString().view();
        EXPECT_NE(result.equals(testCase.effectivity), 0) << testCase.text;
    }
}

// Every pair of single intervals around a few numbers, with all flags.
TEST_F(QueltEeSerialEffTest, CombinesAllPairsOfSmallIntervals) {
    const std::vector<std::int64_t> domain{smallest, -1, 0, 1, 2, 3, 4, 5, greatest};
    const auto membersOf = [&domain](const QueltEeSerialEff& effectivity) {
        const Interval& interval = effectivity.intervals()[0];
        unsigned int members = 0;
        for (std::size_t place = 0; place < domain.size(); ++place) {
            const std::int64_t number = domain[place];
            const bool above = interval.a == minusInf || number > interval.a ||
                               (interval.aIncl != 0 && number == interval.a);
            const bool below =
                interval.b == plusInf || number < interval.b || (interval.bIncl != 0 && number == interval.b);
            members |= (above && below ? 1U : 0U) << place;
        }
        const unsigned int everything = (1U << domain.size()) - 1;
        return effectivity.isNegated() != 0 ? everything & ~members : members;
    };
    std::vector<QueltEeSerialEff> effectivities;
    for (const int a : {minusInf, 0, 2, 4}) {
        for (const int b : {0, 2, 4, plusInf}) {
            for (unsigned int flags = 0; flags < 8; ++flags) {
                effectivities.push_back(of({{a, b, static_cast<unsigned char>(flags & 1U),
                                             static_cast<unsigned char>(flags >> 1U & 1U)}}));
                if ((flags & 4U) != 0) {
                    effectivities.back() = negated(effectivities.back());
                }
            }
        }
    }
    for (const QueltEeSerialEff& left : effectivities) {
        for (const QueltEeSerialEff& right : effectivities) {
            const auto check = [&](QueltEeSerialEff result, const char* operation, unsigned int expected) {
                for (std::size_t place = 0; place < domain.size(); ++place) {
                    ASSERT_EQ(result.holdsFor(static_cast<int>(domain[place])), (expected >> place & 1U) != 0)
                        << domain[place] << " in " << left.toString().view() << operation
                        << right.toString().view();
                }
            };
            const unsigned int leftMembers = membersOf(left);
            const unsigned int rightMembers = membersOf(right);
            QueltEeSerialEff result = left;
            ASSERT_EQ(result.opAnd(right), S_OK);
            check(result, " and ", leftMembers & rightMembers);
            result = left;
            ASSERT_EQ(result.opOr(right), S_OK);
            check(result, " or ", leftMembers | rightMembers);
            result = left;
            ASSERT_EQ(result.opCut(right), S_OK);
            check(result, " cut ", leftMembers & ~rightMembers);
            ASSERT_EQ(left.equals(right) != 0,
                      leftMembers == rightMembers && left.isNoVarIncluded() == right.isNoVarIncluded())
                << left.toString().view() << " and " << right.toString().view();
        }
    }
}

TEST_F(QueltEeSerialEffTest, AsksWhetherTheVariablesAgree) {
    QueltEeSerialVar same("Unit of the van", guidOf(1), ExternalType::productSeries);
    const QueltEeSerialVar other("Unit", guidOf(2), ExternalType::productSeries);
    const QueltEeSerialEff here = of({{1, 5, 1, 1}});
    QueltEeSerialEff there(&same);
    there.addInterval({4, 9, 1, 1});

    QueltEeSerialEff result = here;
    EXPECT_EQ(result.opAnd(there), S_OK);
    EXPECT_EQ(result.toString().view(), "Unit in [4, 5]");
    EXPECT_EQ(result.equals(there), 0);
    EXPECT_EQ(there.opAnd(here), S_OK);
    EXPECT_NE(result.equals(there), 0);

    // Five is the year 2010 there, and nothing here.
    same.addRevision("2010", 5);
    for (const QueltEeSerialVar* const variable :
         std::vector<const QueltEeSerialVar*>{&same, &other, nullptr}) {
        QueltEeSerialEff alien(variable);
        alien.addInterval({4, 5, 1, 1});
        expectNotCombinable(result, alien);
        EXPECT_EQ(result.toString().view(), "Unit in [4, 5]");
    }
}

TEST_F(QueltEeSerialEffTest, ComparesNumbersWithoutVariable) {
    QueltEeSerialEff left(nullptr);
    left.addInterval({1, 5, 1, 1});
    QueltEeSerialEff right(nullptr);
    right.addInterval({1, 6, 1, 0});
    EXPECT_NE(left.equals(right), 0);
    right.opNotDom();
    EXPECT_EQ(left.equals(right), 0);
    EXPECT_EQ(left.opOr(right), S_OK);
    EXPECT_EQ(left.toString().view(), "null in [-inf, +inf]");
    EXPECT_EQ(left.isAllTrue(), 0);
    left.switchNoVar();
    EXPECT_NE(left.isAllTrue(), 0);
}

// Every second number: as many intervals as numbers.
void addEverySecond(QueltEeSerialEff& effectivity, int first, int count) {
    for (int place = 0; place < count; ++place) {
        effectivity.addInterval({first + 2 * place, first + 2 * place, 1, 1});
    }
}

TEST_F(QueltEeSerialEffTest, StopsAtTheLimit) {
    QueltEeSerialEff many(&m_unit);
    addEverySecond(many, 0, 600000);
    QueltEeSerialEff more(&m_unit);
    addEverySecond(more, 1200000, 400001);
    more.opNotDom();
    more.opNotDom();
    QueltEeSerialEff result = many;
    EXPECT_EQ(result.opOr(more), E_OUTOFMEMORY);
    EXPECT_TRUE(std::ranges::equal(result.intervals(), many.intervals()));
    EXPECT_EQ(result.isNegated(), 0);

    const QueltEeSerialEff last = of({{2000000, 2000000, 1, 1}});
    EXPECT_EQ(more.opCut(last), S_OK);
    EXPECT_EQ(result.opOr(more), S_OK);
    EXPECT_EQ(result.intervals().size(), 1000000U);
    EXPECT_TRUE(result.holdsFor(1999998));
    EXPECT_FALSE(result.holdsFor(1999999));
    EXPECT_EQ(result.opOr(last), E_OUTOFMEMORY);
    EXPECT_EQ(result.opOr(of({{-1, 2000001, 1, 1}})), S_OK);
    EXPECT_EQ(result.toString().view(), "Unit in [-1, 2000001]");
}

} // namespace
