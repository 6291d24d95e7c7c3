#include "compiled/QueltDnf.h"

#include "compiled/QueltDnfLiterals.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <memory>

template class QueltInTyped<QueltDnf, QueltInObject>;

namespace {

using OwnedTree = std::unique_ptr<QueltEeNodeRef>;

OwnedTree makeTreeOf(const QueltDnf::Conjunction& conjunction) {
    if (conjunction.size() == 1) {
        return OwnedTree(conjunction.front()->getNode()->clone());
    }
    if (conjunction.empty()) {
        return OwnedTree((new QueltEeTrue)->getNodeRef());
    }
    auto* const group = new QueltEeAndOp;
    OwnedTree tree(group->getNodeRef());
    for (const QueltEeNodeRef* const literal : conjunction) {
        QueltEeNodeRef* const copy = literal->getNode()->clone();
        if (copy == nullptr) {
            return nullptr;
        }
        group->getChildren().PutBack(*copy);
    }
    return tree;
}

} // namespace

QueltDnf::QueltDnf() = default;

QueltDnf::~QueltDnf() {
    for (const Conjunction& conjunction : m_conjunctions) {
        for (QueltEeNodeRef* const literal : conjunction) {
            delete literal;
        }
    }
}

long QueltDnf::addConjunction() {
    if (m_conjunctions.size() >= s_maxConjunctions) {
        return E_OUTOFMEMORY;
    }
    m_conjunctions.emplace_back();
    return S_OK;
}

long QueltDnf::addLiteral(QueltEeNodeRef* literal) {
    if (literal == nullptr) {
        return E_POINTER;
    }
    const bool isFree = literal->standsAlone() && literal->ownsNode();
    const std::size_t size = isFree ? quelt::sizeOfLiteral(literal->getNode()) : 0;
    if (m_conjunctions.empty() || size == 0) {
        return E_INVALIDARG;
    }
    if (m_literals >= s_maxLiterals || size > s_maxValues - m_values) {
        return E_OUTOFMEMORY;
    }
    m_conjunctions.back().push_back(literal);
    static_cast<void>(literal->takeFor(nullptr)); // it stands alone, so that is the reference itself
    ++m_literals;
    m_values += size;
    return S_OK;
}

QueltEeNodeRef* QueltDnf::makeTree() const {
    if (m_conjunctions.empty()) {
        return (new QueltEeFalse)->getNodeRef();
    }
    if (m_conjunctions.size() == 1) {
        return makeTreeOf(m_conjunctions.front()).release();
    }
    auto* const group = new QueltEeOrOp;
    OwnedTree tree(group->getNodeRef());
    for (const Conjunction& conjunction : m_conjunctions) {
        QueltEeNodeRef* const branch = makeTreeOf(conjunction).release();
        if (branch == nullptr) {
            return nullptr;
        }
        group->getChildren().PutBack(*branch);
    }
    return tree.release();
}

QueltInString QueltDnf::toString() const {
    const QueltInHeapScope scratch;
    const OwnedTree tree(makeTree());
    return tree != nullptr ? tree->toString() : QueltInString("null");
}
