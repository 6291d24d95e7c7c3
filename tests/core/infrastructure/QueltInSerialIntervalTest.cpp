#include "infrastructure/QueltInSerialInterval.h"

#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInResult.h"

#include <limits>
#include <memory>

namespace {

QueltInSerialInterval interval(int a, unsigned char aIncl, int b, unsigned char bIncl) {
    QueltInSerialInterval made;
    EXPECT_EQ(made.setInterval(a, aIncl, b, bIncl), S_OK);
    return made;
}

} // namespace

TEST(QueltInSerialInterval, TakesEverythingAsGiven) {
    const QueltInSerialInterval upsideDown = interval(20, 0, 10, 7);
    EXPECT_EQ(upsideDown.getA(), 20);
    EXPECT_EQ(upsideDown.getAIncl(), 0);
    EXPECT_EQ(upsideDown.getB(), 10);
    EXPECT_EQ(upsideDown.getBIncl(), 7);
    const QueltInSerialInterval fresh;
    EXPECT_EQ(textOf(fresh), "[0, 0]");
}

TEST(QueltInSerialInterval, MayBeSetFromItsOwnBounds) {
    QueltInSerialInterval turned = interval(1, 1, 2, 1);
    EXPECT_EQ(turned.setInterval(turned.getB(), 1, turned.getA(), 0), S_OK);
    EXPECT_EQ(textOf(turned), "[2, 1)");
}

TEST(QueltInSerialInterval, ShowsMathematicalBrackets) {
    constexpr int least = std::numeric_limits<int>::min();
    constexpr int most = std::numeric_limits<int>::max();
    EXPECT_EQ(textOf(interval(10, 1, 20, 0)), "[10, 20)");
    EXPECT_EQ(textOf(interval(10, 0, 20, 1)), "(10, 20]");
    EXPECT_EQ(textOf(interval(-2000000000, 1, 20, 1)), "[-inf, 20]");
    EXPECT_EQ(textOf(interval(10, 0, 2000000000, 0)), "(10, +inf)");
    // The open ends are a lower and an upper one; on the other side they are numbers.
    EXPECT_EQ(textOf(interval(2000000000, 1, -2000000000, 1)), "[2000000000, -2000000000]");
    EXPECT_EQ(textOf(interval(least, 1, most, 1)), "[-2147483648, 2147483647]");
}

TEST(QueltInSerialInterval, IsAValue) {
    const QueltInSerialInterval first = interval(10, 1, 20, 0);
    EXPECT_NE(first.equals(interval(10, 1, 20, 0)), 0);
    EXPECT_NE(first.equals(interval(10, 255, 20, 0)), 0) << "any flag but 0 says inclusive";
    EXPECT_EQ(first.hash(), interval(10, 255, 20, 0).hash());
    EXPECT_EQ(first.equals(interval(11, 1, 20, 0)), 0);
    EXPECT_EQ(first.equals(interval(10, 0, 20, 0)), 0);
    EXPECT_EQ(first.equals(interval(10, 1, 21, 0)), 0);
    EXPECT_EQ(first.equals(interval(10, 1, 20, 1)), 0);
    EXPECT_EQ(first.equals(QueltInIntHolder(10)), 0);
    const std::unique_ptr<QueltInObjectVal> copy(first.clone(nullptr));
    EXPECT_NE(copy->equals(first), 0);
    QueltInSerialInterval older;
    EXPECT_EQ(first.clone(&older), &older);
    EXPECT_NE(older.equals(first), 0);
}
