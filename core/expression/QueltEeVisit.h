#pragma once

#include "expression/QueltEeNode.h"
#include "expression/QueltEeNodeVisitor.h"
#include "infrastructure/QueltInResult.h"

namespace quelt {

/// One visit, for as long as the scope lives; visits nest on the thread's stack.
class VisitScope {
public:
    VisitScope() noexcept;
    ~VisitScope() { --m_open; }
    VisitScope(const VisitScope&) = delete;
    VisitScope& operator=(const VisitScope&) = delete;

    /// False when visits are nested too deep for another one.
    [[nodiscard]] bool fits() const noexcept { return m_fits; }

private:
    std::uint32_t& m_open; // on this thread
    bool m_fits;
};

/// Makes `node` accept `visitor` through the visit operation for its class.
template <class Node>
long visit(Node& node, QueltEeNodeVisitor& visitor, long (QueltEeNodeVisitor::*visitNode)(Node&)) {
    const VisitScope scope;
    return scope.fits() ? (visitor.*visitNode)(node) : E_OUTOFMEMORY;
}

/// Makes the node of `reference` accept `visitor`. E_POINTER when there is no reference or no node.
[[nodiscard]] long visitNodeOf(const QueltEeNodeRef* reference, QueltEeNodeVisitor& visitor);

} // namespace quelt
