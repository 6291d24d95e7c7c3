#include "interchange/JsonWriter.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

std::string written(std::string_view text) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.utf8Text(text);
    return std::string(viewOf(buffer));
}

TEST(JsonWriterTest, textOfUnknownEncodingBecomesUtf8) {
    EXPECT_EQ(written(""), R"("")");
    EXPECT_EQ(written("V6"), R"("V6")");
    EXPECT_EQ(written("\xC3\xBC"), "\"\xC3\xBC\"");
    EXPECT_EQ(written("a\xFC\"b"), "\"a\xEF\xBF\xBD\\\"b\"");
    EXPECT_EQ(written("\xC3"), "\"\xEF\xBF\xBD\"");
}

} // namespace
} // namespace quelt::host
