#include "expression/QueltQmSpecList.h"

#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <memory>
#include <utility>

template class QueltInTyped<QueltQmSpecList, QueltInObject>;

QueltQmSpecList::QueltQmSpecList(int capacity)
    : m_varEffs(QueltInIntHolder::sType(), QueltEeVarEff::sType(), capacity, 0.0F),
      m_named(QueltEeEffectivity::sType()) {}

QueltQmSpecList::~QueltQmSpecList() {
    for (QueltInMap::const_iterator criteria = m_varEffs.cBegin(); criteria.IsEnd() == 0;) {
        delete criteria.GetValGoToNext();
    }
}

long QueltQmSpecList::addVarEff(QueltEeVarEff*& effectivity) {
    if (effectivity == nullptr) {
        return E_POINTER;
    }
    return m_varEffs.append(*effectivity);
}

const QueltInMap& QueltQmSpecList::getVarEffs() const {
    return m_varEffs;
}

long QueltQmSpecList::replaceVarEff(unsigned int position, QueltEeVarEff& effectivity) {
    const QueltInIntHolder key(position);
    const QueltInObject* const former = m_varEffs.Get(key);
    if (former == nullptr) {
        return E_INVALIDARG;
    }
    if (former == &effectivity) {
        return S_OK;
    }
    const long result = m_varEffs.Put(key, effectivity);
    if (result >= 0) {
        delete former;
    }
    return result;
}

QueltInSet& QueltQmSpecList::getNamedEffectivities() {
    return m_named;
}

const QueltInSet& QueltQmSpecList::getNamedEffectivities() const {
    return m_named;
}

QueltQmSpecList* QueltQmSpecList::clone() const {
    auto copy = std::make_unique<QueltQmSpecList>(m_varEffs.GetLength());
    for (QueltInMap::const_iterator criteria = m_varEffs.cBegin(); criteria.IsEnd() == 0;) {
        QueltEeVarEff* criterion =
            static_cast<QueltEeVarEff*>(criteria.GetValGoToNext())->createVarEffClone();
        if (criterion == nullptr) {
            return nullptr;
        }
        copy->addVarEff(criterion);
    }
    copy->m_named.PutSet(m_named);
    return copy.release();
}

QueltInString QueltQmSpecList::toString() const {
    quelt::TextBuilder text;
    const char* separator = "";
    for (QueltInMap::const_iterator criteria = m_varEffs.cBegin(); criteria.IsEnd() == 0;) {
        text << std::exchange(separator, ", ") << criteria.GetValGoToNext()->toString().view();
    }
    QueltInSet::const_iterator named = m_named.cBegin();
    while (const QueltInObject* const effectivity = named.GetGoToNext()) {
        text << std::exchange(separator, ", ") << "eff(";
        text.name(static_cast<const QueltEeEffectivity*>(effectivity)->getName().view()) << ")";
    }
    return text.take();
}
