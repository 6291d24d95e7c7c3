#include "compiled/QueltBioBuffer.h"

#include "infrastructure/QueltInString.h"

#include <gtest/gtest.h>

#include <array>

namespace {

TEST(QueltBioBuffer, HoldsACopyOfTheBytes) {
    std::array<std::uint8_t, 3> bytes = {1, 2, 3};
    const QueltBioBuffer buffer(bytes);
    bytes[0] = 9;
    ASSERT_EQ(buffer.getSize(), 3U);
    EXPECT_EQ(buffer.getBytes()[0], 1);
    EXPECT_EQ(buffer.getBytes()[2], 3);
}

TEST(QueltBioBuffer, CopiesAreIndependent) {
    const QueltBioBuffer first(std::array<std::uint8_t, 2>{1, 2});
    QueltBioBuffer second = first;
    EXPECT_EQ(first, second);
    second.append(std::array<std::uint8_t, 1>{3});
    EXPECT_EQ(first.getSize(), 2U);
    EXPECT_EQ(second.getSize(), 3U);
    EXPECT_FALSE(first == second);
    second.clear();
    EXPECT_EQ(second.getSize(), 0U);
    EXPECT_EQ(second, QueltBioBuffer());
}

TEST(QueltBioBuffer, PrintsLowerCaseHexadecimal) {
    EXPECT_EQ(QueltBioBuffer().toString().view(), "");
    EXPECT_EQ(QueltBioBuffer(std::array<std::uint8_t, 4>{0x00, 0x0F, 0xA9, 0xFF}).toString().view(),
              "000fa9ff");
}

} // namespace
