#include "effectivity/QueltEeTreeSeriesEff.h"

#include "effectivity/QueltEeTreeElementSets.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>

template class QueltInTyped<QueltEeTreeBaseEff, QueltEeVarEff>;
template class QueltInTyped<QueltEeTreeSeriesEff, QueltEeTreeBaseEff>;

QueltEeTreeBaseEff::~QueltEeTreeBaseEff() = default;

namespace {

using Bound = QueltEeTreeSeriesSelection::Bound;

/// True when all bounds of `selection` are elements of `variable`.
bool isOf(const QueltEeTreeSeriesVar& variable, const QueltEeTreeSeriesSelection& selection) noexcept {
    const auto isOwn = [&variable](const Bound& bound) { return variable.owns(*bound.element); };
    return (!selection.getSingle() || isOwn(*selection.getSingle())) &&
           (!selection.getFrom() || isOwn(*selection.getFrom())) &&
           std::ranges::all_of(selection.getTo(), isOwn);
}

/// The element of `variable` that `element` stands for, null when there is none.
const QueltEeTreeSeriesElement* ownElement(const QueltEeTreeSeriesVar& variable,
                                           const QueltEeTreeSeriesElement& element) {
    if (variable.owns(element)) {
        return &element;
    }
    QueltEeTreeSeriesElement* own = nullptr;
    const bool found = variable.getElement(element.getSeqNumber(), own) >= 0 && own != nullptr;
    return found && variable.owns(*own) ? own : nullptr;
}

} // namespace

QueltEeVarEff* QueltEeTreeSeriesEff::createVarEffClone() const {
    return new QueltEeTreeSeriesEff(*this);
}

unsigned char QueltEeTreeSeriesEff::equals(const QueltEeVarEff& other) const {
    if (!isComparable(other) || isNoVarIncluded() != other.isNoVarIncluded()) {
        return 0;
    }
    const QueltInHeapScope scratch;
    return denotedElements() == denotedElementsOf(static_cast<const QueltEeTreeSeriesEff&>(other)) ? 1 : 0;
}

long QueltEeTreeSeriesEff::opAnd(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::intersection);
}

long QueltEeTreeSeriesEff::opOr(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::unification);
}

long QueltEeTreeSeriesEff::opCut(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::difference);
}

unsigned char QueltEeTreeSeriesEff::isAllFalse() const {
    if (isNoVarIncluded() != 0) {
        return 0;
    }
    const QueltInHeapScope scratch;
    return denotedElements().count() == 0 ? 1 : 0;
}

unsigned char QueltEeTreeSeriesEff::isAllTrue() const {
    if (isNoVarIncluded() == 0) {
        return 0;
    }
    const QueltInHeapScope scratch;
    const quelt::ValueSet elements = denotedElements();
    return elements.count() == elements.limit() ? 1 : 0;
}

long QueltEeTreeSeriesEff::addSelection(const QueltEeTreeSelection& selection) {
    const QueltEeTreeSeriesSelection* const series = QueltEeTreeSeriesSelection::cast(selection);
    if (series == nullptr || m_pVariable == nullptr || !isOf(*m_pVariable, *series)) {
        return E_INVALIDARG;
    }
    m_selections.push_back(*series);
    return S_OK;
}

bool QueltEeTreeSeriesEff::holdsFor(const QueltEeTreeSeriesElement& element) const {
    const QueltEeTreeSeriesElement* const own =
        m_pVariable != nullptr ? ownElement(*m_pVariable, element) : nullptr;
    if (own == nullptr) {
        return false;
    }
    const bool selected =
        std::ranges::any_of(m_selections, [own](const QueltEeTreeSeriesSelection& selection) {
            return selection.contains(*own);
        });
    return selected != (isNegated() != 0);
}

QueltInString QueltEeTreeSeriesEff::toString() const {
    quelt::TextBuilder text;
    if (m_pVariable != nullptr) {
        text.name(m_pVariable->getName().view());
    } else {
        text << "null";
    }
    std::string_view separator = " in ";
    for (const QueltEeTreeSeriesSelection& selection : m_selections) {
        text << separator << selection.toString().view();
        separator = " | ";
    }
    if (m_selections.empty()) {
        text << " in {}";
    }
    return describe(text.take().view());
}

quelt::ValueSet QueltEeTreeSeriesEff::denotedElements() const {
    if (m_pVariable == nullptr) {
        return quelt::ValueSet(0);
    }
    quelt::ValueSet elements = quelt::elementsOf(*m_pVariable, m_selections);
    if (isNegated() != 0) {
        elements.complement();
    }
    return elements;
}

/// The elements of `other`, which is comparable, by their index in this effectivity's variable.
quelt::ValueSet QueltEeTreeSeriesEff::denotedElementsOf(const QueltEeTreeSeriesEff& other) const {
    if (other.m_pVariable == m_pVariable) {
        return other.denotedElements();
    }
    const auto& otherElements = other.m_pVariable->getElements();
    quelt::ValueSet elements(static_cast<std::uint32_t>(m_pVariable->getElements().size()));
    other.denotedElements().forEach([this, &otherElements, &elements](std::uint32_t index) {
        if (const QueltEeTreeSeriesElement* const own = ownElement(*m_pVariable, *otherElements[index])) {
            elements.insert(own->getIndex());
        }
    });
    return elements;
}

bool QueltEeTreeSeriesEff::isComparable(const QueltEeVarEff& other) const {
    const QueltEeTreeSeriesEff* const effectivity = cast(other);
    return effectivity != nullptr && quelt::areOfOneVariable(m_pVariable, effectivity->m_pVariable);
}

long QueltEeTreeSeriesEff::combine(const QueltEeVarEff& other, quelt::SetOperation operation) {
    if (!isComparable(other)) {
        return E_INVALIDARG;
    }
    const bool noVar = quelt::combineMember(operation, isNoVarIncluded() != 0, other.isNoVarIncluded() != 0);
    if (m_pVariable != nullptr) {
        const auto elements = [this, &other, operation] {
            const QueltInHeapScope scratch;
            quelt::ValueSet combined = denotedElements();
            combined.combineWith(denotedElementsOf(static_cast<const QueltEeTreeSeriesEff&>(other)),
                                 operation);
            return combined;
        }();
        const long result = quelt::selectionsOf(*m_pVariable, elements, m_selections);
        if (result < 0) {
            return result;
        }
    }
    setFlags(false, noVar);
    return S_OK;
}
