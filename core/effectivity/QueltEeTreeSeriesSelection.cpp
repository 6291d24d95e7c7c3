#include "effectivity/QueltEeTreeSeriesSelection.h"

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>

template class QueltInTyped<QueltEeTreeSeriesSelectionBound, QueltInObject>;
template class QueltInTyped<QueltEeTreeSelection, QueltInObject>;
template class QueltInTyped<QueltEeTreeSeriesSelection, QueltEeTreeSelection>;

QueltEeTreeSelection::~QueltEeTreeSelection() = default;
QueltEeTreeSeriesSelectionBound::~QueltEeTreeSeriesSelectionBound() = default;

namespace {

using Bound = QueltEeTreeSeriesSelection::Bound;

Bound boundOf(const QueltEeTreeSeriesSelectionBound& bound) noexcept {
    return {bound.getElement(), bound.isIncluded() != 0};
}

/// True when a way that starts at `from` can come to `element`.
bool startsAtOrAbove(const std::optional<Bound>& from, const QueltEeTreeSeriesElement& element) noexcept {
    return !from || (from->element == &element ? from->included : from->element->isAtOrAbove(element));
}

/// True when a way that ends at `to` comes by `element`.
bool endsAtOrBelow(const Bound& to, const QueltEeTreeSeriesElement& element) noexcept {
    return to.element == &element ? to.included : element.isAtOrAbove(*to.element);
}

void describeWay(quelt::TextBuilder& text, const std::optional<Bound>& from, const Bound* to) {
    if (from) {
        text << (from->included ? "[" : "(") << std::int64_t{from->element->getSeqNumber()} << ", ";
    } else {
        text << "[-inf, ";
    }
    if (to != nullptr) {
        text << std::int64_t{to->element->getSeqNumber()} << (to->included ? "]" : ")");
    } else {
        text << "+inf]";
    }
}

} // namespace

long QueltEeTreeSeriesSelection::setSingleSelection(const QueltEeTreeSeriesSelectionBound& bound) {
    if (bound.getElement() == nullptr) {
        return E_POINTER;
    }
    if (m_single || m_from || !m_to.empty()) {
        return E_ALREADYTHERE;
    }
    m_single = boundOf(bound);
    return S_OK;
}

long QueltEeTreeSeriesSelection::setFromBound(const QueltEeTreeSeriesSelectionBound& bound) {
    if (bound.getElement() == nullptr) {
        return E_POINTER;
    }
    if (m_single || m_from) {
        return E_ALREADYTHERE;
    }
    m_from = boundOf(bound);
    return S_OK;
}

long QueltEeTreeSeriesSelection::addToBound(const QueltEeTreeSeriesSelectionBound& bound) {
    if (bound.getElement() == nullptr) {
        return E_POINTER;
    }
    if (m_single) {
        return E_ALREADYTHERE;
    }
    m_to.push_back(boundOf(bound));
    return S_OK;
}

bool QueltEeTreeSeriesSelection::contains(const QueltEeTreeSeriesElement& element) const {
    if (m_single) {
        return m_single->element == &element && m_single->included;
    }
    if (!startsAtOrAbove(m_from, element)) {
        return false;
    }
    return m_to.empty() ||
           std::ranges::any_of(m_to, [&element](const Bound& to) { return endsAtOrBelow(to, element); });
}

QueltInString QueltEeTreeSeriesSelection::toString() const {
    quelt::TextBuilder text;
    if (m_single) {
        text << (m_single->included ? "[" : "(") << std::int64_t{m_single->element->getSeqNumber()}
             << (m_single->included ? "]" : ")");
        return text.take();
    }
    if (m_to.empty()) {
        describeWay(text, m_from, nullptr);
        return text.take();
    }
    for (std::uint32_t way = 0; way < m_to.size(); ++way) {
        text << (way > 0 ? " | " : "");
        describeWay(text, m_from, &m_to[way]);
    }
    return text.take();
}
