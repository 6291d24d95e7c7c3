#include "commands/CommandLine.h"

#include "commands/ConvertCommand.h"

#include <algorithm>
#include <ostream>
#include <sstream>
#include <utility>

namespace quelt::host {

namespace {

constexpr const char* s_description =
    "Converts configuration effectivity from its older forms into multi-model expressions.";

constexpr const char* s_footer = R"(Environment:
  CGE_MigRen                     when set, series are renumbered through their model years
  CFG_DA_Migration_Optimization  when set, trees are classified by a fixed rule
  QUELT_TRACE                    a file, or stderr: where to write the trace of the libraries
  NO_COLOR                       when set, messages are not coloured)";

ExitStatus answerInstead(const CLI::App& application, const CLI::ParseError& reason, Console& console) {
    std::ostringstream output;
    std::ostringstream messages;
    const int code = application.exit(reason, output, messages);
    console.output.write(output.str());
    console.messages << messages.str() << std::flush;
    return code == 0 ? ExitStatus::success : ExitStatus::unusable;
}

} // namespace

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<ConvertCommand>());
    return commands;
}

ExitStatus runCommandLine(std::vector<std::string> arguments, Console& console) {
    CLI::App application(s_description, "quelt-migrate");
    application.set_version_flag("--version", "quelt-migrate " QUELT_VERSION);
    application.require_subcommand(1);
    application.footer(s_footer);

    std::vector<std::pair<CLI::App*, std::unique_ptr<Command>>> commands;
    for (std::unique_ptr<Command>& command : makeCommands()) {
        CLI::App& declared = command->declare(application);
        commands.emplace_back(&declared, std::move(command));
    }
    try {
        std::reverse(arguments.begin(), arguments.end()); // as the parser wants them
        application.parse(std::move(arguments));
        for (const auto& [declared, command] : commands) {
            if (declared->parsed()) {
                return command->run(console);
            }
        }
    } catch (const CLI::ParseError& reason) {
        return answerInstead(application, reason, console);
    }
    return ExitStatus::unusable;
}

} // namespace quelt::host
