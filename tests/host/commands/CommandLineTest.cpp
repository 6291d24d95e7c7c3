// The command line with streams in memory; ProcessTest runs the program itself.

#include "commands/CommandLine.h"
#include "platform/Program.h"

#include "host/support/MemoryStreams.h"
#include "host/support/RandomCompiled.h"
#include "host/support/Samples.h"
#include "host/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sstream>

namespace quelt::host {
namespace {

using test::sampleContext;
using test::TextSink;
using test::TextSource;
using testing::HasSubstr;
using testing::StartsWith;

class CommandLineTest : public testing::Test {
protected:
    int run(std::vector<std::string> arguments, std::string_view input = {}) {
        TextSource source(input);
        Console console{.input = source, .output = output, .messages = messages};
        return static_cast<int>(runCommandLine(std::move(arguments), console));
    }
    int convert(std::vector<std::string> more, std::string_view input = {}) {
        std::vector<std::string> arguments{"convert", "--context", context};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments, input);
    }

    test::TemporaryFolder folder;
    std::string context = folder.write("context.json", sampleContext());
    TextSink output;
    std::ostringstream messages;
};

constexpr const char* s_record = R"({"id":"P-1","tree":true})"
                                 "\n";
constexpr const char* s_answer =
    R"({"id":"P-1","result":0,"map":[{"domain":3,"expression":{"kind":"effectivity","global":true}}]})"
    "\n";

TEST_F(CommandLineTest, helpAndVersion) {
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_EQ(output.text(), "quelt-migrate " QUELT_VERSION "\n");
    EXPECT_EQ(run({"--help"}), 0);
    EXPECT_THAT(output.text(), HasSubstr("convert"));
    EXPECT_THAT(output.text(), HasSubstr("CGE_MigRen"));
    EXPECT_EQ(run({"convert", "--help"}), 0);
    EXPECT_THAT(output.text(), HasSubstr("--context FILE REQUIRED"));
    EXPECT_THAT(output.text(), HasSubstr("--with-input"));
    EXPECT_THAT(output.text(), HasSubstr("--branch"));
    EXPECT_THAT(output.text(), HasSubstr("Exit status"));
    EXPECT_EQ(run({"compile", "--help"}), 0);
    EXPECT_THAT(output.text(), HasSubstr("0    every record was converted, compiled or decompiled"));
    EXPECT_EQ(run({"decompile", "--help"}), 0);
    EXPECT_THAT(output.text(), HasSubstr("becomes {\"id\": ..., \"compiled\": ...}"));
    EXPECT_EQ(messages.str(), "");
}

TEST_F(CommandLineTest, unusableCommandLines) {
    struct Case {
        std::vector<std::string> arguments;
        std::string message;
    };
    const std::vector<Case> cases{
        {{}, "no command given"},
        {{"convrt"}, "unknown command 'convrt'"},
        {{"--what"}, "unknown option '--what'"},
        {{"convert"}, "--context is required"},
        {{"convert", "--context"}, "--context: 1 required FILE missing"},
        {{"convert", "--context", context, "--what"}, "The following argument was not expected: --what"},
        {{"convert", "--context", context, "a", "b"}, "The following argument was not expected: b"},
        {{"convert", "--context", context, "--jobs", "x"}, "--jobs: 'x' is not a whole number from 0 to 256"},
        {{"convert", "--context", context, "--jobs", "-1"},
         "--jobs: '-1' is not a whole number from 0 to 256"},
        {{"convert", "--context", context, "--jobs", "257"},
         "--jobs: '257' is not a whole number from 0 to 256"},
        {{"convert", "--context", context, "--jobs", "1.5"},
         "--jobs: '1.5' is not a whole number from 0 to 256"},
        {{"convert", "--context", context, "--context", context},
         "--context: At Most 1 required but received 2"}};
    for (const Case& given : cases) {
        messages.str("");
        EXPECT_EQ(run(given.arguments, s_record), 2) << testing::PrintToString(given.arguments);
        EXPECT_EQ(messages.str(),
                  "quelt-migrate: " + given.message + "\nRun with --help for more information.\n");
    }
    EXPECT_EQ(output.text(), "");
}

/// A product series becomes its tree: after the shift, 6 to 8 are 5 to 7, and 10 is 9, which the tree lacks.
constexpr const char* s_series = R"({"id":"P-1","tree":{"serial":"Unit","in":[[6,8]]}})"
                                 "\n"
                                 R"({"id":"P-2","tree":{"serial":"Unit","in":[[10,10]]}})"
                                 "\n";

TEST_F(CommandLineTest, branchesAllRecords) {
    EXPECT_EQ(convert({}, s_series), 0);
    EXPECT_EQ(output.text().find("branchResult"), std::string::npos);
    output = TextSink();
    EXPECT_EQ(convert({"--branch"}, s_series), 1)
        << "a record that was converted and not branched has failed";
    EXPECT_EQ(
        output.text(),
        R"({"id":"P-1","result":0,"branchResult":0,"map":[{"domain":2,"expression":{"kind":"effectivity",)"
        R"("criteria":[{"dictionary":"Truck","own":{"treeSeries":"Line","of":"Truck",)"
        R"("in":[{"from":5,"to":7}]}}]}}]})"
        "\n"
        R"({"id":"P-2","result":0,"branchResult":-2147467259,"code":"0x80004005",)"
        R"("errors":["ERROR : No tree element found for this sequence number : 9",)"
        R"("ERROR : run visitor QueltMigTransformSerialToTreeSeriesVisitor failed"],)"
        R"("map":[{"domain":2,"expression":{"kind":"effectivity","criteria":[{"dictionary":"Truck",)"
        R"("own":{"serial":"Unit","of":"Truck","in":[[9,9]]}}]}}]})"
        "\n");
    EXPECT_THAT(messages.str(), HasSubstr("No tree element found for this sequence number : 9"));
    EXPECT_EQ(convert({"--branch"}, s_record), 0);
}

TEST_F(CommandLineTest, convertsStandardInput) {
    EXPECT_EQ(convert({}, s_record), 0);
    EXPECT_EQ(output.text(), s_answer);
    EXPECT_THAT(messages.str(), StartsWith("1 record in "));
    EXPECT_EQ(convert({"-"}, s_record), 0);
    EXPECT_EQ(output.text(), std::string(s_answer) + s_answer);
}

TEST_F(CommandLineTest, convertsFiles) {
    const std::string records = folder.write("records.ndjson", s_record);
    EXPECT_EQ(convert({records, "-o", folder.path("answers.ndjson")}), 0);
    EXPECT_EQ(folder.read("answers.ndjson"), s_answer);
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(convert({records, "-o", "-"}), 0);
    EXPECT_EQ(output.text(), s_answer);
}

TEST_F(CommandLineTest, optionsReachTheAnswers) {
    EXPECT_EQ(convert({"--with-input", "--trace"}, s_record), 0);
    EXPECT_THAT(output.text(), HasSubstr(R"("input":{"tree":true})"));
    EXPECT_THAT(output.text(), HasSubstr(R"("trace":[{"class":)"));
}

TEST_F(CommandLineTest, exitStatusTellsWhetherAllConverted) {
    EXPECT_EQ(convert({}, ""), 0);
    EXPECT_EQ(convert({}, R"({"id":"x","list":[]})"), 0);
    EXPECT_EQ(convert({}, R"({"id":"x","tree":null})"), 1);
    EXPECT_EQ(convert({}, R"({"id":"x"})"), 1);
    for (const char* const jobs : {"0", "1", "2", "256"}) {
        EXPECT_EQ(convert({"--jobs", jobs}, std::string(s_record) + "x"), 1);
        EXPECT_EQ(convert({"--jobs", jobs}, s_record), 0);
    }
}

TEST_F(CommandLineTest, contextThatIsNotJsonIsRefusedWithItsPosition) {
    context =
        folder.write("bad.json", "\xEF\xBB\xBF{\"format\": \"quelt-context/1\",\r\n \"dictionaries\": [{]}");
    EXPECT_EQ(convert({}, s_record), 2);
    EXPECT_EQ(messages.str(), "quelt-migrate: " + context +
                                  ":2:20: not JSON: expected a key in double quotes in /dictionaries/0\n");
    EXPECT_EQ(output.text(), "");
}

TEST_F(CommandLineTest, contextsThatCannotBeUsedAreRefused) {
    const auto refusal = [this](std::string_view text) {
        context = folder.write("bad.json", text);
        messages.str("");
        EXPECT_EQ(convert({}, s_record), 2);
        std::string message = messages.str();
        const std::string prefix = "quelt-migrate: " + context;
        EXPECT_THAT(message, StartsWith(prefix));
        return message.substr(prefix.size());
    };
    EXPECT_EQ(refusal(""), ":1:1: not JSON: nothing to read\n");
    EXPECT_EQ(refusal("\xEF\xBB\xBF"), ":1:1: not JSON: nothing to read\n");
    EXPECT_EQ(refusal("{\n\"format\": \"\xFF\"}"), ":2:12: not JSON: not UTF-8\n");
    EXPECT_EQ(refusal(std::string("\xFF\xFE{\0}\0", 6)), ":1:1: not JSON: not UTF-8\n");
    EXPECT_EQ(refusal("{\"format\": 1e999}"), ":1:12: number out of range at /format\n");
    EXPECT_EQ(refusal("{}"), ": missing key 'format' at the root\n");
    EXPECT_EQ(refusal("{\"\\u001b[2J\": 1}"), ": unknown key '?[2J' at /?[2J\n");
    EXPECT_EQ(output.text(), "");
}

TEST_F(CommandLineTest, filesThatCannotBeReadAreRefused) {
    EXPECT_EQ(convert({folder.path("missing")}), 2);
    EXPECT_EQ(convert({folder.path()}), 2);
    const std::string good = std::exchange(context, folder.path("missing"));
    EXPECT_EQ(convert({}, s_record), 2);
    context = folder.path();
    EXPECT_EQ(convert({}, s_record), 2);
    context = good;
    EXPECT_EQ(convert({"-o", folder.path()}, s_record), 2);
    EXPECT_EQ(convert({"-o", folder.path("missing/answers")}, s_record), 2);
    const std::string prefix = "quelt-migrate: cannot ";
    EXPECT_EQ(messages.str(),
              prefix + "read the records " + folder.path("missing") + ": No such file or directory\n" +
                  prefix + "read the records " + folder.path() + ": Is a directory\n" + prefix +
                  "read the context " + folder.path("missing") + ": No such file or directory\n" + prefix +
                  "read the context " + folder.path() + ": Is a directory\n" + prefix + "write the answers " +
                  folder.path() + ": Is a directory\n" + prefix + "write the answers " +
                  folder.path("missing/answers") + ".part: No such file or directory\n");
    EXPECT_EQ(output.text(), "");
}

TEST_F(CommandLineTest, answersOverwriteNothingThatIsRead) {
    const std::string records = folder.write("records.ndjson", s_record);
    const std::string link = folder.path("link.ndjson");
    std::filesystem::create_hard_link(records, link);
    EXPECT_EQ(convert({records, "-o", records}), 2);
    EXPECT_EQ(convert({records, "-o", link}), 2);
    EXPECT_EQ(convert({records, "-o", folder.path("./records.ndjson")}), 2);
    EXPECT_EQ(convert({records, "-o", context}), 2);
    EXPECT_EQ(folder.read("records.ndjson"), s_record);
    EXPECT_EQ(folder.read("context.json"), sampleContext());
    EXPECT_EQ(messages.str(), "quelt-migrate: the answers would overwrite the records\n"
                              "quelt-migrate: the answers would overwrite the records\n"
                              "quelt-migrate: the answers would overwrite the records\n"
                              "quelt-migrate: the answers would overwrite the context\n");
}

TEST_F(CommandLineTest, badContextLeavesTheAnswersOfBeforeAlone) {
    const std::string answers = folder.write("answers.ndjson", "old\n");
    context = folder.write("bad.json", "{}");
    EXPECT_EQ(convert({"-o", answers}, s_record), 2);
    EXPECT_EQ(folder.read("answers.ndjson"), "old\n");
}

TEST_F(CommandLineTest, answersOverwriteNothingThatIsReadByTheNameOfTheirPart) {
    const std::string records = folder.write("answers.ndjson.part", s_record);
    EXPECT_EQ(convert({records, "-o", folder.path("answers.ndjson")}), 2);
    EXPECT_EQ(folder.read("answers.ndjson.part"), s_record);
    EXPECT_EQ(messages.str(), "quelt-migrate: the answers would overwrite the records\n");
}

TEST_F(CommandLineTest, theAnswersOfBeforeStayUntilAllAreThere) {
    const std::string answers = folder.write("answers.ndjson", "old\n");
    TextSource source(s_record, 100, EIO);
    Console console{.input = source, .output = output, .messages = messages};
    EXPECT_EQ(runCommandLine({"convert", "--context", context, "-o", answers}, console), ExitStatus::partly);
    EXPECT_EQ(folder.read("answers.ndjson"), "old\n");
    EXPECT_EQ(folder.read("answers.ndjson.part"), s_answer);
    EXPECT_THAT(messages.str(),
                StartsWith("quelt-migrate: cannot read the records: Input/output error; what is "
                           "answered is in " +
                           answers + ".part, and --resume goes on behind it\n1 record in "));
    messages.str("");
    EXPECT_EQ(convert({"-o", answers, "--resume"}, std::string(s_record) + s_record), 0);
    EXPECT_EQ(folder.read("answers.ndjson"), std::string(s_answer) + s_answer);
    EXPECT_FALSE(std::filesystem::exists(answers + ".part"));
    EXPECT_THAT(messages.str(), StartsWith("quelt-migrate: keeping 1 answer from " + answers +
                                           ".part\n2 records (1 kept) in "));
    messages.str("");
    EXPECT_EQ(convert({"-o", answers}, s_record), 0);
    EXPECT_EQ(folder.read("answers.ndjson"), s_answer);
}

TEST_F(CommandLineTest, resumeGoesOnBehindTheLastWholeLine) {
    const std::string records = "\n" + std::string(s_record) + "x\n\n" + s_record + s_record;
    const std::string expected =
        s_answer +
        std::string(R"({"line":3,"malformed":"not JSON at column 1: expected a value"})"
                    "\n") +
        s_answer + s_answer;
    const std::string answers = folder.path("answers.ndjson");
    for (const char* const jobs : {"1", "3"}) {
        for (std::size_t kept = 0; kept <= expected.size(); ++kept) {
            folder.write("answers.ndjson.part", expected.substr(0, kept));
            messages.str("");
            ASSERT_EQ(convert({"-o", answers, "--resume", "--jobs", jobs}, records), 1) << kept;
            ASSERT_EQ(folder.read("answers.ndjson"), expected) << kept;
            ASSERT_THAT(messages.str(), HasSubstr("converted  3\n  failed     0\n  malformed  1\n")) << kept;
        }
    }
}

TEST_F(CommandLineTest, resumeChangesNothingThatDoesNotFit) {
    const std::string answers = folder.path("answers.ndjson");
    const auto refusalOf = [&](const std::string& part, std::string_view records) {
        folder.write("answers.ndjson.part", part);
        messages.str("");
        EXPECT_EQ(convert({"-o", answers, "--resume"}, records), 2);
        EXPECT_EQ(folder.read("answers.ndjson.part"), part);
        EXPECT_FALSE(std::filesystem::exists(answers));
        std::string message = messages.str();
        const std::string prefix = "quelt-migrate: cannot go on with " + answers + ".part: ";
        EXPECT_THAT(message, StartsWith(prefix));
        return message.substr(prefix.size());
    };
    const std::string two = std::string(s_record) + s_record;
    EXPECT_EQ(refusalOf(std::string(s_answer) + s_answer + "{", s_record),
              "it holds more answers than there are records\n");
    EXPECT_EQ(refusalOf(std::string(s_answer) + "{", R"({"id":"P-2","tree":true})"),
              "its line 1 is not the answer that line 1 of the records gets now\n");
    EXPECT_EQ(refusalOf(std::string(s_answer) + "{}\n{", "\n" + two),
              "its line 2 is not the answer that line 3 of the records gets now\n");
    EXPECT_EQ(refusalOf(std::string(s_answer) + s_answer, std::string(s_record) + "x\n"),
              "its line 2 is not the answer that line 2 of the records gets now\n");
    EXPECT_EQ(refusalOf("\n" + std::string(s_answer), s_record),
              "its line 1 is not the answer that line 1 of the records gets now\n");
}

TEST_F(CommandLineTest, resumeWithoutAPart) {
    const std::string answers = folder.path("answers.ndjson");
    EXPECT_EQ(convert({"-o", answers, "--resume"}, s_record), 0);
    EXPECT_EQ(folder.read("answers.ndjson"), s_answer);
    EXPECT_THAT(messages.str(),
                StartsWith("quelt-migrate: " + answers +
                           ".part is not there: beginning with the first record\n1 record in "));
    messages.str("");
    EXPECT_EQ(convert({"-o", answers, "--resume"}, s_record), 0);
    EXPECT_EQ(folder.read("answers.ndjson"), s_answer);
    EXPECT_THAT(messages.str(),
                StartsWith("quelt-migrate: keeping 1 answer from " + answers + "\nquelt-migrate: " + answers +
                           " is complete: nothing was to be done\n1 record (1 kept) in "));
    for (const char* const jobs : {"1", "2"}) {
        messages.str("");
        EXPECT_EQ(convert({"-o", answers, "--resume", "-j", jobs}, std::string(s_record) + s_record), 2);
        EXPECT_EQ(folder.read("answers.ndjson"), s_answer);
        EXPECT_THAT(messages.str(), HasSubstr("cannot go on with " + answers +
                                              ": it has been complete, and there are more records now"));
    }
    messages.str("");
    EXPECT_EQ(convert({"--resume"}, s_record), 2);
    EXPECT_EQ(convert({"--resume", "-o", "-"}, s_record), 2);
    EXPECT_EQ(messages.str(), "quelt-migrate: --resume needs --output with the name of a file\n"
                              "quelt-migrate: --resume needs --output with the name of a file\n");
    EXPECT_EQ(output.text(), "");
}

TEST_F(CommandLineTest, failuresWhileReadingAndWriting) {
    const auto runWith = [this](ByteSource& source, ByteSink& sink) {
        Console console{.input = source, .output = sink, .messages = messages};
        return static_cast<int>(runCommandLine({"convert", "--context", context}, console));
    };
    TextSource nothing("", 100, EISDIR);
    EXPECT_EQ(runWith(nothing, output), 2);
    EXPECT_EQ(messages.str(), "quelt-migrate: cannot read the records: Is a directory\n");
    messages.str("");
    TextSource something(s_record, 100, EIO);
    EXPECT_EQ(runWith(something, output), 1);
    EXPECT_EQ(output.text(), s_answer);
    EXPECT_THAT(messages.str(),
                StartsWith("quelt-migrate: cannot read the records: Input/output error\n1 record in "));
    messages.str("");
    TextSource good(s_record);
    TextSink full(10);
    EXPECT_EQ(runWith(good, full), 1);
    EXPECT_EQ(messages.str(), "quelt-migrate: cannot write the answers: No space left on device\n");
}

TEST_F(CommandLineTest, saysThatItReadsFromATerminal) {
    TextSource source(s_record);
    Console console{.input = source, .output = output, .messages = messages, .inputIsTerminal = true};
    EXPECT_EQ(runCommandLine({"convert", "--context", context}, console), ExitStatus::success);
    EXPECT_THAT(
        messages.str(),
        StartsWith(std::string("quelt-migrate: reading records from the terminal, one JSON object a line; ") +
                   endOfInputKeys() + " ends\n"));
    messages.str("");
    const std::string records = folder.write("records.ndjson", s_record);
    EXPECT_EQ(runCommandLine({"convert", "--context", context, records}, console), ExitStatus::success);
    EXPECT_THAT(messages.str(), StartsWith("1 record in "));
}

// The bytes as docs/compiled-format.md has them: the header, one domain (2), one view (0), one context, one
// conjunction of one literal.
constexpr const char* s_spelt =
    R"({"id":"B-1","compiled":{"domains":[{"domain":2,"views":[{"view":0,"contexts":[)"
    R"({"dictionary":"7a6c0001-0000-4000-8000-000000000001",)"
    R"("dnf":[[{"eff":"ec000001-0000-4000-8000-000000000001","negated":true}]]}]}]}]}})"
    "\n";
constexpr const char* s_binary =
    R"({"id":"B-1","binary":"UUZMVAEAAABNAAAAsQDe8wEAAAACAAAAAQAAAAAAAAABAAAAemwAAQAAQACAAAAAAAAAAQEAAAABAAAAAewAAAEAAEAAgAAAAAAAAAE="})"
    "\n";

TEST_F(CommandLineTest, compilesAndDecompiles) {
    EXPECT_EQ(run({"compile"}, s_spelt), 0);
    EXPECT_EQ(output.text(), s_binary);
    EXPECT_THAT(messages.str(), StartsWith("1 record in "));
    const std::string binaries = folder.write("binaries.ndjson", s_binary);
    EXPECT_EQ(run({"decompile", binaries, "-o", folder.path("spelt.ndjson")}), 0);
    EXPECT_EQ(folder.read("spelt.ndjson"), s_spelt);
    EXPECT_EQ(run({"compile", folder.path("spelt.ndjson"), "-o", binaries}), 0);
    EXPECT_EQ(folder.read("binaries.ndjson"), s_binary);
}

TEST_F(CommandLineTest, compileAndDecompileAnswerMalformedLines) {
    EXPECT_EQ(run({"compile"}, std::string(s_spelt) +
                                   R"({"id":"B-2","compiled":{}})"
                                   "\n" +
                                   s_binary +
                                   R"({"compiled":{"domains":[]}})"
                                   "\n" +
                                   s_spelt + "x"),
              1);
    EXPECT_EQ(output.text(), std::string(s_binary) +
                                 R"({"line":2,"id":"B-2","malformed":"missing key 'domains' at /compiled"})"
                                 "\n"
                                 R"({"line":3,"id":"B-1","malformed":"unknown key 'binary' at /binary"})"
                                 "\n"
                                 R"({"line":4,"malformed":"missing key 'id' at the root"})"
                                 "\n" +
                                 s_binary +
                                 R"-({"line":6,"malformed":"not JSON at column 1: expected a value )-"
                                 R"-((the input's last line, without a line end)"})-"
                                 "\n");
    EXPECT_THAT(messages.str(), HasSubstr("malformed  4"));
    TextSink answers;
    TextSource binaries(R"({"id":"B-1","binary":"A"})"
                        "\n"
                        R"({"id":"B-2","binary":"AAAA"})"
                        "\n");
    Console console{.input = binaries, .output = answers, .messages = messages};
    EXPECT_EQ(runCommandLine({"decompile"}, console), ExitStatus::partly);
    EXPECT_EQ(
        answers.text(),
        R"({"line":1,"id":"B-1","malformed":"not base64: 1 characters are no groups of four at /binary"})"
        "\n"
        R"({"line":2,"id":"B-2","malformed":)"
        R"-("no compiled binary, or a damaged one (0x80070057) at /binary"})-"
        "\n");
}

// The bytes likewise: one literal on an option with one value, whose name comes last.
constexpr const char* s_latinName = // "V\xFC"
    R"({"id":"B-1","binary":"UUZMVAEAAABXAAAAIkw0wgEAAAACAAAAAQAAAAAAAAABAAAAemwAAQAAQACAAAAAAAAAAQEAAAABAAAAAgoAAAEAAEAAgAAAAAAAAAEBAAAAAgAAAFb8"})"
    "\n";
constexpr const char* s_utf8Name = // "V\xC3\xBC"
    R"({"id":"B-2","binary":"UUZMVAEAAABYAAAARMPCjwEAAAACAAAAAQAAAAAAAAABAAAAemwAAQAAQACAAAAAAAAAAQEAAAABAAAAAgoAAAEAAEAAgAAAAAAAAAEBAAAAAwAAAFbDvA=="})"
    "\n";

TEST_F(CommandLineTest, decompileRefusesNamesThatAreNotUtf8) {
    EXPECT_EQ(run({"decompile"}, std::string(s_latinName) + s_utf8Name), 1);
    EXPECT_EQ(output.text(),
              R"({"line":1,"id":"B-1","malformed":"the name of an option's value is not UTF-8 at /binary"})"
              "\n"
              R"({"id":"B-2","compiled":{"domains":[{"domain":2,"views":[{"view":0,"contexts":[)"
              R"({"dictionary":"7a6c0001-0000-4000-8000-000000000001",)"
              R"("dnf":[[{"option":"0a000001-0000-4000-8000-000000000001","in":["V)"
              "\xC3\xBC"
              R"("]}]]}]}]}]}})"
              "\n");
    EXPECT_THAT(messages.str(), HasSubstr("malformed  1"));
}

TEST_F(CommandLineTest, compileAndDecompileRefuseFilesThatCannotBeUsed) {
    const std::string records = folder.write("records.ndjson", s_spelt);
    EXPECT_EQ(run({"compile", folder.path("missing")}), 2);
    EXPECT_EQ(run({"compile", records, "-o", records}), 2);
    EXPECT_EQ(run({"decompile", records, "-o", folder.path("missing/answers")}), 2);
    EXPECT_EQ(messages.str(), "quelt-migrate: cannot read the records " + folder.path("missing") +
                                  ": No such file or directory\n"
                                  "quelt-migrate: the answers would overwrite the records\n"
                                  "quelt-migrate: cannot write the answers " +
                                  folder.path("missing/answers") + ".part: No such file or directory\n");
    EXPECT_EQ(output.text(), "");
}

/// In order, whatever the number of jobs, and the same again when turned back.
TEST_F(CommandLineTest, manyFormsComeBack) {
    std::string spelt;
    for (unsigned seed = 0; seed < 2'000; ++seed) {
        spelt += R"({"id":")" + std::to_string(seed) + R"(","compiled":)" +
                 test::RandomCompiled(seed).next() + "}\n";
    }
    const std::string records = folder.write("records.ndjson", spelt);
    for (const char* const jobs : {"1", "3"}) {
        EXPECT_EQ(run({"compile", records, "-o", folder.path("binaries.ndjson"), "--jobs", jobs}), 0);
        EXPECT_EQ(run({"decompile", folder.path("binaries.ndjson"), "-o", folder.path("again.ndjson"),
                       "--jobs", jobs}),
                  0);
        EXPECT_TRUE(folder.read("again.ndjson") == spelt) << jobs;
    }
}

} // namespace
} // namespace quelt::host
