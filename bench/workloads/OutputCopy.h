#pragma once

#include <string>

class QueltInMap;

namespace quelt::bench {

/// A copy of everything that a conversion has made: map, expressions, criteria and nodes.
[[nodiscard]] QueltInMap* copyOutput(const QueltInMap& map);

/// The output as text, a line for each domain.
[[nodiscard]] std::string describeOutput(const QueltInMap& map);

} // namespace quelt::bench
