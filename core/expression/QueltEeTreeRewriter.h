#pragma once

#include "infrastructure/QueltCoreExport.h"

class QueltDnf;
class QueltEeNodeRef;

namespace quelt {

/// Rewrites the tree below `root`, in place, into one that means the same and is no longer: constants are folded, double
/// negations dropped, nested groups of one kind joined, equal leaves and leaves on the same variable combined. `root` stays
/// the reference and may hold another node afterwards. Aliased children are left as they are. True when anything changed.
QUELT_CORE_API bool simplifyTree(QueltEeNodeRef& root);

} // namespace quelt
