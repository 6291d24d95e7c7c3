#include "dictionary/QueltEeModelDico.h"

#include "core/dictionary/TestTools.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "infrastructure/QueltInResult.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

/// Tells when it is deleted.
class WatchedVar : public QueltEeCatOptionVar {
public:
    WatchedVar(const QueltInString& name, const QueltInGuid& guid, int& deleted)
        : QueltEeCatOptionVar(name, guid), m_deleted(deleted) {}
    ~WatchedVar() override { ++m_deleted; }

private:
    int& m_deleted;
};

TEST(QueltEeModelDicoTest, IsEmptyAtFirst) {
    const QueltEeModelDico truck("Truck", guidOf(1));
    EXPECT_EQ(truck.getName().view(), "Truck");
    EXPECT_EQ(truck.getGuid(), guidOf(1));
    EXPECT_TRUE(truck.getVariables().empty());
    EXPECT_EQ(truck.getVariable("Engine"), nullptr);
    EXPECT_EQ(truck.getVariable(""), nullptr);
    EXPECT_EQ(truck.getTreeSeriesVariable(0), nullptr);
    EXPECT_FALSE(truck.containsFeature(guidOf(1)));
    EXPECT_FALSE(truck.containsFeature(QueltInGuid()));
}

TEST(QueltEeModelDicoTest, TakesVariablesOver) {
    int deleted = 0;
    {
        QueltEeModelDico truck("Truck", guidOf(1));
        auto* const engine = new WatchedVar("Engine", guidOf(2), deleted);
        EXPECT_EQ(engine->getHolderDico(), nullptr);
        EXPECT_EQ(truck.addVariable(engine), S_OK);
        EXPECT_EQ(engine->getHolderDico(), &truck);
        EXPECT_EQ(truck.getVariable("Engine"), engine);
        EXPECT_EQ(truck.getVariable("engine"), nullptr);
        EXPECT_TRUE(truck.containsFeature(guidOf(2)));
        EXPECT_FALSE(truck.containsFeature(guidOf(1)));
        EXPECT_EQ(deleted, 0);
    }
    EXPECT_EQ(deleted, 1);
}

TEST(QueltEeModelDicoTest, KeepsTheOrder) {
    QueltEeModelDico truck("Truck", guidOf(1));
    for (const char* const name : {"Z", "A", "M"}) {
        ASSERT_EQ(truck.addVariable(new QueltEeCatOptionVar(name, guidOf(2))), S_OK);
    }
    std::string names;
    for (const auto& variable : truck.getVariables()) {
        names += variable->getName().view();
    }
    EXPECT_EQ(names, "ZAM");
}

TEST(QueltEeModelDicoTest, RefusesNull) {
    QueltEeModelDico truck("Truck", guidOf(1));
    EXPECT_EQ(truck.addVariable(nullptr), E_POINTER);
    EXPECT_TRUE(truck.getVariables().empty());
}

TEST(QueltEeModelDicoTest, RefusesANameTwice) {
    QueltEeModelDico truck("Truck", guidOf(1));
    auto* const engine = new QueltEeCatOptionVar("Engine", guidOf(2));
    ASSERT_EQ(truck.addVariable(engine), S_OK);
    QueltEeSelectionVar other("Engine", guidOf(3));
    EXPECT_EQ(truck.addVariable(&other), E_ALREADYTHERE);
    EXPECT_EQ(other.getHolderDico(), nullptr);
    EXPECT_EQ(truck.addVariable(engine), E_ALREADYTHERE);
    EXPECT_EQ(truck.getVariable("Engine"), engine);
    EXPECT_EQ(truck.getVariables().size(), 1U);
    EXPECT_FALSE(truck.containsFeature(guidOf(3)));
}

TEST(QueltEeModelDicoTest, RefusesAVariableOfAnotherDictionary) {
    QueltEeModelDico truck("Truck", guidOf(1));
    QueltEeModelDico van("Van", guidOf(2));
    auto* const engine = new QueltEeCatOptionVar("Engine", guidOf(3));
    ASSERT_EQ(truck.addVariable(engine), S_OK);
    EXPECT_EQ(van.addVariable(engine), E_INVALIDARG);
    EXPECT_EQ(engine->getHolderDico(), &truck);
    EXPECT_FALSE(van.containsFeature(guidOf(3)));
    EXPECT_EQ(van.getVariable("Engine"), nullptr);
}

TEST(QueltEeModelDicoTest, KnowsAFeatureByItsGuidAlone) {
    QueltEeModelDico truck("Truck", guidOf(1));
    QueltEeModelDico van("Van", guidOf(2));
    ASSERT_EQ(truck.addVariable(new QueltEeCatOptionVar("Engine", guidOf(3))), S_OK);
    ASSERT_EQ(van.addVariable(new QueltEeCatOptionVar("Motor", guidOf(3))), S_OK);
    ASSERT_EQ(van.addVariable(new QueltEeCatOptionVar("Engine", guidOf(4))), S_OK);
    EXPECT_TRUE(truck.containsFeature(guidOf(3)));
    EXPECT_TRUE(van.containsFeature(guidOf(3)));
    EXPECT_FALSE(truck.containsFeature(guidOf(4)));
}

TEST(QueltEeModelDicoTest, GivesTheFirstTreeSeriesWithANumber) {
    QueltEeModelDico truck("Truck", guidOf(1));
    auto* const line = new QueltEeTreeSeriesVar("Line", guidOf(3), 18);
    ASSERT_EQ(
        truck.addVariable(new QueltEeSerialVar("Unit", guidOf(2), QueltEeSerialVar::SerialExternalType(18))),
        S_OK);
    ASSERT_EQ(truck.addVariable(line), S_OK);
    ASSERT_EQ(truck.addVariable(new QueltEeTreeSeriesVar("Line2", guidOf(4), 18)), S_OK);
    auto* const plant = new QueltEeTreeSeriesVar("Plant", guidOf(5), 19);
    ASSERT_EQ(truck.addVariable(plant), S_OK);
    EXPECT_EQ(truck.getTreeSeriesVariable(18), line);
    EXPECT_EQ(truck.getTreeSeriesVariable(19), plant);
    EXPECT_EQ(truck.getTreeSeriesVariable(20), nullptr);
}

// The dictionary's own look-up must not read the name of a variable that has got another one since.
TEST(QueltEeModelDicoTest, StaysUsableWhenAVariableIsRenamed) {
    QueltEeModelDico truck("Truck", guidOf(1));
    const std::string longName(100, 'x');
    auto* const engine = new QueltEeCatOptionVar(std::string_view(longName), guidOf(2));
    ASSERT_EQ(truck.addVariable(engine), S_OK);
    ASSERT_EQ(engine->initFakeNameAndGuid("Engine", guidOf(3)), S_OK);
    EXPECT_EQ(truck.getVariable(longName), engine);
    EXPECT_EQ(truck.getVariable("Engine"), nullptr);
    EXPECT_TRUE(truck.containsFeature(guidOf(2)));
}

TEST(QueltEeModelDicoTest, FindsEachOfManyVariables) {
    QueltEeModelDico truck("Truck", guidOf(1));
    for (int number = 0; number < 5000; ++number) {
        ASSERT_EQ(truck.addVariable(
                      new QueltEeCatOptionVar(QueltInString("Option" + std::to_string(number)), guidOf(2))),
                  S_OK);
    }
    for (int number = 0; number < 5000; ++number) {
        const std::string name = "Option" + std::to_string(number);
        ASSERT_NE(truck.getVariable(name), nullptr) << name;
        ASSERT_EQ(truck.getVariable(name)->getName().view(), name);
    }
}

} // namespace
