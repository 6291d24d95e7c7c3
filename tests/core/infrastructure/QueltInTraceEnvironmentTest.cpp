#include "infrastructure/QueltInTraceClass.h"
#include "infrastructure/QueltInTraceSink.h"

#include "core/infrastructure/OnThreads.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// The environment is read when the core is loaded, so each case here runs in a process of its own: a death
// test in the thread-safe style starts the program anew, under the environment that is set then.

namespace {

using Wanted = QueltInTraceCapture::Wanted;

QueltInTraceClass s_trace("SampleClass", "SampleDomain");

#if defined(_WIN32)
void setTraceVariable(const std::string& value) {
    _putenv_s("QUELT_TRACE", value.c_str());
}
void removeTraceVariable() {
    _putenv_s("QUELT_TRACE", "");
}
#else
void setTraceVariable(const std::string& value) {
    setenv("QUELT_TRACE", value.c_str(), 1);
}
void removeTraceVariable() {
    unsetenv("QUELT_TRACE");
}
#endif

class QueltInTraceEnvironmentDeathTest : public testing::Test {
protected:
    QueltInTraceEnvironmentDeathTest() {
        testing::GTEST_FLAG(death_test_style) = "threadsafe";
        std::filesystem::remove(m_file);
    }
    ~QueltInTraceEnvironmentDeathTest() override {
        removeTraceVariable();
        std::filesystem::remove(m_file);
    }

    std::string fileText() const {
        std::ifstream stream(m_file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    // Tests may run at the same time; each has a file of its own in the folder of its build.
    const std::filesystem::path m_file = std::string("QueltInTraceEnvironment.") +
                                         testing::UnitTest::GetInstance()->current_test_info()->name() +
                                         ".txt";
};

/// The shapes of lines that a method writes, those that want an activated trace only when it is.
void traceLikeAMethod() {
    if (s_trace.IsActivated() != 0) {
        s_trace.SetMethod("visit");
        s_trace.beginTrace(1).endTraceWithLineNumber(1, 120);
        s_trace.beginTrace(0) << "two"
                              << "\n"
                              << "lines";
        s_trace.endTrace(0);
    }
    s_trace.beginTrace(0) << QueltInTraceClass::GetError() << "a.cpp(" << 7 << ")";
    s_trace.endTrace(0);
    s_trace.beginTrace(0) << QueltInTraceClass::GetErrorIndent() << "ERROR : bad";
    s_trace.endTrace(0);
    s_trace.beginTrace(0) << "WARNING : odd";
    s_trace.endTrace(0);
    if (s_trace.IsActivated() != 0) {
        s_trace.beginTrace(2).endTraceWithLineNumber(2, 120);
        s_trace.RemoveMethod();
    }
}

constexpr const char* s_everything = "SampleDomain SampleClass::visit > 120\n"
                                     "SampleDomain SampleClass::visit: two\\nlines\n"
                                     "SampleDomain SampleClass::visit: [ERROR] a.cpp(7)\n"
                                     "SampleDomain SampleClass::visit:         ERROR : bad\n"
                                     "SampleDomain SampleClass::visit: WARNING : odd\n"
                                     "SampleDomain SampleClass::visit < 120\n";

/// Ends the child with status 0 when `passed`, without running what the parent alone should run.
[[noreturn]] void endChild(bool passed) {
    std::exit(passed ? 0 : 1);
}

[[noreturn]] void traceAndEnd() {
    traceLikeAMethod();
    endChild(true);
}

[[noreturn]] void captureAndEnd(Wanted wanted, std::size_t expectedLines) {
    QueltInTraceCapture capture(wanted);
    traceLikeAMethod();
    endChild(capture.lines().size() == expectedLines);
}

[[noreturn]] void traceOnThreadsAndEnd() {
    onThreads(4, [](unsigned int /*number*/) {
        for (int count = 0; count < 100; ++count) {
            traceLikeAMethod();
        }
    });
    endChild(true);
}

/// Traces from its destructor, which runs after everything thread_local is gone, and before the core goes.
struct LateTracer {
    ~LateTracer() { traceLikeAMethod(); }
};

[[noreturn]] void traceWhileEnding() {
    static const LateTracer late;
    traceLikeAMethod();
    endChild(true);
}

} // namespace

TEST_F(QueltInTraceEnvironmentDeathTest, WithoutItErrorsAndWarningsGoToStandardError) {
    removeTraceVariable();
    EXPECT_EXIT(traceAndEnd(), testing::ExitedWithCode(0),
                "SampleDomain SampleClass: \\[ERROR\\] a.cpp\\(7\\)\n"
                "SampleDomain SampleClass:         ERROR : bad\n"
                "SampleDomain SampleClass: WARNING : odd\n");
    setTraceVariable("");
    EXPECT_EXIT(captureAndEnd(Wanted::unconditionalLines, 3), testing::ExitedWithCode(0), "^$")
        << "empty as unset";
}

TEST_F(QueltInTraceEnvironmentDeathTest, NamesStandardError) {
    setTraceVariable("stderr");
    EXPECT_EXIT(traceAndEnd(), testing::ExitedWithCode(0),
                "SampleDomain SampleClass::visit > 120\n"
                "SampleDomain SampleClass::visit: two\\\\nlines\n"
                "SampleDomain SampleClass::visit: \\[ERROR\\] a.cpp\\(7\\)\n"
                "SampleDomain SampleClass::visit:         ERROR : bad\n"
                "SampleDomain SampleClass::visit: WARNING : odd\n"
                "SampleDomain SampleClass::visit < 120\n");
}

TEST_F(QueltInTraceEnvironmentDeathTest, NamesAFileThatIsAppendedTo) {
    std::ofstream(m_file, std::ios::binary) << "there before\n";
    setTraceVariable(m_file.string());
    EXPECT_EXIT(traceAndEnd(), testing::ExitedWithCode(0), "^$");
    std::string whole = "there before\n";
    whole += s_everything;
    EXPECT_EQ(fileText(), whole);
}

TEST_F(QueltInTraceEnvironmentDeathTest, FallsBackToStandardErrorWhenTheFileCannotBeOpened) {
    setTraceVariable((m_file / "below-a-file-that-is-not-there" / "trace.txt").string());
    EXPECT_EXIT(traceAndEnd(), testing::ExitedWithCode(0),
                "QUELT_TRACE: cannot append to .*trace.txt\n"
                "SampleDomain SampleClass::visit > 120\n");
}

TEST_F(QueltInTraceEnvironmentDeathTest, LinesGoToTheSinkBesideTheCapture) {
    setTraceVariable(m_file.string());
    EXPECT_EXIT(captureAndEnd(Wanted::everything, 6), testing::ExitedWithCode(0), "^$");
    EXPECT_EQ(fileText(), s_everything);
}

TEST_F(QueltInTraceEnvironmentDeathTest, CapturesOfErrorsAndWarningsSeeTheSameAsWithoutIt) {
    setTraceVariable(m_file.string());
    EXPECT_EXIT(captureAndEnd(Wanted::unconditionalLines, 3), testing::ExitedWithCode(0), "^$");
    EXPECT_EQ(fileText(), s_everything);
}

TEST_F(QueltInTraceEnvironmentDeathTest, LinesOfThreadsComeWhole) {
    setTraceVariable(m_file.string());
    EXPECT_EXIT(traceOnThreadsAndEnd(), testing::ExitedWithCode(0), "^$");
    std::ifstream stream(m_file);
    std::string line;
    int count = 0;
    while (std::getline(stream, line)) {
        ++count;
        ASSERT_NE(std::string(s_everything).find(line + '\n'), std::string::npos) << line;
    }
    EXPECT_EQ(count, 4 * 100 * 6);
}

TEST_F(QueltInTraceEnvironmentDeathTest, WhatIsDestroyedLastTracesToo) {
    setTraceVariable(m_file.string());
    EXPECT_EXIT(traceWhileEnding(), testing::ExitedWithCode(0), "^$");
    EXPECT_EQ(fileText(), std::string(s_everything) + std::string(s_everything));
}
