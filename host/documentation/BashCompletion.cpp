#include "documentation/Completions.h"
#include "documentation/Template.h"

namespace quelt::host {

namespace {

constexpr const char* s_script =
    R"(# Completion of @PROGRAM@ for bash; made from the declaration of its command line.

_quelt_migrate_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

_quelt_migrate() {
    local current=${COMP_WORDS[COMP_CWORD]} previous='' command='' options='' index
    if (( COMP_CWORD > 0 )); then
        previous=${COMP_WORDS[COMP_CWORD - 1]}
    fi
    # --option=value comes as three words
    if [[ $current == = ]]; then
        current=''
    elif [[ $previous == = ]] && (( COMP_CWORD > 1 )); then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for (( index = 1; index < COMP_CWORD; ++index )); do
        case ${COMP_WORDS[index]} in
            @COMMAND_PATTERN@) command=${COMP_WORDS[index]}; break ;;
        esac
    done

    COMPREPLY=()
    case $command/$previous in
@VALUE_BRANCHES@    esac
    case $command in
@OPTION_BRANCHES@    esac
    if [[ -z $command || $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    else
        _quelt_migrate_files
    fi
}

complete -F _quelt_migrate @PROGRAM@
)";

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : std::string(separator)) + word;
    }
    return text;
}

std::vector<std::string> commandNames(const ApplicationDescription& description) {
    std::vector<std::string> names;
    for (const CommandDescription& command : description.commands) {
        names.push_back(command.name);
    }
    return names;
}

std::vector<std::string> optionNames(const CommandDescription& command) {
    std::vector<std::string> names;
    for (const OptionDescription& option : command.options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return names;
}

/// What is done behind options with a value that is, or is not, a file: "convert/--context|convert/-o) ...
/// ;;". Nothing when there are none.
std::string branchForValues(const ApplicationDescription& description, bool takesFile,
                            const std::string& commands) {
    std::vector<std::string> patterns;
    for (const CommandDescription& command : description.commands) {
        for (const OptionDescription& option : command.options) {
            if (!option.value.empty() && option.takesFile == takesFile) {
                for (const std::string& name : option.names) {
                    patterns.push_back(command.name + "/" + name);
                }
            }
        }
    }
    return patterns.empty() ? std::string() : "        " + joined(patterns, "|") + ") " + commands + " ;;\n";
}

std::string branchForOptions(const std::string& command, const std::vector<std::string>& words) {
    return "        " + command + ") options='" + joined(words, " ") + "' ;;\n";
}

} // namespace

std::string bashCompletion(const ApplicationDescription& description) {
    std::vector<std::string> firstWords = commandNames(description);
    const std::vector<std::string> options = optionNames(description.application);
    firstWords.insert(firstWords.end(), options.begin(), options.end());
    std::string branches = branchForOptions("''", firstWords);
    for (const CommandDescription& command : description.commands) {
        branches += branchForOptions(command.name, optionNames(command));
    }
    return fill(s_script,
                {{"@PROGRAM@", description.application.name},
                 {"@COMMAND_PATTERN@", joined(commandNames(description), "|")},
                 {"@VALUE_BRANCHES@", branchForValues(description, false, "return") +
                                          branchForValues(description, true, "_quelt_migrate_files; return")},
                 {"@OPTION_BRANCHES@", branches}});
}

} // namespace quelt::host
