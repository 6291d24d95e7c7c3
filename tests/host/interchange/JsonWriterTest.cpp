#include "interchange/JsonWriter.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>
#include <utility>

namespace quelt::host {
namespace {

std::string writtenAsUtf8(std::string_view text) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.utf8Text(text);
    return std::string(buffer.view());
}

std::string written(std::string_view text) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.text(text);
    return std::string(buffer.view());
}

TEST(JsonWriterTest, textOfUnknownEncodingBecomesUtf8) {
    EXPECT_EQ(writtenAsUtf8(""), R"("")");
    EXPECT_EQ(writtenAsUtf8("V6"), R"("V6")");
    EXPECT_EQ(writtenAsUtf8("\xC3\xBC"), "\"\xC3\xBC\"");
    EXPECT_EQ(writtenAsUtf8("a\xFC\"b"), "\"a\xEF\xBF\xBD\\\"b\"");
    EXPECT_EQ(writtenAsUtf8("\xC3"), "\"\xEF\xBF\xBD\"");
}

TEST(JsonWriterTest, whatJsonEscapesIsEscaped) {
    EXPECT_EQ(written("\"\\/"), R"("\"\\/")");
    EXPECT_EQ(written("\b\f\n\r\t"), R"("\b\f\n\r\t")");
    EXPECT_EQ(written(std::string_view("\0\x01\x1F\x20\x7F", 5)), "\"\\u0000\\u0001\\u001F \x7F\"");
    EXPECT_EQ(written("\x80\xFF"), "\"\x80\xFF\"");
}

/// One character at each place of texts up to some lengths: what is around it is written as it is.
TEST(JsonWriterTest, aCharacterIsEscapedWhereverItStands) {
    constexpr std::pair<char, std::string_view> examples[] = {
        {'"', "\\\""}, {'\\', "\\\\"}, {'\x1B', "\\u001B"}, {'\n', "\\n"}, {'\xA2', "\xA2"}};
    for (std::size_t length = 1; length < 30; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (const auto& [character, escaped] : examples) {
                std::string text(length, '!');
                text[place] = character;
                std::string expected(length, '!');
                expected.replace(place, 1, escaped);
                EXPECT_EQ(written(text), '"' + expected + '"');
            }
        }
    }
}

/// Another library writes the same bytes.
TEST(JsonWriterTest, anyBytesAreWrittenAsElsewhere) {
    std::mt19937 random(20100);
    TextBuffer buffer;
    for (int round = 0; round < 3000; ++round) {
        std::string text(random() % (round % 10 == 0 ? 1000 : 40), 'a');
        const unsigned among = round % 3 == 0 ? 256 : 96; // often those that are escaped
        for (char& character : text) {
            character = static_cast<char>(random() % 4 == 0 ? random() % among : 'a' + random() % 26);
        }
        const auto number =
            static_cast<std::int64_t>((std::uint64_t{random()} << 32U | random()) >> (random() % 64));
        rapidjson::StringBuffer expected;
        rapidjson::Writer<rapidjson::StringBuffer> other(expected);
        other.StartObject();
        other.Key(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        other.StartArray();
        other.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        other.Int64(number);
        other.Int64(-number);
        other.Null();
        other.EndArray();
        other.Key("option");
        other.Bool(round % 2 == 0);
        other.EndObject();

        buffer.clear();
        JsonWriter writer(buffer);
        writer.beginObject();
        writer.key(text);
        writer.beginArray();
        writer.text(text);
        writer.number(number);
        writer.number(-number);
        writer.null();
        writer.endArray();
        writer.key(Key::option);
        writer.flag(round % 2 == 0);
        writer.endObject();
        ASSERT_EQ(buffer.view(), std::string_view(expected.GetString(), expected.GetSize())) << round;
    }
}

TEST(JsonWriterTest, commasStandBetweenWhatFollowsEachOther) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.beginArray();
    writer.beginArray();
    writer.endArray();
    writer.beginObject();
    writer.key(Key::in);
    writer.beginArray();
    writer.null();
    writer.flag(true);
    writer.endArray();
    writer.key("a");
    writer.beginObject();
    writer.endObject();
    writer.endObject();
    writer.number(std::numeric_limits<std::int64_t>::min());
    writer.number(std::numeric_limits<std::int64_t>::max());
    writer.endArray();
    EXPECT_EQ(buffer.view(), R"([[],{"in":[null,true],"a":{}},-9223372036854775808,9223372036854775807])");
    writer.begin(buffer);
    writer.flag(false);
    EXPECT_TRUE(buffer.view().ends_with("9223372036854775807]false"));
}

TEST(JsonWriterTest, everyKeyIsWrittenAsItIsCalled) {
    for (std::size_t key = 0; key < keys::s_count; ++key) {
        const std::string name(keys::s_names[key]);
        TextBuffer buffer;
        JsonWriter writer(buffer);
        writer.beginObject();
        writer.key(static_cast<Key>(key));
        writer.null();
        writer.key(static_cast<Key>(key));
        writer.null();
        writer.endObject();
        EXPECT_EQ(buffer.view(), "{\"" + name + "\":null,\"" + name + "\":null}");
    }
}

TEST(JsonWriterTest, aBufferKeepsWhatItHoldsWhenItGrows) {
    TextBuffer buffer;
    std::string expected;
    for (int round = 0; round < 3; ++round) {
        for (std::size_t size = 1; size < 3'000'000; size = size * 3 + 1) {
            const std::string text(size, static_cast<char>('a' + size % 26));
            buffer.append(text);
            buffer.append('.');
            expected += text + '.';
        }
        EXPECT_EQ(buffer.size(), expected.size());
        EXPECT_TRUE(buffer.view() == expected);
        if (round == 1) {
            buffer.clear();
            expected.clear();
            EXPECT_EQ(buffer.view(), "");
        }
    }
}

} // namespace
} // namespace quelt::host
