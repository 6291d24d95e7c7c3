// The program as it is built, started as people and scripts start it.

#include "host/support/Process.h"
#include "host/support/Samples.h"
#include "host/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace quelt::host {
namespace {

using test::End;
using test::repeated;
using test::sampleContext;
using test::Start;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

#if defined(_WIN32)
constexpr const char* s_nullDevice = "NUL";
#define skipOnWindows(reason) GTEST_SKIP() << reason // a macro, because it must leave the test
#else
constexpr const char* s_nullDevice = "/dev/null";
#define skipOnWindows(reason) static_cast<void>(reason)
#endif

class ProcessTest : public testing::Test {
protected:
    /// Starts the conversion of `start.input` with the sample context; more arguments stand in `start`.
    [[nodiscard]] End convert(Start start) const {
        start.arguments.insert(start.arguments.begin(), {"convert", "--context", context});
        return test::run(start);
    }

    test::TemporaryFolder folder;
    std::string context = folder.write("context.json", sampleContext());
    const std::string record = R"({"id":"P-1","tree":true})"
                               "\n";
    const std::string answer =
        R"({"id":"P-1","result":0,"map":[{"domain":3,"expression":{"kind":"effectivity","global":true}}]})"
        "\n";
};

TEST_F(ProcessTest, version) {
    const End end = test::run({.arguments = {"--version"}});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, "quelt-migrate " QUELT_VERSION "\n");
    EXPECT_EQ(end.messages, "");
}

TEST_F(ProcessTest, withoutCommand) {
    const End end = test::run({.arguments = {}});
    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.messages, HasSubstr("--help"));
}

TEST_F(ProcessTest, convertsAPipe) {
    const End end = convert({.arguments = {}, .input = record + record});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, answer + answer);
    EXPECT_THAT(end.messages, StartsWith("2 records in "));
    EXPECT_THAT(end.messages, Not(HasSubstr("\r")));
    EXPECT_THAT(end.messages, Not(HasSubstr("\x1b")));
}

TEST_F(ProcessTest, convertsAFileWithJobs) {
    const std::string records = folder.write("records.ndjson", repeated(record, 20'000));
    const End end = convert({.arguments = {records, "-o", folder.path("answers.ndjson"), "--jobs", "4"}});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, "");
    EXPECT_TRUE(folder.read("answers.ndjson") == repeated(answer, 20'000));
}

TEST_F(ProcessTest, inputsOfAllKinds) {
    const End empty = convert({.arguments = {}, .inputPath = s_nullDevice});
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(empty.output, "");
    EXPECT_THAT(empty.messages, StartsWith("0 records in "));

    const End marked = convert({.arguments = {}, .input = "\xEF\xBB\xBF" + record});
    EXPECT_EQ(marked.status, 0);
    EXPECT_EQ(marked.output, answer);

    const End carriageReturns = convert({.arguments = {},
                                         .input = R"({"id":"P-1","tree":true})"
                                                  "\r\n\r\n"});
    EXPECT_EQ(carriageReturns.status, 0);
    EXPECT_EQ(carriageReturns.output, answer);

    const End truncated = convert({.arguments = {}, .input = record + R"({"id":"P-2","tr)"});
    EXPECT_EQ(truncated.status, 1);
    EXPECT_EQ(truncated.output,
              answer + R"-({"line":2,"id":"P-2","malformed":"not JSON at column 16: the text ends )-"
                       R"-(too early (the input's last line, without a line end)"})-"
                       "\n");

    const End unfinished = convert({.arguments = {}, .input = R"({"id":"P-1","tree":true})"});
    EXPECT_EQ(unfinished.status, 0);
    EXPECT_EQ(unfinished.output, answer);

    const End notUtf8 = convert({.arguments = {}, .input = "{\"id\":\"\xFC\",\"tree\":true}\n" + record});
    EXPECT_EQ(notUtf8.status, 1);
    EXPECT_EQ(notUtf8.output, R"({"line":1,"malformed":"not JSON at column 8: not UTF-8"})"
                              "\n" +
                                  answer);

    // Ctrl+Z, which ends a text on some systems, is a byte like others.
    const End substitute = convert({.arguments = {}, .input = "\x1A\n" + record});
    EXPECT_EQ(substitute.status, 1);
    EXPECT_THAT(substitute.output, testing::EndsWith(answer));
    EXPECT_THAT(substitute.output, StartsWith(R"({"line":1,"malformed":"not JSON at column 1: )"));
}

TEST_F(ProcessTest, readsNoDirectory) {
    skipOnWindows("a directory cannot be opened as standard input");
    const End directory = convert({.arguments = {}, .inputPath = folder.path()});
    EXPECT_EQ(directory.status, 2);
    EXPECT_EQ(directory.output, "");
    EXPECT_EQ(directory.messages, "quelt-migrate: cannot read the records: Is a directory\n");
}

TEST_F(ProcessTest, pathsOfAllKinds) {
    const std::string longName(200, 'l'); // two of them are more than the 260 characters of old interfaces
    for (const std::string& name : {std::string("with blanks & (signs)"),
                                    std::string("Gr\xC3\xB6\xC3\x9F"
                                                "e \xE5\xA4\xA7\xE5\xB0\x8F \xF0\x9F\x9A\x9A"),
                                    longName + "/" + longName}) {
        const test::TemporaryFolder inner(folder, name);
        context = inner.write("context.json", sampleContext());
        const std::string records = inner.write("records.ndjson", record);
        const End end = convert({.arguments = {records, "-o", inner.path("answers.ndjson")}});
        EXPECT_EQ(end.status, 0) << end.messages;
        EXPECT_EQ(inner.read("answers.ndjson"), answer);

        const End missing = convert({.arguments = {inner.path("missing")}});
        EXPECT_EQ(missing.status, 2);
        EXPECT_EQ(missing.messages, "quelt-migrate: cannot read the records " + inner.path("missing") +
                                        ": No such file or directory\n");
    }
}

TEST_F(ProcessTest, outputThatCannotBeWritten) {
    skipOnWindows("there is no device that is always full");
    for (const char* const jobs : {"1", "2"}) {
        const End full = convert({.arguments = {"--jobs", jobs}, .input = record, .outputPath = "/dev/full"});
        EXPECT_EQ(full.status, 1);
        EXPECT_EQ(full.messages, "quelt-migrate: cannot write the answers: No space left on device\n");
        const End fullFile = convert({.arguments = {"-o", "/dev/full", "--jobs", jobs}, .input = record});
        EXPECT_EQ(fullFile.status, 1);
        EXPECT_EQ(fullFile.messages, full.messages);
    }
}

TEST_F(ProcessTest, outputThatNobodyReads) {
    for (const char* const jobs : {"1", "2"}) {
        const End closed = convert({.arguments = {"--jobs", jobs}, .input = record, .closesOutput = true});
        EXPECT_EQ(closed.status, 1);
        EXPECT_EQ(closed.messages, "");
        const End closedLong = convert(
            {.arguments = {"--jobs", jobs}, .input = repeated(record, 100'000), .closesOutput = true});
        EXPECT_EQ(closedLong.status, 1);
        EXPECT_EQ(closedLong.messages, "");
    }
}

TEST_F(ProcessTest, recordsAreNotOverwrittenThroughRedirection) {
    const std::string records = folder.write("records.ndjson", record);
    const End end =
        convert({.arguments = {}, .inputPath = records, .outputPath = records, .appendsOutput = true});
    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(end.messages, "quelt-migrate: the answers would overwrite the records\n");
    EXPECT_EQ(folder.read("records.ndjson"), record);
}

TEST_F(ProcessTest, saysThatItReadsFromATerminal) {
    skipOnWindows("the tests have no console to give");
    const End end = convert({.arguments = {}, .input = record, .hasInputTerminal = true});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, answer);
    EXPECT_THAT(end.messages, StartsWith("quelt-migrate: reading records from the terminal"));
}

TEST_F(ProcessTest, showsProgressOnATerminal) {
    skipOnWindows("the tests have no console to give");
    const std::string input = record + "x\n";
    const End end = convert(
        {.arguments = {}, .input = input, .hasMessageTerminal = true, .environment = {{"TERM", "xterm"}}});
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.messages, StartsWith("\r2 records, "));
    EXPECT_THAT(end.messages, HasSubstr("\x1b[31m1 malformed\x1b[0m"));
    EXPECT_THAT(end.messages, HasSubstr("\x1b[1m2 records in "));
    EXPECT_THAT(end.messages, Not(HasSubstr("% done"))); // nobody knows how much comes through a pipe
}

TEST_F(ProcessTest, shareIsKnownOfFiles) {
    skipOnWindows("the tests have no console to give");
    const std::string records = folder.write("records.ndjson", record);
    const End end =
        convert({.arguments = {records}, .hasMessageTerminal = true, .environment = {{"TERM", "xterm"}}});
    EXPECT_THAT(end.messages, HasSubstr("100 % done"));
    const End redirected = convert({.arguments = {},
                                    .inputPath = records,
                                    .hasMessageTerminal = true,
                                    .environment = {{"TERM", "xterm"}}});
    EXPECT_THAT(redirected.messages, HasSubstr("100 % done"));
}

TEST_F(ProcessTest, coloursCanBeRefused) {
    skipOnWindows("the tests have no console to give");
    const auto messagesWith = [this](std::map<std::string, std::string> environment) {
        return convert({.arguments = {},
                        .input = "x\n",
                        .hasMessageTerminal = true,
                        .environment = std::move(environment)})
            .messages;
    };
    EXPECT_THAT(messagesWith({{"TERM", "xterm"}, {"NO_COLOR", ""}}), HasSubstr("\x1b"));
    EXPECT_THAT(messagesWith({{"TERM", "xterm"}, {"NO_COLOR", "1"}}), Not(HasSubstr("\x1b")));
    EXPECT_THAT(messagesWith({{"TERM", "dumb"}}), Not(HasSubstr("\x1b")));
    EXPECT_THAT(messagesWith({}), Not(HasSubstr("\x1b")));
}

TEST_F(ProcessTest, longLinesAreMalformed) {
    const std::string tooLong = R"({"id":")" + std::string(std::size_t{64} << 20U, 'x') + "\"}\n";
    const End end = convert({.arguments = {}, .input = tooLong + record});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, R"({"line":1,"malformed":"longer than 64 MiB"})"
                          "\n" +
                              answer);
}

} // namespace
} // namespace quelt::host
