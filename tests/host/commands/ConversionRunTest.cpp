#include "commands/ConversionRun.h"

#include "commands/RecordConverter.h"

#include "host/support/MemoryStreams.h"
#include "host/support/Samples.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <gtest/gtest.h>
#include <mutex>
#include <sstream>
#include <thread>

namespace quelt::host {
namespace {

using test::contextOf;
using test::sampleContext;
using test::TextSink;
using test::TextSource;

/// `count` records of all fates, told apart by their ids.
std::string manyRecords(int count) {
    std::string text;
    for (int number = 0; number < count; ++number) {
        const std::string id = R"({"id":")" + std::to_string(number) + R"(",)";
        switch (number % 5) {
        case 0:
            text += id + (number % 2 == 0
                              ? R"("tree":true})"
                              : R"("tree":{"and":[{"eff":"EFF-7"},{"option":"Engine","in":["V6"]}]}})");
            break;
        case 1:
            text +=
                id +
                R"("list":[{"option":"Colour","of":"Bus","in":["Blue"]},{"date":[["2020-01-01",null]]}]})";
            break;
        case 2:
            text += id + R"("tree":null})";
            break;
        case 3:
            text += id + R"("lst":[]})";
            break;
        default:
            text +=
                "\n" + id + R"("list":[{"serial":"Unit","in":[[10,20]]},{"option":"Engine","in":["V6"]}]})";
        }
        text += '\n';
    }
    return text;
}

class ConversionRunTest : public testing::Test {
protected:
    RunResult run(ByteSource& source, ByteSink& sink, unsigned jobs, ConvertOptions options = {}) {
        Console console{.input = source, .output = sink, .messages = messages};
        Progress progress(console, source.size());
        return runConversion([&] { return std::make_unique<RecordConverter>(*context, options); }, jobs,
                             source, sink, progress);
    }

    std::unique_ptr<LoadedContext> context = contextOf(sampleContext());
    std::ostringstream messages;
};

TEST_F(ConversionRunTest, answersEveryRecordInOrder) {
    const std::string text = manyRecords(100);
    TextSource source(text);
    TextSink sink;
    const RunResult result = run(source, sink, 1);
    EXPECT_EQ(result.counts.records(), 100U);
    EXPECT_EQ(result.counts.malformed, 20U);
    EXPECT_EQ(result.counts.failed, 20U);
    std::istringstream answers(sink.text());
    int number = 0;
    for (std::string line; std::getline(answers, line); ++number) {
        EXPECT_NE(line.find(R"("id":")" + std::to_string(number) + "\""), std::string::npos) << line;
    }
    EXPECT_EQ(number, 100);
}

TEST_F(ConversionRunTest, jobsDoNotChangeTheAnswers) {
    const std::string text = manyRecords(3'000);
    for (const ConvertOptions options :
         {ConvertOptions{}, ConvertOptions{.withInput = true, .withTrace = true},
          ConvertOptions{.branchesAll = true, .withTrace = true}}) {
        TextSource one(text);
        TextSink expected;
        const RunResult expectedResult = run(one, expected, 1, options);
        for (const unsigned jobs : {2U, 3U, 8U}) {
            TextSource source(text, 5'000); // a batch each
            TextSink sink;
            const RunResult result = run(source, sink, jobs, options);
            EXPECT_TRUE(sink.text() == expected.text()) << jobs;
            EXPECT_EQ(result.counts.converted, expectedResult.counts.converted);
            EXPECT_EQ(result.counts.failed, expectedResult.counts.failed);
            EXPECT_EQ(result.counts.malformed, expectedResult.counts.malformed);
            EXPECT_EQ(result.failures.mostFrequent(), expectedResult.failures.mostFrequent());
        }
    }
}

TEST_F(ConversionRunTest, emptyInputHasNoAnswers) {
    for (const unsigned jobs : {1U, 4U}) {
        TextSource source("");
        TextSink sink;
        const RunResult result = run(source, sink, jobs);
        EXPECT_EQ(result.counts.records(), 0U);
        EXPECT_EQ(sink.text(), "");
        EXPECT_FALSE(result.readFailure || result.writeFailure);
    }
}

TEST_F(ConversionRunTest, whatWasReadBeforeAFailureIsAnswered) {
    const std::string text = manyRecords(10'000);
    for (const unsigned jobs : {1U, 3U}) {
        TextSource source(text, 4096, EIO);
        TextSink sink;
        const RunResult result = run(source, sink, jobs);
        ASSERT_TRUE(result.readFailure.has_value());
        EXPECT_EQ(result.readFailure->code(), EIO);
        EXPECT_EQ(result.counts.records(), 10'000U);
        EXPECT_EQ(std::count(sink.text().begin(), sink.text().end(), '\n'), 10'000);
    }
}

TEST_F(ConversionRunTest, failureToWriteEndsTheRun) {
    const std::string text = manyRecords(20'000);
    for (const unsigned jobs : {1U, 3U}) {
        TextSource source(text);
        TextSink sink(100'000);
        const RunResult result = run(source, sink, jobs);
        ASSERT_TRUE(result.writeFailure.has_value());
        EXPECT_EQ(result.writeFailure->code(), ENOSPC);
        EXPECT_LE(sink.text().size(), 100'000U);
        EXPECT_LT(result.counts.records(), 20'000U);
    }
}

/// Keeps whether it was given whole lines, each time.
class LinesSink : public test::TextSink {
public:
    void write(std::string_view bytes) override {
        m_areWhole = m_areWhole && (bytes.empty() || bytes.ends_with('\n'));
        TextSink::write(bytes);
    }
    [[nodiscard]] bool areWhole() const { return m_areWhole; }

private:
    bool m_areWhole = true;
};

TEST_F(ConversionRunTest, writesWholeLines) {
    const std::string text = manyRecords(20'000);
    for (const unsigned jobs : {1U, 3U}) {
        for (const std::size_t piece : {1'000U, 1'000'000U}) {
            TextSource source(text, piece);
            LinesSink sink;
            EXPECT_TRUE(run(source, sink, jobs).isWhole());
            EXPECT_TRUE(sink.areWhole());
            EXPECT_GT(sink.text().size(), std::size_t{2} << 20U) << "written in several pieces";
        }
    }
}

/// Throws something that is no failure of the stream.
class BrokenSink : public ByteSink {
public:
    void write(std::string_view /*bytes*/) override { throw std::bad_alloc(); }
};

TEST_F(ConversionRunTest, otherFailuresComeThrough) {
    const std::string text = manyRecords(5'000);
    for (const unsigned jobs : {1U, 3U}) {
        TextSource source(text);
        BrokenSink sink;
        EXPECT_THROW((void)run(source, sink, jobs), std::bad_alloc);
    }
}

/// Gives one line at a time and notes whether the one before was answered.
class WaitingSource : public ByteSource {
public:
    explicit WaitingSource(const TextSink& sink) : m_sink(sink) {}
    std::size_t read(char* data, std::size_t /*size*/) override {
        const std::string line = "{\"id\":\"x\",\"tree\":true}\n";
        m_isAnswered =
            m_isAnswered && std::count(m_sink.text().begin(), m_sink.text().end(), '\n') == m_given;
        if (m_given == 5) {
            return 0;
        }
        ++m_given;
        std::copy(line.begin(), line.end(), data);
        return line.size();
    }
    [[nodiscard]] bool isAnswered() const { return m_isAnswered; }

private:
    const TextSink& m_sink;
    int m_given = 0;
    bool m_isAnswered = true;
};

TEST_F(ConversionRunTest, answersDoNotWaitForMoreInput) {
    TextSink sink;
    WaitingSource source(sink);
    EXPECT_EQ(run(source, sink, 1).counts.converted, 5U);
    EXPECT_TRUE(source.isAnswered());
}

/// Counts what happens on one thread, for another that waits for it.
class Answered {
public:
    void note() {
        const std::lock_guard lock(m_mutex);
        ++m_count;
        m_changed.notify_all();
    }
    void await(int count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_count >= count; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0;
};

/// Answers records with their ids, the first one when as many others have been answered as fit beside it.
class LateConverter : public LineConverter {
public:
    LateConverter(Answered& answered, int others) : m_answered(answered), m_others(others) {}

private:
    void convertRecord(simdjson::dom::element root, Counts& counts) override {
        const std::string_view id = RecordReader::findId(root).value();
        if (id == "0") {
            m_answered.await(m_others);
        }
        m_writer.text(id);
        ++counts.converted;
        m_answered.note();
    }

    Answered& m_answered;
    int m_others;
};

TEST_F(ConversionRunTest, laterBatchesWaitForAnEarlierOne) {
    constexpr int count = 200;
    const std::string text = manyRecords(count);
    std::string expected;
    for (int number = 0; number < count; ++number) {
        expected += "\"" + std::to_string(number) + "\"\n";
    }
    for (const unsigned jobs : {2U, 5U}) {
        Answered answered;
        TextSource source(text, 1); // each record is a batch
        TextSink sink;
        Console console{.input = source, .output = sink, .messages = messages};
        Progress progress(console, std::nullopt);
        const int others = static_cast<int>(jobs) + 2;
        const RunResult result = runConversion(
            [&] { return std::make_unique<LateConverter>(answered, others); }, jobs, source, sink, progress);
        EXPECT_EQ(result.counts.records(), 200U);
        EXPECT_EQ(sink.text(), expected) << jobs;
    }
}

/// Reads well for a while, fails once otherwise than streams do, and notes whether it is asked again.
class BrokenSource : public TextSource {
public:
    using TextSource::TextSource;
    std::size_t read(char* data, std::size_t size) override {
        if (++m_reads == s_sound + 1) {
            throw std::bad_alloc();
        }
        return TextSource::read(data, size);
    }
    [[nodiscard]] bool isReadOn() const { return m_reads > s_sound + 1; }

private:
    static constexpr int s_sound = 20;
    int m_reads = 0;
};

/// Takes its time to go when an exception passes, so that others might read on meanwhile.
class SlowToGo : public RecordConverter {
public:
    using RecordConverter::RecordConverter;
    ~SlowToGo() override {
        if (std::uncaught_exceptions() > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
};

TEST_F(ConversionRunTest, nobodyReadsOnBehindAFailure) {
    const std::string text = manyRecords(2'000);
    TextSource all(text);
    TextSink expected;
    static_cast<void>(run(all, expected, 1));
    for (const unsigned jobs : {2U, 5U}) {
        BrokenSource source(text, 100);
        TextSink sink;
        Console console{.input = source, .output = sink, .messages = messages};
        Progress progress(console, std::nullopt);
        const MakeLineConverter make = [&] { return std::make_unique<SlowToGo>(*context, ConvertOptions{}); };
        EXPECT_THROW((void)runConversion(make, jobs, source, sink, progress), std::bad_alloc);
        EXPECT_FALSE(source.isReadOn()) << jobs;
        EXPECT_TRUE(expected.text().starts_with(sink.text())) << jobs;
    }
}

/// Counts the records that are converted.
class CountingConverter : public LineConverter {
public:
    explicit CountingConverter(std::atomic<int>& count) : m_count(count) {}

private:
    void convertRecord(simdjson::dom::element root, Counts& counts) override {
        m_writer.text(RecordReader::findId(root).value());
        ++counts.converted;
        ++m_count;
    }

    std::atomic<int>& m_count;
};

/// Refuses what is written, and notes that.
class RefusingSink : public ByteSink {
public:
    explicit RefusingSink(Answered& refusals) : m_refusals(refusals) {}
    void write(std::string_view /*bytes*/) override {
        m_refusals.note();
        throw StreamFailure(EPIPE);
    }

private:
    Answered& m_refusals;
};

/// Gives a record, and the next one a while after what came of the first was refused.
class LateSource : public TextSource {
public:
    LateSource(std::string_view text, std::size_t piece, Answered& refusals)
        : TextSource(text, piece), m_refusals(refusals) {}
    std::size_t read(char* data, std::size_t size) override {
        if (++m_reads == 2) {
            m_refusals.await(1);
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return TextSource::read(data, size);
    }

private:
    Answered& m_refusals;
    int m_reads = 0;
};

TEST_F(ConversionRunTest, whatIsReadBehindTheEndIsNotConverted) {
    const std::string record = "{\"id\":\"x\",\"tree\":true}\n";
    const std::string text = test::repeated(record, 2);
    Answered refusals;
    std::atomic<int> count = 0;
    LateSource source(text, record.size(), refusals);
    RefusingSink sink(refusals);
    Console console{.input = source, .output = sink, .messages = messages};
    Progress progress(console, std::nullopt);
    const RunResult result =
        runConversion([&] { return std::make_unique<CountingConverter>(count); }, 2, source, sink, progress);
    EXPECT_TRUE(result.writeFailure.has_value());
    EXPECT_EQ(count, 1);
}

} // namespace
} // namespace quelt::host
