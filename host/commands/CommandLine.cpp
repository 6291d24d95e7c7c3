#include "commands/CommandLine.h"

#include "commands/CompileCommand.h"
#include "commands/ConvertCommand.h"
#include "commands/DecompileCommand.h"
#include "interchange/Place.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>
#include <ostream>
#include <sstream>
#include <string_view>
#include <utility>

namespace quelt::host {

namespace {

constexpr const char* s_description =
    "Converts configuration effectivity from its older forms into multi-model expressions.";

ExitStatus refuse(Console& console, std::string_view what) {
    writeMessage(console, what);
    console.messages << "Run with --help for more information." << std::endl;
    return ExitStatus::unusable;
}

/// Answers what is asked of the parser itself (--help, --version), and refuses what it could not make sense
/// of.
ExitStatus answerInstead(const CLI::App& application, const CLI::ParseError& reason, Console& console) {
    if (reason.get_exit_code() != 0) {
        return refuse(console, reason.what());
    }
    std::ostringstream output;
    application.exit(reason, output, output);
    console.output.write(output.str());
    return ExitStatus::success;
}

/// What is wrong with the word that should name a command, if anything: the parser itself would only say that
/// one is missing.
std::optional<std::string> faultOfFirstWord(const CLI::App& application,
                                            const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        return "no command given";
    }
    const std::string& word = arguments.front();
    if (word.starts_with('-')) {
        const bool isKnown = application.get_option_no_throw(word) != nullptr;
        return isKnown ? std::nullopt : std::optional("unknown option " + inQuotes(word));
    }
    const bool isKnown =
        !application.get_subcommands([&word](const CLI::App* command) { return command->check_name(word); })
             .empty();
    return isKnown ? std::nullopt : std::optional("unknown command " + inQuotes(word));
}

} // namespace

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<ConvertCommand>());
    commands.push_back(std::make_unique<CompileCommand>());
    commands.push_back(std::make_unique<DecompileCommand>());
    return commands;
}

CommandLine::CommandLine() : m_application(std::make_unique<CLI::App>(s_description, "quelt-migrate")) {
    m_application->set_version_flag("--version", "quelt-migrate " QUELT_VERSION);
    m_application->require_subcommand(1);
    m_application->allow_windows_style_options(false); // "/records" is a path, there as well
    m_application->footer(layOut(helpSections()));
    for (std::unique_ptr<Command>& command : makeCommands()) {
        CLI::App& declared = command->declare(*m_application);
        declared.footer(layOut(command->helpSections()));
        m_commands.push_back({&declared, std::move(command)});
    }
}

CommandLine::~CommandLine() = default;

std::vector<HelpSection> CommandLine::helpSections() {
    return {exitStatusSection(),
            {.title = "Environment",
             .text = {},
             .entries = {{"CGE_MigRen", "when set, series are renumbered through their model years"},
                         {"CFG_DA_Migration_Optimization", "when set, trees are classified by a fixed rule"},
                         {"QUELT_TRACE", "a file, or stderr: where to write the trace of the libraries"},
                         {"NO_COLOR", "when set, messages are not coloured"}}}};
}

ExitStatus CommandLine::run(std::vector<std::string> arguments, Console& console) {
    if (const std::optional<std::string> fault = faultOfFirstWord(*m_application, arguments)) {
        return refuse(console, *fault);
    }
    try {
        std::reverse(arguments.begin(), arguments.end()); // as the parser wants them
        m_application->parse(std::move(arguments));
        for (const auto& [declared, command] : m_commands) {
            if (declared->parsed()) {
                return command->run(console);
            }
        }
    } catch (const CLI::ParseError& reason) {
        return answerInstead(*m_application, reason, console);
    }
    return ExitStatus::unusable;
}

ExitStatus runCommandLine(std::vector<std::string> arguments, Console& console) {
    return CommandLine().run(std::move(arguments), console);
}

} // namespace quelt::host
