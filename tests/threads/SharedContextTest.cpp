// Any number of threads convert on one context, each with a converter of its own: everybody gets the answers
// that one thread alone gets. QUELT_THREAD_SECONDS says for how long; the thread sanitizer watches.

#include "host/support/Examples.h"
#include "host/support/HeapRecordConverter.h"
#include "host/support/LeaksForgiven.h"
#include "host/support/Samples.h"

#include "commands/RecordConverter.h"

#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

namespace quelt::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned s_threads = 8;

/// How a thread converts.
struct Manner {
    ConvertOptions options;
    bool usesArena;
};
constexpr std::array<Manner, 4> s_manners{{{{}, true},
                                           {{.withInput = true, .withTrace = true}, true},
                                           {{.branchesAll = true}, true},
                                           {{.branchesAll = true, .withTrace = true}, false}}};

std::unique_ptr<LineConverter> makeConverter(const LoadedContext& context, const Manner& manner) {
    if (manner.usesArena) {
        return std::make_unique<RecordConverter>(context, manner.options);
    }
    return std::make_unique<test::HeapRecordConverter>(context, manner.options);
}

std::chrono::seconds timeToRun() {
    int seconds = 2;
    if (const char* const text = std::getenv("QUELT_THREAD_SECONDS")) {
        std::from_chars(text, text + std::string_view(text).size(), seconds);
    }
    return std::chrono::seconds(seconds);
}

/// The answer without the trace, which shows addresses.
std::string withoutTrace(const std::string& answer) {
    const std::size_t trace = answer.find(R"(,"trace":[{"class":)");
    return answer.substr(0, trace);
}

/// Whether a conversion in this manner may leave objects to nobody, as one that fails does on the heap.
bool mayLeaveObjects(const Manner& manner, std::string_view answer) {
    return !manner.usesArena && answer.find(R"(,"code":"0x)") != std::string_view::npos;
}

/// The answers to all examples in each manner, by one thread.
std::vector<std::vector<std::string>> answersAlone(const LoadedContext& context) {
    std::vector<std::vector<std::string>> answers;
    for (const Manner& manner : s_manners) {
        const auto converter = makeConverter(context, manner);
        std::vector<std::string>& ofManner = answers.emplace_back();
        const test::LeaksForgiven scope(!manner.usesArena);
        for (const std::string& record : test::exampleRecords()) {
            ofManner.push_back(withoutTrace(test::answerOf(*converter, record)));
        }
    }
    return answers;
}

TEST(SharedContextTest, threadsGetTheAnswersOfOne) {
    const std::unique_ptr<LoadedContext> context = test::contextOf(test::exampleContextText());
    const std::vector<std::string>& records = test::exampleRecords();
    const auto expected = answersAlone(*test::contextOf(test::exampleContextText()));
    const std::string before = test::written(*context);
    const Clock::time_point end = Clock::now() + timeToRun();
    std::atomic<std::uint64_t> conversions{0};
    std::atomic<std::uint64_t> differences{0};

    const auto convertUntilTheEnd = [&](unsigned thread) {
        for (std::size_t round = 0; round == 0 || Clock::now() < end; ++round) {
            const std::size_t manner = (thread + round) % s_manners.size();
            const auto converter = makeConverter(*context, s_manners[manner]);
            for (std::size_t step = 0; step < records.size(); ++step) {
                // Every second round all begin with the same record.
                const std::size_t number = (step + (round % 2 == 0 ? 0 : thread * 13)) % records.size();
                const test::LeaksForgiven scope(mayLeaveObjects(s_manners[manner], expected[manner][number]));
                const std::string answer = withoutTrace(test::answerOf(*converter, records[number]));
                differences += answer != expected[manner][number] ? 1U : 0U;
                ++conversions;
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < s_threads; ++thread) {
        threads.emplace_back(convertUntilTheEnd, thread);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    std::printf("%llu conversions by %u threads\n", static_cast<unsigned long long>(conversions), s_threads);
    EXPECT_EQ(differences, 0U);
    EXPECT_GE(conversions, std::uint64_t{s_threads} * records.size());
    EXPECT_EQ(test::written(*context), before);
}

} // namespace
} // namespace quelt::host
