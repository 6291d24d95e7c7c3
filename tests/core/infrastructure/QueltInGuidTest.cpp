#include "infrastructure/QueltInGuid.h"

#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltConversionServices.h"
#include "infrastructure/QueltInResult.h"

#include <memory>
#include <string>

namespace {

constexpr QueltInGuid::Bytes s_bytes = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                                        0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};
constexpr std::string_view s_text = "01234567-89ab-cdef-fedc-ba9876543210";

} // namespace

TEST(QueltInGuid, WritesGroupsOfLowerCaseHexadecimal) {
    EXPECT_EQ(textOf(QueltInGuid(s_bytes)), s_text);
    EXPECT_EQ(textOf(QueltInGuid()), "00000000-0000-0000-0000-000000000000");
    QueltInString text("former");
    EXPECT_EQ(QueltConversionServices::ConvertGuidToString(QueltInGuid(s_bytes), text), S_OK);
    EXPECT_EQ(text.view(), s_text);
}

TEST(QueltInGuid, ReadsWhatItWrites) {
    QueltInGuid guid;
    EXPECT_EQ(QueltInGuid::parse(s_text, guid), S_OK);
    EXPECT_EQ(guid.getBytes(), s_bytes);
    EXPECT_EQ(QueltInGuid::parse("FFFFFFFF-AAAA-bBbB-0000-123456789ABC", guid), S_OK);
    EXPECT_EQ(textOf(guid), "ffffffff-aaaa-bbbb-0000-123456789abc");
}

TEST(QueltInGuid, RefusesEverythingElse) {
    const std::string_view texts[] = {
        "",
        "0123456789abcdeffedcba9876543210",
        "01234567-89ab-cdef-fedc-ba987654321",
        "01234567-89ab-cdef-fedc-ba98765432100",
        " 01234567-89ab-cdef-fedc-ba987654321",
        "{01234567-89ab-cdef-fedc-ba98765432}",
        "0123456789-ab-cdef-fedc-ba9876543210",
        "01234567-89ab-cdef-fedc+ba9876543210",
        "g1234567-89ab-cdef-fedc-ba9876543210",
        "0:234567-89ab-cdef-fedc-ba9876543210",
        "01234567-89ab-cdef-fedc-ba987654321@",
        "01234567-89ab-cdef-fedc-ba987654321`",
        "01234567-89ab-cdef-fedc-ba98765432-0",
    };
    for (const std::string_view text : texts) {
        QueltInGuid guid(s_bytes);
        EXPECT_EQ(QueltInGuid::parse(text, guid), E_INVALIDARG) << text;
        EXPECT_EQ(guid.getBytes(), s_bytes) << text;
    }
}

TEST(QueltInGuid, EveryPlaceTakesItsOwnCharactersOnly) {
    for (std::size_t place = 0; place < s_text.size(); ++place) {
        for (int code = 0; code < 256; ++code) {
            const char character = static_cast<char>(code);
            std::string text(s_text);
            text[place] = character;
            const std::string_view admitted = s_text[place] == '-' ? "-" : "0123456789abcdefABCDEF";
            const bool fits = admitted.find(character) != std::string_view::npos;
            QueltInGuid guid;
            EXPECT_EQ(QueltInGuid::parse(text, guid), fits ? S_OK : E_INVALIDARG) << place << " " << code;
        }
    }
}

TEST(QueltInGuid, EveryByteCounts) {
    const QueltInGuid guid(s_bytes);
    for (std::size_t position = 0; position < s_bytes.size(); ++position) {
        QueltInGuid::Bytes bytes = s_bytes;
        ++bytes[position];
        const QueltInGuid other(bytes);
        EXPECT_EQ(guid.equals(other), 0) << position;
        EXPECT_FALSE(guid == other) << position;
        EXPECT_NE(guid.hash(), other.hash()) << position;
        QueltInGuid parsed;
        EXPECT_EQ(QueltInGuid::parse(other.toString().view(), parsed), S_OK);
        EXPECT_TRUE(parsed == other);
    }
    EXPECT_TRUE(QueltInGuid() < guid);
}

TEST(QueltInGuid, IsAValue) {
    const QueltInGuid guid(s_bytes);
    const std::unique_ptr<QueltInObjectVal> copy(guid.clone(nullptr));
    EXPECT_NE(copy->equals(guid), 0);
    EXPECT_EQ(copy->hash(), guid.hash());
    EXPECT_EQ(guid.equals(QueltInString(s_text)), 0);
}
