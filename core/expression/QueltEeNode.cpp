#include "expression/QueltEeNode.h"

#include "expression/QueltEeTreeCopy.h"
#include "expression/QueltEeTreeText.h"
#include "infrastructure/QueltInString.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <utility>

template class QueltInTyped<QueltEeNodeRef, QueltInObject>;
template class QueltInTyped<QueltEeNode, QueltInObject>;

namespace {

/// The references that wait to be deleted on this thread.
struct Disposal {
    QueltEeNodeRef* first = nullptr;
    bool isOpen = false; // a deletion is going on further up the stack
};
thread_local constinit Disposal t_disposal;

} // namespace

QueltEeNodeRef::QueltEeNodeRef(QueltEeNode* node) noexcept {
    if (node == nullptr) {
        return;
    }
    if (node->hasNodeRef()) {
        linkAlias(*node);
    } else {
        ownNode(*node);
    }
}

QueltEeNodeRef::~QueltEeNodeRef() {
    if (m_pNode == nullptr) {
        return;
    }
    if (!m_owns) {
        unlinkAlias();
        return;
    }
    QueltEeNode* const node = std::exchange(m_pNode, nullptr);
    node->m_pRef = nullptr;
    delete node;
}

QueltEeNodeRef* QueltEeNodeRef::makeAlias(QueltEeNode& node) {
    static_cast<void>(node.getNodeRef());
    return new QueltEeNodeRef(&node);
}

QueltEeNodeRef* QueltEeNodeRef::takeFor(QueltEeNode* holder) {
    if (m_pNode == nullptr) {
        return nullptr;
    }
    QueltEeNodeRef* const taken = m_isHeld ? makeAlias(*m_pNode) : this;
    taken->m_isHeld = true;
    taken->m_pHolder = holder;
    return taken;
}

void QueltEeNodeRef::letGo() noexcept {
    m_isHeld = false;
    m_pHolder = nullptr;
}

void QueltEeNodeRef::ownNode(QueltEeNode& node) noexcept {
    m_pNode = &node;
    m_owns = true;
    node.m_pRef = this;
}

void QueltEeNodeRef::linkAlias(QueltEeNode& node) noexcept {
    m_pNode = &node;
    m_owns = false;
    m_pPrevious = nullptr;
    m_pNext = node.m_pAliases;
    if (m_pNext != nullptr) {
        m_pNext->m_pPrevious = this;
    }
    node.m_pAliases = this;
}

void QueltEeNodeRef::unlinkAlias() noexcept {
    (m_pPrevious != nullptr ? m_pPrevious->m_pNext : m_pNode->m_pAliases) = m_pNext;
    if (m_pNext != nullptr) {
        m_pNext->m_pPrevious = m_pPrevious;
    }
    m_pNode = nullptr;
    m_pNext = nullptr;
    m_pPrevious = nullptr;
}

void QueltEeNodeRef::dispose(QueltEeNodeRef* reference) noexcept {
    if (reference == nullptr) {
        return;
    }
    reference->m_pHolder = nullptr;
    if (!reference->m_owns) {
        delete reference;
        return;
    }
    reference->m_pNext = t_disposal.first;
    t_disposal.first = reference;
    if (t_disposal.isOpen) {
        return;
    }
    t_disposal.isOpen = true;
    while (t_disposal.first != nullptr) {
        QueltEeNodeRef* const next = t_disposal.first;
        t_disposal.first = std::exchange(next->m_pNext, nullptr);
        delete next;
    }
    t_disposal.isOpen = false;
}

QueltInString QueltEeNodeRef::toString() const {
    return m_pNode != nullptr ? m_pNode->toString() : QueltInString("null");
}

QueltEeNode::~QueltEeNode() {
    while (m_pAliases != nullptr) {
        QueltEeNodeRef* const alias = m_pAliases;
        alias->unlinkAlias();
        if (alias->m_pHolder != nullptr) {
            alias->m_pHolder->contentsChanged();
        }
    }
    if (m_pRef == nullptr) {
        return;
    }
    QueltEeNodeRef* const owner = std::exchange(m_pRef, nullptr);
    owner->m_pNode = nullptr;
    if (!owner->m_isHeld) {
        delete owner;
    } else if (owner->m_pHolder != nullptr) {
        owner->m_pHolder->contentsChanged();
    }
}

QueltEeNodeRef* QueltEeNode::clone() const {
    return quelt::cloneTree(*this);
}

QueltEeNodeRef* QueltEeNode::getNodeRef() {
    return m_pRef != nullptr ? m_pRef : new QueltEeNodeRef(this);
}

QueltInString QueltEeNode::toString() const {
    return quelt::describeTree(*this);
}

void QueltEeNode::contentsChanged() noexcept {
    // Owners of nodes that have forgotten and whose holders have still to be told. A node enters once, when
    // it forgets.
    QueltEeNodeRef* untold = nullptr;
    const auto forget = [&untold](QueltEeNode* node) {
        if (node == nullptr || node->m_knownClassification.load(std::memory_order_relaxed) == 0) {
            return;
        }
        node->m_knownClassification.store(0, std::memory_order_relaxed);
        if (node->m_pRef != nullptr) {
            node->m_pRef->m_pPrevious = std::exchange(untold, node->m_pRef);
        }
    };
    forget(this);
    while (untold != nullptr) {
        QueltEeNodeRef* const owner = untold;
        untold = std::exchange(owner->m_pPrevious, nullptr);
        forget(owner->m_pHolder);
        for (const QueltEeNodeRef* alias = owner->m_pNode->m_pAliases; alias != nullptr;
             alias = alias->m_pNext) {
            forget(alias->m_pHolder);
        }
    }
}

bool QueltEeNode::giveWayTo(QueltEeNodeRef* successor) noexcept {
    QueltEeNode* const node = successor->m_pNode;
    if (m_pRef == nullptr || node == nullptr || node == this || successor->m_isHeld) {
        return false;
    }
    QueltEeNodeRef* const reference = std::exchange(m_pRef, nullptr);
    if (successor->m_owns) {
        successor->m_pNode = nullptr;
        reference->ownNode(*node);
    } else {
        reference->linkAlias(*node);
    }
    delete successor;
    if (reference->m_pHolder != nullptr) {
        reference->m_pHolder->contentsChanged();
    }
    delete this;
    return true;
}
