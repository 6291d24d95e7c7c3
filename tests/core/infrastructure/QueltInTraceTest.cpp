#include "infrastructure/QueltInTraceClass.h"
#include "infrastructure/QueltInTraceSink.h"

#include "infrastructure/QueltInMemory.h"

#include "core/infrastructure/OnThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using Wanted = QueltInTraceCapture::Wanted;

QueltInTraceClass s_trace("SampleClass", "SampleDomain");
QueltInTraceClass s_otherTrace("OtherClass", "OtherDomain");

QueltInTraceLine line(std::string_view method, std::string_view text, int level = 0, int number = 0) {
    return {"SampleClass", "SampleDomain", method, level, number, text};
}

void message(QueltInTraceClass& trace, const char* text) {
    trace.beginTrace(0) << text;
    trace.endTrace(0);
}

/// The sink of the process for as long as it lives; keeps the lines of all threads.
class CollectingSink : public QueltInTraceSink {
public:
    CollectingSink() : m_pFormer(replace(this)) {}
    ~CollectingSink() override { replace(m_pFormer); }
    void write(const QueltInTraceLine& written) override {
        EXPECT_FALSE(m_isWriting.exchange(true)) << "one thread at a time";
        m_lines.push_back({written.className, written.domainName, keep(written.methodName), written.level,
                           written.lineNumber, keep(written.text)});
        m_isWriting = false;
    }
    const std::vector<QueltInTraceLine>& lines() const { return m_lines; }
    QueltInTraceSink* former() const { return m_pFormer; }

private:
    std::string_view keep(std::string_view text) { return m_texts.emplace_back(text); }

    QueltInTraceSink* m_pFormer;
    std::vector<QueltInTraceLine> m_lines;
    std::deque<std::string> m_texts;
    std::atomic<bool> m_isWriting = false;
};

} // namespace

TEST(QueltInTraceClass, IsInactiveUnlessSomebodyAsks) {
    EXPECT_EQ(s_trace.IsActivated(), 0);
    const QueltInTraceCapture quiet(Wanted::unconditionalLines);
    EXPECT_EQ(s_trace.IsActivated(), 0);
    {
        const QueltInTraceCapture everything(Wanted::everything);
        EXPECT_NE(s_trace.IsActivated(), 0);
        EXPECT_NE(s_otherTrace.IsActivated(), 0);
        {
            const QueltInTraceCapture innermost(Wanted::unconditionalLines);
            EXPECT_EQ(s_trace.IsActivated(), 0) << "the innermost capture decides";
        }
        EXPECT_NE(s_trace.IsActivated(), 0);
        int elsewhere = -1;
        std::thread([&] { elsewhere = s_trace.IsActivated(); }).join();
        EXPECT_EQ(elsewhere, 0) << "a capture is its own thread's";
    }
    EXPECT_EQ(s_trace.IsActivated(), 0);
}

TEST(QueltInTraceClass, LinesCarryClassDomainMethodLevelAndNumber) {
    QueltInTraceCapture capture(Wanted::everything);
    s_trace.SetMethod("visit");
    s_trace.beginTrace(1).endTraceWithLineNumber(1, 120);
    message(s_trace, "hello");
    s_trace.beginTrace(2).endTraceWithLineNumber(2, 120);
    s_trace.RemoveMethod();
    message(s_otherTrace, "from elsewhere");
    const std::vector<QueltInTraceLine> expected = {
        line("visit", "", 1, 120),
        line("visit", "hello"),
        line("visit", "", 2, 120),
        {"OtherClass", "OtherDomain", "", 0, 0, "from elsewhere"},
    };
    EXPECT_EQ(capture.lines(), expected);
    capture.clear();
    EXPECT_TRUE(capture.lines().empty());
    message(s_trace, "again");
    EXPECT_EQ(capture.lines(), std::vector{line("", "again")});
    EXPECT_STREQ(s_trace.getClassName(), "SampleClass");
    EXPECT_STREQ(s_trace.getDomainName(), "SampleDomain");
}

TEST(QueltInTraceClass, AppendsTextsNumbersAndPointers) {
    const QueltInTraceCapture capture(Wanted::unconditionalLines);
    s_trace.beginTrace(0) << "a" << static_cast<const char*>(nullptr) << 0 << "," << INT_MIN << "," << INT_MAX
                          << "," << UINT_MAX << "," << static_cast<const void*>(nullptr) << ","
                          << reinterpret_cast<const void*>(std::uintptr_t{0xDEADBEEF10});
    s_trace.endTrace(0);
    EXPECT_EQ(capture.lines(),
              std::vector{line("", "a0,-2147483648,2147483647,4294967295,0x0,0xdeadbeef10")});
}

TEST(QueltInTraceClass, MethodsNestForEachObject) {
    const QueltInTraceCapture capture(Wanted::everything);
    s_trace.SetMethod("outer");
    s_otherTrace.SetMethod("foreign");
    s_trace.SetMethod("inner");
    message(s_trace, "1");
    s_trace.RemoveMethod();
    message(s_trace, "2");
    s_trace.RemoveMethod();
    message(s_trace, "3");
    s_trace.RemoveMethod(); // none is open any more
    message(s_otherTrace, "4");
    s_otherTrace.RemoveMethod();
    s_trace.SetMethod(nullptr);
    message(s_trace, "5");
    s_trace.RemoveMethod();
    const std::vector<QueltInTraceLine> expected = {
        line("inner", "1"), line("outer", "2"),
        line("", "3"),      {"OtherClass", "OtherDomain", "foreign", 0, 0, "4"},
        line("", "5"),
    };
    EXPECT_EQ(capture.lines(), expected);
}

TEST(QueltInTraceClass, LinesWithinLinesStayWhole) {
    const QueltInTraceCapture capture(Wanted::everything);
    s_trace.beginTrace(0) << "outer ";
    s_otherTrace.beginTrace(0) << "foreign";
    message(s_trace, "inner");
    s_trace << "goes on";
    s_otherTrace << " goes on";
    s_trace.endTrace(0);
    s_otherTrace.endTrace(0);
    const std::vector<QueltInTraceLine> expected = {
        line("", "inner"),
        line("", "outer goes on"),
        {"OtherClass", "OtherDomain", "", 0, 0, "foreign goes on"},
    };
    EXPECT_EQ(capture.lines(), expected);
}

TEST(QueltInTraceClass, EndsTheLineOfItsLevelOnly) {
    const QueltInTraceCapture capture(Wanted::everything);
    s_trace << "nothing is begun";
    s_trace.endTrace(0);
    s_trace.beginTrace(1) << "entry";
    s_trace.endTrace(0);
    EXPECT_TRUE(capture.lines().empty());
    s_trace.endTraceWithLineNumber(1, 5);
    s_trace.endTraceWithLineNumber(1, 6);
    EXPECT_EQ(capture.lines(), std::vector{line("", "entry", 1, 5)});
}

TEST(QueltInTraceClass, UnfinishedLinesDoNotPileUp) {
    const QueltInTraceCapture capture(Wanted::everything);
    for (int count = 0; count < 1000; ++count) {
        s_trace.beginTrace(count);
    }
    for (int count = 0; count < 1000; ++count) {
        s_trace.endTrace(count);
    }
    EXPECT_EQ(capture.lines().size(), 64U);
    EXPECT_EQ(capture.lines().back(), line("", "", 999));
}

TEST(QueltInTraceClass, ErrorPrefixes) {
    EXPECT_STREQ(QueltInTraceClass::GetError(), "[ERROR] ");
    EXPECT_STREQ(QueltInTraceClass::GetErrorIndent(), "        ");
}

TEST(QueltInTraceClass, DeepNestingOfMethodsGoes) {
    const QueltInTraceCapture capture(Wanted::unconditionalLines);
    for (int depth = 0; depth < 100000; ++depth) {
        s_trace.SetMethod(depth == 50000 ? "middle" : "deep");
    }
    for (int depth = 99999; depth > 50000; --depth) {
        s_trace.RemoveMethod();
    }
    message(s_trace, "here");
    for (int depth = 0; depth <= 50000; ++depth) {
        s_trace.RemoveMethod();
    }
    message(s_trace, "out");
    EXPECT_EQ(capture.lines(), (std::vector{line("middle", "here"), line("", "out")}));
}

TEST(QueltInTraceCapture, InnermostTakesTheLines) {
    CollectingSink sink;
    QueltInTraceCapture outer(Wanted::unconditionalLines);
    message(s_trace, "1");
    {
        const QueltInTraceCapture inner(Wanted::everything);
        message(s_trace, "2");
        EXPECT_EQ(inner.lines(), std::vector{line("", "2")});
    }
    message(s_trace, "3");
    EXPECT_EQ(outer.lines(), (std::vector{line("", "1"), line("", "3")}));
    EXPECT_TRUE(sink.lines().empty());
}

TEST(QueltInTraceCapture, ReportsAreErrorsAndWarnings) {
    CollectingSink sink;
    QueltInTraceCapture capture(Wanted::reports);
    EXPECT_EQ(s_trace.IsActivated(), 0);
    for (const char* const text : {"", "at root", "E", "WARN", "[ERROR]x", "       seven", "error"}) {
        s_trace.writeMessage(text);
        message(s_trace, text);
    }
    s_trace.writeMessage("Old number : ", 12);
    EXPECT_TRUE(capture.lines().empty());
    const std::vector<const char*> reports = {"[ERROR] file(12)", "        what", "ERROR", "ERRORS",
                                              "WARNING : none"};
    for (const char* const text : reports) {
        s_trace.writeMessage(text);
        message(s_trace, text);
    }
    s_trace.writeMessage("ERR", "OR : in pieces, ", 7);
    s_trace.writeMessage(nullptr, "WARNING");
    std::vector<QueltInTraceLine> expected;
    for (const char* const text : reports) {
        expected.insert(expected.end(), 2, line("", text));
    }
    expected.push_back(line("", "ERROR : in pieces, 7"));
    expected.push_back(line("", "WARNING"));
    EXPECT_EQ(capture.lines(), expected);
    EXPECT_TRUE(sink.lines().empty());
}

TEST(QueltInTraceCapture, MayCloseOutOfOrder) {
    CollectingSink sink;
    std::optional<QueltInTraceCapture> outer(Wanted::everything);
    std::optional<QueltInTraceCapture> inner(Wanted::unconditionalLines);
    outer.reset();
    EXPECT_EQ(s_trace.IsActivated(), 0);
    message(s_trace, "1");
    EXPECT_EQ(inner->lines(), std::vector{line("", "1")});
    inner.reset();
    message(s_trace, "2");
    EXPECT_EQ(sink.lines(), std::vector{line("", "2")});
}

TEST(QueltInTraceCapture, LinesSurviveTheArenaTheyWereWrittenIn) {
    const QueltInTraceCapture capture(Wanted::everything);
    constexpr const char* text = "a message that is too long for any string to keep inside itself";
    {
        QueltInArena arena;
        const QueltInArenaScope scope(arena);
        s_trace.SetMethod("a method name that is too long for any string, too");
        message(s_trace, text);
        s_trace.RemoveMethod();
        EXPECT_EQ(arena.bytesInUse(), 0U);
    }
    EXPECT_EQ(capture.lines().front().text, text);
}

TEST(QueltInTraceCapture, LinesSurviveTheLibraryThatWroteThem) {
    QueltInTraceCapture capture(Wanted::everything);
    for (int round = 0; round < 2; ++round) {
        capture.clear();
        std::vector<std::string> names; // goes as the texts of a library go when it is unloaded
        for (int number = 0; number < 40; ++number) {
            names.push_back("a class in a library, " + std::to_string(number));
        }
        for (const std::string& name : names) {
            QueltInTraceClass trace(name.c_str(), names.front().c_str());
            message(trace, "here");
            message(s_trace, "there");
        }
        for (std::string& name : names) {
            name.assign(name.size(), 'x');
        }
        names.clear();
        ASSERT_EQ(capture.lines().size(), 80U);
        for (std::size_t number = 0; number < 40; ++number) {
            EXPECT_EQ(capture.lines()[2 * number].className,
                      "a class in a library, " + std::to_string(number));
            EXPECT_EQ(capture.lines()[2 * number].domainName, "a class in a library, 0");
            EXPECT_EQ(capture.lines()[2 * number + 1], line("", "there"));
        }
    }
}

TEST(QueltInTraceSink, TakesWhatNoCaptureTakes) {
    CollectingSink sink;
    EXPECT_EQ(sink.former(), nullptr) << "null stands for the default sink";
    {
        CollectingSink second;
        EXPECT_EQ(second.former(), &sink);
        message(s_trace, "1");
        EXPECT_EQ(second.lines(), std::vector{line("", "1")});
    }
    message(s_trace, "2");
    EXPECT_EQ(sink.lines(), std::vector{line("", "2")});
}

TEST(QueltInTraceSink, LinesThatComeOutOfWritingAreDropped) {
    class Talkative : public QueltInTraceSink {
    public:
        void write(const QueltInTraceLine& /*written*/) override {
            ++m_count;
            message(s_trace, "written");
        }
        int m_count = 0;
    };
    Talkative sink;
    QueltInTraceSink::replace(&sink);
    message(s_trace, "1");
    message(s_trace, "2");
    EXPECT_EQ(QueltInTraceSink::replace(nullptr), &sink);
    EXPECT_EQ(sink.m_count, 2);
}

TEST(QueltInTraceClass, ThreadsShareAnObjectAndKeepTheirLinesWhole) {
    constexpr unsigned int threadCount = 4;
    constexpr int lineCount = 500;
    CollectingSink sink;
    const std::vector<std::string> methods = {"method0", "method1", "method2", "method3"};
    onThreads(threadCount, [&](unsigned int number) {
        const char* const method = methods[number].c_str();
        for (int count = 0; count < lineCount; ++count) {
            s_trace.SetMethod(method);
            s_trace.beginTrace(0) << "thread " << number << " line " << count;
            s_trace.endTrace(0);
            QueltInTraceCapture capture(count % 2 == 0 ? Wanted::everything : Wanted::unconditionalLines);
            EXPECT_EQ(s_trace.IsActivated(), count % 2 == 0 ? 1 : 0);
            message(s_trace, "captured");
            EXPECT_EQ(capture.lines(), std::vector{line(method, "captured")});
            s_trace.RemoveMethod();
        }
    });
    std::vector<int> next(threadCount, 0);
    for (const QueltInTraceLine& written : sink.lines()) {
        ASSERT_EQ(written.methodName.substr(0, 6), "method");
        const int number = written.methodName.back() - '0';
        int& count = next[static_cast<std::size_t>(number)];
        ASSERT_EQ(written.text, "thread " + std::to_string(number) + " line " + std::to_string(count));
        ++count;
    }
    EXPECT_EQ(next, std::vector<int>(threadCount, lineCount)) << "each thread's lines in their order";
}
