#include "commands/Tally.h"

#include <gmock/gmock.h>

namespace quelt::host {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(TallyTest, countsAddUp) {
    Counts counts{.converted = 1, .failed = 2, .malformed = 3};
    counts += Counts{.converted = 10, .failed = 20, .malformed = 30};
    EXPECT_EQ(counts.converted, 11U);
    EXPECT_EQ(counts.failed, 22U);
    EXPECT_EQ(counts.malformed, 33U);
    EXPECT_EQ(counts.records(), 66U);
}

TEST(TallyTest, mostFrequentReasonsComeFirst) {
    FailureTally tally;
    for (const char* const text : {"b", "a", "c", "c", "a", "c"}) {
        tally.add(text);
    }
    EXPECT_THAT(tally.mostFrequent(), ElementsAre(Pair("c", 3), Pair("a", 2), Pair("b", 1)));
    tally.add("b");
    EXPECT_THAT(tally.mostFrequent(), ElementsAre(Pair("c", 3), Pair("a", 2), Pair("b", 2)));
}

TEST(TallyTest, talliesAreJoined) {
    FailureTally one;
    FailureTally other;
    one.add("a");
    other.add("a");
    other.add("b");
    one.add(other);
    EXPECT_THAT(one.mostFrequent(), ElementsAre(Pair("a", 2), Pair("b", 1)));
}

TEST(TallyTest, textsToldApartAreBounded) {
    FailureTally tally;
    for (std::size_t number = 0; number < 2 * FailureTally::s_maxTexts; ++number) {
        tally.add("reason " + std::to_string(number));
        tally.add("reason 0");
    }
    EXPECT_EQ(tally.mostFrequent().size(), FailureTally::s_maxTexts);
    EXPECT_EQ(tally.mostFrequent()[0].second, 2 * FailureTally::s_maxTexts + 1);
    EXPECT_EQ(tally.others(), FailureTally::s_maxTexts);
    FailureTally sum;
    sum.add(tally);
    EXPECT_EQ(sum.others(), FailureTally::s_maxTexts);
}

} // namespace
} // namespace quelt::host
