#include "expression/QueltEeOperators.h"

#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeTreeWalk.h"
#include "expression/QueltEeVisit.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <utility>

template class QueltInTyped<QueltEeOperator, QueltEeNode>;
template class QueltInTyped<QueltEeGroupOp, QueltEeOperator>;
template class QueltInTyped<QueltEeAndOp, QueltEeGroupOp>;
template class QueltInTyped<QueltEeOrOp, QueltEeGroupOp>;
template class QueltInTyped<QueltEeSingleOp, QueltEeOperator>;
template class QueltInTyped<QueltEeNotOp, QueltEeSingleOp>;
template class QueltInTyped<QueltEeNotDomainOp, QueltEeSingleOp>;

QueltEeOperator::~QueltEeOperator() = default;

namespace {

QueltEeNodeRef* asReference(QueltInObject* child) {
    return static_cast<QueltEeNodeRef*>(child); // lists of children accept nothing else
}

QueltEeNodeRef* makeConstant(bool value) {
    QueltEeNode* const node = value ? static_cast<QueltEeNode*>(new QueltEeTrue) : new QueltEeFalse;
    return node->getNodeRef();
}

/// Leaves that are always or never true become constants. An aliased leaf is another tree's and stays as it
/// is.
void convertLeaves(const QueltInLinkList& children) {
    for (QueltInObject* const child : children.elements()) {
        const QueltEeNodeRef* const reference = asReference(child);
        QueltEeNodeElementaryLeaf* const leaf = QueltEeNodeElementaryLeaf::cast(reference->getNode());
        if (leaf != nullptr && reference->ownsNode()) {
            leaf->convertToTrueFalse();
        }
    }
}

/// True when the child is the constant `value`, or, when that counts, an aliased leaf that is equivalent to
/// it.
bool isConstant(const QueltEeNodeRef& child, bool value, E_MakeTF makeTF) {
    const QueltEeNode* const node = child.getNode();
    if (node == nullptr) {
        return false;
    }
    if ((value ? QueltEeTrue::isObjectOfThisType(*node) : QueltEeFalse::isObjectOfThisType(*node)) != 0) {
        return true;
    }
    const QueltEeNodeElementaryLeaf* const leaf = QueltEeNodeElementaryLeaf::cast(node);
    if (makeTF != E_DoMakeTF || child.ownsNode() || leaf == nullptr) {
        return false;
    }
    return (value ? leaf->isEquivalentToTrue() : leaf->isEquivalentToFalse()) != 0;
}

/// What a holder does with a reference that it gives up: aliases and empty references go, others stand alone.
void release(QueltEeNodeRef* reference) {
    if (reference->ownsNode() && reference->getNode() != nullptr) {
        reference->letGo();
    } else {
        delete reference;
    }
}

} // namespace

QueltEeGroupOp::Children::Children(QueltEeGroupOp& group)
    : QueltInLinkList(QueltEeNodeRef::sType()), m_group(group) {}

long QueltEeGroupOp::Children::check(const QueltInObject* object) const {
    const QueltEeNodeRef* const reference = QueltEeNodeRef::cast(object);
    if (reference == nullptr) {
        return E_INVALIDARG;
    }
    if (reference->getNode() == nullptr) {
        return E_POINTER;
    }
    return reference->getNode()->isAtOrAbove(m_group) ? E_INVALIDARG : S_OK;
}

long QueltEeGroupOp::Children::Set(unsigned int position, QueltInObject& object) {
    if (position > static_cast<unsigned int>(GetLength())) {
        return E_INVALIDARG;
    }
    if (const long refused = check(&object); refused < 0) {
        return refused;
    }
    const long result = QueltInLinkList::Set(position, *asReference(&object)->takeFor(&m_group));
    m_group.contentsChanged();
    return result;
}

long QueltEeGroupOp::Children::Remove(unsigned int position) {
    QueltEeNodeRef* const reference = asReference(Get(position));
    const long result = QueltInLinkList::Remove(position);
    if (result >= 0) {
        reference->letGo();
        m_group.contentsChanged();
    }
    return result;
}

long QueltEeGroupOp::Children::RemoveEach(std::span<const std::uint32_t> positions) {
    QueltInSmallVector<QueltEeNodeRef*, 4> out;
    for (const std::uint32_t position : positions) {
        out.push_back(asReference(Get(position)));
    }
    const long result = QueltInLinkList::RemoveEach(positions);
    if (result >= 0) {
        for (QueltEeNodeRef* const reference : out) {
            reference->letGo();
        }
        m_group.contentsChanged();
    }
    return result;
}

long QueltEeGroupOp::Children::SetEach(std::span<const Placed> placed) {
    if (!canPlace(placed)) {
        return E_INVALIDARG;
    }
    for (const Placed& one : placed) {
        if (const long refused = check(one.object); refused < 0) {
            return refused;
        }
    }
    QueltInSmallVector<Placed, 4> taken;
    for (const Placed& one : placed) {
        taken.push_back({one.position, asReference(one.object)->takeFor(&m_group)});
    }
    const long result = QueltInLinkList::SetEach(taken.values());
    m_group.contentsChanged();
    return result;
}

QueltInObject* QueltEeGroupOp::Children::PopBack() {
    QueltInObject* const last = QueltInLinkList::PopBack();
    if (last != nullptr) {
        asReference(last)->letGo();
        m_group.contentsChanged();
    }
    return last;
}

void QueltEeGroupOp::Children::dropConstants(bool value, E_MakeTF makeTF) {
    removeIf([&](QueltInObject* child) {
        if (!isConstant(*asReference(child), value, makeTF)) {
            return false;
        }
        QueltEeNodeRef::dispose(asReference(child));
        return true;
    });
}

void QueltEeGroupOp::Children::appendCopy(QueltEeNodeRef& copy) {
    append(copy);
    copy.m_isHeld = true;
    copy.m_pHolder = &m_group;
}

QueltEeGroupOp::QueltEeGroupOp(bool isAnd) : QueltInTyped(Shape::group), m_children(*this), m_isAnd(isAnd) {}

QueltEeGroupOp::~QueltEeGroupOp() {
    QueltEeGroupOp::deleteChildren();
}

void QueltEeGroupOp::deleteChildren() {
    while (QueltInObject* const child = m_children.PopBack()) {
        QueltEeNodeRef::dispose(asReference(child));
    }
}

void QueltEeGroupOp::removeChildren() {
    while (QueltInObject* const child = m_children.PopBack()) {
        release(asReference(child));
    }
}

void QueltEeGroupOp::getChildrenRefs(QueltInLinkList& children) const {
    const auto length = static_cast<unsigned int>(m_children.GetLength());
    for (unsigned int position = 0; position < length; ++position) {
        children.PutBack(*m_children.Get(position));
    }
}

long QueltEeGroupOp::childrenAcceptVisitor(QueltEeNodeVisitor& visitor) {
    // By position, without a trace in the list, so that several threads may visit a tree that none changes. A
    // visit that takes its child out brings the next one to that position.
    long result = S_OK;
    unsigned int position = 0;
    QueltInObject* child = m_children.Get(position);
    while (result >= 0 && child != nullptr) {
        result = quelt::visitNodeOf(asReference(child), visitor);
        QueltInObject* next = m_children.Get(position);
        if (next == child) {
            next = m_children.Get(++position);
        }
        child = next;
    }
    return result;
}

long QueltEeGroupOp::addChild(QueltEeNode& node) {
    return m_children.PutBack(*node.getNodeRef());
}

QueltInLinkList& QueltEeGroupOp::getChildren() {
    return m_children;
}

unsigned char QueltEeGroupOp::becomeIfSingleChild() {
    const QueltEeNodeRef* const only = m_children.GetLength() == 1 ? asReference(m_children.Get(0)) : nullptr;
    if (only == nullptr || only->getNode() == nullptr || !hasNodeRef()) {
        return 0;
    }
    return giveWayTo(asReference(m_children.PopBack())) ? 1 : 0;
}

unsigned char QueltEeGroupOp::becomeIfNoOrSingleChild() {
    return m_children.IsEmpty() != 0 ? becomeIfNoChild() : becomeIfSingleChild();
}

unsigned char QueltEeGroupOp::becomeIfNoChild() {
    return m_children.IsEmpty() != 0 ? becomeConstant(m_isAnd) : 0;
}

unsigned char QueltEeGroupOp::hasStrongNode(E_MakeTF makeTF) {
    if (makeTF == E_DoMakeTF) {
        convertLeaves(m_children);
    }
    for (QueltInObject* const child : m_children.elements()) {
        if (isConstant(*asReference(child), !m_isAnd, makeTF)) {
            return 1;
        }
    }
    return 0;
}

unsigned char QueltEeGroupOp::becomeIfHasStrongNode(E_MakeTF makeTF) {
    return hasStrongNode(makeTF) != 0 ? becomeConstant(!m_isAnd) : 0;
}

unsigned char QueltEeGroupOp::removeWeakNodes(E_MakeTF makeTF) {
    if (makeTF == E_DoMakeTF) {
        convertLeaves(m_children);
    }
    const int length = m_children.GetLength();
    m_children.dropConstants(m_isAnd, makeTF);
    return m_children.GetLength() != length ? 1 : 0;
}

unsigned char QueltEeGroupOp::becomeConstant(bool value) {
    return hasNodeRef() && giveWayTo(makeConstant(value)) ? 1 : 0;
}

QueltEeAndOp::QueltEeAndOp() : QueltInTyped(true) {}

long QueltEeAndOp::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitAndOp);
}

QueltEeOrOp::QueltEeOrOp() : QueltInTyped(false) {}

long QueltEeOrOp::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitOrOp);
}

QueltEeSingleOp::QueltEeSingleOp() noexcept : QueltInTyped(Shape::single) {}

QueltEeSingleOp::~QueltEeSingleOp() {
    QueltEeSingleOp::deleteChildren();
}

void QueltEeSingleOp::deleteChildren() {
    if (QueltEeNodeRef* const child = std::exchange(m_pChild, nullptr); child != nullptr) {
        QueltEeNodeRef::dispose(child);
        contentsChanged();
    }
}

void QueltEeSingleOp::removeChildren() {
    if (QueltEeNodeRef* const child = std::exchange(m_pChild, nullptr); child != nullptr) {
        release(child);
        contentsChanged();
    }
}

void QueltEeSingleOp::getChildrenRefs(QueltInLinkList& children) const {
    if (m_pChild != nullptr) {
        children.PutBack(*m_pChild);
    }
}

long QueltEeSingleOp::childrenAcceptVisitor(QueltEeNodeVisitor& visitor) {
    return m_pChild != nullptr ? quelt::visitNodeOf(m_pChild, visitor) : S_OK;
}

QueltEeNodeRef* QueltEeSingleOp::getChildRef() const {
    return m_pChild;
}

long QueltEeSingleOp::setChildRef(QueltEeNodeRef& child) {
    if (child.getNode() == nullptr) {
        return E_POINTER;
    }
    if (child.getNode()->isAtOrAbove(*this)) {
        return E_INVALIDARG;
    }
    if (&child != m_pChild) {
        QueltEeNodeRef* const former = std::exchange(m_pChild, child.takeFor(this));
        contentsChanged();
        QueltEeNodeRef::dispose(former);
    }
    return S_OK;
}

QueltEeNotOp::QueltEeNotOp(unsigned char isGenerated) noexcept : m_isGenerated(isGenerated) {}

long QueltEeNotOp::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitNotOp);
}

QueltEeNotDomainOp::QueltEeNotDomainOp() noexcept = default;

long QueltEeNotDomainOp::acceptVisitor(QueltEeNodeVisitor& visitor) {
    return quelt::visit(*this, visitor, &QueltEeNodeVisitor::visitNotDomainOp);
}
