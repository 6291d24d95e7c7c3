#include "commands/Progress.h"

#include "host/support/MemoryStreams.h"

#include <gtest/gtest.h>
#include <sstream>

namespace quelt::host {
namespace {

TEST(ProgressTest, countsAreGrouped) {
    EXPECT_EQ(formatCount(0), "0");
    EXPECT_EQ(formatCount(999), "999");
    EXPECT_EQ(formatCount(1000), "1,000");
    EXPECT_EQ(formatCount(123456), "123,456");
    EXPECT_EQ(formatCount(1234567890123), "1,234,567,890,123");
}

TEST(ProgressTest, saysWhatIsKnown) {
    EXPECT_EQ(describeProgress({}, false), "0 records");
    EXPECT_EQ(describeProgress({.counts = {.converted = 1}}, false), "1 record");
    EXPECT_EQ(describeProgress({.counts = {.converted = 3000}, .seconds = 2}, false),
              "3,000 records, 1,500/s");
    // A quarter took 30 seconds: 90 are left.
    EXPECT_EQ(describeProgress({.counts = {.converted = 3000}, .seconds = 30, .share = 0.25}, false),
              "3,000 records, 100/s, 25 % done, 1:30 left");
    EXPECT_EQ(describeProgress({.counts = {.converted = 60}, .seconds = 60, .share = 0.01}, false),
              "60 records, 1/s, 1 % done, 1:39:00 left");
    EXPECT_EQ(describeProgress({.counts = {}, .seconds = 1, .share = 0.0}, false),
              "0 records, 0/s, 0 % done");
    // An input that grew meanwhile.
    EXPECT_EQ(describeProgress({.counts = {.converted = 8}, .seconds = 4, .share = 1.5}, false),
              "8 records, 2/s, 100 % done, 0:00 left");
}

TEST(ProgressTest, whatWasKeptTookNoTime) {
    // Half was kept; another quarter took 30 seconds, and so will the last.
    EXPECT_EQ(describeProgress({.counts = {.converted = 9000},
                                .seconds = 30,
                                .share = 0.75,
                                .keptRecords = 6000,
                                .keptShare = 0.5},
                               false),
              "9,000 records, 100/s, 75 % done, 0:30 left");
    EXPECT_EQ(describeProgress({.counts = {.converted = 6000},
                                .seconds = 1,
                                .share = 0.5,
                                .keptRecords = 6000,
                                .keptShare = 0.5},
                               false),
              "6,000 records, 0/s, 50 % done");
}

TEST(ProgressTest, troubleIsRedWhereColoursAreWelcome) {
    const ProgressState state{.counts = {.converted = 1, .failed = 2, .malformed = 1000}};
    EXPECT_EQ(describeProgress(state, false), "1,003 records, 2 failed, 1,000 malformed");
    EXPECT_EQ(describeProgress(state, true),
              "1,003 records, \x1b[31m2 failed\x1b[0m, \x1b[31m1,000 malformed\x1b[0m");
}

class ProgressLineTest : public testing::Test {
protected:
    /// What a terminal shows on its line after `text`.
    static std::string shown(const std::string& text) {
        std::string line;
        std::size_t column = 0;
        for (const char character : text) {
            if (character == '\r') {
                column = 0;
                continue;
            }
            line.resize(std::max(line.size(), column + 1), ' ');
            line[column++] = character;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        return line;
    }

    test::TextSource input{""};
    test::TextSink output;
    std::ostringstream messages;
};

TEST_F(ProgressLineTest, isWrittenAtOnceOnATerminalAndCleared) {
    const Console console{
        .input = input, .output = output, .messages = messages, .messagesAreTerminal = true};
    Progress progress(console, 200);
    progress.update({.converted = 5}, 100);
    EXPECT_TRUE(shown(messages.str()).starts_with("5 records, ")) << messages.str();
    EXPECT_NE(messages.str().find("50 % done"), std::string::npos) << messages.str();
    EXPECT_EQ(messages.str().find('\n'), std::string::npos);
    const std::string before = messages.str();
    progress.update({.converted = 6}, 110); // a moment later: not again
    EXPECT_EQ(messages.str(), before);
    progress.clearForAnswers(); // the answers go elsewhere
    EXPECT_EQ(messages.str(), before);
    progress.clear();
    EXPECT_EQ(shown(messages.str()), "");
}

TEST_F(ProgressLineTest, includesWhatWasKept) {
    const Console console{
        .input = input, .output = output, .messages = messages, .messagesAreTerminal = true};
    Progress progress(console, 200);
    progress.beginBehind({.converted = 5, .failed = 1}, 50);
    progress.update({.converted = 2, .malformed = 1}, 100);
    EXPECT_TRUE(shown(messages.str()).starts_with("9 records, ")) << messages.str();
    EXPECT_NE(messages.str().find("50 % done"), std::string::npos) << messages.str();
    EXPECT_NE(messages.str().find("1 failed, 1 malformed"), std::string::npos) << messages.str();
}

TEST_F(ProgressLineTest, makesWayForAnswersOnTheSameTerminal) {
    const Console console{.input = input,
                          .output = output,
                          .messages = messages,
                          .outputIsTerminal = true,
                          .messagesAreTerminal = true};
    Progress progress(console, std::nullopt);
    progress.update({.converted = 5}, 100);
    progress.clearForAnswers();
    EXPECT_EQ(shown(messages.str()), "");
}

TEST_F(ProgressLineTest, isNotWrittenElsewhere) {
    const Console console{.input = input, .output = output, .messages = messages, .outputIsTerminal = true};
    Progress progress(console, 200);
    progress.update({.converted = 5}, 100);
    progress.clear();
    EXPECT_EQ(messages.str(), "");
}

} // namespace
} // namespace quelt::host
