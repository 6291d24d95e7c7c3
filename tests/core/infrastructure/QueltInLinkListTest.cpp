#include "infrastructure/QueltInLinkList.h"

#include "core/infrastructure/RandomNumbers.h"
#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInResult.h"

#include <array>
#include <climits>
#include <deque>
#include <memory>
#include <vector>

namespace {

using Elements = std::vector<const QueltInObject*>;

Elements elementsOf(const QueltInLinkList& list) {
    Elements elements;
    QueltInLinkList::const_iterator iterator = list.cBegin();
    while (const QueltInObject* const element = iterator.GetGoToNext()) {
        elements.push_back(element);
    }
    return elements;
}

class QueltInLinkListTest : public testing::Test {
protected:
    QueltInLinkListTest() {
        for (Part& part : m_parts) {
            EXPECT_EQ(m_list.PutBack(part), S_OK);
        }
    }

    std::array<Part, 5> m_parts;
    QueltInLinkList m_list{Part::sType()};
};

} // namespace

TEST_F(QueltInLinkListTest, SetPutsBeforeAPositionAndAppendsAtTheLength) {
    Part first;
    Part middle;
    Part last;
    EXPECT_EQ(m_list.Set(0, first), S_OK);
    EXPECT_EQ(m_list.Set(3, middle), S_OK);
    EXPECT_EQ(m_list.Set(7, last), S_OK);
    EXPECT_EQ(elementsOf(m_list), (Elements{&first, &m_parts[0], &m_parts[1], &middle, &m_parts[2],
                                            &m_parts[3], &m_parts[4], &last}));
    EXPECT_EQ(m_list.GetLength(), 8);
    EXPECT_EQ(m_list.Get(3), &middle);
    EXPECT_EQ(m_list.Get(8), nullptr);
}

TEST_F(QueltInLinkListTest, SetRefusesWhatIsPastTheEndOrOfAnotherClass) {
    Part part;
    QueltInString text;
    EXPECT_EQ(m_list.Set(6, part), E_INVALIDARG);
    EXPECT_EQ(m_list.Set(UINT_MAX, part), E_INVALIDARG);
    EXPECT_EQ(m_list.Set(0, text), E_INVALIDARG);
    EXPECT_EQ(m_list.PutBack(text), E_INVALIDARG);
    EXPECT_EQ(m_list.GetLength(), 5);
    QueltInLinkList undeclared(nullptr);
    EXPECT_EQ(undeclared.PutBack(part), E_INVALIDARG);
    EXPECT_NE(undeclared.IsEmpty(), 0);
}

TEST_F(QueltInLinkListTest, RemoveTakesOutWithoutDeleting) {
    const int before = Part::s_alive;
    EXPECT_EQ(m_list.Remove(1), S_OK);
    EXPECT_EQ(m_list.Remove(3), S_OK);
    EXPECT_EQ(elementsOf(m_list), (Elements{&m_parts[0], &m_parts[2], &m_parts[3]}));
    EXPECT_EQ(m_list.Remove(3), E_INVALIDARG);
    EXPECT_EQ(m_list.Remove(UINT_MAX), E_INVALIDARG);
    EXPECT_EQ(m_list.GetLength(), 3);
    EXPECT_EQ(Part::s_alive, before);
}

TEST_F(QueltInLinkListTest, RemoveEachAndSetEachAreOnePassEach) {
    QueltInLinkList::iterator iterator = m_list.Begin();
    static_cast<void>(iterator.GetGoToNext());
    static_cast<void>(iterator.GetGoToNext());
    EXPECT_EQ(m_list.RemoveEach(std::array{0U, 2U, 4U}), S_OK);
    EXPECT_EQ(elementsOf(m_list), (Elements{&m_parts[1], &m_parts[3]}));
    EXPECT_EQ(iterator.Get(), &m_parts[3]);
    using Placed = QueltInLinkList::Placed;
    EXPECT_EQ(
        m_list.SetEach(std::array{Placed{0, &m_parts[0]}, Placed{2, &m_parts[2]}, Placed{4, &m_parts[4]}}),
        S_OK);
    EXPECT_EQ(elementsOf(m_list),
              (Elements{&m_parts[0], &m_parts[1], &m_parts[2], &m_parts[3], &m_parts[4]}));
    EXPECT_EQ(iterator.Get(), &m_parts[2]) << "what is set exactly where an iterator stands comes next";
    EXPECT_EQ(m_list.RemoveEach({}), S_OK);
    EXPECT_EQ(m_list.SetEach({}), S_OK);
    EXPECT_EQ(m_list.GetLength(), 5);
}

TEST_F(QueltInLinkListTest, RemoveEachAndSetEachRefuseAsAWhole) {
    using Placed = QueltInLinkList::Placed;
    Part part;
    Part another;
    QueltInString text;
    EXPECT_EQ(m_list.RemoveEach(std::array{1U, 5U}), E_INVALIDARG);
    EXPECT_EQ(m_list.RemoveEach(std::array{2U, 1U}), E_INVALIDARG);
    EXPECT_EQ(m_list.RemoveEach(std::array{1U, 1U}), E_INVALIDARG);
    EXPECT_EQ(m_list.SetEach(std::array{Placed{0, &part}, Placed{7, &another}}), E_INVALIDARG);
    EXPECT_EQ(m_list.SetEach(std::array{Placed{1, &part}, Placed{0, &another}}), E_INVALIDARG);
    EXPECT_EQ(m_list.SetEach(std::array{Placed{1, &part}, Placed{1, &another}}), E_INVALIDARG);
    EXPECT_EQ(m_list.SetEach(std::array{Placed{1, &part}, Placed{2, &text}}), E_INVALIDARG);
    EXPECT_EQ(m_list.SetEach(std::array{Placed{1, nullptr}}), E_INVALIDARG);
    EXPECT_EQ(elementsOf(m_list),
              (Elements{&m_parts[0], &m_parts[1], &m_parts[2], &m_parts[3], &m_parts[4]}));
    EXPECT_EQ(m_list.SetEach(std::array{Placed{0, &part}, Placed{6, &another}}), S_OK) << "one past the last";
    EXPECT_EQ(m_list.GetLength(), 7);
}

TEST_F(QueltInLinkListTest, PopBackTakesTheLast) {
    for (std::size_t left = m_parts.size(); left > 0; --left) {
        EXPECT_EQ(m_list.PopBack(), &m_parts[left - 1]);
    }
    EXPECT_EQ(m_list.PopBack(), nullptr);
    EXPECT_NE(m_list.IsEmpty(), 0);
}

TEST_F(QueltInLinkListTest, LastStandsInFrontOfTheLastElement) {
    {
        QueltInLinkList::const_iterator last = m_list.cLast();
        EXPECT_EQ(last.Get(), &m_parts[4]);
        EXPECT_EQ(last.GetGoToNext(), &m_parts[4]);
        EXPECT_EQ(last.Get(), nullptr);
    }
    const QueltInLinkList& constant = m_list;
    EXPECT_EQ(constant.cLast().Get(), &m_parts[4]);
    const QueltInLinkList empty(Part::sType());
    EXPECT_EQ(empty.cLast().Get(), nullptr);
    EXPECT_EQ(empty.cBegin().GetGoToNext(), nullptr);
}

TEST_F(QueltInLinkListTest, IteratorSurvivesTheRemovalOfWhatItHasPassed) {
    QueltInLinkList::const_iterator iterator = m_list.cBegin();
    EXPECT_EQ(iterator.GetGoToNext(), &m_parts[0]);
    EXPECT_EQ(iterator.GetGoToNext(), &m_parts[1]);
    EXPECT_EQ(m_list.Remove(1), S_OK);
    EXPECT_EQ(iterator.Get(), &m_parts[2]);
    EXPECT_EQ(m_list.Remove(0), S_OK);
    EXPECT_EQ(iterator.GetGoToNext(), &m_parts[2]);
    EXPECT_EQ(iterator.GetGoToNext(), &m_parts[3]);
}

TEST_F(QueltInLinkListTest, EveryElementCanBeRemovedWhileItIsWalked) {
    QueltInLinkList::const_iterator iterator = m_list.cBegin();
    for (const Part& part : m_parts) {
        ASSERT_EQ(iterator.GetGoToNext(), &part);
        ASSERT_EQ(m_list.Remove(0), S_OK);
    }
    EXPECT_EQ(iterator.GetGoToNext(), nullptr);
    EXPECT_NE(m_list.IsEmpty(), 0);
}

TEST_F(QueltInLinkListTest, RemovalOfTheNextShowsTheOneBehind) {
    QueltInLinkList::const_iterator iterator = m_list.cBegin();
    EXPECT_EQ(iterator.GetGoToNext(), &m_parts[0]);
    EXPECT_EQ(m_list.Remove(1), S_OK);
    EXPECT_EQ(iterator.Get(), &m_parts[2]);
    QueltInLinkList::const_iterator last = m_list.cLast();
    EXPECT_EQ(m_list.PopBack(), &m_parts[4]);
    EXPECT_EQ(last.Get(), nullptr);
    EXPECT_EQ(m_list.PutBack(m_parts[4]), S_OK);
    EXPECT_EQ(last.Get(), &m_parts[4]) << "what is set where it stands comes next";
}

TEST_F(QueltInLinkListTest, InsertionShiftsIteratorsBehindIt) {
    Part before;
    Part here;
    QueltInLinkList::const_iterator iterator = m_list.cBegin();
    EXPECT_EQ(iterator.GetGoToNext(), &m_parts[0]);
    EXPECT_EQ(m_list.Set(0, before), S_OK);
    EXPECT_EQ(iterator.Get(), &m_parts[1]);
    EXPECT_EQ(m_list.Set(2, here), S_OK);
    EXPECT_EQ(iterator.GetGoToNext(), &here);
    EXPECT_EQ(iterator.GetGoToNext(), &m_parts[1]);
}

TEST_F(QueltInLinkListTest, ManyIteratorsComeAndGoInAnyOrder) {
    std::unique_ptr<QueltInLinkList::iterator> first(new QueltInLinkList::iterator(m_list.Begin()));
    std::unique_ptr<QueltInLinkList::iterator> second(new QueltInLinkList::iterator(m_list.Begin()));
    std::unique_ptr<QueltInLinkList::iterator> third(new QueltInLinkList::iterator(m_list.Begin()));
    EXPECT_EQ(third->GetGoToNext(), &m_parts[0]);
    second.reset();
    EXPECT_EQ(m_list.Remove(0), S_OK);
    EXPECT_EQ(first->Get(), &m_parts[1]);
    EXPECT_EQ(third->Get(), &m_parts[1]);
    third.reset();
    first.reset();
    EXPECT_EQ(m_list.Remove(0), S_OK);
}

TEST_F(QueltInLinkListTest, IteratorStandsAtTheEndWhenTheListGoes) {
    auto list = std::make_unique<QueltInLinkList>(m_list);
    QueltInLinkList::const_iterator iterator = list->cBegin();
    const QueltInLinkList::iterator other = list->Begin();
    EXPECT_EQ(iterator.GetGoToNext(), &m_parts[0]);
    list.reset();
    EXPECT_EQ(iterator.Get(), nullptr);
    EXPECT_EQ(iterator.GetGoToNext(), nullptr);
    EXPECT_EQ(other.Get(), nullptr);
}

TEST_F(QueltInLinkListTest, CopiesHoldTheSameObjectsAndNoIterators) {
    QueltInLinkList::const_iterator iterator = m_list.cBegin();
    QueltInLinkList copy(m_list);
    EXPECT_NE(copy.equals(m_list), 0);
    EXPECT_EQ(copy.hash(), m_list.hash());
    EXPECT_EQ(copy.Remove(0), S_OK);
    EXPECT_EQ(iterator.Get(), &m_parts[0]);
    EXPECT_EQ(copy.equals(m_list), 0);
    EXPECT_EQ(m_list.GetLength(), 5);
    const std::unique_ptr<QueltInObjectVal> clone(copy.clone(nullptr));
    EXPECT_NE(clone->equals(copy), 0);
    EXPECT_EQ(copy.equals(QueltInIntHolder(1)), 0);
}

TEST_F(QueltInLinkListTest, ShowsItsElements) {
    EXPECT_EQ(textOf(m_list), "[part0, part0, part0, part0, part0]");
    EXPECT_EQ(m_list.elements().size(), 5U);
    EXPECT_EQ(m_list.elements()[1], &m_parts[1]);
}

TEST(QueltInLinkList, AgreesWithAModelIteratorsIncluded) {
    std::deque<Part> parts;
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        RandomNumbers random(seed);
        QueltInLinkList list(Part::sType());
        Elements model;
        // The iterator of the model remembers the element behind it by counting those in front.
        QueltInLinkList::const_iterator iterator = list.cBegin();
        std::size_t passed = 0;
        for (int step = 0; step < 500; ++step) {
            const unsigned int position = random.below(24);
            switch (random.below(4)) {
            case 0:
            case 1: {
                Part& part = parts.emplace_back(step);
                const bool fits = position <= model.size();
                ASSERT_EQ(list.Set(position, part), fits ? S_OK : E_INVALIDARG);
                if (fits) {
                    model.insert(model.begin() + position, &part);
                    passed += position < passed ? 1 : 0;
                }
                break;
            }
            case 2: {
                const bool fits = position < model.size();
                ASSERT_EQ(list.Remove(position), fits ? S_OK : E_INVALIDARG);
                if (fits) {
                    model.erase(model.begin() + position);
                    passed -= position < passed ? 1 : 0;
                }
                break;
            }
            default:
                ASSERT_EQ(iterator.GetGoToNext(), passed < model.size() ? model[passed] : nullptr);
                passed += passed < model.size() ? 1 : 0;
                break;
            }
            ASSERT_EQ(iterator.Get(), passed < model.size() ? model[passed] : nullptr) << "step " << step;
        }
        EXPECT_EQ(elementsOf(list), model);
    }
}
