#include "infrastructure/QueltInList.h"

#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInListVal.h"

#include <memory>
#include <string>
#include <vector>

namespace {

using Elements = std::vector<const QueltInObject*>;

template <class List>
Elements elementsOf(const List& list) {
    Elements elements;
    typename List::const_iterator iterator = list.cBegin();
    while (const QueltInObject* const element = iterator.GetGoToNext()) {
        elements.push_back(element);
    }
    return elements;
}

} // namespace

TEST(QueltInList, KeepsObjectsInOrderDuplicatesIncluded) {
    Part first(1);
    Part second(2);
    QueltInList list(Part::sType());
    EXPECT_NE(list.IsEmpty(), 0);
    EXPECT_NE(list.PutBack(second), 0);
    EXPECT_NE(list.PutBack(first), 0);
    EXPECT_NE(list.PutBack(second), 0);
    EXPECT_EQ(elementsOf(list), (Elements{&second, &first, &second}));
    EXPECT_EQ(list.GetLength(), 3);
    EXPECT_EQ(list.IsEmpty(), 0);
    EXPECT_EQ(textOf(list), "[part2, part1, part2]");
    EXPECT_EQ(textOf(QueltInList(Part::sType())), "[]");
}

TEST(QueltInList, RefusalOfAnotherClassStaysOnRecord) {
    Part part;
    SparePart spare;
    QueltInList list(SparePart::sType());
    EXPECT_EQ(list.badCastErr(), 0);
    EXPECT_EQ(list.PutBack(part), 0);
    EXPECT_NE(list.badCastErr(), 0);
    EXPECT_NE(list.PutBack(spare), 0);
    EXPECT_NE(list.badCastErr(), 0);
    EXPECT_EQ(elementsOf(list), Elements{&spare});
    QueltInList undeclared(nullptr);
    EXPECT_EQ(undeclared.PutBack(part), 0);
    EXPECT_NE(undeclared.badCastErr(), 0);
}

TEST(QueltInList, MayGrowWhileItIsWalked) {
    Part part;
    QueltInList list(Part::sType());
    list.PutBack(part);
    QueltInList::const_iterator iterator = list.cBegin();
    for (int count = 0; count < 100; ++count) {
        ASSERT_EQ(iterator.GetGoToNext(), &part);
        list.PutBack(part);
    }
    EXPECT_EQ(iterator.GetGoToNext(), &part);
    EXPECT_EQ(iterator.GetGoToNext(), nullptr);
    EXPECT_EQ(iterator.GetGoToNext(), nullptr);
}

TEST(QueltInList, CopiesHoldTheSameObjects) {
    Part first;
    Part second;
    QueltInList list(Part::sType());
    list.PutBack(first);
    QueltInList copy(list);
    EXPECT_NE(copy.equals(list), 0);
    EXPECT_EQ(copy.hash(), list.hash());
    copy.PutBack(second);
    EXPECT_EQ(list.GetLength(), 1);
    EXPECT_EQ(copy.equals(list), 0);
    QueltInList turned(Part::sType());
    turned.PutBack(second);
    turned.PutBack(first);
    EXPECT_EQ(copy.equals(turned), 0) << "order counts";
    const std::unique_ptr<QueltInObjectVal> clone(copy.clone(nullptr));
    EXPECT_NE(clone->equals(copy), 0);
    EXPECT_EQ(copy.equals(QueltInIntHolder(1)), 0);
}

TEST(QueltInList, WritesListsInListsButNoneWithinItself) {
    Part part(1);
    QueltInList inner(Part::sType());
    inner.PutBack(part);
    QueltInList outer(QueltInList::sType());
    outer.PutBack(inner);
    outer.PutBack(inner);
    EXPECT_EQ(textOf(outer), "[[part1], [part1]]");
    outer.PutBack(outer);
    EXPECT_EQ(textOf(outer), "[[part1], [part1], ...]");
    QueltInList around(QueltInList::sType());
    around.PutBack(outer);
    EXPECT_EQ(textOf(around), "[[[part1], [part1], ...]]");
}

TEST(QueltInList, WritesAbsurdNestingWithinBounds) {
    std::vector<std::unique_ptr<QueltInList>> lists;
    for (int depth = 0; depth < 100000; ++depth) {
        lists.push_back(std::make_unique<QueltInList>(QueltInList::sType()));
        if (depth > 0) {
            lists.back()->PutBack(*lists[lists.size() - 2]);
        }
    }
    const std::string text = textOf(*lists.back());
    EXPECT_LT(text.size(), 1000U);
    EXPECT_NE(text.find("[[[...]]]"), std::string::npos);
}

TEST(QueltInListVal, OwnsCopiesInOrder) {
    const int before = Crowded::s_alive;
    {
        QueltInListVal list(Crowded::sType());
        EXPECT_NE(list.IsEmpty(), 0);
        for (int number = 0; number < 10; ++number) {
            const Crowded value(number);
            QueltInObjectVal* const copy = list.PutBack(value);
            ASSERT_NE(copy, nullptr);
            EXPECT_NE(copy, &value);
            EXPECT_NE(copy->equals(value), 0);
        }
        EXPECT_EQ(list.GetLength(), 10);
        EXPECT_EQ(list.IsEmpty(), 0);
        EXPECT_EQ(Crowded::s_alive, before + 10);
        const QueltInListVal copy(list);
        EXPECT_EQ(Crowded::s_alive, before + 20);
        EXPECT_NE(copy.equals(list), 0);
        EXPECT_EQ(copy.hash(), list.hash());
        EXPECT_NE(elementsOf(copy).front(), elementsOf(list).front());
        const std::unique_ptr<QueltInObjectVal> clone(list.clone(nullptr));
        EXPECT_NE(clone->equals(list), 0);
    }
    EXPECT_EQ(Crowded::s_alive, before);
}

TEST(QueltInListVal, TakesItsOwnValues) {
    QueltInListVal list(QueltInString::sType());
    const QueltInObjectVal* value = list.PutBack(QueltInString("a text that is too long to be kept inside"));
    for (int count = 0; count < 20; ++count) {
        value = list.PutBack(*value);
    }
    EXPECT_EQ(list.GetLength(), 21);
    EXPECT_EQ(textOf(*value), "a text that is too long to be kept inside");
}

TEST(QueltInListVal, RefusalOfAnotherClassStaysOnRecord) {
    QueltInListVal list(QueltInIntHolder::sType());
    EXPECT_EQ(list.badCastErr(), 0);
    EXPECT_EQ(list.PutBack(QueltInString("1")), nullptr);
    EXPECT_NE(list.badCastErr(), 0);
    EXPECT_NE(list.PutBack(QueltInIntHolder(1)), nullptr);
    EXPECT_NE(list.badCastErr(), 0);
    EXPECT_EQ(textOf(list), "[1]");
    QueltInListVal undeclared(nullptr);
    EXPECT_EQ(undeclared.PutBack(QueltInIntHolder(1)), nullptr);
}

TEST(QueltInListVal, EqualsByValueInOrder) {
    QueltInListVal left(QueltInIntHolder::sType());
    QueltInListVal right(QueltInIntHolder::sType());
    for (const unsigned int number : {1U, 2U}) {
        left.PutBack(QueltInIntHolder(number));
        right.PutBack(QueltInIntHolder(3 - number));
    }
    EXPECT_EQ(textOf(left), "[1, 2]");
    EXPECT_EQ(textOf(right), "[2, 1]");
    EXPECT_EQ(left.equals(right), 0);
    QueltInListVal same(QueltInIntHolder::sType());
    same.PutBack(QueltInIntHolder(1));
    EXPECT_EQ(left.equals(same), 0);
    same.PutBack(QueltInIntHolder(2));
    EXPECT_NE(left.equals(same), 0);
    EXPECT_EQ(left.hash(), same.hash());
    EXPECT_EQ(left.equals(QueltInIntHolder(1)), 0);
}

TEST(QueltInListVal, MayGrowWhileItIsWalked) {
    QueltInListVal list(QueltInIntHolder::sType());
    list.PutBack(QueltInIntHolder(0));
    QueltInListVal::const_iterator iterator = list.cBegin();
    for (unsigned int number = 1; number < 50; ++number) {
        ASSERT_NE(iterator.GetGoToNext()->equals(QueltInIntHolder(number - 1)), 0);
        list.PutBack(QueltInIntHolder(number));
    }
    EXPECT_NE(iterator.GetGoToNext(), nullptr);
    EXPECT_EQ(iterator.GetGoToNext(), nullptr);
}
