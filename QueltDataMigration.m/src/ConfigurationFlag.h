#pragma once

#include <cstdlib>

namespace quelt {

/// Whether the environment variable `name` is set; its value, an empty one included, says nothing more. For
/// the constants that each source file reads when the module is loaded.
inline bool isEnvironmentVariableSet(const char* name) noexcept {
    return std::getenv(name) != nullptr;
}

} // namespace quelt
