#include "infrastructure/QueltInMapVal.h"

#include "core/infrastructure/RandomNumbers.h"
#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInResult.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Entries = std::vector<std::pair<unsigned int, std::string>>;

Entries entriesOf(const QueltInMapVal& map) {
    Entries entries;
    QueltInMapVal::const_iterator iterator = map.cBegin();
    while (const QueltInObjectVal* const key = iterator.GetKeyGoToNext()) {
        entries.emplace_back(QueltInIntHolder::cast(key)->m_value, textOf(*map.Get(*key)));
    }
    return entries;
}

} // namespace

TEST(QueltInMapVal, CopiesKeysAndValuesAndKeepsPlaces) {
    QueltInMapVal map(QueltInIntHolder::sType(), QueltInString::sType());
    EXPECT_NE(map.IsEmpty(), 0);
    QueltInIntHolder key(2);
    QueltInString value("A");
    EXPECT_EQ(map.Put(key, value), S_OK);
    key.m_value = 1;
    value.append("B");
    EXPECT_EQ(map.Put(key, value), S_OK);
    EXPECT_EQ(map.Put(QueltInIntHolder(2), QueltInString("C")), S_OK);
    EXPECT_EQ(entriesOf(map), (Entries{{2, "C"}, {1, "AB"}}));
    EXPECT_EQ(map.GetLength(), 2);
    EXPECT_EQ(map.IsEmpty(), 0);
    EXPECT_EQ(map.Get(QueltInIntHolder(3)), nullptr);
    EXPECT_EQ(textOf(map), "{2: C, 1: AB}");
}

TEST(QueltInMapVal, TakesItsOwnKeysAndValues) {
    QueltInMapVal map(QueltInIntHolder::sType(), QueltInIntHolder::sType());
    map.Put(QueltInIntHolder(1), QueltInIntHolder(2));
    const QueltInObjectVal* const own = map.Get(QueltInIntHolder(1));
    EXPECT_EQ(map.Put(QueltInIntHolder(1), *own), S_OK);
    QueltInMapVal::const_iterator iterator = map.cBegin();
    EXPECT_EQ(map.Put(*iterator.GetKeyGoToNext(), QueltInIntHolder(5)), S_OK);
    EXPECT_EQ(textOf(map), "{1: 5}");
}

TEST(QueltInMapVal, RefusesWhatIsNotOfTheDeclaredClasses) {
    QueltInMapVal map(QueltInIntHolder::sType(), QueltInString::sType());
    EXPECT_EQ(map.Put(QueltInString("1"), QueltInString("A")), E_INVALIDARG);
    EXPECT_EQ(map.Put(QueltInIntHolder(1), QueltInIntHolder(1)), E_INVALIDARG);
    EXPECT_NE(map.IsEmpty(), 0);
    QueltInMapVal undeclared(nullptr, nullptr);
    EXPECT_EQ(undeclared.Put(QueltInIntHolder(1), QueltInIntHolder(1)), E_INVALIDARG);
}

TEST(QueltInMapVal, OwnsItsCopies) {
    const int before = Crowded::s_alive;
    {
        QueltInMapVal map(Crowded::sType(), Crowded::sType());
        for (int number = 0; number < 100; ++number) {
            EXPECT_EQ(map.Put(Crowded(number % 40), Crowded(number)), S_OK);
        }
        EXPECT_EQ(Crowded::s_alive, before + 80);
        const QueltInMapVal copy(map);
        const std::unique_ptr<QueltInObjectVal> clone(map.clone(nullptr));
        EXPECT_EQ(Crowded::s_alive, before + 240);
        EXPECT_NE(clone->equals(map), 0);
        EXPECT_NE(copy.Get(Crowded(39))->equals(Crowded(79)), 0);
        EXPECT_NE(copy.Get(Crowded(39)), map.Get(Crowded(39)));
    }
    EXPECT_EQ(Crowded::s_alive, before);
}

TEST(QueltInMapVal, AgreesWithAModel) {
    for (unsigned int seed = 1; seed <= 10; ++seed) {
        const unsigned int keys = seed * 20;
        RandomNumbers random(seed);
        QueltInMapVal map(QueltInIntHolder::sType(), QueltInString::sType());
        Entries model;
        for (int step = 0; step < 500; ++step) {
            const unsigned int key = random.below(keys);
            const std::string value = std::to_string(random.below(1000000));
            const auto found = std::find_if(model.begin(), model.end(),
                                            [&](const auto& entry) { return entry.first == key; });
            if (found != model.end()) {
                found->second = value;
            } else {
                model.emplace_back(key, value);
            }
            ASSERT_EQ(map.Put(QueltInIntHolder(key), QueltInString(value)), S_OK);
        }
        EXPECT_EQ(entriesOf(map), model);
        EXPECT_EQ(entriesOf(QueltInMapVal(map)), model);
    }
}

TEST(QueltInMapVal, EqualsByValueInWhateverOrder) {
    QueltInMapVal left(QueltInIntHolder::sType(), QueltInString::sType());
    QueltInMapVal right(QueltInIntHolder::sType(), QueltInString::sType());
    left.Put(QueltInIntHolder(1), QueltInString("A"));
    left.Put(QueltInIntHolder(2), QueltInString("B"));
    right.Put(QueltInIntHolder(2), QueltInString("B"));
    EXPECT_EQ(left.equals(right), 0);
    right.Put(QueltInIntHolder(1), QueltInString("A"));
    EXPECT_NE(left.equals(right), 0);
    EXPECT_EQ(left.hash(), right.hash());
    right.Put(QueltInIntHolder(1), QueltInString("B"));
    EXPECT_EQ(left.equals(right), 0);
    EXPECT_EQ(left.equals(QueltInString("A")), 0);
}
