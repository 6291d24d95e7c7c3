#include "infrastructure/QueltInIntHolder.h"

#include "core/infrastructure/SampleObjects.h"

#include <memory>

TEST(QueltInIntHolder, ShowsItsNumber) {
    EXPECT_EQ(textOf(QueltInIntHolder(0)), "0");
    EXPECT_EQ(textOf(QueltInIntHolder(4294967295U)), "4294967295");
}

TEST(QueltInIntHolder, IsAValue) {
    const QueltInIntHolder three(3);
    EXPECT_NE(three.equals(QueltInIntHolder(3)), 0);
    EXPECT_EQ(three.equals(QueltInIntHolder(4)), 0);
    EXPECT_EQ(three.equals(QueltInString("3")), 0);
    EXPECT_EQ(three.hash(), QueltInIntHolder(3).hash());
    QueltInIntHolder older(9);
    EXPECT_EQ(three.clone(&older), &older);
    EXPECT_EQ(older.m_value, 3U);
    const std::unique_ptr<QueltInObjectVal> copy(three.clone(nullptr));
    EXPECT_NE(copy->equals(three), 0);
}

TEST(QueltInIntHolder, NeighboursHashFarApart) {
    // Tables whose size is a power of two look at the lowest bits only.
    int sameLowBits = 0;
    for (unsigned int number = 0; number < 1024; ++number) {
        const auto low = [](unsigned int value) { return QueltInIntHolder(value).BinHashFunc() % 1024; };
        sameLowBits += low(number) == low(number + 1024) ? 1 : 0;
    }
    EXPECT_LT(sameLowBits, 20);
}
