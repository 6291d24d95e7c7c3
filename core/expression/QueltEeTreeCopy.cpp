#include "expression/QueltEeTreeCopy.h"

#include "expression/QueltEeOperators.h"
#include "expression/QueltEeTreeWalk.h"
#include "infrastructure/QueltInResult.h"

#include <memory>
#include <vector>

namespace quelt {

namespace {

/// A new operator of the same class without children.
QueltEeNode* makeSameOperator(const QueltEeNode& node) {
    const NodeChildren children(node);
    if (children.group() != nullptr) {
        return children.group()->isAnd() ? static_cast<QueltEeNode*>(new QueltEeAndOp) : new QueltEeOrOp;
    }
    if (const QueltEeNotOp* const notOp = QueltEeNotOp::cast(&node); notOp != nullptr) {
        return new QueltEeNotOp(notOp->isGenerated());
    }
    return new QueltEeNotDomainOp;
}

long putBelow(QueltEeNode& parent, QueltEeNodeRef& child) {
    if (QueltEeGroupOp* const group = QueltEeGroupOp::cast(&parent); group != nullptr) {
        return group->getChildren().PutBack(child);
    }
    return static_cast<QueltEeSingleOp&>(parent).setChildRef(child);
}

/// A copy of the node that the walk has entered, without what is below; null when there is none to be had.
std::unique_ptr<QueltEeNodeRef> copyNode(const TreeWalk& walk) {
    return std::unique_ptr<QueltEeNodeRef>(walk.atOperator() ? makeSameOperator(walk.node())->getNodeRef()
                                                             : walk.node().clone());
}

std::unique_ptr<QueltEeNodeRef> copyBelow(const QueltEeNode& root) {
    std::unique_ptr<QueltEeNodeRef> result;
    std::vector<QueltEeNode*> open; // the copies of the operators that the walk has entered and not left
    for (TreeWalk walk(root); walk.next();) {
        if (walk.stop() == TreeWalk::Stop::leave) {
            open.pop_back();
            continue;
        }
        std::unique_ptr<QueltEeNodeRef> copy =
            walk.stop() == TreeWalk::Stop::enter ? copyNode(walk) : nullptr;
        QueltEeNode* const node = copy != nullptr ? copy->getNode() : nullptr;
        if (node == nullptr) {
            return nullptr;
        }
        if (open.empty()) {
            result = std::move(copy);
        } else if (putBelow(*open.back(), *copy) >= 0) {
            copy.release();
        } else {
            return nullptr;
        }
        if (walk.atOperator()) {
            open.push_back(node);
        }
    }
    return result;
}

} // namespace

QueltEeNodeRef* cloneTree(const QueltEeNode& root) {
    if (!NodeChildren(root).isOperator()) {
        return nullptr;
    }
    return copyBelow(root).release();
}

} // namespace quelt
