#pragma once

#include "commands/CommandLine.h"

#include <string>
#include <vector>

namespace quelt::host {

/// An option, or an argument, as manual page and completions show it.
struct OptionDescription {
    /// As typed, the dashes included; none for an argument.
    std::vector<std::string> names;
    /// What the value is called, such as FILE; empty for a flag. Of an argument its name.
    std::string value;
    std::string meaning;
    std::string defaultValue;
    bool isRequired = false;
    bool isArgument = false;
    /// Whether the value is the name of a file.
    bool takesFile = false;
    /// Whether nothing else is done where it is given, as with --help.
    bool standsAlone = false;
};

/// The application, or one of its commands.
struct CommandDescription {
    std::string name;
    /// One sentence, without a full stop.
    std::string meaning;
    /// The arguments are the last.
    std::vector<OptionDescription> options;
    std::vector<HelpSection> sections;
};

/// Everything that the command line's help describes.
struct ApplicationDescription {
    CommandDescription application;
    std::vector<CommandDescription> commands;
};

/// Describes what is declared, in the order of the help.
[[nodiscard]] ApplicationDescription describe(const CommandLine& commandLine);

} // namespace quelt::host
