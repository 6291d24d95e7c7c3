#include "interchange/JsonParser.h"

#include "host/support/Samples.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::Padded;
using test::repeated;

TEST(JsonParserTest, refusesWithPositionAndPlace) {
    JsonParser parser;
    const Padded text("{\"a\":\n [1,, 2]}");
    try {
        (void)parser.parse(text.text());
        FAIL() << "accepted";
    } catch (const SyntaxRefusal& refusal) {
        EXPECT_STREQ(refusal.what(), "expected a value in /a");
        ASSERT_TRUE(refusal.position().has_value());
        EXPECT_EQ(refusal.position()->line, 2U);
        EXPECT_EQ(refusal.position()->column, 5U);
        EXPECT_FALSE(refusal.id().has_value());
    }
}

TEST(JsonParserTest, readsOnAfterALargeDocument) {
    JsonParser parser;
    const Padded small("[1]");
    const Padded large("[\"" + repeated("x", 5'000'000) + "\"]");
    EXPECT_EQ(parser.parse(small.text()).get_array().size(), 1U);
    EXPECT_EQ(parser.parse(large.text()).at(0).get_string().value().size(), 5'000'000U);
    EXPECT_EQ(parser.parse(small.text()).at(0).get_int64().value(), 1);
}

TEST(JsonParserTest, nestingIsLimited) {
    JsonParser parser;
    const Padded atLimit(repeated("[", s_maxJsonDepth) + repeated("]", s_maxJsonDepth));
    const Padded pastLimit(repeated("[", s_maxJsonDepth + 1) + repeated("]", s_maxJsonDepth + 1));
    EXPECT_NO_THROW((void)parser.parse(atLimit.text()));
    EXPECT_THROW((void)parser.parse(pastLimit.text()), SyntaxRefusal);
    // Also when the parser has grown for a larger document meanwhile.
    const Padded large("[\"" + repeated("x", 3'000'000) + "\"]");
    EXPECT_NO_THROW((void)parser.parse(large.text()));
    EXPECT_NO_THROW((void)parser.parse(atLimit.text()));
    EXPECT_THROW((void)parser.parse(pastLimit.text()), SyntaxRefusal);
}

TEST(JsonParserTest, byteOrderMarkIsTakenOff) {
    const Padded marked("\xEF\xBB\xBF{}");
    EXPECT_EQ(withoutUtf8Mark(marked.text()).view(), "{}");
    const Padded plain("{}");
    EXPECT_EQ(withoutUtf8Mark(plain.text()).view(), "{}");
    const Padded half("\xEF\xBB");
    EXPECT_EQ(withoutUtf8Mark(half.text()).view(), "\xEF\xBB");
}

} // namespace
} // namespace quelt::host
