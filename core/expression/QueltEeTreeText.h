#pragma once

#include "expression/QueltEeNode.h"

namespace quelt {

/// The text of the tree below `node`, with bounded stack; leaves give their own. A node that is neither an
/// operator nor a leaf with a text of its own shows its class.
[[nodiscard]] QueltInString describeTree(const QueltEeNode& node);

} // namespace quelt
