#include "expression/QueltEeExpressionContext.h"

#include "core/expression/ExpressionSamples.h"

#include <thread>

namespace {

class QueltEeExpressionContextTest : public testing::Test {
protected:
    using CountedDico = Counted<QueltEeModelDico>;

    /// Adds a dictionary that the context takes over; with `feature` when there is one.
    CountedDico* add(const char* name, std::uint8_t number, const QueltInGuid* feature = nullptr) {
        auto* const dictionary = new CountedDico(m_alive, QueltInString(name), guidOf(number));
        if (feature != nullptr) {
            EXPECT_EQ(dictionary->addVariable(new QueltEeCatOptionVar("Engine", *feature)), S_OK);
        }
        QueltEeModelDico* added = dictionary;
        EXPECT_EQ(m_context.AddModelDico(added, 1), S_OK);
        EXPECT_EQ(added, dictionary);
        return dictionary;
    }
    [[nodiscard]] static std::string namesIn(const QueltInMap& dictionaries) {
        std::string names;
        for (QueltInMap::const_iterator iterator = dictionaries.cBegin(); iterator.IsEnd() == 0;
             iterator.Next()) {
            const QueltInObject* const dictionary = dictionaries.Get(*iterator.GetKey());
            EXPECT_EQ(textOf(*iterator.GetKey()), textOf(*dictionary));
            names += textOf(*dictionary) + " ";
        }
        return names;
    }
    [[nodiscard]] static std::string namesIn(const QueltInSet& dictionaries) {
        std::string names;
        QueltInSet::const_iterator iterator = dictionaries.cBegin();
        while (const QueltInObject* const dictionary = iterator.GetGoToNext()) {
            names += textOf(*dictionary) + " ";
        }
        return names;
    }
    [[nodiscard]] std::string inheritedIn(const QueltEeBasicEff& effectivity) const {
        const QueltInMap* dictionaries = nullptr;
        EXPECT_EQ(m_context.GetAllDictionariesForInheritedEffectivity(effectivity, dictionaries), S_OK);
        return namesIn(*dictionaries);
    }
    /// "result: possible / rejected" for sets that the context makes.
    [[nodiscard]] std::string sortOut(const QueltEeDicoObject& feature,
                                      const QueltEeBasicEff* inherited) const {
        QueltInSet* possible = nullptr;
        QueltInSet* rejected = nullptr;
        const long result = m_context.GetSetOfMDsContainingFeature(feature, possible, rejected, inherited);
        const std::unique_ptr<QueltInSet> ownPossible(possible);
        const std::unique_ptr<QueltInSet> ownRejected(rejected);
        return std::to_string(result) + ": " + namesIn(*possible) + "/ " + namesIn(*rejected);
    }

    int m_alive = 0;
    QueltEeExpressionContext m_context;
    const QueltInGuid m_feature = guidOf(77);
    const QueltEeCatOptionVar m_engine{"Engine", m_feature};
    QueltEeBasicEff m_basic{"EFF-7", guidOf(22)};
};

/// Stands for another effectivity.
class StandIn : public QueltEeBasicEff {
public:
    explicit StandIn(const QueltEeEffectivity& origin)
        : QueltEeBasicEff(origin.getName(), origin.getGuid()), m_origin(origin) {}
    [[nodiscard]] const QueltEeEffectivity& getOrigin() const override { return m_origin; }

private:
    const QueltEeEffectivity& m_origin;
};

} // namespace

TEST_F(QueltEeExpressionContextTest, KnowsItsDictionariesByName) {
    const QueltInMap* dictionaries = nullptr;
    EXPECT_EQ(m_context.GetAllDictionariesByName(dictionaries), S_OK);
    EXPECT_EQ(namesIn(*dictionaries), "");
    EXPECT_EQ(textOf(m_context), "context()");

    QueltEeModelDico* const truck = add("Truck", 1);
    add("Van", 2);
    EXPECT_EQ(m_context.GetAllDictionariesByName(dictionaries), S_OK);
    EXPECT_EQ(namesIn(*dictionaries), "Truck Van ");
    EXPECT_EQ(textOf(m_context), "context(Truck, Van)");

    QueltEeModelDico* found = nullptr;
    EXPECT_EQ(m_context.GetModelDico("Truck", found), S_OK);
    EXPECT_EQ(found, truck);
    EXPECT_EQ(m_context.GetModelDico("truck", found), E_FAIL);
    EXPECT_EQ(found, nullptr);
}

TEST_F(QueltEeExpressionContextTest, RefusesNothingAndNamesThatAreTaken) {
    QueltEeModelDico* none = nullptr;
    EXPECT_EQ(m_context.AddModelDico(none, 1), E_POINTER);
    QueltEeModelDico* truck = add("Truck", 1);
    EXPECT_EQ(m_context.AddModelDico(truck, 1), E_ALREADYTHERE);
    QueltEeModelDico other("Truck", guidOf(2));
    QueltEeModelDico* refused = &other;
    EXPECT_EQ(m_context.AddModelDico(refused, 1), E_ALREADYTHERE);
    QueltEeModelDico* found = nullptr;
    EXPECT_EQ(m_context.GetModelDico("Truck", found), S_OK);
    EXPECT_EQ(found, truck);
}

TEST(QueltEeExpressionContext, DeletesWhatWasHandedOver) {
    int dictionaries = 0;
    int effectivities = 0;
    Counted<QueltEeModelDico> kept(dictionaries, QueltInString("Van"), guidOf(2));
    {
        QueltEeExpressionContext context;
        QueltEeModelDico* truck =
            new Counted<QueltEeModelDico>(dictionaries, QueltInString("Truck"), guidOf(1));
        QueltEeModelDico* van = &kept;
        EXPECT_EQ(context.AddModelDico(truck, 1), S_OK);
        EXPECT_EQ(context.AddModelDico(van, 0), S_OK);
        context.adopt(
            std::make_unique<Counted<QueltEePredefEff>>(effectivities, QueltInString("ECO-1"), guidOf(3)));
        EXPECT_EQ(dictionaries, 2);
        EXPECT_EQ(effectivities, 1);
    }
    EXPECT_EQ(dictionaries, 1);
    EXPECT_EQ(effectivities, 0);
}

TEST_F(QueltEeExpressionContextTest, KnowsWhereEffectivitiesAreInherited) {
    QueltEeModelDico* const truck = add("Truck", 1);
    QueltEeModelDico* const van = add("Van", 2);
    add("Bus", 3);
    const QueltEeBasicEff other("EFF-8", guidOf(23));
    EXPECT_EQ(inheritedIn(m_basic), "");
    EXPECT_EQ(m_context.addInheritedDictionary(m_basic, *van), S_OK);
    EXPECT_EQ(m_context.addInheritedDictionary(m_basic, *truck), S_OK);
    EXPECT_EQ(m_context.addInheritedDictionary(m_basic, *van), E_ALREADYTHERE);
    QueltEeModelDico stranger("Truck", guidOf(1));
    EXPECT_EQ(m_context.addInheritedDictionary(m_basic, stranger), E_INVALIDARG);
    EXPECT_EQ(inheritedIn(m_basic), "Van Truck ");
    EXPECT_EQ(inheritedIn(other), "");
}

TEST_F(QueltEeExpressionContextTest, WhatStandsForAnEffectivityIsInheritedWhereThatIs) {
    QueltEeModelDico* const truck = add("Truck", 1);
    QueltEeModelDico* const van = add("Van", 2);
    EXPECT_EQ(&m_basic.getOrigin(), &m_basic);
    const StandIn standIn(m_basic);
    const QueltEeBasicEff namesake(m_basic.getName(), m_basic.getGuid());
    EXPECT_EQ(m_context.addInheritedDictionary(m_basic, *van), S_OK);
    EXPECT_EQ(m_context.addInheritedDictionary(standIn, *van), E_ALREADYTHERE);
    EXPECT_EQ(m_context.addInheritedDictionary(standIn, *truck), S_OK);
    EXPECT_EQ(inheritedIn(m_basic), "Van Truck ");
    EXPECT_EQ(inheritedIn(standIn), "Van Truck ");
    EXPECT_EQ(inheritedIn(namesake), "") << "a name alone stands for nothing";
}

TEST_F(QueltEeExpressionContextTest, SortsOutTheDictionariesThatContainAFeature) {
    EXPECT_EQ(sortOut(m_engine, nullptr), "1: / ");
    QueltEeModelDico* const truck = add("Truck", 1);
    add("Van", 2, &m_feature);
    QueltEeModelDico* const bus = add("Bus", 3, &m_feature);
    const QueltEeCatOptionVar unknown("Engine", guidOf(78)); // the GUID tells, not the name
    EXPECT_EQ(sortOut(m_engine, nullptr), "0: Van Bus / Truck ");
    EXPECT_EQ(sortOut(unknown, nullptr), "1: / Truck Van Bus ");
    EXPECT_EQ(sortOut(m_engine, &m_basic), "1: / "); // inherited nowhere
    EXPECT_EQ(m_context.addInheritedDictionary(m_basic, *bus), S_OK);
    EXPECT_EQ(m_context.addInheritedDictionary(m_basic, *truck), S_OK);
    EXPECT_EQ(sortOut(m_engine, &m_basic), "0: Bus / Truck ");
}

TEST_F(QueltEeExpressionContextTest, GoesOnWithSetsThatAreThere) {
    QueltEeModelDico* const truck = add("Truck", 1);
    QueltEeModelDico* const van = add("Van", 2, &m_feature);
    QueltEeModelDico* const bus = add("Bus", 3);
    QueltInSet possible(QueltEeModelDico::sType());
    QueltInSet rejected(QueltEeModelDico::sType());
    EXPECT_EQ(possible.Put(*bus) + possible.Put(*van) + rejected.Put(*truck), 3);
    QueltInSet* possibleSlot = &possible;
    QueltInSet* rejectedSlot = &rejected;
    EXPECT_EQ(m_context.GetSetOfMDsContainingFeature(m_engine, possibleSlot, rejectedSlot, nullptr), 0);
    EXPECT_EQ(possibleSlot, &possible);
    EXPECT_EQ(rejectedSlot, &rejected);
    EXPECT_EQ(namesIn(possible), "Van ");
    EXPECT_EQ(namesIn(rejected), "Truck Bus ");
    EXPECT_EQ(m_context.GetSetOfMDsContainingFeature(m_engine, possibleSlot, rejectedSlot, nullptr), 0);
    EXPECT_EQ(namesIn(possible) + namesIn(rejected), "Van Truck Bus ");
}

TEST_F(QueltEeExpressionContextTest, MakesTheMissingSetAlone) {
    QueltEeModelDico* const truck = add("Truck", 1);
    add("Van", 2, &m_feature);
    QueltInSet set(QueltEeModelDico::sType());
    QueltInSet* const given = &set;

    QueltInSet* rejected = nullptr;
    QueltInSet* possible = given;
    EXPECT_EQ(set.Put(*truck), 1);
    EXPECT_EQ(m_context.GetSetOfMDsContainingFeature(m_engine, possible, rejected, nullptr), 1);
    const std::unique_ptr<QueltInSet> ownRejected(rejected);
    EXPECT_EQ(namesIn(set) + "/ " + namesIn(*rejected), "/ Truck ");

    possible = nullptr;
    rejected = given;
    EXPECT_EQ(m_context.GetSetOfMDsContainingFeature(m_engine, possible, rejected, nullptr), 0);
    const std::unique_ptr<QueltInSet> ownPossible(possible);
    EXPECT_EQ(namesIn(*possible) + "/ " + namesIn(set), "Van / Truck ");
}

TEST_F(QueltEeExpressionContextTest, LivesOnTheHeapButMakesItsSetsWhereItIsAsked) {
    QueltInArena arena;
    {
        const QueltInArenaScope scope(arena);
        QueltEeModelDico* truck = nullptr;
        {
            const QueltInHeapScope heap;
            truck = new QueltEeModelDico("Truck", guidOf(1));
        }
        EXPECT_EQ(m_context.AddModelDico(truck, 1), S_OK);
        EXPECT_EQ(m_context.addInheritedDictionary(m_basic, *truck), S_OK);
        EXPECT_EQ(arena.bytesInUse(), 0U);
        EXPECT_EQ(sortOut(m_engine, nullptr), "1: / Truck ");
        EXPECT_GT(arena.bytesInUse(), 0U);
    }
    arena.reset();
    EXPECT_EQ(inheritedIn(m_basic), "Truck ");
}

TEST_F(QueltEeExpressionContextTest, ManyThreadsMayRead) {
    for (std::uint8_t number = 1; number < 20; ++number) {
        QueltEeModelDico* const dictionary =
            add(("D" + std::to_string(number)).c_str(), number, number % 2 == 0 ? &m_feature : nullptr);
        EXPECT_EQ(m_context.addInheritedDictionary(m_basic, *dictionary), S_OK);
    }
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([this] {
            for (int round = 0; round < 50; ++round) {
                QueltEeModelDico* found = nullptr;
                EXPECT_EQ(m_context.GetModelDico("D7", found), S_OK);
                EXPECT_EQ(inheritedIn(m_basic).substr(0, 6), "D1 D2 ");
                EXPECT_EQ(sortOut(m_engine, &m_basic).substr(0, 9), "0: D2 D4 ");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
