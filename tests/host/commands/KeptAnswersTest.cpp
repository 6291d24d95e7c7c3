#include "commands/KeptAnswers.h"

#include "commands/RecordConverter.h"
#include "interchange/Place.h"

#include "host/support/MemoryStreams.h"
#include "host/support/Samples.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::TextSource;

class KeptAnswersTest : public testing::Test {
protected:
    /// The answers to `records`, and what they come to.
    std::string answersTo(std::string_view records, ConvertOptions options = {}) {
        RecordConverter converter(*context, options);
        TextSource source(records);
        LineReader reader(source, 1000);
        LineBatch batch;
        TextBuffer answers;
        counts = {};
        while (reader.fill(batch)) {
            for (const Line& line : batch.lines()) {
                converter.convert(line, batch.textOf(line), answers, counts);
            }
        }
        failures = converter.takeFailures();
        return std::string(answers.view());
    }
    /// Skips the records that have an answer; `rest` is the number of the line behind.
    KeptAnswers skip(std::string_view answers, std::string_view records, ConvertOptions options = {}) {
        RecordConverter converter(*context, options);
        TextSource answersSource(answers);
        TextSource recordsSource(records, 200);
        LineReader reader(recordsSource, 1000);
        KeptAnswers kept = skipAnswered(answersSource, reader, converter);
        LineBatch batch;
        rest = reader.fill(batch) ? batch.lines().front().number : 0;
        return kept;
    }
    std::string refusal(std::string_view answers, std::string_view records, ConvertOptions options = {}) {
        try {
            static_cast<void>(skip(answers, records, options));
            return "none";
        } catch (const Refusal& reason) {
            return reason.reason();
        }
    }

    std::unique_ptr<LoadedContext> context = test::contextOf(test::sampleContext());
    Counts counts;
    FailureTally failures;
    std::uint64_t rest = 0;
};

/// One of each fate; the branching of the last but one fails.
constexpr std::string_view s_records = R"({"id":"P-1","tree":true})"
                                       "\n\n"
                                       R"({"id":"P-2","tree":null})"
                                       "\n"
                                       R"({"id":"P-3","tre":null})"
                                       "\n"
                                       R"({"id":"P-4","branch":true,"tree":{"serial":"Unit","in":[[10,10]]}})"
                                       "\n"
                                       R"({"id":"P-\u0035","tree":false})"
                                       "\n";

TEST_F(KeptAnswersTest, comeToTheSameAsWhenTheyWereMade) {
    const std::string more = std::string(s_records) + "{}\n";
    for (const ConvertOptions options :
         {ConvertOptions{}, ConvertOptions{.branchesAll = true, .withInput = true, .withTrace = true}}) {
        const std::string answers = answersTo(s_records, options);
        EXPECT_EQ(counts.failed, 2U);
        const KeptAnswers kept = skip(answers, more, options);
        EXPECT_EQ(kept.counts.converted, counts.converted);
        EXPECT_EQ(kept.counts.failed, counts.failed);
        EXPECT_EQ(kept.counts.malformed, counts.malformed);
        EXPECT_EQ(kept.failures.mostFrequent(), failures.mostFrequent());
        EXPECT_EQ(rest, 7U);
    }
    EXPECT_EQ(skip("", s_records).counts.records(), 0U);
    EXPECT_EQ(rest, 1U);
    static_cast<void>(skip(answersTo(s_records), s_records));
    EXPECT_EQ(rest, 0U) << "nothing is left";
}

TEST_F(KeptAnswersTest, everyBeginningIsKept) {
    const std::string answers = answersTo(s_records);
    std::uint64_t count = 0;
    for (std::size_t end = 0; end != std::string::npos; end = answers.find('\n', end), ++count) {
        end += count > 0 ? 1 : 0;
        EXPECT_EQ(skip(answers.substr(0, end), s_records).counts.records(), count);
        EXPECT_EQ(rest, count == 0 ? 1 : count == 5 ? 0 : count + 2);
    }
    EXPECT_EQ(count, 6U);
}

TEST_F(KeptAnswersTest, thoseToOtherRecordsAreRefused) {
    const std::string records = test::repeated(R"({"id":"P-1","tree":true})"
                                               "\n",
                                               3'000);
    std::string answers = answersTo(records);
    EXPECT_EQ(refusal(answers, records), "none");
    EXPECT_EQ(refusal(answers + answers, records), "it holds more answers than there are records");
    EXPECT_EQ(refusal(answers, records, {.withInput = true}).substr(0, 9), "its line ");
    EXPECT_EQ(refusal(answers.substr(0, answers.size() - 1), records),
              "its line 3,000 is not the answer that line 3,000 of the records gets now");
    answers.replace(answers.find("P-1", answers.size() / 2), 3, "P-2");
    EXPECT_EQ(refusal(answers, records).substr(0, 9), "its line ");
}

TEST_F(KeptAnswersTest, failureToReadTheRecordsIsNoMismatch) {
    RecordConverter converter(*context, {});
    const std::string answers = answersTo(s_records);
    TextSource answersSource(answers);
    TextSource recordsSource(s_records.substr(0, 60), 1000, EIO);
    LineReader reader(recordsSource, 1000);
    EXPECT_THROW(static_cast<void>(skipAnswered(answersSource, reader, converter)), StreamFailure);
}

/// The answer to P-2 of s_twoRecords when there was no memory for it.
constexpr std::string_view s_exhausted =
    R"({"id":"P-2","result":-2147024882,"code":"0x8007000E","errors":["ERROR : out of memory"],"map":[]})"
    "\n";
constexpr std::string_view s_twoRecords = R"({"id":"P-1","tree":true})"
                                          "\n"
                                          R"({"id":"P-2","tree":true})"
                                          "\n";
constexpr const char* s_firstIsAnother = "its line 1 is not the answer that line 1 of the records gets now";

TEST_F(KeptAnswersTest, keepsAnswersThatWereGivenForWantOfMemory) {
    const std::string first = answersTo(s_twoRecords.substr(0, s_twoRecords.find('\n') + 1));
    const KeptAnswers kept = skip(first + std::string(s_exhausted), std::string(s_twoRecords) + "{}\n");
    EXPECT_EQ(kept.counts.converted, 1U);
    EXPECT_EQ(kept.counts.failed, 1U);
    EXPECT_EQ(kept.failures.mostFrequent(),
              (std::vector<std::pair<std::string_view, std::uint64_t>>{{"ERROR : out of memory", 1U}}));
    EXPECT_EQ(rest, 3U);
}

TEST_F(KeptAnswersTest, anAnswerForWantOfMemoryDoesNotHideOtherOptions) {
    const std::string first = answersTo(s_twoRecords.substr(0, s_twoRecords.find('\n') + 1));
    EXPECT_EQ(refusal(first + std::string(s_exhausted), s_twoRecords, {.withInput = true}), s_firstIsAnother);
    const std::string other = R"({"id":"P-1","result":0,"map":[]})"
                              "\n";
    EXPECT_EQ(refusal(other + std::string(s_exhausted), s_twoRecords), s_firstIsAnother);
    EXPECT_EQ(refusal(s_exhausted, s_twoRecords), s_firstIsAnother) << "another id";
}

TEST_F(KeptAnswersTest, keepsLinesThatWereMalformedForWantOfMemory) {
    const auto ofLine = [&](const std::string& fields) {
        return refusal("{" + fields + "}\n", s_twoRecords);
    };
    EXPECT_EQ(skip(R"({"line":1,"malformed":"out of memory"})"
                   "\n",
                   s_twoRecords)
                  .counts.malformed,
              1U);
    EXPECT_EQ(rest, 2U);
    EXPECT_EQ(ofLine(R"("line":1,"id":"P-1","malformed":"out of memory")"), "none");
    EXPECT_EQ(ofLine(R"("line":1,"id":"P-2","malformed":"out of memory")"), s_firstIsAnother);
    EXPECT_EQ(ofLine(R"("line":2,"malformed":"out of memory")"), s_firstIsAnother);
    EXPECT_EQ(ofLine(R"("line":1,"malformed":"out of luck")"), s_firstIsAnother);
    EXPECT_EQ(ofLine(R"("line":1,"malformed":"out of memory","more":1)"), s_firstIsAnother);
}

} // namespace
} // namespace quelt::host
