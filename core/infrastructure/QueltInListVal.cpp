#include "infrastructure/QueltInListVal.h"

#include "infrastructure/QueltInContainerTools.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

#include <algorithm>
#include <memory>

template class QueltInTyped<QueltInListVal, QueltInObjectVal>;

QueltInListVal::QueltInListVal(QueltInObjectTypeClass* const& elementType) : m_pElementType(elementType) {}

QueltInListVal::QueltInListVal(const QueltInListVal& other) : QueltInListVal(other.m_pElementType) {
    m_elements.reserve(other.m_elements.size());
    for (const QueltInObjectVal* const element : other.m_elements) {
        m_elements.push_back(element->clone(nullptr));
    }
    m_badCast = other.m_badCast;
}

QueltInListVal::~QueltInListVal() {
    for (const QueltInObjectVal* const element : m_elements) {
        delete element;
    }
}

QueltInObjectVal* QueltInListVal::PutBack(const QueltInObjectVal& value) {
    if (!quelt::isAdmitted(m_pElementType, value)) {
        m_badCast = true;
        return nullptr;
    }
    std::unique_ptr<QueltInObjectVal> copy(value.clone(nullptr));
    m_elements.push_back(copy.get());
    return copy.release();
}

QueltInString QueltInListVal::toString() const {
    quelt::ContainerText text(*this, '[', ']');
    for (const QueltInObjectVal* const element : m_elements) {
        text.element(element);
    }
    return text.take();
}

QueltInObjectVal* QueltInListVal::clone(QueltInObjectVal* /*reuse*/) const {
    return new QueltInListVal(*this);
}

int QueltInListVal::equals(const QueltInObjectVal& other) const {
    const QueltInListVal* const list = quelt::asSameClass(*this, other);
    const auto same = [](const QueltInObjectVal* left, const QueltInObjectVal* right) {
        return left->equals(*right) != 0;
    };
    return list != nullptr && std::ranges::equal(m_elements, list->m_elements, same) ? 1 : 0;
}

unsigned int QueltInListVal::hash() const {
    std::uint64_t hash = m_elements.size();
    for (const QueltInObjectVal* const element : m_elements) {
        hash = quelt::hashInOrder(hash, element->BinHashFunc());
    }
    return quelt::foldHash(hash);
}

QueltInListVal::const_iterator::~const_iterator() = default;

QueltInObjectVal* QueltInListVal::const_iterator::GetGoToNext() {
    return m_position < m_pList->m_elements.size() ? m_pList->m_elements[m_position++] : nullptr;
}
