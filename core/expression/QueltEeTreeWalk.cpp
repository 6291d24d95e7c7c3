#include "expression/QueltEeTreeWalk.h"

namespace quelt {

bool TreeWalk::next() {
    if (!m_started) {
        m_started = true;
        enter(*m_pNode);
        return true;
    }
    if (m_levels.empty()) {
        return false;
    }
    Level& level = m_levels[m_levels.size() - 1];
    const QueltEeNodeRef* const child = NodeChildren(*level.node).at(level.next);
    m_pNode = level.node;
    m_atOperator = true;
    if (child == nullptr) {
        m_stop = Stop::leave;
        m_levels.truncate(m_levels.size() - 1);
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
    m_stop = Stop::enter;
    m_pNode = &node;
    m_atOperator = NodeChildren(node).isOperator();
    if (m_atOperator) {
        m_levels.push_back({&node, 0});
    }
}

} // namespace quelt
