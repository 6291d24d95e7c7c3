#include "compiled/QueltFltDomainEffectivity.h"

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>

template class QueltInTyped<QueltFltDomainEffectivity, QueltInObject>;

QueltFltDomainEffectivity::~QueltFltDomainEffectivity() {
    for (const Entry& entry : m_views) {
        delete entry.view;
    }
}

long QueltFltDomainEffectivity::addView(QueltExpressionView kind, QueltFltEffectivityView* view) {
    if (view == nullptr) {
        return E_POINTER;
    }
    const Entry* const place = std::ranges::lower_bound(m_views, kind, {}, &Entry::kind);
    if (view->m_isHeld || (place != m_views.end() && place->kind == kind)) {
        return E_ALREADYTHERE;
    }
    if (m_views.size() >= s_maxViews) {
        return E_OUTOFMEMORY;
    }
    m_views.insert(static_cast<std::uint32_t>(place - m_views.begin()), {kind, view});
    view->m_isHeld = true;
    return S_OK;
}

QueltFltEffectivityView* QueltFltDomainEffectivity::getEffectivityView(QueltExpressionView kind) const {
    const auto found = std::ranges::lower_bound(m_views, kind, {}, &Entry::kind);
    return found != m_views.end() && found->kind == kind ? found->view : nullptr;
}

QueltInString QueltFltDomainEffectivity::toString() const {
    quelt::TextBuilder text;
    std::string_view separator = "domain(";
    for (const Entry& entry : m_views) {
        text << separator << static_cast<std::int64_t>(entry.kind) << ": " << entry.view->toString().view();
        separator = ", ";
    }
    text << (m_views.empty() ? "domain()" : ")");
    return text.take();
}
