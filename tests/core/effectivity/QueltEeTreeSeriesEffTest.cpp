#include "effectivity/QueltEeTreeSeriesEff.h"

#include <gtest/gtest.h>

#include "core/effectivity/EffectivityFamilies.h"
#include "infrastructure/QueltInResult.h"

#include <optional>
#include <utility>
#include <vector>

namespace {

using Bound = QueltEeTreeSeriesSelectionBound;

const QueltEeTreeSeriesElement* elementOf(const QueltEeTreeSeriesVar& variable, unsigned int number) {
    QueltEeTreeSeriesElement* element = nullptr;
    EXPECT_EQ(variable.getElement(number, element), S_OK);
    return element;
}

QueltEeTreeSeriesSelection single(const QueltEeTreeSeriesVar& variable, unsigned int number) {
    QueltEeTreeSeriesSelection selection;
    EXPECT_EQ(selection.setSingleSelection({elementOf(variable, number), 1}), S_OK);
    return selection;
}

QueltEeTreeSeriesSelection way(const QueltEeTreeSeriesVar& variable, unsigned int from, unsigned int to) {
    QueltEeTreeSeriesSelection selection;
    EXPECT_EQ(selection.setFromBound({elementOf(variable, from), 1}), S_OK);
    EXPECT_EQ(selection.addToBound({elementOf(variable, to), 1}), S_OK);
    return selection;
}

/// Adds elements as pairs of number and parent; the first is the root, whose parent does not count.
void fill(QueltEeTreeSeriesVar& variable,
          const std::vector<std::pair<unsigned int, unsigned int>>& elements) {
    for (const auto& [number, parent] : elements) {
        const long result = variable.getElements().empty() ? variable.addRootElement(number)
                                                           : variable.addElement(number, parent);
        EXPECT_EQ(result, S_OK) << number;
    }
}

/// The series
///     1 - 5 - 7 - 9
///      \       \- 8
///       \- 3
class QueltEeTreeSeriesEffTest : public testing::Test {
protected:
    QueltEeTreeSeriesEffTest() { fill(m_line, {{1, 0}, {5, 1}, {7, 5}, {9, 7}, {8, 7}, {3, 1}}); }
    [[nodiscard]] QueltEeTreeSeriesEff of(const std::vector<unsigned int>& numbers) const {
        QueltEeTreeSeriesEff effectivity(m_line);
        for (const unsigned int number : numbers) {
            EXPECT_EQ(effectivity.addSelection(single(m_line, number)), S_OK);
        }
        return effectivity;
    }

    QueltEeTreeSeriesVar m_line{"Line", guidOf(1), 18};
};

TEST_F(QueltEeTreeSeriesEffTest, KnowsItsVariable) {
    EXPECT_EQ(of({}).getVar(), &m_line);
    EXPECT_EQ(of({}).getTreeVar(), &m_line);
    EXPECT_EQ(QueltEeTreeSeriesEff(&m_line).getTreeVar(), &m_line);
    const QueltEeTreeSeriesEff withoutVariable(nullptr);
    EXPECT_EQ(withoutVariable.getVar(), nullptr);
    EXPECT_EQ(withoutVariable.getTreeVar(), nullptr);
}

TEST_F(QueltEeTreeSeriesEffTest, KeepsSelectionsAsGiven) {
    QueltEeTreeSeriesEff effectivity = of({5, 5});
    ASSERT_EQ(effectivity.addSelection(way(m_line, 7, 9)), S_OK);
    ASSERT_EQ(effectivity.addSelection(QueltEeTreeSeriesSelection()), S_OK);
    ASSERT_EQ(effectivity.getSelections().size(), 4U);
    EXPECT_EQ(effectivity.toString().view(), "Line in [5] | [5] | [7, 9] | [-inf, +inf]");
    EXPECT_EQ(of({}).toString().view(), "Line in {}");
    EXPECT_EQ(QueltEeTreeSeriesEff(nullptr).toString().view(), "null in {}");
}

TEST_F(QueltEeTreeSeriesEffTest, RefusesSelectionsOfAnotherKind) {
    class OtherSelection : public QueltEeTreeSelection {};
    QueltEeTreeSeriesEff effectivity = of({5});
    EXPECT_EQ(effectivity.addSelection(OtherSelection()), E_INVALIDARG);
    EXPECT_EQ(effectivity.getSelections().size(), 1U);
}

TEST_F(QueltEeTreeSeriesEffTest, RefusesElementsOfAnotherSeries) {
    QueltEeTreeSeriesVar same("Line", guidOf(1), 18);
    fill(same, {{1, 0}, {5, 1}, {7, 5}, {9, 7}, {8, 7}, {3, 1}});
    QueltEeTreeSeriesEff effectivity = of({5});
    EXPECT_EQ(effectivity.addSelection(single(same, 7)), E_INVALIDARG);
    EXPECT_EQ(effectivity.addSelection(way(same, 5, 7)), E_INVALIDARG);
    QueltEeTreeSeriesSelection mixed;
    ASSERT_EQ(mixed.setFromBound({elementOf(m_line, 5), 1}), S_OK);
    ASSERT_EQ(mixed.addToBound({elementOf(m_line, 7), 1}), S_OK);
    ASSERT_EQ(mixed.addToBound({elementOf(same, 9), 1}), S_OK);
    EXPECT_EQ(effectivity.addSelection(mixed), E_INVALIDARG);
    EXPECT_EQ(effectivity.toString().view(), "Line in [5]");
    QueltEeTreeSeriesEff withoutVariable(nullptr);
    EXPECT_EQ(withoutVariable.addSelection(QueltEeTreeSeriesSelection()), E_INVALIDARG);
}

TEST_F(QueltEeTreeSeriesEffTest, HoldsForTheSameNumberOfAnotherSeries) {
    QueltEeTreeSeriesVar other("Line", guidOf(1), 18);
    fill(other, {{7, 0}, {5, 7}, {6, 5}});
    QueltEeTreeSeriesEff effectivity = of({5});
    EXPECT_TRUE(effectivity.holdsFor(*elementOf(other, 5)));
    EXPECT_FALSE(effectivity.holdsFor(*elementOf(other, 7)));
    EXPECT_FALSE(effectivity.holdsFor(*elementOf(other, 6)));
    EXPECT_EQ(effectivity.opNotDom(), S_OK);
    EXPECT_FALSE(effectivity.holdsFor(*elementOf(other, 5)));
    EXPECT_TRUE(effectivity.holdsFor(*elementOf(other, 7)));
    EXPECT_FALSE(effectivity.holdsFor(*elementOf(other, 6))) << "what is no element is in neither";
    EXPECT_FALSE(QueltEeTreeSeriesEff(nullptr).holdsFor(*elementOf(other, 5)));
}

// Results stand in the order of their uppermost elements: whole branches, ways, single elements. What starts
// at the root needs no bound there.
TEST_F(QueltEeTreeSeriesEffTest, WritesResultsInNormalForm) {
    struct Case {
        std::vector<unsigned int> numbers;
        const char* text;
    };
    const Case cases[] = {
        {{}, "Line in {}"},
        {{3}, "Line in [3]"},
        {{1}, "Line in [1]"},
        {{7}, "Line in [7]"},
        {{9, 8}, "Line in [9] | [8]"},
        {{8, 7, 9}, "Line in [7, +inf]"},
        {{5, 7, 9}, "Line in [5, 7] | [9]"},
        {{5, 7}, "Line in [5, 7]"},
        {{1, 5, 7}, "Line in [-inf, 7]"},
        {{1, 7, 3}, "Line in [1] | [7] | [3]"},
        {{5, 7, 8, 9, 3}, "Line in [5, +inf] | [3]"},
        {{1, 5, 7, 8, 9}, "Line in [1] | [5, +inf]"},
        {{1, 3, 5, 7, 8, 9}, "Line in [-inf, +inf]"},
    };
    for (const Case& testCase : cases) {
        const QueltEeTreeSeriesEff given = of(testCase.numbers);
        QueltEeTreeSeriesEff result = given;
        ASSERT_EQ(result.opAnd(result), S_OK);
        EXPECT_EQ(result.toString().view(), testCase.text);
        EXPECT_NE(result.equals(given), 0) << testCase.text;
    }
    QueltEeTreeSeriesVar lonely("Line", guidOf(1), 18);
    fill(lonely, {{4, 0}});
    QueltEeTreeSeriesEff effectivity(lonely);
    ASSERT_EQ(effectivity.opNotDom(), S_OK);
    ASSERT_EQ(effectivity.opAnd(effectivity), S_OK);
    EXPECT_EQ(effectivity.toString().view(), "Line in [4]");
}

TEST_F(QueltEeTreeSeriesEffTest, HasNoElementsInAnEmptySeries) {
    const QueltEeTreeSeriesVar none("Line", guidOf(1), 18);
    QueltEeTreeSeriesEff effectivity(none);
    ASSERT_EQ(effectivity.addSelection(QueltEeTreeSeriesSelection()), S_OK);
    EXPECT_NE(effectivity.isAllFalse(), 0);
    effectivity.switchNoVar();
    EXPECT_NE(effectivity.isAllTrue(), 0);
    EXPECT_EQ(effectivity.opOr(effectivity), S_OK);
    EXPECT_EQ(effectivity.toString().view(), "Line in {}?");
}

TEST_F(QueltEeTreeSeriesEffTest, GoesByNumbersBetweenDictionaries) {
    QueltEeTreeSeriesVar same("Row", guidOf(1), 18);
    fill(same, {{1, 0}, {3, 1}, {5, 1}, {7, 5}, {8, 7}, {9, 7}});
    QueltEeTreeSeriesEff there(same);
    ASSERT_EQ(there.addSelection(way(same, 5, 8)), S_OK);
    EXPECT_NE(of({8, 5, 7}).equals(there), 0);
    EXPECT_EQ(of({9, 5, 7}).equals(there), 0);
    QueltEeTreeSeriesEff result = of({1, 3, 8});
    EXPECT_EQ(result.opCut(there), S_OK);
    EXPECT_EQ(result.toString().view(), "Line in [1] | [3]");
    EXPECT_EQ(there.opNotDom(), S_OK);
    EXPECT_EQ(result.opAnd(there), S_OK);
    EXPECT_NE(result.equals(of({1, 3})), 0);
    for (const QueltEeTreeSeriesSelection& selection : result.getSelections()) {
        EXPECT_TRUE(m_line.owns(*selection.getSingle()->element))
            << "results name the variable's own elements";
    }
}

TEST_F(QueltEeTreeSeriesEffTest, RefusesVariablesThatDoNotAgree) {
    QueltEeTreeSeriesVar otherShape("Line", guidOf(1), 18);
    fill(otherShape, {{1, 0}, {5, 1}, {7, 5}, {9, 5}, {8, 7}, {3, 1}});
    QueltEeTreeSeriesVar otherFeature("Line", guidOf(2), 18);
    fill(otherFeature, {{1, 0}, {5, 1}, {7, 5}, {9, 7}, {8, 7}, {3, 1}});
    QueltEeTreeSeriesEff result = of({5});
    for (const QueltEeTreeSeriesVar* const variable :
         std::vector<const QueltEeTreeSeriesVar*>{&otherShape, &otherFeature, nullptr}) {
        QueltEeTreeSeriesEff alien(variable);
        expectNotCombinable(result, alien);
        EXPECT_EQ(result.toString().view(), "Line in [5]");
    }
}

TEST_F(QueltEeTreeSeriesEffTest, HasOnlyNoVariableWithoutVariable) {
    QueltEeTreeSeriesEff nothing(nullptr);
    QueltEeTreeSeriesEff everything(nullptr);
    everything.opNot();
    EXPECT_NE(nothing.isAllFalse(), 0);
    EXPECT_NE(everything.isAllTrue(), 0);
    EXPECT_EQ(nothing.equals(everything), 0);
    EXPECT_EQ(nothing.opOr(everything), S_OK);
    EXPECT_NE(nothing.equals(everything), 0);
    EXPECT_EQ(nothing.toString().view(), "null in {}?");
}

// Random trees of other shapes than the small one that all classes are tested on.
TEST_F(QueltEeTreeSeriesEffTest, CombinesInTreesOfEveryShape) {
    Random random(7);
    for (unsigned int reach = 1; reach <= 27; reach *= 3) { // small reach: long chains, great reach: bushes
        QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
        ASSERT_EQ(line.addRootElement(0), S_OK);
        for (unsigned int number = 1; number < 70; ++number) {
            ASSERT_EQ(line.addElement(number, number - 1 - random.below(std::min(number, reach))), S_OK);
        }
        for (int round = 0; round < 30; ++round) {
            std::set<std::int64_t> expected;
            QueltEeTreeSeriesEff effectivity(line);
            for (int count = 0; count < 4; ++count) {
                QueltEeTreeSeriesSelection selection;
                const auto bound = [&] {
                    return Bound(random.oneOf(line.getElements()).get(),
                                 static_cast<unsigned char>(random.below(2)));
                };
                if (random.below(3) != 0) {
                    ASSERT_EQ(selection.setFromBound(bound()), S_OK);
                }
                for (unsigned int ends = random.below(3); ends > 0; --ends) {
                    ASSERT_EQ(selection.addToBound(bound()), S_OK);
                }
                QueltEeTreeSeriesEff other(line);
                ASSERT_EQ(other.addSelection(selection), S_OK);
                const std::set<std::int64_t> selected = elementsByWalking(line, selection);
                if (count % 2 == 0) {
                    ASSERT_EQ(effectivity.opOr(other), S_OK);
                    expected.insert(selected.begin(), selected.end());
                } else {
                    ASSERT_EQ(effectivity.opCut(other), S_OK);
                    std::erase_if(expected, [&](std::int64_t number) { return selected.contains(number); });
                }
            }
            std::multiset<std::int64_t> written;
            for (const QueltEeTreeSeriesSelection& selection : effectivity.getSelections()) {
                const std::set<std::int64_t> selected = elementsByWalking(line, selection);
                written.insert(selected.begin(), selected.end());
            }
            ASSERT_TRUE(std::ranges::equal(written, expected)) << effectivity.toString().view();
        }
    }
}

// As many ways as elements, each as long as the series is deep: walking each would be ten thousand million
// steps.
TEST_F(QueltEeTreeSeriesEffTest, TakesLinearTime) {
    constexpr unsigned int depth = 100000;
    QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
    ASSERT_EQ(line.addRootElement(0), S_OK);
    for (unsigned int number = 1; number < depth; ++number) {
        ASSERT_EQ(line.addElement(number, number - 1), S_OK);
    }
    QueltEeTreeSeriesEff effectivity(line);
    for (unsigned int number = 2; number < depth; ++number) {
        ASSERT_EQ(effectivity.addSelection(way(line, 1, number)), S_OK);
    }
    ASSERT_EQ(effectivity.opNotDom(), S_OK);
    ASSERT_EQ(effectivity.opOr(effectivity), S_OK);
    EXPECT_EQ(effectivity.toString().view(), "Line in [0]");
}

TEST_F(QueltEeTreeSeriesEffTest, StopsAtTheLimit) {
    QueltEeTreeSeriesVar wide("Wide", guidOf(1), 18);
    ASSERT_EQ(wide.addRootElement(0), S_OK);
    for (unsigned int number = 1; number <= 1000001; ++number) {
        ASSERT_EQ(wide.addElement(number, 0), S_OK);
    }
    QueltEeTreeSeriesEff root(wide);
    ASSERT_EQ(root.addSelection(single(wide, 0)), S_OK);
    QueltEeTreeSeriesEff leaves(wide);
    ASSERT_EQ(leaves.addSelection(QueltEeTreeSeriesSelection()), S_OK);
    EXPECT_EQ(leaves.opCut(root), E_OUTOFMEMORY);
    EXPECT_EQ(leaves.toString().view(), "Wide in [-inf, +inf]");
    QueltEeTreeSeriesEff rootAndOne = root;
    ASSERT_EQ(rootAndOne.addSelection(single(wide, 500)), S_OK);
    EXPECT_EQ(leaves.opCut(rootAndOne), S_OK);
    EXPECT_EQ(leaves.getSelections().size(), 1000000U);
}

} // namespace
