#include "dictionary/QueltEeDicoObject.h"

#include "core/dictionary/TestTools.h"
#include "infrastructure/QueltInResult.h"

#include <gtest/gtest.h>

namespace {

TEST(QueltEeDicoObjectTest, HasNeitherNameNorGuidAtFirst) {
    const QueltEeDicoObject object;
    EXPECT_EQ(object.getName().view(), "");
    EXPECT_EQ(object.getGuid(), QueltInGuid());
    EXPECT_EQ(object.getGuidHash(), QueltInGuid().fullHash());
    EXPECT_EQ(object.toString().view(), "\"\"");
}

TEST(QueltEeDicoObjectTest, KeepsNameAndGuid) {
    const QueltEeDicoObject object("Truck", guidOf(7));
    EXPECT_EQ(object.getName().view(), "Truck");
    EXPECT_EQ(object.getGuid(), guidOf(7));
}

TEST(QueltEeDicoObjectTest, SharesEqualNames) {
    const QueltEeDicoObject first("Engine", guidOf(1));
    const QueltEeDicoObject second("Engine", guidOf(2));
    const QueltEeDicoObject other("Engine ", guidOf(1));
    EXPECT_EQ(first.getSharedName(), second.getSharedName());
    EXPECT_EQ(first.getName().ConvertToChar(), second.getName().ConvertToChar());
    EXPECT_FALSE(first.getSharedName() == other.getSharedName());
}

TEST(QueltEeDicoObjectTest, MakesANameFromTheGuid) {
    QueltEeDicoObject object("gone", guidOf(42));
    EXPECT_EQ(object.initFakeName(), S_OK);
    EXPECT_EQ(object.getName().view(), "GUID-00000000-0000-0000-0000-00000000002a");
    EXPECT_EQ(object.getGuid(), guidOf(42));
}

TEST(QueltEeDicoObjectTest, TakesNameAndGuidLater) {
    QueltEeDicoObject object;
    EXPECT_EQ(object.initFakeNameAndGuid("stand-in", guidOf(3)), S_OK);
    EXPECT_EQ(object.getName().view(), "stand-in");
    EXPECT_EQ(object.getGuid(), guidOf(3));
    EXPECT_EQ(object.getGuidHash(), guidOf(3).fullHash());
}

TEST(QueltEeDicoObjectTest, MayBeRenamedToItsOwnName) {
    QueltEeDicoObject object("Truck", guidOf(1));
    EXPECT_EQ(object.initFakeNameAndGuid(object.getName(), object.getGuid()), S_OK);
    EXPECT_EQ(object.getName().view(), "Truck");
    EXPECT_EQ(object.getGuid(), guidOf(1));
}

TEST(QueltEeDicoObjectTest, QuotesUnusualNamesInItsText) {
    EXPECT_EQ(QueltEeDicoObject("Truck_2.1-a", guidOf(1)).toString().view(), "Truck_2.1-a");
    EXPECT_EQ(QueltEeDicoObject("heavy \"truck\"", guidOf(1)).toString().view(), "\"heavy \\\"truck\\\"\"");
}

} // namespace
