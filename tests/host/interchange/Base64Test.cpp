#include "interchange/Base64.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

std::vector<std::uint8_t> bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

/// What is wrong with `text`, "nothing" when it is good.
std::string faultOf(std::string_view text) {
    std::vector<std::uint8_t> bytes{1, 2, 3};
    const std::optional<std::string> fault = decodeBase64(text, bytes);
    EXPECT_EQ(fault.has_value() && !bytes.empty(), false) << text;
    return fault.value_or("nothing");
}

/// The vectors of RFC 4648, section 10, and bytes of all values.
TEST(Base64Test, textsOfBytes) {
    std::vector<std::pair<std::string, std::string>> vectors{{"", ""},
                                                             {"f", "Zg=="},
                                                             {"fo", "Zm8="},
                                                             {"foo", "Zm9v"},
                                                             {"foob", "Zm9vYg=="},
                                                             {"fooba", "Zm9vYmE="},
                                                             {"foobar", "Zm9vYmFy"},
                                                             {std::string("\0\0\0", 3), "AAAA"},
                                                             {"\xFF\xFF\xFF", "////"},
                                                             {"\xFB\xEF\xBE", "++++"}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(encodeBase64(bytesOf(bytes)), text);
        std::vector<std::uint8_t> decoded;
        EXPECT_EQ(decodeBase64(text, decoded), std::nullopt) << text;
        EXPECT_EQ(decoded, bytesOf(bytes)) << text;
    }
}

TEST(Base64Test, decodingUndoesEncoding) {
    std::uint32_t state = 1;
    for (std::size_t size = 0; size < 200; ++size) {
        std::vector<std::uint8_t> bytes(size);
        for (std::uint8_t& byte : bytes) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<std::uint8_t>(state >> 24U);
        }
        const std::string text = encodeBase64(bytes);
        EXPECT_EQ(text.size(), (size + 2) / 3 * 4);
        std::vector<std::uint8_t> decoded;
        EXPECT_EQ(decodeBase64(text, decoded), std::nullopt);
        EXPECT_EQ(decoded, bytes);
    }
}

TEST(Base64Test, saysWhatIsWrong) {
    EXPECT_EQ(faultOf("Zm9v"), "nothing");
    EXPECT_EQ(faultOf("Zm9"), "3 characters are no groups of four");
    EXPECT_EQ(faultOf("Z"), "1 characters are no groups of four");
    EXPECT_EQ(faultOf("Zm9vY"), "5 characters are no groups of four");
    EXPECT_EQ(faultOf("Zg="), "3 characters are no groups of four");
    EXPECT_EQ(faultOf("="), "1 characters are no groups of four");
    EXPECT_EQ(faultOf("=="), "2 characters are no groups of four");
    EXPECT_EQ(faultOf("===="), "character 1 has no meaning there");
    EXPECT_EQ(faultOf("Z==="), "character 2 has no meaning there");
    EXPECT_EQ(faultOf("Zg==Zg=="), "character 3 has no meaning there");
    EXPECT_EQ(faultOf("Zm 9v"), "character 3 has no meaning there");
    EXPECT_EQ(faultOf("Zm9v\n"), "character 5 has no meaning there");
    EXPECT_EQ(faultOf("Zm9-"), "character 4 has no meaning there") << "that is another alphabet";
    EXPECT_EQ(faultOf("\xC3\xBCZg"), "character 1 has no meaning there");
    EXPECT_EQ(faultOf(std::string_view("Zm\0v", 4)), "character 3 has no meaning there");
    EXPECT_EQ(faultOf("Zh=="), "character 2 has bits that belong to no byte");
    EXPECT_EQ(faultOf("Zm9="), "character 3 has bits that belong to no byte");
}

/// Every text of four characters out of some that stand for each kind is refused, or comes back the same.
TEST(Base64Test, everyByteStringHasOneText) {
    const std::string characters = "AZgaz09+/=- ";
    std::size_t good = 0;
    for (std::size_t number = 0; number < 12 * 12 * 12 * 12; ++number) {
        std::string text;
        for (std::size_t rest = number, place = 0; place < 4; ++place, rest /= 12) {
            text += characters[rest % 12];
        }
        std::vector<std::uint8_t> bytes;
        if (!decodeBase64(text, bytes)) {
            EXPECT_EQ(encodeBase64(bytes), text);
            ++good;
        }
    }
    // Four of the 9 digits; two and one of the 3 without the two low bits; one and one of the 2 without the
    // four low bits.
    EXPECT_EQ(good, 9U * 9 * 9 * 9 + 9U * 9 * 3 + 9U * 2);
}

} // namespace
} // namespace quelt::host
