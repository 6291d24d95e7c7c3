#include "expression/QueltEeTreeCopy.h"

#include "expression/QueltEeOperators.h"
#include "expression/QueltEeTreeWalk.h"
#include "infrastructure/QueltInResult.h"

#include <memory>

namespace quelt {

/// Copies one tree, with bounded stack.
class TreeCopier {
public:
    /// The copy of `root`, an operator, and of everything below; null when a child reference has no node, or
    /// a leaf gives no copy.
    [[nodiscard]] std::unique_ptr<QueltEeNodeRef> copy(const QueltEeNode& root) {
        std::unique_ptr<QueltEeNodeRef> result = copyOperator(root);
        while (!m_open.empty()) {
            const QueltEeNodeRef* const child = nextChild();
            if (child == nullptr) {
                m_open.truncate(m_open.size() - 1);
            } else if (child->getNode() == nullptr || !copyChild(*child->getNode())) {
                return nullptr;
            }
        }
        return result;
    }

private:
    /// An operator whose children are being copied.
    struct Open {
        const QueltEeNode* original;
        QueltEeNode* copy;
        std::uint32_t next; // position of the child that is copied next
    };

    const QueltEeNodeRef* nextChild() {
        Open& innermost = m_open[m_open.size() - 1];
        return NodeChildren(*innermost.original).at(innermost.next++);
    }

    /// Copies the node and puts the copy below that of its operator; false when that cannot be done.
    bool copyChild(const QueltEeNode& node) {
        QueltEeNode& above = *m_open[m_open.size() - 1].copy;
        std::unique_ptr<QueltEeNodeRef> copy = NodeChildren(node).isOperator()
                                                   ? copyOperator(node)
                                                   : std::unique_ptr<QueltEeNodeRef>(node.clone());
        if (copy == nullptr || copy->getNode() == nullptr || putBelow(above, *copy) < 0) {
            return false;
        }
        static_cast<void>(copy.release()); // the operator's
        return true;
    }

    /// A new operator of the same class without children, which are to be copied next.
    std::unique_ptr<QueltEeNodeRef> copyOperator(const QueltEeNode& node) {
        std::unique_ptr<QueltEeNode> copy(makeSameOperator(node));
        std::unique_ptr<QueltEeNodeRef> reference(copy->getNodeRef());
        m_open.push_back({&node, copy.release(), 0});
        if (const QueltEeGroupOp* const group = NodeChildren(node).group(); group != nullptr) {
            static_cast<QueltEeGroupOp*>(reference->getNode())
                ->m_children.reserve(group->getChildren().elements().size());
        }
        return reference;
    }

    static QueltEeNode* makeSameOperator(const QueltEeNode& node) {
        if (const QueltEeGroupOp* const group = NodeChildren(node).group(); group != nullptr) {
            return group->isAnd() ? static_cast<QueltEeNode*>(new QueltEeAndOp) : new QueltEeOrOp;
        }
        if (const QueltEeNotOp* const notOp = QueltEeNotOp::cast(&node); notOp != nullptr) {
            return new QueltEeNotOp(notOp->isGenerated());
        }
        return new QueltEeNotDomainOp;
    }

    static long putBelow(QueltEeNode& parent, QueltEeNodeRef& child) {
        if (NodeChildren(parent).group() == nullptr) {
            return static_cast<QueltEeSingleOp&>(parent).setChildRef(child);
        }
        auto& group = static_cast<QueltEeGroupOp&>(parent);
        if (!child.standsAlone() || !child.ownsNode()) {
            return group.getChildren().PutBack(child); // no copy of its own: some leaf has a mind of its own
        }
        group.m_children.appendCopy(child);
        return S_OK;
    }

    QueltInSmallVector<Open, 8> m_open; // the innermost last
};

QueltEeNodeRef* cloneTree(const QueltEeNode& node) {
    return NodeChildren(node).isOperator() ? TreeCopier().copy(node).release() : nullptr;
}

} // namespace quelt
