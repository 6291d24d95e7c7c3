#include "interchange/LoadedContext.h"

#include "host/support/Samples.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::contextOf;
using test::sampleContext;

class LoadedContextTest : public testing::Test {
protected:
    std::unique_ptr<LoadedContext> context = contextOf(sampleContext());
};

TEST_F(LoadedContextTest, keepsTheOrderOfTheFile) {
    ASSERT_EQ(context->dictionaries().size(), 2U);
    EXPECT_EQ(context->dictionaries()[0]->getName().view(), "Truck");
    EXPECT_EQ(context->dictionaries()[1]->getName().view(), "Bus");
    ASSERT_EQ(context->topVariables().size(), 2U);
    EXPECT_EQ(context->topVariables()[0]->getName().view(), "Loose");
    ASSERT_EQ(context->effectivities().size(), 3U);
    EXPECT_EQ(context->effectivities()[2]->getName().view(), "EFF-7");
}

TEST_F(LoadedContextTest, findsByName) {
    EXPECT_EQ(context->findDictionary("Bus"), context->dictionaries()[1]);
    EXPECT_EQ(context->findDictionary("bus"), nullptr);
    EXPECT_EQ(context->findTopVariable("Seats"), context->topVariables()[1]);
    EXPECT_EQ(context->findTopVariable("Engine"), nullptr);
    EXPECT_EQ(context->findEffectivity("ECO-2"), context->effectivities()[1]);
    EXPECT_EQ(context->findEffectivity("ECO-9"), nullptr);
    EXPECT_EQ(context->findBearers("Nobody"), nullptr);
}

TEST_F(LoadedContextTest, firstBearerIsThatOfTheFirstDictionary) {
    const LoadedContext::Bearers* const engine = context->findBearers("Engine");
    ASSERT_NE(engine, nullptr);
    EXPECT_EQ(engine->first, context->dictionaries()[0]->getVariable("Engine"));
    EXPECT_EQ(engine->other, nullptr);
    const LoadedContext::Bearers* const loose = context->findBearers("Loose");
    ASSERT_NE(loose, nullptr);
    EXPECT_EQ(loose->first, context->findTopVariable("Loose"));
}

TEST_F(LoadedContextTest, otherBearersDifferInGuidOrKind) {
    EXPECT_EQ(context->findBearers("Colour")->other,
              context->dictionaries()[1]->getVariable("Colour"));                                      // GUID
    EXPECT_EQ(context->findBearers("Mixed")->other, context->dictionaries()[1]->getVariable("Mixed")); // kind
    EXPECT_EQ(context->findBearers("Seats")->other, context->findTopVariable("Seats"));
}

TEST_F(LoadedContextTest, takenNamesAreRefused) {
    const QueltInGuid guid;
    EXPECT_FALSE(context->addDictionary(std::make_unique<QueltEeModelDico>("Bus", guid)));
    EXPECT_FALSE(context->addTopVariable(std::make_unique<QueltEeVariable>("Loose", guid)));
    EXPECT_FALSE(context->addEffectivity(std::make_unique<QueltEePredefEff>("EFF-7", guid)));
    const auto* const basic = QueltEeBasicEff::cast(context->findEffectivity("EFF-7"));
    ASSERT_NE(basic, nullptr);
    EXPECT_FALSE(context->addInheritance(*basic, *context->findDictionary("Truck")));
    EXPECT_TRUE(context->addInheritance(*basic, *context->findDictionary("Bus")));
    EXPECT_EQ(context->dictionaries().size(), 2U);
    EXPECT_EQ(context->topVariables().size(), 2U);
    EXPECT_EQ(context->effectivities().size(), 3U);
}

} // namespace
} // namespace quelt::host
