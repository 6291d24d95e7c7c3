#pragma once

#include "expression/QueltEeNode.h"

namespace quelt {

/// A deep copy of the tree below the operator `node`, with bounded stack, as QueltEeNode::clone has it;
/// leaves give their own copies. Null for a node that is no operator.
[[nodiscard]] QueltEeNodeRef* cloneTree(const QueltEeNode& node);

} // namespace quelt
