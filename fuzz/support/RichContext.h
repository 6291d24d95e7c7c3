#pragma once

#include "interchange/LoadedContext.h"

#include <string_view>

namespace quelt::host::fuzz {

/// The context of the examples: every kind of dictionary, variable and effectivity.
[[nodiscard]] const LoadedContext& richContext();
/// The same as text.
[[nodiscard]] std::string_view richContextText();

} // namespace quelt::host::fuzz
