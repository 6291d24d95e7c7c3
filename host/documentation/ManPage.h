#pragma once

#include "documentation/CommandDescription.h"

#include <string>
#include <string_view>

namespace quelt::host {

/// The manual page of the application, in the man macros of roff. `version` stands in its foot line.
[[nodiscard]] std::string manPage(const ApplicationDescription& description, std::string_view version);

} // namespace quelt::host
