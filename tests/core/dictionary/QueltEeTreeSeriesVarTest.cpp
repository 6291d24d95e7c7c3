#include "dictionary/QueltEeTreeSeriesVar.h"

#include "core/dictionary/TestTools.h"
#include "infrastructure/QueltInResult.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

const QueltEeTreeSeriesElement* elementOf(const QueltEeTreeSeriesVar& variable, unsigned int number) {
    QueltEeTreeSeriesElement* element = nullptr;
    EXPECT_EQ(variable.getElement(number, element), S_OK);
    return element;
}

TEST(QueltEeTreeSeriesVarTest, HasNoElementsAtFirst) {
    const QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
    EXPECT_EQ(line.getNumber(), 18U);
    EXPECT_EQ(line.getRootTreeSeriesElement(), nullptr);
    EXPECT_TRUE(line.getElements().empty());
    EXPECT_EQ(elementOf(line, 0), nullptr);
}

TEST(QueltEeTreeSeriesVarTest, KeepsParentsDepthsAndPlaces) {
    QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
    ASSERT_EQ(line.addRootElement(1), S_OK);
    ASSERT_EQ(line.addElement(5, 1), S_OK);
    ASSERT_EQ(line.addElement(7, 5), S_OK);
    ASSERT_EQ(line.addElement(3, 1), S_OK);
    struct Expected {
        unsigned int number;
        unsigned int parent;
        std::uint32_t depth;
    };
    std::uint32_t index = 0;
    for (const Expected& expected : {Expected{1, 0, 0}, {5, 1, 1}, {7, 5, 2}, {3, 1, 1}}) {
        const QueltEeTreeSeriesElement* const element = elementOf(line, expected.number);
        ASSERT_NE(element, nullptr);
        EXPECT_EQ(element->getSeqNumber(), expected.number);
        EXPECT_EQ(element->getDepth(), expected.depth);
        EXPECT_EQ(element->getIndex(), index);
        EXPECT_EQ(line.getElements()[index].get(), element);
        EXPECT_EQ(element->getParent(), expected.parent == 0 ? nullptr : elementOf(line, expected.parent));
        EXPECT_TRUE(line.owns(*element));
        ++index;
    }
    EXPECT_EQ(line.getRootTreeSeriesElement(), elementOf(line, 1));
    EXPECT_EQ(elementOf(line, 2), nullptr);
    EXPECT_EQ(elementOf(line, 7)->toString().view(), "7");
}

TEST(QueltEeTreeSeriesVarTest, AcceptsEveryNumber) {
    QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
    ASSERT_EQ(line.addRootElement(0xFFFFFFFFU), S_OK);
    ASSERT_EQ(line.addElement(0, 0xFFFFFFFFU), S_OK);
    EXPECT_EQ(elementOf(line, 0)->getParent()->toString().view(), "4294967295");
}

TEST(QueltEeTreeSeriesVarTest, RefusesWhatWouldBeNoTree) {
    QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
    EXPECT_EQ(line.addElement(5, 1), E_INVALIDARG) << "there is no element yet";
    ASSERT_EQ(line.addRootElement(1), S_OK);
    EXPECT_EQ(line.addRootElement(2), E_ALREADYTHERE) << "a second root";
    EXPECT_EQ(line.addRootElement(1), E_ALREADYTHERE);
    EXPECT_EQ(line.addElement(5, 2), E_INVALIDARG) << "no such parent";
    EXPECT_EQ(line.addElement(1, 1), E_ALREADYTHERE) << "the root's own number";
    ASSERT_EQ(line.addElement(5, 1), S_OK);
    EXPECT_EQ(line.addElement(5, 1), E_ALREADYTHERE);
    EXPECT_EQ(line.addElement(6, 6), E_INVALIDARG) << "its own parent";
    EXPECT_EQ(line.getElements().size(), 2U);
}

TEST(QueltEeTreeSeriesVarTest, TellsItsOwnElementsFromAnothers) {
    QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
    QueltEeTreeSeriesVar same("Line", guidOf(1), 18);
    ASSERT_EQ(line.addRootElement(1), S_OK);
    ASSERT_EQ(same.addRootElement(1), S_OK);
    ASSERT_EQ(same.addElement(2, 1), S_OK);
    EXPECT_TRUE(line.owns(*elementOf(line, 1)));
    EXPECT_FALSE(line.owns(*elementOf(same, 1)));
    EXPECT_FALSE(line.owns(*elementOf(same, 2)));
}

TEST(QueltEeTreeSeriesVarTest, AgreesWithTheSameTreeInAnyOrder) {
    QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
    QueltEeTreeSeriesVar same("Line", guidOf(1), 18);
    EXPECT_TRUE(line.agreesWith(line));
    EXPECT_TRUE(line.agreesWith(same));
    ASSERT_EQ(line.addRootElement(1), S_OK);
    EXPECT_FALSE(line.agreesWith(same));
    ASSERT_EQ(same.addRootElement(1), S_OK);
    ASSERT_EQ(line.addElement(5, 1), S_OK);
    ASSERT_EQ(line.addElement(7, 1), S_OK);
    ASSERT_EQ(same.addElement(7, 1), S_OK);
    ASSERT_EQ(same.addElement(5, 1), S_OK);
    EXPECT_TRUE(line.agreesWith(same));
    EXPECT_TRUE(same.agreesWith(line));

    QueltEeTreeSeriesVar otherGuid("Line", guidOf(2), 18);
    QueltEeTreeSeriesVar otherRoot("Line", guidOf(1), 18);
    QueltEeTreeSeriesVar otherShape("Line", guidOf(1), 18);
    for (QueltEeTreeSeriesVar* const variable : {&otherGuid, &otherShape}) {
        ASSERT_EQ(variable->addRootElement(1), S_OK);
        ASSERT_EQ(variable->addElement(5, 1), S_OK);
    }
    ASSERT_EQ(otherGuid.addElement(7, 1), S_OK);
    ASSERT_EQ(otherShape.addElement(7, 5), S_OK);
    ASSERT_EQ(otherRoot.addRootElement(7), S_OK);
    ASSERT_EQ(otherRoot.addElement(5, 7), S_OK);
    ASSERT_EQ(otherRoot.addElement(1, 7), S_OK);
    EXPECT_FALSE(line.agreesWith(otherGuid));
    EXPECT_FALSE(line.agreesWith(otherShape));
    EXPECT_FALSE(line.agreesWith(otherRoot));
    EXPECT_FALSE(otherRoot.agreesWith(line));
}

bool isAtOrAboveByClimbing(const QueltEeTreeSeriesElement& above, const QueltEeTreeSeriesElement& element) {
    for (const QueltEeTreeSeriesElement* at = &element; at != nullptr; at = at->getParent()) {
        if (at == &above) {
            return true;
        }
    }
    return false;
}

TEST(QueltEeTreeSeriesVarTest, KnowsWhatStandsAbove) {
    Random random(20240601);
    for (unsigned int reach = 1; reach <= 64; reach *= 4) { // small reach: long chains, great reach: bushes
        QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
        ASSERT_EQ(line.addRootElement(0), S_OK);
        for (unsigned int number = 1; number < 150; ++number) {
            const unsigned int parent = number - 1 - random.below(std::min(number, reach));
            ASSERT_EQ(line.addElement(number, parent), S_OK);
        }
        for (const auto& above : line.getElements()) {
            for (const auto& element : line.getElements()) {
                ASSERT_EQ(above->isAtOrAbove(*element), isAtOrAboveByClimbing(*above, *element))
                    << above->toString().view() << " and " << element->toString().view() << ", reach "
                    << reach;
            }
        }
    }
}

TEST(QueltEeTreeSeriesVarTest, AnswersQuicklyInADeepSeries) {
    constexpr unsigned int depth = 200000;
    QueltEeTreeSeriesVar line("Line", guidOf(1), 18);
    ASSERT_EQ(line.addRootElement(0), S_OK);
    for (unsigned int number = 1; number < depth; ++number) {
        ASSERT_EQ(line.addElement(number, number - 1), S_OK);
    }
    const QueltEeTreeSeriesElement& last = *elementOf(line, depth - 1);
    // Climbing step by step would be twenty thousand million steps.
    for (const auto& element : line.getElements()) {
        ASSERT_TRUE(element->isAtOrAbove(last));
        ASSERT_FALSE(last.isAtOrAbove(*element) && element.get() != &last);
    }
}

} // namespace
