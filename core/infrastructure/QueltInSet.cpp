#include "infrastructure/QueltInSet.h"

#include "infrastructure/QueltInContainerTools.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

#include <algorithm>

template class QueltInTyped<QueltInSet, QueltInObjectVal>;

namespace {

/// The hash of an element of a set that tells objects apart by value; such a set holds value objects only.
std::uint64_t hashOf(const QueltInObject* object, bool byValue) {
    return byValue && object != nullptr ? static_cast<const QueltInObjectVal*>(object)->BinHashFunc()
                                        : quelt::hashOfAddress(object);
}

} // namespace

QueltInSet::QueltInSet(QueltInObjectTypeClass* const& elementType, int capacity, float /*loadFactor*/)
    : m_pElementType(elementType),
      m_byValue(elementType != nullptr && elementType->isa(QueltInObjectVal::sType()) != 0) {
    m_elements.reserve(quelt::roomAhead(capacity));
}

QueltInSet::QueltInSet(const QueltInSet& other) : QueltInSet(other.m_pElementType) {
    m_elements = other.m_elements;
    m_index = other.m_index;
    m_badCast = other.m_badCast;
}

QueltInSet::~QueltInSet() = default;

int QueltInSet::Put(QueltInObject& object) {
    if (!quelt::isAdmitted(m_pElementType, object)) {
        m_badCast = true;
        return 0;
    }
    if (find(object) != quelt::QueltInHashIndex::s_none) {
        return 0;
    }
    m_elements.reserve(std::size_t{m_elements.size()} + 1);
    m_index.insertInto(m_elements, hashOf(&object, m_byValue),
                       [&](const QueltInObject* element) { return hashOf(element, m_byValue); });
    m_elements.push_back(&object);
    return 1;
}

int QueltInSet::Find(const QueltInObject& object) const {
    return find(object) != quelt::QueltInHashIndex::s_none ? 1 : 0;
}

int QueltInSet::Remove(const QueltInObject& object) {
    const std::uint32_t position = find(object);
    if (position == quelt::QueltInHashIndex::s_none) {
        return 0;
    }
    m_index.erase(hashOf(&object, m_byValue), position);
    m_elements.erase(position);
    return 1;
}

void QueltInSet::Clear() {
    m_elements.clear();
    m_index.clear();
}

void QueltInSet::PutSet(const QueltInSet& other) {
    const std::uint32_t length = other.m_elements.size();
    for (std::uint32_t position = 0; position < length; ++position) {
        if (QueltInObject* const object = other.m_elements[position]; object != nullptr) {
            Put(*object);
        }
    }
}

std::uint32_t QueltInSet::find(const QueltInObject& object) const {
    if (!m_byValue) {
        return m_index.findIn(
            m_elements, [&] { return hashOf(&object, false); },
            [&](const QueltInObject* element) { return element == &object; });
    }
    const QueltInObjectVal* const value = QueltInObjectVal::cast(&object);
    if (value == nullptr) {
        return quelt::QueltInHashIndex::s_none;
    }
    return m_index.findIn(
        m_elements, [&] { return hashOf(value, true); },
        [&](const QueltInObject* element) {
            return element != nullptr && static_cast<const QueltInObjectVal*>(element)->equals(*value) != 0;
        });
}

QueltInString QueltInSet::toString() const {
    quelt::ContainerText text(*this, '{', '}');
    for (const QueltInObject* const element : m_elements) {
        text.element(element);
    }
    return text.take();
}

QueltInObjectVal* QueltInSet::clone(QueltInObjectVal* /*reuse*/) const {
    return new QueltInSet(*this);
}

int QueltInSet::equals(const QueltInObjectVal& other) const {
    const QueltInSet* const set = quelt::asSameClass(*this, other);
    if (set == nullptr || set->m_byValue != m_byValue || set->m_elements.size() != m_elements.size()) {
        return 0;
    }
    const auto isInOther = [&](const QueltInObject* element) {
        return element != nullptr && set->Find(*element) != 0;
    };
    return std::all_of(m_elements.begin(), m_elements.end(), isInOther) ? 1 : 0;
}

unsigned int QueltInSet::hash() const {
    std::uint64_t hash = m_elements.size();
    for (const QueltInObject* const element : m_elements) {
        hash += hashOf(element, m_byValue); // a sum, for it does not tell order
    }
    return quelt::foldHash(quelt::mixBits(hash));
}

QueltInSet::const_iterator::~const_iterator() = default;

QueltInObject* QueltInSet::const_iterator::Get() const {
    return m_position < m_pSet->m_elements.size() ? m_pSet->m_elements[m_position] : nullptr;
}

QueltInObject* QueltInSet::const_iterator::GetGoToNext() {
    return m_position < m_pSet->m_elements.size() ? m_pSet->m_elements[m_position++] : nullptr;
}

void QueltInDeleteWithObjects(QueltInSet* set) {
    if (set == nullptr) {
        return;
    }
    for (const QueltInObject* const object : set->elements()) {
        delete object;
    }
    delete set;
}
