// Signals that the test sends to itself; check-interruption.py sends them to the program.

#include "platform/Interruption.h"

#include "commands/ConversionRun.h"
#include "commands/RecordConverter.h"

#include "host/support/MemoryStreams.h"
#include "host/support/Samples.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>
#include <unistd.h>

namespace quelt::host {
namespace {

bool isReadable(int descriptor) {
    struct pollfd waiting {
        descriptor, POLLIN, 0
    };
    return ::poll(&waiting, 1, 0) == 1;
}

TEST(InterruptionTest, isNotedWhileThereIsAScope) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const InterruptionScope scope;
        EXPECT_EQ(interruption(), 0);
        EXPECT_FALSE(isReadable(interruptionDescriptor()));
        std::raise(signal);
        EXPECT_EQ(interruption(), signal);
        EXPECT_TRUE(isReadable(interruptionDescriptor()));
        std::raise(signal == SIGINT ? SIGTERM : SIGINT); // so soon, it is the same request
        EXPECT_EQ(interruption(), signal);
    }
    EXPECT_EQ(interruption(), 0);
    EXPECT_EQ(interruptionDescriptor(), -1);
}

TEST(InterruptionTest, signalsThatAreIgnoredStaySo) {
    const auto before = std::signal(SIGINT, SIG_IGN);
    {
        const InterruptionScope scope;
        std::raise(SIGINT);
        EXPECT_EQ(interruption(), 0);
    }
    EXPECT_EQ(std::signal(SIGINT, before), SIG_IGN);
}

TEST(InterruptionTest, theNextSignalEndsTheProgram) {
    const auto raiseTwice = [] {
        const InterruptionScope scope;
        std::raise(SIGINT);
        ::usleep(300'000);
        std::raise(SIGTERM);
    };
    EXPECT_EXIT(raiseTwice(), testing::ExitedWithCode(143), "");
}

TEST(InterruptionTest, readingAndWritingDoNotWait) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    {
        const InterruptionScope scope;
        std::raise(SIGTERM);
        char byte = 0;
        const auto codeOf = [](auto step) {
            try {
                step();
                return 0;
            } catch (const StreamFailure& failure) {
                return failure.code();
            }
        };
        EXPECT_EQ(codeOf([&] { sourceOf(ends[0])->read(&byte, 1); }), EINTR);
        EXPECT_EQ(codeOf([&] { sinkOf(ends[1])->write("taken"); }), 0);
        EXPECT_EQ(codeOf([&] { sinkOf(ends[1])->write(std::string(1'000'000, 'x')); }), EINTR);
    }
    for (const int end : ends) {
        ::close(end);
    }
}

/// Asks the program to end when the answer with a certain number is written, or record read.
class InterruptingSource : public test::TextSource {
public:
    InterruptingSource(std::string_view text, std::size_t piece, int reads)
        : TextSource(text, piece), m_reads(reads) {}
    std::size_t read(char* data, std::size_t size) override {
        if (m_reads-- == 0) {
            std::raise(SIGINT);
        }
        return TextSource::read(data, size);
    }

private:
    int m_reads;
};

TEST(InterruptionTest, runsEndBehindAWholeLine) {
    const std::string record = R"({"id":"P-1","tree":true})"
                               "\n"
                               R"({"id":"P-2","tree":null})"
                               "\n";
    const std::string text = test::repeated(record, 5'000);
    const std::unique_ptr<LoadedContext> context = test::contextOf(test::sampleContext());
    const MakeLineConverter make = [&] {
        return std::make_unique<RecordConverter>(*context, ConvertOptions{});
    };
    std::ostringstream messages;
    test::TextSource all(text);
    test::TextSink expected;
    Console console{.input = all, .output = expected, .messages = messages};
    Progress progress(console, std::nullopt);
    const RunResult whole = runConversion(make, 1, all, expected, progress);
    EXPECT_TRUE(whole.isWhole());
    for (const unsigned jobs : {1U, 2U, 4U}) {
        for (const int reads : {0, 1, 7, 100}) {
            const InterruptionScope scope;
            InterruptingSource source(text, 1000, reads);
            test::TextSink sink;
            const RunResult result = runConversion(make, jobs, source, sink, progress);
            EXPECT_TRUE(result.isInterrupted) << jobs << ", " << reads;
            EXPECT_FALSE(result.isWhole());
            EXPECT_TRUE(expected.text().starts_with(sink.text()));
            EXPECT_TRUE(sink.text().empty() || sink.text().ends_with('\n'));
            EXPECT_EQ(result.counts.records(),
                      static_cast<std::uint64_t>(std::count(sink.text().begin(), sink.text().end(), '\n')));
            std::uint64_t reasons = 0;
            for (const auto& [reason, count] : result.failures.mostFrequent()) {
                reasons += count;
            }
            EXPECT_EQ(reasons, result.counts.failed) << "reasons of records without an answer";
        }
    }
}

} // namespace
} // namespace quelt::host
