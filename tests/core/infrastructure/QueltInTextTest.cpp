#include "infrastructure/QueltInText.h"

#include "core/infrastructure/SampleObjects.h"

#include <cstdint>
#include <limits>

using quelt::TextBuilder;

TEST(TextBuilder, AppendsTextsAndNumbers) {
    TextBuilder text;
    text << "a" << std::int64_t{-5} << std::string_view("b\0c", 3) << std::int64_t{0};
    EXPECT_EQ(text.take().view(), std::string_view("a-5b\0c0", 7));
    EXPECT_EQ(text.take().view(), "") << "taking empties the builder";
    text << std::numeric_limits<std::int64_t>::min() << " " << std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(text.take().view(), "-9223372036854775808 9223372036854775807");
}

TEST(TextBuilder, QuotesNamesThatAreNotPlain) {
    struct Case {
        std::string_view name;
        std::string_view text;
    };
    const Case cases[] = {
        {"Engine", "Engine"},
        {"V6_a-b.c9", "V6_a-b.c9"},
        {"", R"("")"},
        {"two words", R"("two words")"},
        {"a,b", R"("a,b")"},
        {"\"\\/", R"("\"\\/")"},
        {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
        {std::string_view("\0\x1f\x7f", 3), "\"\\u0000\\u001f\x7f\""},
        {"Z\xC3\xBCrich", "\"Z\xC3\xBCrich\""}, // a letter outside ASCII
    };
    for (const Case& one : cases) {
        EXPECT_EQ(TextBuilder().name(one.name).take().view(), one.text);
    }
}
