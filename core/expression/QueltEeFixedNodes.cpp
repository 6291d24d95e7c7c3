#include "expression/QueltEeFixedNodes.h"

#include "expression/QueltEeCriteria.h"
#include "expression/QueltEeTreeWalk.h"

#include <vector>

namespace quelt {

namespace {

bool hasMissingChild(const NodeChildren& children) {
    if (children.single() != nullptr && children.at(0) == nullptr) {
        return true;
    }
    const QueltEeNodeRef* reference = nullptr;
    for (std::uint32_t position = 0; (reference = children.at(position)) != nullptr; ++position) {
        if (reference->getNode() == nullptr) {
            return true;
        }
    }
    return false;
}

/// True for a leaf that says what the core can work with.
bool isKnownLeaf(const QueltEeNode& node) {
    if (const auto* const leaf = QueltEeVarEffLeaf::cast(&node)) {
        return leaf->getVarEff() != nullptr;
    }
    if (const auto* const leaf = QueltEeEffLeaf::cast(&node)) {
        return leaf->getTargetEff() != nullptr;
    }
    return QueltEeTrue::isObjectOfThisType(node) != 0 || QueltEeFalse::isObjectOfThisType(node) != 0;
}

std::size_t weightOf(const QueltEeNode& node) {
    const auto* const leaf = QueltEeVarEffLeaf::cast(&node);
    return leaf != nullptr ? 1 + sizeOf(*leaf->getVarEff()) : 1;
}

struct Level {
    const QueltEeNode* node;
    NodeChildren children;
    std::uint32_t next;
    bool isAbove;
};

} // namespace

FixedNodes::FixedNodes(const QueltEeNode& root) {
    std::vector<Level> levels;
    const auto enter = [this, &levels](const QueltEeNode& node) {
        const NodeChildren children(node);
        const bool isFixed =
            node.hasAliases() || (children.isOperator() ? hasMissingChild(children) : !isKnownLeaf(node));
        if (isFixed) {
            m_fixed.insert(&node);
            if (!levels.empty()) {
                levels.back().isAbove = true;
            }
            return;
        }
        m_size += weightOf(node);
        if (children.isOperator()) {
            levels.push_back({&node, children, 0, false});
        }
    };
    enter(root);
    while (!levels.empty()) {
        Level& level = levels.back();
        if (const QueltEeNodeRef* const reference = level.children.at(level.next++)) {
            enter(*reference->getNode());
            continue;
        }
        const bool isAbove = level.isAbove;
        if (isAbove) {
            m_above.insert(level.node);
        }
        levels.pop_back();
        if (isAbove && !levels.empty()) {
            levels.back().isAbove = true;
        }
    }
}

} // namespace quelt
