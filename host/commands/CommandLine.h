#pragma once

#include "commands/Command.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace quelt::host {

/// The command line as it is declared: the application and its commands, with their options and what their
/// help says. What it describes it reads, too.
class CommandLine {
public:
    /// A command and what it has declared.
    struct DeclaredCommand {
        CLI::App* declaration;
        std::unique_ptr<Command> command;
    };

    CommandLine();
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    [[nodiscard]] const CLI::App& application() const noexcept { return *m_application; }
    [[nodiscard]] std::span<const DeclaredCommand> commands() const noexcept { return m_commands; }
    /// What the application's help says beside options and commands.
    [[nodiscard]] static std::vector<HelpSection> helpSections();

    /// Reads the command line (without the program's name) and runs the command that it names.
    [[nodiscard]] ExitStatus run(std::vector<std::string> arguments, Console& console);

private:
    std::unique_ptr<CLI::App> m_application;
    std::vector<DeclaredCommand> m_commands;
};

/// As CommandLine::run.
[[nodiscard]] ExitStatus runCommandLine(std::vector<std::string> arguments, Console& console);

} // namespace quelt::host
