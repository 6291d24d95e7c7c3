#pragma once

#include "commands/Command.h"

#include <string>
#include <vector>

namespace quelt::host {

/// Reads the command line (without the program's name) and runs the command that it names.
[[nodiscard]] ExitStatus runCommandLine(std::vector<std::string> arguments, Console& console);

} // namespace quelt::host
