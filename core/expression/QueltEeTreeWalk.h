#pragma once

#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInSmallVector.h"

#include <cstdint>

namespace quelt {

/// The children of a node by position, whatever its class: a group's, a single operator's only one, none of a
/// leaf's. It looks at the node anew each time, so the children may change meanwhile.
class NodeChildren {
public:
    /// The children of `node`, which must outlive this object.
    explicit NodeChildren(const QueltEeNode& node) noexcept
        : m_pGroup(node.m_shape == QueltEeNode::Shape::group ? static_cast<const QueltEeGroupOp*>(&node)
                                                             : nullptr),
          m_pSingle(node.m_shape == QueltEeNode::Shape::single ? static_cast<const QueltEeSingleOp*>(&node)
                                                               : nullptr) {}

    /// The node as a group; null when it is none.
    [[nodiscard]] const QueltEeGroupOp* group() const noexcept { return m_pGroup; }
    /// The node as a single operator; null when it is none.
    [[nodiscard]] const QueltEeSingleOp* single() const noexcept { return m_pSingle; }
    /// True when the node can have children.
    [[nodiscard]] bool isOperator() const noexcept { return m_pGroup != nullptr || m_pSingle != nullptr; }
    /// The reference at `position`, null past the last.
    [[nodiscard]] const QueltEeNodeRef* at(std::uint32_t position) const {
        if (m_pGroup != nullptr) {
            return static_cast<const QueltEeNodeRef*>(m_pGroup->getChildren().Get(position));
        }
        return m_pSingle != nullptr && position == 0 ? m_pSingle->getChildRef() : nullptr;
    }

private:
    const QueltEeGroupOp* m_pGroup;
    const QueltEeSingleOp* m_pSingle;
};

/// Walks a tree that nobody changes meanwhile, depth first, children in order, with bounded stack: it stops
/// at each node when it comes down to it (`enter`), and once more at each operator when all below have been
/// seen (`leave`).
///
///     for (TreeWalk walk(root); walk.next();) {
///         if (walk.stop() == TreeWalk::Stop::enter) ...
///     }
class TreeWalk {
public:
    /// What the walk has come to.
    enum class Stop {
        enter,  ///< a node, before its children
        leave,  ///< an operator, after its children
        missing ///< a child reference without node
    };

    /// Stands in front of `root`.
    explicit TreeWalk(const QueltEeNode& root) noexcept : m_pNode(&root) {}

    /// Goes to the next stop; false when there is none.
    bool next();
    /// The kind of this stop.
    [[nodiscard]] Stop stop() const noexcept { return m_stop; }
    /// The node of this stop; at a missing one, the operator above.
    [[nodiscard]] const QueltEeNode& node() const noexcept { return *m_pNode; }
    /// True when the node of this stop is an operator.
    [[nodiscard]] bool atOperator() const noexcept { return m_atOperator; }
    /// True when the node of this stop is the first child of its operator, or the root.
    [[nodiscard]] bool isFirst() const noexcept { return m_isFirst; }

private:
    struct Level {
        const QueltEeNode* node;
        std::uint32_t next; // position of the child to look at next
    };

    void enter(const QueltEeNode& node);

    QueltInSmallVector<Level, 8> m_levels; // the operators that were entered and not left
    const QueltEeNode* m_pNode;
    Stop m_stop = Stop::leave;
    bool m_started = false;
    bool m_atOperator = false;
    bool m_isFirst = true;
};

} // namespace quelt
