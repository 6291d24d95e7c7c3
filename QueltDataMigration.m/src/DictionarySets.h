#pragma once

#include "MigrationTrace.h"

class QueltEeModelDico;
class QueltInSet;

namespace quelt {

/// Makes `holder` the only possible dictionary when there is more than one: all others are rejected. S_OK;
/// E_FAIL, reported as coming from `where`, when a set refuses.
long keepOnly(QueltEeModelDico& holder, QueltInSet& possible, QueltInSet& rejected,
              const MigrationTrace& trace, std::source_location where = std::source_location::current());

} // namespace quelt
