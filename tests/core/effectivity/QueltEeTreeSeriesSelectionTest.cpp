#include "effectivity/QueltEeTreeSeriesSelection.h"

#include <gtest/gtest.h>

#include "core/effectivity/EffectivityFamilies.h"
#include "infrastructure/QueltInResult.h"

#include <optional>
#include <string>

namespace {

using Bound = QueltEeTreeSeriesSelectionBound;

/// The series
///     1 - 5 - 7 - 9
///      \       \- 8
///       \- 3
class QueltEeTreeSeriesSelectionTest : public testing::Test {
protected:
    QueltEeTreeSeriesSelectionTest() {
        m_line.addRootElement(1);
        m_line.addElement(5, 1);
        m_line.addElement(7, 5);
        m_line.addElement(9, 7);
        m_line.addElement(8, 7);
        m_line.addElement(3, 1);
    }
    [[nodiscard]] Bound at(unsigned int number, unsigned char included = 1) const {
        QueltEeTreeSeriesElement* element = nullptr;
        EXPECT_EQ(m_line.getElement(number, element), S_OK);
        EXPECT_NE(element, nullptr);
        return {element, included};
    }
    /// The numbers of what the selection contains, in the order of the series: "1 5 7 ".
    [[nodiscard]] std::string numbersOf(const QueltEeTreeSeriesSelection& selection) const {
        std::string numbers;
        for (const auto& element : m_line.getElements()) {
            if (selection.contains(*element)) {
                numbers += std::to_string(element->getSeqNumber()) + " ";
            }
        }
        return numbers;
    }

    QueltEeTreeSeriesVar m_line{"Line", guidOf(1), 18};
};

TEST_F(QueltEeTreeSeriesSelectionTest, KeepsBounds) {
    const Bound bound = at(5, 2);
    EXPECT_EQ(bound.getElement()->getSeqNumber(), 5U);
    EXPECT_EQ(bound.isIncluded(), 1);
    EXPECT_EQ(at(5, 0).isIncluded(), 0);
    EXPECT_EQ(bound, at(5, 1));
    EXPECT_FALSE(bound == at(5, 0));
    EXPECT_FALSE(bound == at(7, 1));

    QueltEeTreeSeriesSelection selection;
    EXPECT_FALSE(selection.getSingle() || selection.getFrom() || !selection.getTo().empty());
    EXPECT_EQ(selection.setFromBound(at(5, 0)), S_OK);
    EXPECT_EQ(selection.addToBound(at(8)), S_OK);
    EXPECT_EQ(selection.addToBound(at(9, 0)), S_OK);
    EXPECT_EQ(selection.getFrom()->element, at(5).getElement());
    EXPECT_FALSE(selection.getFrom()->included);
    ASSERT_EQ(selection.getTo().size(), 2U);
    EXPECT_EQ(selection.getTo()[0].element, at(8).getElement());
    EXPECT_TRUE(selection.getTo()[0].included);
    EXPECT_FALSE(selection.getTo()[1].included);
}

TEST_F(QueltEeTreeSeriesSelectionTest, RefusesABoundWithoutElement) {
    QueltEeTreeSeriesSelection selection;
    EXPECT_EQ(selection.setSingleSelection({nullptr, 1}), E_POINTER);
    EXPECT_EQ(selection.setFromBound({nullptr, 1}), E_POINTER);
    EXPECT_EQ(selection.addToBound({nullptr, 1}), E_POINTER);
    EXPECT_EQ(selection.toString().view(), "[-inf, +inf]");
}

TEST_F(QueltEeTreeSeriesSelectionTest, IsASingleElementOrAWay) {
    QueltEeTreeSeriesSelection single;
    ASSERT_EQ(single.setSingleSelection(at(5)), S_OK);
    EXPECT_EQ(single.setSingleSelection(at(7)), E_ALREADYTHERE);
    EXPECT_EQ(single.setFromBound(at(7)), E_ALREADYTHERE);
    EXPECT_EQ(single.addToBound(at(7)), E_ALREADYTHERE);
    EXPECT_EQ(single.toString().view(), "[5]");

    QueltEeTreeSeriesSelection from;
    ASSERT_EQ(from.setFromBound(at(5)), S_OK);
    EXPECT_EQ(from.setFromBound(at(7)), E_ALREADYTHERE);
    EXPECT_EQ(from.setSingleSelection(at(7)), E_ALREADYTHERE);
    EXPECT_EQ(from.toString().view(), "[5, +inf]");

    QueltEeTreeSeriesSelection to;
    ASSERT_EQ(to.addToBound(at(7)), S_OK);
    EXPECT_EQ(to.setSingleSelection(at(7)), E_ALREADYTHERE);
    EXPECT_EQ(to.setFromBound(at(5)), S_OK) << "the bounds may come in any order";
    EXPECT_EQ(to.toString().view(), "[5, 7]");
}

TEST_F(QueltEeTreeSeriesSelectionTest, ContainsTheElementsOnTheWay) {
    struct Case {
        std::optional<Bound> from;
        std::vector<Bound> to;
        const char* text;
        const char* numbers;
    };
    const Case cases[] = {
        {{}, {}, "[-inf, +inf]", "1 5 7 9 8 3 "},
        {at(5), {}, "[5, +inf]", "5 7 9 8 "},
        {at(5, 0), {}, "(5, +inf]", "7 9 8 "},
        {at(1, 0), {}, "(1, +inf]", "5 7 9 8 3 "},
        {at(9), {}, "[9, +inf]", "9 "},
        {at(9, 0), {}, "(9, +inf]", ""},
        {{}, {at(7)}, "[-inf, 7]", "1 5 7 "},
        {{}, {at(7, 0)}, "[-inf, 7)", "1 5 "},
        {{}, {at(1, 0)}, "[-inf, 1)", ""},
        {at(5), {at(9)}, "[5, 9]", "5 7 9 "},
        {at(5, 0), {at(9, 0)}, "(5, 9)", "7 "},
        {at(5, 0), {at(7, 0)}, "(5, 7)", ""},
        {at(5, 0), {at(7)}, "(5, 7]", "7 "},
        {at(7), {at(7)}, "[7, 7]", "7 "},
        {at(7, 0), {at(7)}, "(7, 7]", ""},
        {at(7), {at(7, 0)}, "[7, 7)", ""},
        {at(7, 0), {at(7, 0)}, "(7, 7)", ""},
        {at(9), {at(5)}, "[9, 5]", ""}, // up the tree there is no way
        {at(3), {at(9)}, "[3, 9]", ""}, // nor from branch to branch
        {at(5), {at(9), at(8)}, "[5, 9] | [5, 8]", "5 7 9 8 "},
        {at(5), {at(9, 0), at(3)}, "[5, 9) | [5, 3]", "5 7 "},
        {at(5),
         {at(7, 0), at(9)},
         "[5, 7) | [5, 9]",
         "5 7 9 "}, // the second way comes by the first one's end
        {{}, {at(3), at(5)}, "[-inf, 3] | [-inf, 5]", "1 5 3 "},
    };
    for (const Case& testCase : cases) {
        QueltEeTreeSeriesSelection selection;
        if (testCase.from) {
            ASSERT_EQ(selection.setFromBound(*testCase.from), S_OK);
        }
        for (const Bound& to : testCase.to) {
            ASSERT_EQ(selection.addToBound(to), S_OK);
        }
        EXPECT_EQ(selection.toString().view(), testCase.text);
        EXPECT_EQ(numbersOf(selection), testCase.numbers) << testCase.text;
    }
}

TEST_F(QueltEeTreeSeriesSelectionTest, ContainsASingleElement) {
    QueltEeTreeSeriesSelection seven;
    ASSERT_EQ(seven.setSingleSelection(at(7)), S_OK);
    EXPECT_EQ(numbersOf(seven), "7 ");
    QueltEeTreeSeriesSelection none;
    ASSERT_EQ(none.setSingleSelection(at(7, 0)), S_OK);
    EXPECT_EQ(numbersOf(none), "");
    EXPECT_EQ(none.toString().view(), "(7)");
}

TEST_F(QueltEeTreeSeriesSelectionTest, CopiesWhole) {
    QueltEeTreeSeriesSelection selection;
    ASSERT_EQ(selection.setFromBound(at(5)), S_OK);
    ASSERT_EQ(selection.addToBound(at(9)), S_OK);
    const QueltEeTreeSeriesSelection copy = selection;
    ASSERT_EQ(selection.addToBound(at(8)), S_OK);
    EXPECT_EQ(copy.toString().view(), "[5, 9]");
    EXPECT_EQ(selection.toString().view(), "[5, 9] | [5, 8]");
}

// Every selection with at most two ends, in every tree of at most four elements.
TEST(QueltEeTreeSeriesSelectionAllTest, ContainsWhatStandsOnTheWays) {
    const std::vector<std::vector<unsigned int>> parentLists{
        {}, {0}, {0, 0}, {0, 1}, {0, 0, 0}, {0, 0, 1}, {0, 0, 2}, {0, 1, 0}, {0, 1, 1}, {0, 1, 2},
    };
    int compared = 0;
    for (const std::vector<unsigned int>& parents : parentLists) {
        QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
        ASSERT_EQ(line.addRootElement(0), S_OK);
        for (const unsigned int parent : parents) {
            ASSERT_EQ(line.addElement(static_cast<unsigned int>(line.getElements().size()), parent), S_OK);
        }
        std::vector<std::optional<Bound>> bounds{std::nullopt};
        for (const auto& element : line.getElements()) {
            bounds.emplace_back(Bound(element.get(), 0));
            bounds.emplace_back(Bound(element.get(), 1));
        }
        for (const std::optional<Bound>& from : bounds) {
            for (const std::optional<Bound>& to : bounds) {
                for (const std::optional<Bound>& secondTo : bounds) {
                    QueltEeTreeSeriesSelection selection;
                    ASSERT_TRUE(!from || selection.setFromBound(*from) == S_OK);
                    ASSERT_TRUE(!to || selection.addToBound(*to) == S_OK);
                    ASSERT_TRUE(!secondTo || selection.addToBound(*secondTo) == S_OK);
                    const std::set<std::int64_t> expected = elementsByWalking(line, selection);
                    for (const auto& element : line.getElements()) {
                        ASSERT_EQ(selection.contains(*element), expected.contains(element->getSeqNumber()))
                            << element->getSeqNumber() << " in " << selection.toString().view();
                        ++compared;
                    }
                }
            }
        }
    }
    EXPECT_EQ(compared, 3 * 3 * 3 * 1 + 5 * 5 * 5 * 2 + 2 * 7 * 7 * 7 * 3 + 6 * 9 * 9 * 9 * 4);
}

} // namespace
