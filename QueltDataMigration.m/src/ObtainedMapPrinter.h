#pragma once

#include "MigrationTrace.h"

class QueltInMap;

namespace quelt {

/// Writes the expressions of `map` with their domains as informational lines. E_FAIL, reported, when an entry
/// is not one of a domain identifier and a multi-model expression; S_OK otherwise. For an activated trace
/// only.
long printObtainedMap(const MigrationTrace& trace, const QueltInMap& map);

} // namespace quelt
