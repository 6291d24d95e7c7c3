#include "expression/QueltEeTreeWalk.h"

#include "expression/QueltEeOperators.h"

namespace quelt {

NodeChildren::NodeChildren(const QueltEeNode& node)
    : m_pGroup(QueltEeGroupOp::cast(&node)),
      m_pSingle(m_pGroup == nullptr ? QueltEeSingleOp::cast(&node) : nullptr) {}

const QueltEeNodeRef* NodeChildren::at(std::uint32_t position) const {
    if (m_pGroup != nullptr) {
        return static_cast<const QueltEeNodeRef*>(m_pGroup->getChildren().Get(position));
    }
    return m_pSingle != nullptr && position == 0 ? m_pSingle->getChildRef() : nullptr;
}

bool TreeWalk::next() {
    if (!m_started) {
        m_started = true;
        enter(*m_pNode);
        return true;
    }
    if (m_levels.empty()) {
        return false;
    }
    Level& level = m_levels.back();
    const QueltEeNodeRef* const child = level.next != s_noMore ? level.children.at(level.next) : nullptr;
    m_pNode = level.node;
    m_atOperator = true;
    if (child == nullptr) {
        m_stop = Stop::leave;
        m_levels.pop_back();
        return true;
    }
    m_isFirst = level.next++ == 0;
    if (const QueltEeNode* const node = child->getNode(); node != nullptr) {
        enter(*node);
    } else {
        m_stop = Stop::missing;
    }
    return true;
}

void TreeWalk::enter(const QueltEeNode& node) {
    const NodeChildren children(node);
    m_stop = Stop::enter;
    m_pNode = &node;
    m_atOperator = children.isOperator();
    if (m_atOperator) {
        m_levels.push_back({children, &node, 0});
    }
}

void TreeWalk::skipChildren() noexcept {
    m_levels.pop_back();
}

void TreeWalk::skipSiblings() noexcept {
    if (!m_levels.empty()) {
        m_levels.back().next = s_noMore;
    }
}

} // namespace quelt
