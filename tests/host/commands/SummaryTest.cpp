#include "commands/Summary.h"

#include <gtest/gtest.h>
#include <sstream>

namespace quelt::host {
namespace {

std::string summaryOf(const Counts& counts, const FailureTally& failures, double seconds,
                      bool hasColours = false) {
    std::ostringstream out;
    writeSummary(out, counts, failures, seconds, hasColours);
    return out.str();
}

TEST(SummaryTest, saysWhatBecameOfTheRecords) {
    FailureTally failures;
    failures.add("ERROR : unexpected");
    failures.add("ERROR : acceptVisitor Failed");
    failures.add("ERROR : unexpected");
    EXPECT_EQ(summaryOf({.converted = 1000, .failed = 3, .malformed = 1}, failures, 0.5),
              "1,004 records in 0.50 s, 2,008 records/s\n"
              "  converted  1,000\n"
              "  failed         3\n"
              "                 2  ERROR : unexpected\n"
              "                 1  ERROR : acceptVisitor Failed\n"
              "  malformed      1\n");
}

TEST(SummaryTest, whatWasKeptTookNoTime) {
    std::ostringstream out;
    writeSummary(out, {.converted = 2500}, {}, 2, false, 1500);
    EXPECT_EQ(out.str(), "2,500 records (1,500 kept) in 2.00 s, 500 records/s\n"
                         "  converted  2,500\n"
                         "  failed         0\n"
                         "  malformed      0\n");
}

TEST(SummaryTest, nothingToDoIsSaidToo) {
    EXPECT_EQ(summaryOf({}, {}, 0), "0 records in 0.00 s, 0 records/s\n"
                                    "  converted  0\n"
                                    "  failed     0\n"
                                    "  malformed  0\n");
    EXPECT_EQ(summaryOf({.converted = 1}, {}, 2, true), "\x1b[1m1 record in 2.00 s, 0 records/s\x1b[0m\n"
                                                        "  converted  1\n"
                                                        "  failed     0\n"
                                                        "  malformed  0\n");
}

TEST(SummaryTest, manyReasonsAreCutShort) {
    constexpr std::size_t reasons = s_maxReasonsShown + 2;
    FailureTally failures;
    for (std::size_t reason = 0; reason < reasons; ++reason) {
        for (std::size_t count = 0; count <= reason; ++count) {
            failures.add("reason " + std::to_string(reason));
        }
    }
    const std::string summary = summaryOf({.failed = reasons * (reasons + 1) / 2}, failures, 1);
    EXPECT_NE(summary.find("66  reason 65\n"), std::string::npos) << summary;
    EXPECT_NE(summary.find(" 3  reason 2\n"), std::string::npos) << summary;
    EXPECT_EQ(summary.find("reason 1\n"), std::string::npos) << summary;
    EXPECT_NE(summary.find(" 3  for other reasons\n"), std::string::npos) << summary; // reasons 0 and 1
}

TEST(SummaryTest, reasonsCannotSteerTheTerminal) {
    FailureTally failures;
    failures.add("ERROR \x1b[2J\n");
    EXPECT_NE(summaryOf({.failed = 1}, failures, 1).find("1  ERROR ?[2J?\n"), std::string::npos);
}

} // namespace
} // namespace quelt::host
