#include "documentation/Completions.h"

#include <string_view>

namespace quelt::host {

namespace {

std::string asWord(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (character == '\'' || character == '\\') {
            result += '\\';
        }
        result += character;
    }
    return "'" + result + "'";
}

/// "-s o -l output -r -F": the option's names, and what its value is.
std::string specificationOf(const OptionDescription& option) {
    std::string text;
    for (const std::string& name : option.names) {
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (option.takesFile) {
        text += option.isArgument ? " -F" : " -r -F";
    } else if (!option.value.empty()) {
        text += " -x";
    }
    return option.isArgument ? text : text + " -d " + asWord(option.meaning);
}

std::string linesOf(const CommandDescription& command, const std::string& beginning) {
    std::string lines;
    for (const OptionDescription& option : command.options) {
        lines += beginning + specificationOf(option) + "\n";
    }
    return lines;
}

} // namespace

std::string fishCompletion(const ApplicationDescription& description) {
    const std::string& program = description.application.name;
    const std::string complete = "complete -c " + program;
    const std::string beforeCommand = complete + " -n __fish_use_subcommand";
    std::string text =
        "# Completion of " + program + " for fish; made from the declaration of its command line.\n\n";
    text += complete + " -f\n";
    text += linesOf(description.application, beforeCommand);
    for (const CommandDescription& command : description.commands) {
        text += beforeCommand + " -a " + command.name + " -d " + asWord(command.meaning) + "\n";
    }
    for (const CommandDescription& command : description.commands) {
        text += "\n" + linesOf(command, complete + " -n '__fish_seen_subcommand_from " + command.name + "'");
    }
    return text;
}

} // namespace quelt::host
