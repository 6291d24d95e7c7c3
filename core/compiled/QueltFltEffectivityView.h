#pragma once

#include "compiled/QueltDnf.h"
#include "infrastructure/QueltInMap.h"

#include <cstddef>

class QueltInGuid;

class QueltFltEffectivityView;
extern template class QUELT_CORE_API QueltInTyped<QueltFltEffectivityView, QueltInObject>;

/// One way to look at a compiled domain effectivity: for each context, which is a model dictionary known by
/// its GUID, a disjunctive normal form.
class QUELT_CORE_API QueltFltEffectivityView : public QueltInTyped<QueltFltEffectivityView, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltFltEffectivityView";
    /// How many contexts a view may have.
    static constexpr int s_maxContexts = 10'000;

    /// Without contexts.
    QueltFltEffectivityView();
    /// Deletes the normal forms.
    ~QueltFltEffectivityView() override;
    QueltFltEffectivityView(const QueltFltEffectivityView&) = delete;
    QueltFltEffectivityView& operator=(const QueltFltEffectivityView&) = delete;

    /// The contexts, in the order added: from the dictionary's GUID (QueltInGuid) to its QueltDnf. It is read
    /// directly, and filled by addContext.
    QueltInMap m_contexts;

    /// Files `dnf` under the dictionary `guid`; the view takes it over. E_POINTER for null; E_ALREADYTHERE
    /// when the dictionary has one, which stays, or when a view holds `dnf` already; E_OUTOFMEMORY past
    /// s_maxContexts; what was refused stays as it was.
    long addContext(const QueltInGuid& guid, QueltDnf* dnf);
    /// The normal form of the dictionary `guid`; it stays the view's. Null and E_INVALIDARG when the
    /// dictionary is none of the contexts. Other views may have failures of their own.
    virtual long getDnf(const QueltInGuid& guid, QueltDnf*& dnf) const;

    /// "view(<guid>: AND(eff(ECO-1), ...), <guid>: TRUE)".
    [[nodiscard]] QueltInString toString() const override;

private:
    friend class QueltFltDomainEffectivity;
    bool m_isHeld = false;
};
