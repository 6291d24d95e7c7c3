#include "dictionary/QueltEeNamedValueVar.h"

#include "core/dictionary/TestTools.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace {

class NamedValueVar : public QueltEeCatOptionVar {
public:
    NamedValueVar(std::uint8_t guid, std::initializer_list<const char*> values)
        : QueltEeCatOptionVar("Engine", guidOf(guid)) {
        for (const char* const value : values) {
            addValue(value);
        }
    }
};

TEST(QueltEeNamedValueVarTest, NumbersValuesInTheOrderAdded) {
    QueltEeCatOptionVar engine("Engine", guidOf(1));
    EXPECT_EQ(engine.getValueCount(), 0U);
    EXPECT_EQ(engine.addValue("V8"), 0U);
    EXPECT_EQ(engine.addValue("V6"), 1U);
    EXPECT_EQ(engine.addValue(""), 2U);
    EXPECT_EQ(engine.getValueCount(), 3U);
    EXPECT_EQ(engine.getValueName(0), "V8");
    EXPECT_EQ(engine.getValueName(1), "V6");
    EXPECT_EQ(engine.findValue("V6"), 1U);
    EXPECT_EQ(engine.findValue(""), 2U);
    EXPECT_EQ(engine.findValue("v6"), std::nullopt);
}

TEST(QueltEeNamedValueVarTest, KeepsTheNumberOfAValueGivenTwice) {
    QueltEeSelectionVar package("Package", guidOf(1));
    EXPECT_EQ(package.addValue("Sport"), 0U);
    EXPECT_EQ(package.addValue("Winter"), 1U);
    EXPECT_EQ(package.addValue("Sport"), 0U);
    EXPECT_EQ(package.getValueCount(), 2U);
}

TEST(QueltEeNamedValueVarTest, HasNoNamePastTheLast) {
    const NamedValueVar engine(1, {"V6"});
    EXPECT_EQ(engine.getValueName(1), "");
    EXPECT_EQ(engine.getValueName(0xFFFFFFFFU), "");
}

TEST(QueltEeNamedValueVarTest, FindsEachOfManyValues) {
    QueltEeCatOptionVar colour("Colour", guidOf(1));
    for (std::uint32_t number = 0; number < 5000; ++number) {
        ASSERT_EQ(colour.addValue("a rather long name of a colour " + std::to_string(number)), number);
    }
    for (std::uint32_t number = 0; number < 5000; ++number) {
        ASSERT_EQ(colour.findValue("a rather long name of a colour " + std::to_string(number)), number);
    }
}

TEST(QueltEeNamedValueVarTest, AgreesWithTheSameFeatureAndValuesInAnyOrder) {
    const NamedValueVar engine(1, {"V6", "V8"});
    EXPECT_TRUE(engine.agreesWith(engine));
    EXPECT_TRUE(engine.agreesWith(NamedValueVar(1, {"V6", "V8"})));
    EXPECT_TRUE(engine.agreesWith(NamedValueVar(1, {"V8", "V6"})));
    EXPECT_FALSE(engine.agreesWith(NamedValueVar(2, {"V6", "V8"})));
    EXPECT_FALSE(engine.agreesWith(NamedValueVar(1, {"V6"})));
    EXPECT_FALSE(engine.agreesWith(NamedValueVar(1, {"V6", "V8", "V12"})));
    EXPECT_FALSE(engine.agreesWith(NamedValueVar(1, {"V6", "V12"})));
    EXPECT_TRUE(NamedValueVar(1, {}).agreesWith(NamedValueVar(1, {})));
}

} // namespace
