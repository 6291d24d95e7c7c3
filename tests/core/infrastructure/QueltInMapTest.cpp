#include "infrastructure/QueltInMap.h"

#include "core/infrastructure/OnThreads.h"
#include "core/infrastructure/RandomNumbers.h"
#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInSet.h"

#include <climits>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

namespace {

using Entries = std::vector<std::pair<int, const QueltInObject*>>;

/// A map as it may come from elsewhere: with entries that Put would not let in.
class ForeignMap : public QueltInMap {
public:
    using QueltInMap::QueltInMap;
    void append(QueltInObjectVal* key, QueltInObject* value) { m_entries.push_back({key, value}); }
};

unsigned int numberOf(const QueltInObjectVal* key) {
    return QueltInIntHolder::cast(key)->m_value;
}

Entries entriesOf(const QueltInMap& map) {
    Entries entries;
    QueltInMap::const_iterator iterator = map.cBegin();
    while (const QueltInMapEntry* const entry = iterator.GetEntryGoToNext()) {
        entries.emplace_back(static_cast<int>(numberOf(entry->key)), entry->value);
    }
    return entries;
}

/// A number that is equal to none, not even to itself; of a class that is not registered.
class Unequal : public QueltInIntHolder {
public:
    using QueltInIntHolder::QueltInIntHolder;
    int equals(const QueltInObjectVal& /*other*/) const override { return 0; }
};

} // namespace

TEST(QueltInMap, FindsNumbersInAndOutOfOrderAndOtherKeysBesideThem) {
    std::deque<Part> parts;
    QueltInMap map(QueltInObjectVal::sType(), Part::sType());
    const auto put = [&](const QueltInObjectVal& key) {
        EXPECT_EQ(map.Put(key, parts.emplace_back(static_cast<int>(parts.size()))), S_OK);
    };
    for (unsigned int number = 0; number < 12; ++number) { // each the number of its place
        put(QueltInIntHolder(number));
        EXPECT_EQ(map.Get(QueltInIntHolder(number)), &parts[number]);
        EXPECT_EQ(map.Get(QueltInIntHolder(number + 1)), nullptr);
        EXPECT_EQ(map.Get(QueltInString("0")), nullptr);
    }
    const std::unique_ptr<QueltInObjectVal> copy(map.clone(nullptr));
    put(QueltInString("twelve"));
    put(QueltInIntHolder(13));
    put(QueltInIntHolder(12));
    put(QueltInIntHolder(4'000'000'000U));
    EXPECT_EQ(map.Put(QueltInIntHolder(3), parts[0]), S_OK);
    EXPECT_EQ(map.GetLength(), 16);
    EXPECT_EQ(map.Get(QueltInIntHolder(3)), &parts[0]);
    EXPECT_EQ(map.Get(QueltInString("twelve")), &parts[12]);
    EXPECT_EQ(map.Get(QueltInIntHolder(13)), &parts[13]);
    EXPECT_EQ(map.Get(QueltInIntHolder(12)), &parts[14]);
    EXPECT_EQ(map.Get(QueltInIntHolder(4'000'000'000U)), &parts[15]);
    EXPECT_EQ(map.Get(QueltInIntHolder(14)), nullptr);

    auto& copied = static_cast<QueltInMap&>(*copy);
    EXPECT_EQ(copied.GetLength(), 12);
    EXPECT_EQ(copied.Get(QueltInIntHolder(11)), &parts[11]);
    EXPECT_EQ(copied.Get(QueltInIntHolder(12)), nullptr);
    EXPECT_EQ(copied.Put(QueltInIntHolder(12), parts[0]), S_OK);
    EXPECT_EQ(copied.Get(QueltInIntHolder(12)), &parts[0]);
}

TEST(QueltInMap, AsksKeysOfDerivedClassesWhetherTheyAreEqual) {
    Part part;
    QueltInMap map(QueltInIntHolder::sType(), Part::sType());
    EXPECT_EQ(map.Put(QueltInIntHolder(0), part), S_OK);
    EXPECT_EQ(map.Put(QueltInIntHolder(1), part), S_OK);
    EXPECT_EQ(map.Get(Unequal(1)), &part) << "the map's own key is asked";
    ForeignMap foreign(QueltInIntHolder::sType(), Part::sType());
    foreign.append(new Unequal(0), &part);
    EXPECT_EQ(foreign.Get(QueltInIntHolder(0)), nullptr);
    EXPECT_EQ(foreign.Put(QueltInIntHolder(1), part), S_OK);
    EXPECT_EQ(foreign.Get(QueltInIntHolder(1)), &part);
    EXPECT_EQ(foreign.Get(QueltInIntHolder(0)), nullptr);
}

TEST(QueltInMap, IteratesInTheOrderOfInsertionAndKeepsPlacesOnReplacement) {
    Part first(1);
    Part second(2);
    Part third(3);
    QueltInMap map(QueltInIntHolder::sType(), Part::sType());
    EXPECT_NE(map.IsEmpty(), 0);
    EXPECT_EQ(map.Put(QueltInIntHolder(30), first), S_OK);
    EXPECT_EQ(map.Put(QueltInIntHolder(10), second), S_OK);
    EXPECT_EQ(map.Put(QueltInIntHolder(20), first), S_OK);
    EXPECT_EQ(map.Put(QueltInIntHolder(30), third), S_OK);
    EXPECT_EQ(entriesOf(map), (Entries{{30, &third}, {10, &second}, {20, &first}}));
    EXPECT_EQ(map.GetLength(), 3);
    EXPECT_EQ(map.IsEmpty(), 0);
    EXPECT_EQ(map.Get(QueltInIntHolder(10)), &second);
    EXPECT_EQ(map.Get(QueltInIntHolder(11)), nullptr);
    EXPECT_EQ(map.Get(QueltInString("10")), nullptr);
    EXPECT_EQ(textOf(map), "{30: part3, 10: part2, 20: part1}");
}

TEST(QueltInMap, CopiesItsKeys) {
    Part part;
    QueltInMap map(QueltInIntHolder::sType(), Part::sType());
    QueltInIntHolder key(1);
    EXPECT_EQ(map.Put(key, part), S_OK);
    key.m_value = 2;
    EXPECT_EQ(map.Get(QueltInIntHolder(1)), &part);
    EXPECT_EQ(map.Get(key), nullptr);
}

TEST(QueltInMap, DeletesItsKeysAndNoValue) {
    const int keysBefore = Crowded::s_alive;
    auto part = std::make_unique<Part>();
    const int partsBefore = Part::s_alive;
    {
        QueltInMap map(Crowded::sType(), Part::sType());
        for (int number = 0; number < 30; ++number) {
            EXPECT_EQ(map.Put(Crowded(number % 20), *part), S_OK);
        }
        EXPECT_EQ(Crowded::s_alive, keysBefore + 20);
        const QueltInMap copy(map);
        EXPECT_EQ(Crowded::s_alive, keysBefore + 40);
    }
    EXPECT_EQ(Crowded::s_alive, keysBefore);
    EXPECT_EQ(Part::s_alive, partsBefore);
}

TEST(QueltInMap, RefusesWhatIsNotOfTheDeclaredClasses) {
    Part part;
    SparePart spare;
    QueltInMap map(QueltInIntHolder::sType(), SparePart::sType());
    EXPECT_EQ(map.Put(QueltInString("1"), spare), E_INVALIDARG);
    EXPECT_EQ(map.Put(QueltInIntHolder(1), part), E_INVALIDARG);
    EXPECT_NE(map.IsEmpty(), 0);
    EXPECT_EQ(map.Put(QueltInIntHolder(1), spare), S_OK);
    EXPECT_EQ(map.Put(QueltInIntHolder(1), part), E_INVALIDARG);
    EXPECT_EQ(map.Get(QueltInIntHolder(1)), &spare) << "a refused replacement changes nothing";
    EXPECT_EQ(map.getKeyType(), QueltInIntHolder::sType());
    EXPECT_EQ(map.getValueType(), SparePart::sType());
}

TEST(QueltInMap, AdmitsDerivedKeysAndValues) {
    SparePart spare;
    QueltInMap map(QueltInObjectVal::sType(), QueltInObject::sType());
    EXPECT_EQ(map.Put(QueltInIntHolder(1), spare), S_OK);
    EXPECT_EQ(map.Put(QueltInString("1"), map), S_OK);
    EXPECT_EQ(map.Get(QueltInIntHolder(1)), &spare);
    EXPECT_EQ(map.Get(QueltInString("1")), &map);
    EXPECT_EQ(textOf(map), "{1: part0, 1: ...}") << "a map in itself is not written again";
}

TEST(QueltInMap, WithoutDeclaredClassRefusesEverything) {
    Part part;
    QueltInMap noKey(nullptr, Part::sType());
    EXPECT_EQ(noKey.Put(QueltInIntHolder(1), part), E_INVALIDARG);
    QueltInMap noValue(QueltInIntHolder::sType(), nullptr);
    EXPECT_EQ(noValue.Put(QueltInIntHolder(1), part), E_INVALIDARG);
    EXPECT_EQ(noValue.Get(QueltInIntHolder(1)), nullptr);
}

TEST(QueltInMap, CapacityIsAWish) {
    Part part;
    for (const int capacity : {INT_MIN, -1, 0, 1, 100, INT_MAX}) {
        QueltInMap map(QueltInIntHolder::sType(), Part::sType(), capacity, 0.75F);
        EXPECT_NE(map.IsEmpty(), 0);
        EXPECT_EQ(map.Put(QueltInIntHolder(1), part), S_OK);
        EXPECT_EQ(map.GetLength(), 1);
    }
}

TEST(QueltInMap, IteratorWalksKeysValuesAndEntries) {
    Part first(1);
    Part second(2);
    QueltInMap map(QueltInIntHolder::sType(), Part::sType());
    map.Put(QueltInIntHolder(5), first);
    map.Put(QueltInIntHolder(6), second);

    QueltInMap::const_iterator iterator = map.cBegin();
    EXPECT_NE(iterator.IsBegin(), 0);
    EXPECT_EQ(iterator.IsEnd(), 0);
    EXPECT_EQ(numberOf(iterator.GetKey()), 5U);
    EXPECT_EQ(iterator.GetValGoToNext(), &first);
    EXPECT_EQ(iterator.IsBegin(), 0);
    EXPECT_EQ(numberOf(iterator.GetKey()), 6U);
    iterator.Next();
    EXPECT_NE(iterator.IsEnd(), 0);
    iterator.Next();
    EXPECT_EQ(iterator.GetKey(), nullptr);
    EXPECT_EQ(iterator.GetValGoToNext(), nullptr);
    EXPECT_EQ(iterator.GetEntryGoToNext(), nullptr);
    EXPECT_NE(iterator.IsEnd(), 0);
}

TEST(QueltInMap, IteratorOfAnEmptyMapStandsAtBothEnds) {
    const QueltInMap map(QueltInIntHolder::sType(), Part::sType());
    QueltInMap::const_iterator iterator = map.cBegin();
    EXPECT_NE(iterator.IsBegin(), 0);
    EXPECT_NE(iterator.IsEnd(), 0);
    EXPECT_EQ(iterator.GetKey(), nullptr);
    EXPECT_EQ(iterator.GetValGoToNext(), nullptr);
}

TEST(QueltInMap, AgreesWithAModel) {
    std::deque<Part> parts;
    for (int number = 0; number < 50; ++number) {
        parts.emplace_back(number);
    }
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        RandomNumbers random(seed);
        const unsigned int keys = seed % 4 == 0 ? 6 : 40 * seed; // short maps are searched, long ones indexed
        QueltInMap map(QueltInIntHolder::sType(), Part::sType());
        Entries model;
        for (int step = 0; step < 600; ++step) {
            const unsigned int key = random.below(keys);
            Part& part = parts[random.below(parts.size())];
            const auto found = std::find_if(model.begin(), model.end(), [&](const auto& entry) {
                return entry.first == static_cast<int>(key);
            });
            ASSERT_EQ(map.Get(QueltInIntHolder(key)), found != model.end() ? found->second : nullptr);
            if (found != model.end()) {
                found->second = &part;
            } else {
                model.emplace_back(key, &part);
            }
            ASSERT_EQ(map.Put(QueltInIntHolder(key), part), S_OK);
            ASSERT_EQ(map.GetLength(), static_cast<int>(model.size()));
        }
        EXPECT_EQ(entriesOf(map), model);
        const QueltInMap copy(map);
        EXPECT_EQ(entriesOf(copy), model);
        for (const auto& [key, value] : model) {
            EXPECT_EQ(copy.Get(QueltInIntHolder(static_cast<unsigned int>(key))), value);
        }
    }
}

TEST(QueltInMap, KeysOfEqualHashAreToldApart) {
    std::deque<Part> parts;
    QueltInMap map(Crowded::sType(), Part::sType());
    for (int number = 0; number < 300; ++number) {
        EXPECT_EQ(map.Put(Crowded(number), parts.emplace_back(number)), S_OK);
    }
    for (int number = 0; number < 300; ++number) {
        EXPECT_EQ(map.Get(Crowded(number)), &parts[static_cast<std::size_t>(number)]);
    }
    EXPECT_EQ(map.Get(Crowded(300)), nullptr);
}

TEST(QueltInMap, EqualsInWhateverOrder) {
    Part first;
    Part second;
    QueltInMap left(QueltInIntHolder::sType(), Part::sType());
    QueltInMap right(QueltInIntHolder::sType(), Part::sType());
    left.Put(QueltInIntHolder(1), first);
    left.Put(QueltInIntHolder(2), second);
    right.Put(QueltInIntHolder(2), second);
    EXPECT_EQ(left.equals(right), 0);
    right.Put(QueltInIntHolder(1), first);
    EXPECT_NE(left.equals(right), 0);
    EXPECT_EQ(left.hash(), right.hash());
    right.Put(QueltInIntHolder(1), second);
    EXPECT_EQ(left.equals(right), 0) << "another value object under the same key";
    right.Put(QueltInIntHolder(1), first);
    left.Put(QueltInIntHolder(3), first);
    right.Put(QueltInIntHolder(4), first);
    EXPECT_EQ(left.equals(right), 0);
    EXPECT_EQ(left.equals(QueltInIntHolder(1)), 0);
}

TEST(QueltInMap, ClonesAreMapsOfTheirOwn) {
    Part part;
    QueltInMap map(QueltInIntHolder::sType(), Part::sType());
    map.Put(QueltInIntHolder(1), part);
    const std::unique_ptr<QueltInObjectVal> clone(map.clone(nullptr));
    auto* const copy = QueltInMap::cast(clone.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->equals(map), 0);
    EXPECT_EQ(copy->Put(QueltInIntHolder(2), part), S_OK);
    EXPECT_EQ(map.GetLength(), 1);
}

TEST(QueltInMap, LivesWithNullsThatADerivedClassLetIn) {
    Part part(4);
    ForeignMap map(QueltInIntHolder::sType(), Part::sType());
    map.append(new QueltInIntHolder(1), nullptr);
    map.append(nullptr, &part);
    EXPECT_EQ(textOf(map), "{1: null, null: part4}");
    EXPECT_EQ(map.Get(QueltInIntHolder(1)), nullptr);
    QueltInMap::const_iterator iterator = map.cBegin();
    EXPECT_EQ(iterator.GetValGoToNext(), nullptr);
    EXPECT_EQ(iterator.IsEnd(), 0) << "a null value is not the end";
    EXPECT_EQ(iterator.GetKey(), nullptr);
    for (unsigned int key = 1; key < 20; ++key) {
        EXPECT_EQ(map.Put(QueltInIntHolder(key), part), S_OK);
    }
    EXPECT_EQ(map.Get(QueltInIntHolder(1)), &part);
    EXPECT_EQ(map.GetLength(), 20);
    const QueltInMap copy(map);
    EXPECT_EQ(copy.GetLength(), 20);
    EXPECT_EQ(copy.hash(), map.hash());
    EXPECT_EQ(copy.equals(map), 0) << "what has no key is in no other map";
}

TEST(QueltInMap, IsDeletedWithItsObjectsByName) {
    const int before = Part::s_alive;
    auto* const map = new QueltInMap(QueltInIntHolder::sType(), Part::sType());
    auto* const shared = new Part;
    map->Put(QueltInIntHolder(1), *shared);
    map->Put(QueltInIntHolder(2), *new Part);
    map->Put(QueltInIntHolder(3), *shared);
    QueltInDeleteWithObjects(map);
    EXPECT_EQ(Part::s_alive, before);
    QueltInDeleteWithObjects(static_cast<QueltInMap*>(nullptr));
}

TEST(QueltInMap, MayBeReadByManyThreads) {
    Part part;
    QueltInMap map(QueltInIntHolder::sType(), Part::sType());
    for (unsigned int key = 0; key < 100; ++key) {
        map.Put(QueltInIntHolder(key), part);
    }
    const QueltInMap& shared = map;
    onThreads(4, [&](unsigned int /*number*/) {
        for (unsigned int key = 0; key < 200; ++key) {
            EXPECT_EQ(shared.Get(QueltInIntHolder(key)) != nullptr, key < 100);
        }
        EXPECT_EQ(entriesOf(shared).size(), 100U);
    });
}
