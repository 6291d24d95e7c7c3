#include "documentation/CommandDescription.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace quelt::host {

namespace {

/// What options that name a file call their value.
constexpr std::string_view s_fileValue = "FILE";

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

std::string valueOf(const CLI::Option& option) {
    if (option.get_positional()) {
        return option.get_name(true);
    }
    return option.get_type_size() == 0 ? std::string() : option.get_type_name();
}

OptionDescription describe(const CLI::App& command, const CLI::Option& option) {
    return {.names = namesOf(option),
            .value = valueOf(option),
            .meaning = option.get_description(),
            .defaultValue = option.get_default_str(),
            .isRequired = option.get_required(),
            .isArgument = option.get_positional(),
            .takesFile = option.get_type_size() != 0 && option.get_type_name() == s_fileValue,
            .standsAlone = &option == command.get_help_ptr() || &option == command.get_version_ptr()};
}

CommandDescription describe(const CLI::App& command, std::vector<HelpSection> sections) {
    CommandDescription description{.name = command.get_name(),
                                   .meaning = command.get_description(),
                                   .options = {},
                                   .sections = std::move(sections)};
    if (description.meaning.ends_with('.')) {
        description.meaning.pop_back();
    }
    for (const CLI::Option* const option : command.get_options()) {
        description.options.push_back(describe(command, *option));
    }
    std::ranges::stable_partition(description.options,
                                  [](const OptionDescription& option) { return !option.isArgument; });
    return description;
}

} // namespace

ApplicationDescription describe(const CommandLine& commandLine) {
    ApplicationDescription description{
        .application = describe(commandLine.application(), CommandLine::helpSections()), .commands = {}};
    for (const auto& [declaration, command] : commandLine.commands()) {
        description.commands.push_back(describe(*declaration, command->helpSections()));
    }
    return description;
}

} // namespace quelt::host
