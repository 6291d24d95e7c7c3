#pragma once

#include "documentation/CommandDescription.h"

#include <string>

namespace quelt::host {

/// What the shells need to complete a command line: each text is the file that the shell reads. Commands and
/// options are offered where they may stand, files where a file is named, and nothing where a value is any
/// other text.
[[nodiscard]] std::string bashCompletion(const ApplicationDescription& description);
[[nodiscard]] std::string zshCompletion(const ApplicationDescription& description);
[[nodiscard]] std::string fishCompletion(const ApplicationDescription& description);

} // namespace quelt::host
