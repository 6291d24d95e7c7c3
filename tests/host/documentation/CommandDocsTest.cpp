// Manual page and completions of an invented command line, with what is awkward to write down in each. The
// ones of the real command line are tried in the shells: tests/house/check-command-docs.py.

#include "documentation/CommandDescription.h"
#include "documentation/Completions.h"
#include "documentation/ManPage.h"

#include <gmock/gmock.h>

namespace quelt::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

OptionDescription help() {
    return {
        .names = {"-h", "--help"}, .value = {}, .meaning = "Help", .defaultValue = {}, .standsAlone = true};
}

ApplicationDescription sample() {
    const OptionDescription context{.names = {"--context"},
                                    .value = "FILE",
                                    .meaning = "It's [here]: a\\b",
                                    .defaultValue = {},
                                    .isRequired = true,
                                    .takesFile = true};
    const OptionDescription jobs{
        .names = {"-j", "--jobs"}, .value = "N", .meaning = "Threads", .defaultValue = "1"};
    const OptionDescription records{.names = {},
                                    .value = "records",
                                    .meaning = "The records",
                                    .defaultValue = {},
                                    .isArgument = true,
                                    .takesFile = true};
    return {.application =
                {.name = "tool",
                 .meaning = "Converts things",
                 .options = {help()},
                 .sections = {{.title = "Exit status", .text = {}, .entries = {{"0", "all is well"}}}}},
            .commands = {
                {.name = "run",
                 .meaning = "Run it",
                 .options = {help(), context, jobs, records},
                 .sections = {{.title = "Records", .text = "As follows", .entries = {{".x", "dotted"}}},
                              {.title = "Exit status", .text = {}, .entries = {{"0", "all is well"}}},
                              {.title = examplesTitle, .text = {}, .entries = {{"tool run a", "runs a"}}}}}}};
}

std::size_t countOf(const std::string& text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(CommandDescriptionTest, describesWhatIsDeclared) {
    const CommandLine commandLine;
    const ApplicationDescription description = describe(commandLine);
    EXPECT_EQ(description.application.name, "quelt-migrate");
    std::vector<std::string> names;
    for (const CommandDescription& command : description.commands) {
        names.push_back(command.name);
        EXPECT_THAT(command.meaning, Not(testing::EndsWith("."))) << command.name;
    }
    EXPECT_THAT(names, ElementsAre("convert", "compile", "decompile"));

    const CommandDescription& convert = description.commands.front();
    const auto find = [&](const std::string& name) {
        return *std::ranges::find_if(convert.options, [&](const OptionDescription& option) {
            return !option.names.empty() && option.names.back() == name;
        });
    };
    EXPECT_TRUE(find("--help").standsAlone);
    EXPECT_THAT(find("--help").value, IsEmpty());
    EXPECT_TRUE(find("--context").isRequired);
    EXPECT_TRUE(find("--context").takesFile);
    EXPECT_EQ(find("--context").value, "FILE");
    EXPECT_THAT(find("--output").names, ElementsAre("-o", "--output"));
    EXPECT_FALSE(find("--output").isRequired);
    EXPECT_THAT(find("--branch").value, IsEmpty());
    EXPECT_FALSE(find("--branch").takesFile);
    EXPECT_EQ(find("--jobs").value, "N");
    EXPECT_EQ(find("--jobs").defaultValue, "1");
    EXPECT_FALSE(find("--jobs").takesFile);

    const OptionDescription& records = convert.options.back();
    EXPECT_TRUE(records.isArgument && records.takesFile && records.names.empty());
    EXPECT_EQ(records.value, "records");
}

TEST(ManPageTest, hasEverySectionOnce) {
    const std::string page = manPage(sample(), "1.2");
    EXPECT_THAT(page, HasSubstr(".TH TOOL 1 \"\" \"tool 1.2\" \"User Commands\"\n"));
    EXPECT_THAT(page, HasSubstr(".SH NAME\ntool \\- converts things\n"));
    EXPECT_THAT(
        page, HasSubstr("\\fBtool run\\fR \\fB\\-\\-context\\fR \\fIFILE\\fR [\\fB\\-\\-jobs\\fR \\fIN\\fR] "
                        "[\\fIrecords\\fR]\n"));
    EXPECT_THAT(page, HasSubstr(".TP\n\\fB\\-j\\fR, \\fB\\-\\-jobs\\fR \\fIN\\fR\nThreads. Default: 1.\n"));
    EXPECT_THAT(page, HasSubstr("\nIt\\(aqs [here]: a\\eb. Required.\n"));
    EXPECT_THAT(page, HasSubstr(".PP\n\\fBRecords\\fR:\nAs follows\n.TP\n\\fB\\&.x\\fR\ndotted\n"));
    EXPECT_EQ(countOf(page, "\nHelp.\n"), 1U) << "the help is the same of each";
    EXPECT_EQ(countOf(page, "all is well"), 1U) << "what all commands share stands once";
    EXPECT_THAT(page, HasSubstr(".SH EXIT STATUS\n.TP\n\\fB0\\fR\nall is well\n"));
    EXPECT_THAT(page, HasSubstr(".SH EXAMPLES\n.TP\n\\fBtool run a\\fR\nruns a\n"));
    EXPECT_EQ(countOf(page, "runs a\n"), 1U);
}

TEST(CompletionsTest, zshSpecificationsAreEscaped) {
    const std::string text = zshCompletion(sample());
    EXPECT_THAT(text, HasSubstr(R"('(--context)--context=[It'\''s \[here\]\: a\\b]:FILE:_files')"));
    EXPECT_THAT(text, HasSubstr("'(-j --jobs)-j+[Threads]:N: '"));
    EXPECT_THAT(text, HasSubstr("'(-j --jobs)--jobs=[Threads]:N: '"));
    EXPECT_THAT(text, HasSubstr("'(- *)--help[Help]'"));
    EXPECT_THAT(text, HasSubstr("'1:The records:_files'"));
    EXPECT_THAT(text, HasSubstr("'run:Run it'"));
}

TEST(CompletionsTest, fishTextsAreEscaped) {
    const std::string text = fishCompletion(sample());
    EXPECT_THAT(text, HasSubstr("complete -c tool -n '__fish_seen_subcommand_from run' -l context -r -F -d "
                                R"('It\'s [here]: a\\b')"
                                "\n"));
    EXPECT_THAT(text, HasSubstr(" -s j -l jobs -x -d 'Threads'\n"));
    EXPECT_THAT(text, HasSubstr("complete -c tool -n '__fish_seen_subcommand_from run' -F\n"));
    EXPECT_THAT(text, HasSubstr("complete -c tool -n __fish_use_subcommand -a run -d 'Run it'\n"));
}

TEST(CompletionsTest, bashTellsFilesFromOtherValues) {
    const std::string text = bashCompletion(sample());
    EXPECT_THAT(text, HasSubstr("        run/-j|run/--jobs) return ;;\n        run/--context) "));
    EXPECT_THAT(text, HasSubstr("run) options='-h --help --context -j --jobs' ;;"));
    EXPECT_THAT(text, HasSubstr("'') options='run -h --help' ;;"));
}

} // namespace
} // namespace quelt::host
