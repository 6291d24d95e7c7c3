#include "compiled/QueltDnfTree.h"

#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"

#include <memory>

namespace quelt {

namespace {

using OwnedTree = std::unique_ptr<QueltEeNodeRef>;

/// `Constant` for no part, the part itself for one, a `Group` of them for several.
template <class Constant, class Group, class Parts, class MakeTree>
OwnedTree makeLevel(const Parts& parts, MakeTree makeTree) {
    if (parts.empty()) {
        return OwnedTree((new Constant)->getNodeRef());
    }
    if (parts.size() == 1) {
        return makeTree(parts.front());
    }
    auto* const group = new Group;
    OwnedTree level(group->getNodeRef());
    for (const auto& part : parts) {
        OwnedTree tree = makeTree(part);
        if (tree == nullptr) {
            return nullptr;
        }
        group->getChildren().PutBack(*tree.release());
    }
    return level;
}

} // namespace

QueltEeNodeRef* makeDnfTree(const QueltDnf& dnf, const DnfLeafMaker& makeLeaf) {
    const auto makeBranch = [&makeLeaf](const QueltDnf::Conjunction& conjunction) {
        return makeLevel<QueltEeTrue, QueltEeAndOp>(conjunction, [&makeLeaf](const QueltEeNodeRef* literal) {
            return OwnedTree(makeLeaf(*literal->getNode()));
        });
    };
    return makeLevel<QueltEeFalse, QueltEeOrOp>(dnf.getConjunctions(), makeBranch).release();
}

} // namespace quelt
