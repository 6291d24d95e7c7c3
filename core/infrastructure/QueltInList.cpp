#include "infrastructure/QueltInList.h"

#include "infrastructure/QueltInContainerTools.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

#include <algorithm>

template class QueltInTyped<QueltInList, QueltInObjectVal>;

QueltInList::QueltInList(QueltInObjectTypeClass* const& elementType) : m_pElementType(elementType) {}

QueltInList::~QueltInList() = default;

int QueltInList::PutBack(QueltInObject& object) {
    if (!quelt::isAdmitted(m_pElementType, object)) {
        m_badCast = true;
        return 0;
    }
    m_elements.push_back(&object);
    return 1;
}

QueltInString QueltInList::toString() const {
    quelt::ContainerText text(*this, '[', ']');
    for (const QueltInObject* const element : m_elements) {
        text.element(element);
    }
    return text.take();
}

QueltInObjectVal* QueltInList::clone(QueltInObjectVal* /*reuse*/) const {
    return new QueltInList(*this);
}

int QueltInList::equals(const QueltInObjectVal& other) const {
    const QueltInList* const list = quelt::asSameClass(*this, other);
    return list != nullptr && std::ranges::equal(m_elements, list->m_elements) ? 1 : 0;
}

unsigned int QueltInList::hash() const {
    std::uint64_t hash = m_elements.size();
    for (const QueltInObject* const element : m_elements) {
        hash = quelt::hashInOrder(hash, quelt::hashOfAddress(element));
    }
    return quelt::foldHash(hash);
}

QueltInList::const_iterator::~const_iterator() = default;

QueltInObject* QueltInList::const_iterator::GetGoToNext() {
    return m_position < m_pList->m_elements.size() ? m_pList->m_elements[m_position++] : nullptr;
}
