#include "compiled/QueltDnf.h"

#include "compiled/QueltDnfLiterals.h"
#include "compiled/QueltDnfTree.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <memory>

template class QueltInTyped<QueltDnf, QueltInObject>;

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
    return quelt::makeDnfTree(*this, [](const QueltEeNode& leaf) { return leaf.clone(); });
}

QueltInString QueltDnf::toString() const {
    const QueltInHeapScope scratch;
    const std::unique_ptr<QueltEeNodeRef> tree(makeTree());
    return tree != nullptr ? tree->toString() : QueltInString("null");
}
