#include "documentation/Completions.h"
#include "documentation/Template.h"

#include <string_view>

namespace quelt::host {

namespace {

constexpr const char* s_script = R"(#compdef @PROGRAM@
# Completion of @PROGRAM@ for zsh; made from the declaration of its command line.

_@PROGRAM@() {
    local context state state_descr line
    typeset -A opt_args

    _arguments -C@OPTIONS@ \
        '1: :->command' \
        '*:: :->arguments'

    case $state in
        command)
            local -a commands
            commands=(
@COMMANDS@            )
            _describe -t commands command commands
            ;;
        arguments)
            case $words[1] in
@BRANCHES@            esac
            ;;
    esac
}

_@PROGRAM@ "$@"
)";

/// `text` as one word of the shell.
std::string asWord(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (character == '\'') {
            result += "'\\''";
        } else {
            result += character;
        }
    }
    return "'" + result + "'";
}

/// `text` as a part of what _arguments or _describe is told, where some characters separate parts.
std::string escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (std::string_view("\\[]:").find(character) != std::string_view::npos) {
            result += '\\';
        }
        result += character;
    }
    return result;
}

/// What _arguments is told of one spelling of an option: all spellings exclude each other, one that stands
/// alone excludes everything.
std::string specificationOf(const OptionDescription& option, const std::string& name) {
    std::string excluded;
    for (const std::string& other : option.names) {
        excluded += (excluded.empty() ? "" : " ") + other;
    }
    std::string text = option.standsAlone ? "(- *)" : "(" + excluded + ")";
    text += name;
    if (!option.value.empty()) {
        text += name.starts_with("--") ? "=" : "+"; // the value may stand in the same word
    }
    text += "[" + escaped(option.meaning) + "]";
    if (!option.value.empty()) {
        text += ":" + escaped(option.value) + ":" + (option.takesFile ? "_files" : " ");
    }
    return asWord(text);
}

std::string specificationsOf(const CommandDescription& command, const std::string& indentation) {
    std::string text;
    int position = 0;
    for (const OptionDescription& option : command.options) {
        if (option.isArgument) {
            text += indentation + asWord(std::to_string(++position) + ":" + escaped(option.meaning) + ":" +
                                         (option.takesFile ? "_files" : " "));
        }
        for (const std::string& name : option.names) {
            text += indentation + specificationOf(option, name);
        }
    }
    return text;
}

} // namespace

std::string zshCompletion(const ApplicationDescription& description) {
    std::string commands;
    std::string branches;
    for (const CommandDescription& command : description.commands) {
        commands +=
            "                " + asWord(escaped(command.name) + ":" + escaped(command.meaning)) + "\n";
        branches += "                " + command.name + ")\n                    _arguments" +
                    specificationsOf(command, " \\\n                        ") + "\n                    ;;\n";
    }
    return fill(s_script, {{"@PROGRAM@", description.application.name},
                           {"@OPTIONS@", specificationsOf(description.application, " \\\n        ")},
                           {"@COMMANDS@", commands},
                           {"@BRANCHES@", branches}});
}

} // namespace quelt::host
