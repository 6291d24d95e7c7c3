#pragma once

#include "expression/QueltEeNode.h"

#include <cstddef>
#include <unordered_set>

namespace quelt {

/// The nodes of a tree that a rewriting leaves as they are, with all that is below them, because it does not
/// know what they mean or who else relies on them: restriction leaves, leaves without effectivity, nodes with
/// aliases, operators with a child that is missing, classes that the core does not know. Uses bounded stack.
class FixedNodes {
public:
    /// Looks through the tree below `root`.
    explicit FixedNodes(const QueltEeNode& root);

    /// True for such a node.
    [[nodiscard]] bool isFixed(const QueltEeNode& node) const {
        return !m_fixed.empty() && m_fixed.contains(&node);
    }
    /// True for a node which is, or has below it, such a node.
    [[nodiscard]] bool holdsFixed(const QueltEeNode& node) const {
        return !m_fixed.empty() && (m_fixed.contains(&node) || m_above.contains(&node));
    }
    /// The nodes that were looked at, and the values in their leaves.
    [[nodiscard]] std::size_t size() const noexcept { return m_size; }

private:
    std::unordered_set<const QueltEeNode*> m_fixed;
    std::unordered_set<const QueltEeNode*> m_above; // the operators above them
    std::size_t m_size = 0;
};

} // namespace quelt
