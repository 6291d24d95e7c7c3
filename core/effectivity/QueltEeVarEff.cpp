#include "effectivity/QueltEeVarEff.h"

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeVarEff, QueltInObject>;

long QueltEeVarEff::opNot() {
    m_negated = !m_negated;
    return S_OK;
}

long QueltEeVarEff::opNotDom() {
    m_negated = !m_negated;
    m_noVar = !m_noVar;
    return S_OK;
}

unsigned char QueltEeVarEff::isNegated() const {
    return m_negated ? 1 : 0;
}

unsigned char QueltEeVarEff::isNoVarIncluded() const {
    return m_noVar != m_negated ? 1 : 0;
}

unsigned char QueltEeVarEff::getNoVar() const {
    return m_noVar ? 1 : 0;
}

void QueltEeVarEff::switchNoVar() {
    m_noVar = !m_noVar;
}

QueltInString QueltEeVarEff::describe(std::string_view values) const {
    quelt::TextBuilder text;
    if (isNegated() != 0) {
        text << "not (" << values << ")";
    } else {
        text << values;
    }
    if (isNoVarIncluded() != 0) {
        text << "?";
    }
    return text.take();
}
