#include "expression/QueltEeVisit.h"

namespace quelt {

namespace {

thread_local constinit std::uint32_t t_openVisits = 0;

} // namespace

VisitScope::VisitScope() noexcept : m_open(t_openVisits), m_fits(++m_open <= QueltEeNode::s_maxVisitDepth) {}

long visitNodeOf(const QueltEeNodeRef* reference, QueltEeNodeVisitor& visitor) {
    QueltEeNode* const node = reference != nullptr ? reference->getNode() : nullptr;
    return node != nullptr ? node->acceptVisitor(visitor) : E_POINTER;
}

} // namespace quelt
