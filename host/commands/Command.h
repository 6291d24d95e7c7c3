#pragma once

#include "commands/Console.h"
#include "commands/HelpSection.h"

#include <memory>
#include <vector>

namespace CLI {
class App; // its header alone takes as long to compile as all of this folder
}

namespace quelt::host {

/// How a command ends.
enum class ExitStatus : int {
    success = 0,       ///< everything was done
    partly = 1,        ///< some of it was not
    unusable = 2,      ///< nothing was done: the command line, or a file that it names, could not be used
    interrupted = 130, ///< SIGINT, or Ctrl-C, ended it
    terminated = 143   ///< SIGTERM ended it
};

/// One command of the application. It declares its options before the command line is read, and keeps what
/// they say.
class Command {
public:
    virtual ~Command() = default;
    /// Adds itself with its options to `application`, as a subcommand; returns that.
    virtual CLI::App& declare(CLI::App& application) = 0;
    /// What its help says beside that.
    [[nodiscard]] virtual std::vector<HelpSection> helpSections() const = 0;
    /// Does what the options say.
    virtual ExitStatus run(Console& console) = 0;
};

/// Every command there is.
[[nodiscard]] std::vector<std::unique_ptr<Command>> makeCommands();

} // namespace quelt::host
