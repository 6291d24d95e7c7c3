#include "infrastructure/QueltInSet.h"

#include "core/infrastructure/OnThreads.h"
#include "core/infrastructure/RandomNumbers.h"
#include "core/infrastructure/SampleObjects.h"

#include <algorithm>
#include <climits>
#include <deque>
#include <memory>
#include <vector>

namespace {

using Elements = std::vector<const QueltInObject*>;

/// A set as it may come from elsewhere: with elements that Put would not let in.
class ForeignSet : public QueltInSet {
public:
    using QueltInSet::QueltInSet;
    void append(QueltInObject* element) { m_elements.push_back(element); }
};

Elements elementsOf(const QueltInSet& set) {
    Elements elements;
    QueltInSet::const_iterator iterator = set.cBegin();
    while (const QueltInObject* const element = iterator.GetGoToNext()) {
        elements.push_back(element);
    }
    return elements;
}

/// Does the same random operations on a set and on a plain sequence; `same` says which objects are one
/// element.
template <class Same>
void compareWithModel(QueltInObjectTypeClass* type, const std::vector<QueltInObject*>& objects,
                      unsigned int seed, Same same) {
    RandomNumbers random(seed);
    QueltInSet set(type);
    Elements model;
    for (int step = 0; step < 3000; ++step) {
        QueltInObject* const object = objects[random.below(objects.size())];
        const auto found = std::find_if(model.begin(), model.end(), [&](const QueltInObject* element) {
            return same(*element, *object);
        });
        const bool isThere = found != model.end();
        ASSERT_EQ(set.Find(*object) != 0, isThere);
        // Waves of growth and decline, so that sets of every length gain and lose elements.
        const bool growing = step / 300 % 2 == 0;
        if (random.onceIn(4) ? growing : !growing) {
            ASSERT_EQ(set.Remove(*object) != 0, isThere);
            if (isThere) {
                model.erase(found);
            }
        } else {
            ASSERT_EQ(set.Put(*object) != 0, !isThere);
            if (!isThere) {
                model.push_back(object);
            }
        }
        if (random.onceIn(1000)) {
            set.Clear();
            model.clear();
        }
        ASSERT_EQ(set.GetLength(), static_cast<int>(model.size()));
        ASSERT_EQ(set.IsEmpty() != 0, model.empty());
        if (step % 50 == 0) {
            ASSERT_EQ(elementsOf(set), model) << "step " << step;
            QueltInSet copy(set);
            ASSERT_EQ(elementsOf(copy), model);
            copy.Clear();
            copy.PutSet(set);
            ASSERT_NE(copy.equals(set), 0);
        }
    }
    EXPECT_EQ(elementsOf(set), model);
    EXPECT_EQ(set.badCastErr(), 0);
}

bool isSameObject(const QueltInObject& left, const QueltInObject& right) {
    return &left == &right;
}

bool isSameValue(const QueltInObject& left, const QueltInObject& right) {
    return QueltInObjectVal::cast(&left)->equals(*QueltInObjectVal::cast(&right)) != 0;
}

} // namespace

TEST(QueltInSet, KeepsTheOrderOfInsertionWithoutDuplicates) {
    Part first(1);
    Part second(2);
    Part third(3);
    QueltInSet set(Part::sType());
    EXPECT_NE(set.IsEmpty(), 0);
    EXPECT_NE(set.Put(second), 0);
    EXPECT_NE(set.Put(first), 0);
    EXPECT_EQ(set.Put(second), 0);
    EXPECT_NE(set.Put(third), 0);
    EXPECT_EQ(set.badCastErr(), 0) << "an element that is there already is no error";
    EXPECT_EQ(elementsOf(set), (Elements{&second, &first, &third}));
    EXPECT_EQ(textOf(set), "{part2, part1, part3}");
    EXPECT_NE(set.Remove(first), 0);
    EXPECT_EQ(set.Remove(first), 0);
    EXPECT_EQ(elementsOf(set), (Elements{&second, &third}));
    EXPECT_NE(set.Put(first), 0);
    EXPECT_EQ(elementsOf(set), (Elements{&second, &third, &first}));
    set.Clear();
    EXPECT_NE(set.IsEmpty(), 0);
    EXPECT_EQ(textOf(set), "{}");
    EXPECT_EQ(set.getElementType(), Part::sType());
}

TEST(QueltInSet, TellsPlainObjectsApartByAddress) {
    Part one(1);
    Part twin(1);
    QueltInSet set(Part::sType());
    EXPECT_NE(set.Put(one), 0);
    EXPECT_EQ(set.Find(twin), 0);
    EXPECT_NE(set.Put(twin), 0);
    EXPECT_EQ(set.GetLength(), 2);
}

TEST(QueltInSet, TellsValuesApartByWhatTheyHold) {
    QueltInString one("A");
    QueltInString twin("A");
    QueltInSet set(QueltInString::sType());
    EXPECT_NE(set.Put(one), 0);
    EXPECT_EQ(set.Put(twin), 0);
    EXPECT_NE(set.Find(twin), 0);
    EXPECT_EQ(elementsOf(set), Elements{&one});
    EXPECT_EQ(set.Find(Part()), 0) << "what is no value is in no set of values";
    EXPECT_EQ(set.Remove(Part()), 0);
    EXPECT_NE(set.Remove(twin), 0);
    EXPECT_NE(set.IsEmpty(), 0);
}

TEST(QueltInSet, TellsValuesApartByAddressWhereAnyObjectMayStand) {
    QueltInString one("A");
    QueltInString twin("A");
    QueltInSet set(QueltInObject::sType());
    EXPECT_NE(set.Put(one), 0);
    EXPECT_NE(set.Put(twin), 0);
    EXPECT_EQ(set.GetLength(), 2);
}

TEST(QueltInSet, RefusalOfAnotherClassStaysOnRecord) {
    Part part;
    SparePart spare;
    QueltInSet set(SparePart::sType());
    EXPECT_EQ(set.badCastErr(), 0);
    EXPECT_EQ(set.Put(part), 0);
    EXPECT_NE(set.badCastErr(), 0);
    EXPECT_NE(set.IsEmpty(), 0);
    EXPECT_NE(set.Put(spare), 0);
    set.Clear();
    EXPECT_NE(set.badCastErr(), 0) << "stays, whatever comes later";
    EXPECT_NE(QueltInSet(set).badCastErr(), 0);
}

TEST(QueltInSet, WithoutDeclaredClassRefusesEverything) {
    Part part;
    QueltInSet set(nullptr);
    EXPECT_EQ(set.Put(part), 0);
    EXPECT_NE(set.badCastErr(), 0);
    EXPECT_EQ(set.Find(part), 0);
    EXPECT_EQ(set.Remove(part), 0);
}

TEST(QueltInSet, CapacityIsAWish) {
    Part part;
    for (const int capacity : {INT_MIN, -1, 0, 1, 100, INT_MAX}) {
        QueltInSet set(Part::sType(), capacity, 0.5F);
        EXPECT_NE(set.Put(part), 0);
        EXPECT_EQ(set.GetLength(), 1);
    }
}

TEST(QueltInSet, IteratorShowsTheCurrentElement) {
    Part first;
    Part second;
    QueltInSet set(Part::sType());
    EXPECT_EQ(set.cBegin().Get(), nullptr);
    set.Put(first);
    set.Put(second);
    QueltInSet::const_iterator iterator = set.cBegin();
    EXPECT_EQ(iterator.Get(), &first);
    EXPECT_EQ(iterator.Get(), &first);
    EXPECT_EQ(iterator.GetGoToNext(), &first);
    EXPECT_EQ(iterator.Get(), &second);
    EXPECT_EQ(iterator.GetGoToNext(), &second);
    EXPECT_EQ(iterator.Get(), nullptr);
    EXPECT_EQ(iterator.GetGoToNext(), nullptr);
}

TEST(QueltInSet, AddsAnotherSetInItsOrder) {
    Part first;
    Part second;
    Part third;
    QueltInSet set(Part::sType());
    set.Put(second);
    QueltInSet other(QueltInObject::sType());
    other.Put(third);
    other.Put(second);
    other.Put(first);
    set.PutSet(other);
    EXPECT_EQ(elementsOf(set), (Elements{&second, &third, &first}));
    EXPECT_EQ(set.badCastErr(), 0);
    set.PutSet(set);
    EXPECT_EQ(set.GetLength(), 3);
    QueltInString text;
    other.Put(text);
    set.PutSet(other);
    EXPECT_EQ(set.GetLength(), 3);
    EXPECT_NE(set.badCastErr(), 0);
}

TEST(QueltInSet, AgreesWithAModelByAddress) {
    std::deque<Part> parts;
    for (unsigned int seed = 1; seed <= 6; ++seed) {
        std::vector<QueltInObject*> objects;
        for (unsigned int count = 0; count < 5 + 30 * seed; ++count) {
            objects.push_back(&parts.emplace_back());
        }
        compareWithModel(Part::sType(), objects, seed, isSameObject);
    }
}

TEST(QueltInSet, AgreesWithAModelByValue) {
    std::deque<QueltInIntHolder> numbers;
    std::deque<Crowded> crowded;
    for (unsigned int seed = 1; seed <= 6; ++seed) {
        std::vector<QueltInObject*> spread;
        std::vector<QueltInObject*> inThreeBuckets;
        for (unsigned int count = 0; count < 10 + 40 * seed; ++count) {
            const unsigned int number = count / 2; // every value is there twice
            spread.push_back(&numbers.emplace_back(number));
            inThreeBuckets.push_back(&crowded.emplace_back(static_cast<int>(number)));
        }
        compareWithModel(QueltInIntHolder::sType(), spread, seed, isSameValue);
        compareWithModel(Crowded::sType(), inThreeBuckets, seed, isSameValue);
    }
}

TEST(QueltInSet, EqualsInWhateverOrder) {
    QueltInString a("A");
    QueltInString b("B");
    QueltInString otherA("A");
    QueltInSet left(QueltInString::sType());
    QueltInSet right(QueltInString::sType());
    left.Put(a);
    left.Put(b);
    right.Put(b);
    EXPECT_EQ(left.equals(right), 0);
    right.Put(otherA);
    EXPECT_NE(left.equals(right), 0);
    EXPECT_EQ(left.hash(), right.hash());
    QueltInSet byAddress(QueltInObject::sType());
    byAddress.PutSet(left);
    EXPECT_EQ(left.equals(byAddress), 0) << "one tells by value, the other by address";
    EXPECT_EQ(byAddress.equals(left), 0);
    EXPECT_EQ(left.equals(a), 0);
    const std::unique_ptr<QueltInObjectVal> clone(left.clone(nullptr));
    EXPECT_NE(clone->equals(left), 0);
}

TEST(QueltInSet, LivesWithNullsThatADerivedClassLetIn) {
    Part part(1);
    ForeignSet set(Part::sType());
    set.append(nullptr);
    EXPECT_EQ(set.Find(part), 0);
    EXPECT_NE(set.Put(part), 0);
    EXPECT_EQ(set.cBegin().Get(), nullptr);
    EXPECT_EQ(textOf(set), "{null, part1}");
    EXPECT_EQ(set.hash(), QueltInSet(set).hash());
    QueltInSet other(Part::sType());
    other.PutSet(set);
    EXPECT_EQ(elementsOf(other), Elements{&part});

    QueltInIntHolder number(1);
    ForeignSet values(QueltInIntHolder::sType());
    values.append(nullptr);
    EXPECT_NE(values.Put(number), 0);
    EXPECT_EQ(values.Put(number), 0);
    EXPECT_EQ(values.hash(), QueltInSet(values).hash());
}

TEST(QueltInSet, IsDeletedWithItsObjectsByName) {
    const int before = Part::s_alive;
    auto* const set = new QueltInSet(Part::sType());
    set->Put(*new Part);
    set->Put(*new SparePart);
    QueltInDeleteWithObjects(set);
    EXPECT_EQ(Part::s_alive, before);
    QueltInDeleteWithObjects(static_cast<QueltInSet*>(nullptr));
}

TEST(QueltInSet, DeletesNoObject) {
    const auto part = std::make_unique<Part>();
    const int before = Part::s_alive;
    {
        QueltInSet set(Part::sType());
        set.Put(*part);
    }
    EXPECT_EQ(Part::s_alive, before);
}

TEST(QueltInSet, MayBeReadByManyThreads) {
    std::deque<Part> parts;
    QueltInSet set(Part::sType());
    for (int count = 0; count < 100; ++count) {
        set.Put(parts.emplace_back(count));
    }
    const QueltInSet& shared = set;
    onThreads(4, [&](unsigned int /*number*/) {
        for (const Part& part : parts) {
            EXPECT_NE(shared.Find(part), 0);
        }
        EXPECT_EQ(elementsOf(shared).size(), 100U);
        EXPECT_EQ(textOf(shared).substr(0, 15), "{part0, part1, ");
    });
}
