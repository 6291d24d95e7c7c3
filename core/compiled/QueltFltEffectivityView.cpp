#include "compiled/QueltFltEffectivityView.h"

#include "infrastructure/QueltInGuid.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltFltEffectivityView, QueltInObject>;

QueltFltEffectivityView::QueltFltEffectivityView() : m_contexts(QueltInGuid::sType(), QueltDnf::sType()) {}

QueltFltEffectivityView::~QueltFltEffectivityView() {
    for (QueltInMap::const_iterator iterator = m_contexts.cBegin(); iterator.IsEnd() == 0;) {
        delete iterator.GetValGoToNext();
    }
}

long QueltFltEffectivityView::addContext(const QueltInGuid& guid, QueltDnf* dnf) {
    if (dnf == nullptr) {
        return E_POINTER;
    }
    if (dnf->m_isHeld || m_contexts.Get(guid) != nullptr) {
        return E_ALREADYTHERE;
    }
    if (m_contexts.GetLength() >= s_maxContexts) {
        return E_OUTOFMEMORY;
    }
    const long result = m_contexts.Put(guid, *dnf);
    dnf->m_isHeld = result >= 0;
    return result;
}

long QueltFltEffectivityView::getDnf(const QueltInGuid& guid, QueltDnf*& dnf) const {
    dnf = QueltDnf::cast(m_contexts.Get(guid));
    return dnf != nullptr ? S_OK : E_INVALIDARG;
}

QueltInString QueltFltEffectivityView::toString() const {
    quelt::TextBuilder text;
    std::string_view separator = "view(";
    QueltInMap::const_iterator iterator = m_contexts.cBegin();
    while (const QueltInMapEntry* const entry = iterator.GetEntryGoToNext()) {
        text << separator << (entry->key != nullptr ? entry->key->toString().view() : "null") << ": "
             << (entry->value != nullptr ? entry->value->toString().view() : "null");
        separator = ", ";
    }
    text << (m_contexts.IsEmpty() != 0 ? "view()" : ")");
    return text.take();
}
