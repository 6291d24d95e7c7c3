#pragma once

#include "infrastructure/QueltCoreExport.h"

class QueltEeNodeRef;

namespace quelt {

/// Rewrites the tree below `root`, in place, into one that means the same and has no more nodes: constants
/// are folded, NOT and NOT-domain carried out at the leaves, groups in groups of one kind joined, groups with
/// a single child replaced by it, equal leaves and leaves on one variable combined into the first of them.
/// `root` stays the reference and may hold another node afterwards (as an alias, when all that is left is
/// one). True when anything changed; a tree that was simplified does not change again.
///
/// Some nodes are left as they are, nothing is assumed of what they mean, and they are never deleted:
/// restriction leaves, leaves without effectivity, operators with a missing child, and nodes with aliases
/// (with all below). Where NOT or NOT-domain stands above such a node, it stays there. A tree whose root has
/// aliases is not changed.
///
/// Takes time in n log n, for n nodes and values of leaves, and bounded stack. Where combining leaves over
/// and over would take longer than that, they stay apart.
QUELT_CORE_API bool simplifyTree(QueltEeNodeRef& root);

} // namespace quelt
