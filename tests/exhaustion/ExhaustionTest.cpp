// Whichever allocation fails, a conversion ends in order: its record is answered, or the caller hears of it,
// and everything behind it is as if nothing had been. Each example is converted again and again, with the
// first allocation failing, then the second, until there is none left to fail.

#include "exhaustion/support/FailingAllocator.h"
#include "host/support/Examples.h"

#include "commands/ConversionRun.h"
#include "commands/RecordConverter.h"
#include "host/support/HeapRecordConverter.h"
#include "host/support/LeaksForgiven.h"
#include "host/support/MemoryStreams.h"
#include "host/support/Samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <sstream>

namespace quelt::host {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using Lasting = test::AllocationFailure::Lasting;

constexpr ConvertOptions s_everything{.branchesAll = true, .withInput = true, .withTrace = true};

class ExhaustionTest : public testing::Test {
protected:
    void SetUp() override {
        if (!test::allocationsCanFail()) {
            GTEST_SKIP() << "each library has operators new of its own on this platform";
        }
    }

    std::unique_ptr<LoadedContext> context = test::contextOf(test::exampleContextText());
};

/// The answers without the addresses that lines of the trace show.
std::string withoutAddresses(std::string_view answers) {
    std::string masked;
    for (std::size_t begin = 0; begin < answers.size();) {
        const std::size_t address = answers.find("0x", begin);
        const std::size_t digits = std::min(address, answers.size() - 2) + 2;
        masked += answers.substr(begin, digits - begin);
        begin = std::min(answers.find_first_not_of("0123456789abcdef", digits), answers.size());
    }
    return masked;
}

/// The answer to a record, without addresses.
std::string maskedAnswer(LineConverter& converter, std::string_view record) {
    return withoutAddresses(test::answerOf(converter, record));
}

/// What came of a conversion of which an allocation failed.
struct Outcome {
    bool hasFailed = false;   // there was such an allocation
    bool hasThrown = false;   // std::bad_alloc came out
    std::string answers = {}; // what stands behind what stood there before
    Counts counts = {};
};

Outcome convertFailing(LineConverter& converter, std::string_view record, std::uint64_t number,
                       Lasting lasting) {
    const std::string before = "what stands there already\n";
    TextBuffer answers;
    answers.append(std::string_view(before));
    const test::Padded padded(record);
    Outcome outcome;
    test::AllocationFailure failure(number, lasting);
    try {
        converter.convert(Line{0, record.size(), 1, false, false}, padded.text(), answers, outcome.counts);
    } catch (const std::bad_alloc&) {
        outcome.hasThrown = true;
    }
    outcome.hasFailed = failure.end();
    const std::string all(answers.view());
    EXPECT_THAT(all, testing::StartsWith(before));
    outcome.answers = withoutAddresses(all.substr(before.size()));
    return outcome;
}

/// Checks what came of a failing conversion of `record`, and that it left no damage.
void expectInOrder(const Outcome& outcome, LineConverter& converter, std::string_view record,
                   const std::string& reference, Lasting lasting) {
    if (outcome.hasThrown) {
        EXPECT_EQ(lasting, Lasting::forGood) << "there was memory enough for an answer";
        EXPECT_EQ(outcome.answers, "");
        EXPECT_EQ(outcome.counts.records(), 0U);
    } else {
        EXPECT_EQ(outcome.counts.records(), 1U);
        if (outcome.answers != reference) { // some can do without the memory that they asked for
            EXPECT_THAT(outcome.answers, HasSubstr("out of memory"));
            EXPECT_EQ(std::count(outcome.answers.begin(), outcome.answers.end(), '\n'), 1);
            EXPECT_THAT(outcome.answers, EndsWith("}\n"));
            EXPECT_EQ(outcome.counts.converted, 0U);
        }
    }
    EXPECT_EQ(maskedAnswer(converter, record), reference) << "the same record once more";
}

bool isFailure(std::string_view answer) {
    return answer.find(R"(,"code":"0x)") != std::string_view::npos;
}

std::string referenceFor(LineConverter& converter, std::string_view record, bool isOnHeap) {
    const test::LeaksForgiven scope(isOnHeap); // nobody knows yet whether it fails
    return maskedAnswer(converter, record);
}

/// Lets every allocation of every example fail, one after the other; `make` makes the converters.
/// `isOnHeap` says that conversions that fail may leave objects to nobody.
template <class Make>
void failEverywhere(Make make, Lasting lasting, bool isOnHeap = false) {
    std::uint64_t failures = 0;
    std::uint64_t thrown = 0;
    for (const std::string& record : test::exampleRecords()) {
        SCOPED_TRACE(record);
        const std::string reference = referenceFor(*make(), record, isOnHeap);
        const test::LeaksForgiven ofTheRecord(isOnHeap && isFailure(reference));
        for (std::uint64_t number = 1;; ++number) {
            SCOPED_TRACE("allocation " + std::to_string(number));
            const std::unique_ptr<LineConverter> converter = make();
            const Outcome outcome = [&] {
                const test::LeaksForgiven ofTheAllocation(isOnHeap);
                return convertFailing(*converter, record, number, lasting);
            }();
            if (!outcome.hasFailed) {
                EXPECT_EQ(outcome.answers, reference);
                break;
            }
            ++failures;
            thrown += outcome.hasThrown ? 1U : 0U;
            expectInOrder(outcome, *converter, record, reference, lasting);
            if (testing::Test::HasFailure()) {
                return;
            }
        }
    }
    EXPECT_GT(failures, test::exampleRecords().size());
    std::printf("%llu failures, %llu of them without an answer\n", static_cast<unsigned long long>(failures),
                static_cast<unsigned long long>(thrown));
}

TEST_F(ExhaustionTest, costsItsRecordOnly) {
    failEverywhere([&] { return std::make_unique<RecordConverter>(*context, ConvertOptions{}); },
                   Lasting::once);
}

TEST_F(ExhaustionTest, costsItsRecordOnlyWithEverythingShown) {
    failEverywhere([&] { return std::make_unique<RecordConverter>(*context, s_everything); }, Lasting::once);
}

TEST_F(ExhaustionTest, isToldWhenThereIsNoMemoryForTheAnswer) {
    failEverywhere([&] { return std::make_unique<RecordConverter>(*context, ConvertOptions{}); },
                   Lasting::forGood);
    failEverywhere([&] { return std::make_unique<RecordConverter>(*context, s_everything); },
                   Lasting::forGood);
}

TEST_F(ExhaustionTest, onTheHeap) {
    failEverywhere([&] { return std::make_unique<test::HeapRecordConverter>(*context, ConvertOptions{}); },
                   Lasting::once, true);
}

TEST_F(ExhaustionTest, onTheHeapWithEverythingShown) {
    failEverywhere([&] { return std::make_unique<test::HeapRecordConverter>(*context, s_everything); },
                   Lasting::once, true);
}

TEST_F(ExhaustionTest, readingAContextLeavesNothingBehind) {
    const std::string reference = test::written(*context);
    const test::Padded text(test::exampleContextText());
    for (std::uint64_t number = 1;; ++number) {
        const long live = test::livePieces();
        std::unique_ptr<LoadedContext> read;
        test::AllocationFailure failure(number, Lasting::forGood);
        try {
            read = readContext(text.text());
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(read, nullptr);
        }
        const bool hasFailed = failure.end();
        if (!hasFailed) {
            EXPECT_EQ(test::written(*read), reference);
            EXPECT_GT(number, 100U);
            return;
        }
        ASSERT_EQ(read, nullptr) << number;
        ASSERT_EQ(test::livePieces(), live) << number;
    }
}

/// Fails at some allocation of the thread that converts.
class FailingConverter : public RecordConverter {
public:
    FailingConverter(const LoadedContext& context, std::uint64_t number)
        : RecordConverter(context, {}), m_failure(number, Lasting::forGood) {}

private:
    test::AllocationFailure m_failure;
};

class ExhaustedRunTest : public ExhaustionTest, public testing::WithParamInterface<unsigned> {
protected:
    /// The answers to all examples, or what came out of them before the memory was exhausted.
    std::string run(const MakeLineConverter& makeConverter) {
        test::TextSource source(records, 1000);
        test::TextSink sink;
        std::ostringstream messages;
        Console console{.input = source, .output = sink, .messages = messages};
        Progress progress(console, std::nullopt);
        hasThrown = false;
        try {
            const RunResult result = runConversion(makeConverter, GetParam(), source, sink, progress);
            EXPECT_EQ(result.counts.records(), test::exampleRecords().size());
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
        return sink.text();
    }

    std::string records = [] {
        std::string text;
        for (const std::string& record : test::exampleRecords()) {
            text += record + '\n';
        }
        return text;
    }();
    bool hasThrown = false;
};

/// Whether `answers` are those to the first records, in order, but for what they say of exhausted memory.
void expectBeginning(const std::string& answers, const std::string& reference) {
    EXPECT_TRUE(answers.empty() || answers.back() == '\n') << answers;
    std::istringstream found(answers);
    std::istringstream expected(reference);
    std::string answer;
    std::string right;
    while (std::getline(found, answer)) {
        ASSERT_TRUE(std::getline(expected, right)) << answer;
        if (answer.find("out of memory") == std::string::npos) {
            EXPECT_EQ(answer, right);
        } else if (const std::size_t end = answer.find(','); answer.starts_with("{\"id\":")) {
            EXPECT_EQ(answer.substr(0, end), right.substr(0, end));
        }
    }
}

TEST_P(ExhaustedRunTest, endsWithWholeAnswers) {
    const std::string reference =
        run([&] { return std::make_unique<RecordConverter>(*context, ConvertOptions{}); });
    ASSERT_FALSE(hasThrown);
    int thrown = 0;
    for (std::uint64_t number = 1; number < 400; number += 7) {
        const std::string answers = run([&] { return std::make_unique<FailingConverter>(*context, number); });
        if (hasThrown) {
            ++thrown;
            expectBeginning(answers, reference);
        }
    }
    EXPECT_GT(thrown, 0);
    EXPECT_EQ(run([&] { return std::make_unique<RecordConverter>(*context, ConvertOptions{}); }), reference);
}

INSTANTIATE_TEST_SUITE_P(jobs, ExhaustedRunTest, testing::Values(1U, 3U));

} // namespace
} // namespace quelt::host
