#pragma once

#include "compiled/QueltDnf.h"

#include <functional>

namespace quelt {

/// Makes the node of a tree for the leaf of a normal form; null when that fails.
using DnfLeafMaker = std::function<QueltEeNodeRef*(const QueltEeNode& leaf)>;

/// The form as a tree: FALSE, TRUE, a leaf, an AND, or an OR of such, in the form's order. The caller owns
/// it. Null when a leaf fails.
[[nodiscard]] QueltEeNodeRef* makeDnfTree(const QueltDnf& dnf, const DnfLeafMaker& makeLeaf);

} // namespace quelt
