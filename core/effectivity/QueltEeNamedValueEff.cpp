#include "effectivity/QueltEeNamedValueEff.h"

#include "effectivity/QueltEeValueSet.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>

template class QueltInTyped<QueltEeNamedValueEff, QueltEeVarEff>;
template class QueltInTyped<QueltEeOptionEff, QueltEeNamedValueEff>;
template class QueltInTyped<QueltEeSelectionEff, QueltEeNamedValueEff>;

namespace {

/// Options with options, selections with selections.
bool areOfOneClass(const QueltEeNamedValueEff& left, const QueltEeNamedValueEff& right) {
    return QueltEeOptionEff::isObjectOfThisType(left) == QueltEeOptionEff::isObjectOfThisType(right) &&
           QueltEeSelectionEff::isObjectOfThisType(left) == QueltEeSelectionEff::isObjectOfThisType(right);
}

} // namespace

long QueltEeNamedValueEff::addValue(std::uint32_t number) {
    if (m_pVariable == nullptr || number >= m_pVariable->getValueCount()) {
        return E_INVALIDARG;
    }
    m_values.push_back(number);
    return S_OK;
}

bool QueltEeNamedValueEff::holdsFor(std::uint32_t number) const {
    if (m_pVariable == nullptr || number >= m_pVariable->getValueCount()) {
        return false;
    }
    const bool listed = std::ranges::find(m_values, number) != m_values.end();
    return listed != (isNegated() != 0);
}

QueltInString QueltEeNamedValueEff::toString() const {
    quelt::TextBuilder text;
    if (m_pVariable != nullptr) {
        text.name(m_pVariable->getName().view());
    } else {
        text << "null";
    }
    std::string_view separator = " in {";
    for (const std::uint32_t number : m_values) {
        (text << separator).name(m_pVariable->getValueName(number));
        separator = ", ";
    }
    text << (m_values.empty() ? " in {}" : "}");
    return describe(text.take().view());
}

unsigned char QueltEeNamedValueEff::equals(const QueltEeVarEff& other) const {
    if (!isComparable(other) || isNoVarIncluded() != other.isNoVarIncluded()) {
        return 0;
    }
    const QueltInHeapScope scratch;
    return denotedValues() == denotedValuesOf(static_cast<const QueltEeNamedValueEff&>(other)) ? 1 : 0;
}

long QueltEeNamedValueEff::opAnd(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::intersection);
}

long QueltEeNamedValueEff::opOr(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::unification);
}

long QueltEeNamedValueEff::opCut(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::difference);
}

unsigned char QueltEeNamedValueEff::isAllFalse() const {
    const QueltInHeapScope scratch;
    return isNoVarIncluded() == 0 && denotedValues().count() == 0 ? 1 : 0;
}

unsigned char QueltEeNamedValueEff::isAllTrue() const {
    if (isNoVarIncluded() == 0) {
        return 0;
    }
    const QueltInHeapScope scratch;
    const quelt::ValueSet values = denotedValues();
    return values.count() == values.limit() ? 1 : 0;
}

quelt::ValueSet QueltEeNamedValueEff::denotedValues() const {
    quelt::ValueSet values(m_pVariable != nullptr ? m_pVariable->getValueCount() : 0);
    for (const std::uint32_t number : m_values) {
        values.insert(number);
    }
    if (isNegated() != 0) {
        values.complement();
    }
    return values;
}

/// The values of `other`, which is comparable, by the numbers that this effectivity's variable knows them by.
quelt::ValueSet QueltEeNamedValueEff::denotedValuesOf(const QueltEeNamedValueEff& other) const {
    if (other.m_pVariable == m_pVariable) {
        return other.denotedValues();
    }
    quelt::ValueSet values(m_pVariable->getValueCount());
    other.denotedValues().forEach([this, &other, &values](std::uint32_t number) {
        if (const auto own = m_pVariable->findValue(other.m_pVariable->getValueName(number))) {
            values.insert(*own);
        }
    });
    return values;
}

bool QueltEeNamedValueEff::isComparable(const QueltEeVarEff& other) const {
    const QueltEeNamedValueEff* const effectivity = cast(other);
    return effectivity != nullptr && areOfOneClass(*this, *effectivity) &&
           quelt::areOfOneVariable(m_pVariable, effectivity->m_pVariable);
}

long QueltEeNamedValueEff::combine(const QueltEeVarEff& other, quelt::SetOperation operation) {
    if (!isComparable(other)) {
        return E_INVALIDARG;
    }
    const auto values = [this, &other, operation] {
        const QueltInHeapScope scratch;
        quelt::ValueSet combined = denotedValues();
        combined.combineWith(denotedValuesOf(static_cast<const QueltEeNamedValueEff&>(other)), operation);
        return combined;
    }();
    const std::uint32_t count = values.count();
    if (count > quelt::maxResultLength) {
        return E_OUTOFMEMORY;
    }
    m_values.reserve(count);
    const bool noVar = quelt::combineMember(operation, isNoVarIncluded() != 0, other.isNoVarIncluded() != 0);
    m_values.clear();
    values.forEach([this](std::uint32_t number) { m_values.push_back(number); });
    setFlags(false, noVar);
    return S_OK;
}

QueltEeOptionEff::QueltEeOptionEff(const QueltEeCatOptionVar* variable) noexcept : QueltInTyped(variable) {}

QueltEeVarEff* QueltEeOptionEff::createVarEffClone() const {
    return new QueltEeOptionEff(*this);
}

QueltEeSelectionEff::QueltEeSelectionEff(const QueltEeSelectionVar* variable) noexcept
    : QueltInTyped(variable) {}

QueltEeVarEff* QueltEeSelectionEff::createVarEffClone() const {
    return new QueltEeSelectionEff(*this);
}
