#include "expression/QueltEeVisit.h"

namespace quelt {

namespace {

thread_local constinit std::uint32_t t_openVisits = 0;

} // namespace

VisitScope::VisitScope() noexcept : m_fits(++t_openVisits <= QueltEeNode::s_maxVisitDepth) {}

VisitScope::~VisitScope() {
    --t_openVisits;
}

long visitNodeOf(const QueltEeNodeRef* reference, QueltEeNodeVisitor& visitor) {
    QueltEeNode* const node = reference != nullptr ? reference->getNode() : nullptr;
    return node != nullptr ? node->acceptVisitor(visitor) : E_POINTER;
}

} // namespace quelt
