#include "infrastructure/QueltInLinkList.h"

#include "infrastructure/QueltInContainerTools.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

#include <algorithm>

template class QueltInTyped<QueltInLinkList, QueltInObjectVal>;

QueltInLinkList::QueltInLinkList(QueltInObjectTypeClass* const& elementType) : m_pElementType(elementType) {}

QueltInLinkList::QueltInLinkList(const QueltInLinkList& other) : QueltInLinkList(other.m_pElementType) {
    m_elements = other.m_elements;
}

QueltInLinkList::~QueltInLinkList() {
    for (const_iterator* walker = m_pIterators; walker != nullptr; walker = walker->m_pNextOfList) {
        walker->m_pList = nullptr;
        walker->m_pFollowed = nullptr;
    }
}

long QueltInLinkList::Set(unsigned int position, QueltInObject& object) {
    if (position > m_elements.size() || !quelt::isAdmitted(m_pElementType, object)) {
        return E_INVALIDARG;
    }
    m_elements.insert(position, &object);
    noteInsertion(position);
    return S_OK;
}

long QueltInLinkList::Remove(unsigned int position) {
    if (position >= m_elements.size()) {
        return E_INVALIDARG;
    }
    m_elements.erase(position);
    noteRemoval(position);
    return S_OK;
}

long QueltInLinkList::RemoveEach(std::span<const std::uint32_t> positions) {
    const auto doNotAscend = [](std::uint32_t left, std::uint32_t right) { return left >= right; };
    if (std::ranges::adjacent_find(positions, doNotAscend) != positions.end() ||
        (!positions.empty() && positions.back() >= m_elements.size())) {
        return E_INVALIDARG;
    }
    std::uint32_t position = 0;
    removeIf([&](const QueltInObject* /*element*/) {
        const bool isOut = !positions.empty() && positions.front() == position++;
        positions = isOut ? positions.subspan(1) : positions;
        return isOut;
    });
    return S_OK;
}

bool QueltInLinkList::canPlace(std::span<const Placed> placed) const {
    std::uint32_t length = m_elements.size();
    const Placed* previous = nullptr;
    for (const Placed& one : placed) {
        if (one.position > length++ || (previous != nullptr && one.position <= previous->position) ||
            one.object == nullptr || !quelt::isAdmitted(m_pElementType, *one.object)) {
            return false;
        }
        previous = &one;
    }
    return true;
}

long QueltInLinkList::SetEach(std::span<const Placed> placed) {
    if (!canPlace(placed)) {
        return E_INVALIDARG;
    }
    const decltype(m_elements) former = m_elements;
    std::span<QueltInObject* const> left = former.values();
    m_elements.reserve(left.size() + placed.size());
    m_elements.clear();
    for (const Placed& one : placed) {
        while (m_elements.size() < one.position) {
            m_elements.push_back(left.front());
            left = left.subspan(1);
        }
        m_elements.push_back(one.object);
        noteInsertion(one.position);
    }
    for (QueltInObject* const element : left) {
        m_elements.push_back(element);
    }
    return S_OK;
}

QueltInObject* QueltInLinkList::PopBack() {
    if (m_elements.empty()) {
        return nullptr;
    }
    const std::uint32_t position = lastPosition();
    QueltInObject* const last = m_elements[position];
    m_elements.erase(position);
    noteRemoval(position);
    return last;
}

long QueltInLinkList::PutBack(QueltInObject& object) {
    return Set(m_elements.size(), object);
}

void QueltInLinkList::noteInsertion(std::uint32_t position) noexcept {
    for (const_iterator* walker = m_pIterators; walker != nullptr; walker = walker->m_pNextOfList) {
        if (walker->m_position > position) {
            ++walker->m_position;
        }
    }
}

void QueltInLinkList::noteRemoval(std::uint32_t position) noexcept {
    for (const_iterator* walker = m_pIterators; walker != nullptr; walker = walker->m_pNextOfList) {
        if (walker->m_position > position) {
            --walker->m_position;
        }
    }
}

QueltInString QueltInLinkList::toString() const {
    quelt::ContainerText text(*this, '[', ']');
    for (const QueltInObject* const element : m_elements) {
        text.element(element);
    }
    return text.take();
}

QueltInObjectVal* QueltInLinkList::clone(QueltInObjectVal* /*reuse*/) const {
    return new QueltInLinkList(*this);
}

int QueltInLinkList::equals(const QueltInObjectVal& other) const {
    const QueltInLinkList* const list = quelt::asSameClass(*this, other);
    return list != nullptr && std::ranges::equal(m_elements, list->m_elements) ? 1 : 0;
}

unsigned int QueltInLinkList::hash() const {
    std::uint64_t hash = m_elements.size();
    for (const QueltInObject* const element : m_elements) {
        hash = quelt::hashInOrder(hash, quelt::hashOfAddress(element));
    }
    return quelt::foldHash(hash);
}

QueltInLinkList::const_iterator::const_iterator(const QueltInLinkList& list, std::uint32_t position) noexcept
    : m_pList(&list), m_position(position) {}

QueltInLinkList::const_iterator::const_iterator(QueltInLinkList& list, std::uint32_t position) noexcept
    : m_pList(&list), m_pFollowed(&list), m_pNextOfList(list.m_pIterators), m_position(position) {
    list.m_pIterators = this;
}

QueltInLinkList::const_iterator::~const_iterator() {
    if (m_pFollowed == nullptr) {
        return;
    }
    const_iterator** link = &m_pFollowed->m_pIterators;
    while (*link != this) {
        link = &(*link)->m_pNextOfList;
    }
    *link = m_pNextOfList;
}

QueltInObject* QueltInLinkList::const_iterator::Get() const noexcept {
    return m_pList != nullptr ? m_pList->Get(m_position) : nullptr;
}

QueltInObject* QueltInLinkList::const_iterator::GetGoToNext() noexcept {
    if (m_pList == nullptr || m_position >= m_pList->m_elements.size()) {
        return nullptr;
    }
    return m_pList->m_elements[m_position++];
}

QueltInLinkList::iterator::~iterator() = default;
