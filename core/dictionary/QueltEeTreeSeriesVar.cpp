#include "dictionary/QueltEeTreeSeriesVar.h"

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>

template class QueltInTyped<QueltEeTreeSeriesElement, QueltInObject>;
template class QueltInTyped<QueltEeTreeSeriesVar, QueltEeVariable>;

namespace {

/// Two elements without parent, or two whose parents have the same number.
bool haveSameParent(const QueltEeTreeSeriesElement& left, const QueltEeTreeSeriesElement& right) noexcept {
    if (left.getParent() == nullptr || right.getParent() == nullptr) {
        return left.getParent() == right.getParent();
    }
    return left.getParent()->getSeqNumber() == right.getParent()->getSeqNumber();
}

} // namespace

QueltEeTreeSeriesElement::QueltEeTreeSeriesElement(unsigned int sequenceNumber,
                                                   const QueltEeTreeSeriesElement* parent,
                                                   std::uint32_t index)
    : m_sequenceNumber(sequenceNumber), m_depth(parent != nullptr ? parent->m_depth + 1 : 0), m_index(index),
      m_pParent(parent), m_pJump(this) {
    if (parent == nullptr) {
        return;
    }
    // Where the parent's jump and the jump from there are equally long, one jump replaces both: lengths then
    // follow the skew binary numbers, and a way of n steps up takes a number of jumps in the logarithm of n.
    const QueltEeTreeSeriesElement& above = *parent->m_pJump;
    const bool joins = parent->m_depth - above.m_depth == above.m_depth - above.m_pJump->m_depth;
    m_pJump = joins ? above.m_pJump : parent;
}

bool QueltEeTreeSeriesElement::isAtOrAbove(const QueltEeTreeSeriesElement& other) const noexcept {
    const QueltEeTreeSeriesElement* at = &other;
    while (at->m_depth > m_depth) {
        at = at->m_pJump->m_depth >= m_depth ? at->m_pJump : at->m_pParent;
    }
    return at == this;
}

QueltInString QueltEeTreeSeriesElement::toString() const {
    quelt::TextBuilder text;
    text << std::int64_t{m_sequenceNumber};
    return text.take();
}

QueltEeTreeSeriesVar::QueltEeTreeSeriesVar(const QueltInString& name, const QueltInGuid& guid,
                                           unsigned int number)
    : QueltInTyped(name, guid), m_number(number) {}

QueltEeTreeSeriesVar::~QueltEeTreeSeriesVar() = default;

long QueltEeTreeSeriesVar::addRootElement(unsigned int sequenceNumber) {
    return m_elements.empty() ? add(sequenceNumber, nullptr) : E_ALREADYTHERE;
}

long QueltEeTreeSeriesVar::addElement(unsigned int sequenceNumber, unsigned int parent) {
    const auto found = m_byNumber.find(parent);
    return found != m_byNumber.end() ? add(sequenceNumber, found->second) : E_INVALIDARG;
}

long QueltEeTreeSeriesVar::add(unsigned int sequenceNumber, const QueltEeTreeSeriesElement* parent) {
    if (m_byNumber.contains(sequenceNumber)) {
        return E_ALREADYTHERE;
    }
    const auto index = static_cast<std::uint32_t>(m_elements.size());
    std::unique_ptr<QueltEeTreeSeriesElement> element(
        new QueltEeTreeSeriesElement(sequenceNumber, parent, index));
    m_byNumber.emplace(sequenceNumber, element.get());
    m_elements.push_back(std::move(element));
    return S_OK;
}

long QueltEeTreeSeriesVar::getElement(unsigned int sequenceNumber, QueltEeTreeSeriesElement*& element) const {
    const auto found = m_byNumber.find(sequenceNumber);
    element = found != m_byNumber.end() ? found->second : nullptr;
    return S_OK;
}

QueltEeTreeSeriesElement* QueltEeTreeSeriesVar::getRootTreeSeriesElement() const {
    return m_elements.empty() ? nullptr : m_elements.front().get();
}

bool QueltEeTreeSeriesVar::owns(const QueltEeTreeSeriesElement& element) const noexcept {
    return element.getIndex() < m_elements.size() && m_elements[element.getIndex()].get() == &element;
}

bool QueltEeTreeSeriesVar::agreesWith(const QueltEeTreeSeriesVar& other) const {
    if (this == &other) {
        return true;
    }
    if (getGuid() != other.getGuid() || m_elements.size() != other.m_elements.size()) {
        return false;
    }
    return std::ranges::all_of(
        m_elements, [&other](const std::unique_ptr<QueltEeTreeSeriesElement>& element) {
            const auto same = other.m_byNumber.find(element->getSeqNumber());
            return same != other.m_byNumber.end() && haveSameParent(*element, *same->second);
        });
}
