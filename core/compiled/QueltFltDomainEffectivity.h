#pragma once

#include "compiled/QueltFltEffectivityView.h"
#include "infrastructure/QueltInSmallVector.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Which view of a compiled domain effectivity. Kinds without a name here are kept by their number.
enum class QueltExpressionView : std::uint32_t {
    full = 0 ///< everything that was said
};

class QueltFltDomainEffectivity;
extern template class QUELT_CORE_API QueltInTyped<QueltFltDomainEffectivity, QueltInObject>;

/// What a compiled effectivity says in one domain: a view of each kind that it was compiled for.
class QUELT_CORE_API QueltFltDomainEffectivity
    : public QueltInTyped<QueltFltDomainEffectivity, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltFltDomainEffectivity";
    /// How many views a domain may have.
    static constexpr std::size_t s_maxViews = 1'000;

    /// A view (owned by the domain) with its kind.
    struct Entry {
        QueltExpressionView kind;      ///< how the view looks at the domain
        QueltFltEffectivityView* view; ///< never null
    };

    /// Without views.
    QueltFltDomainEffectivity() = default;
    /// Deletes the views.
    ~QueltFltDomainEffectivity() override;
    QueltFltDomainEffectivity(const QueltFltDomainEffectivity&) = delete;
    QueltFltDomainEffectivity& operator=(const QueltFltDomainEffectivity&) = delete;

    /// Takes `view` over as the view of this kind. E_POINTER for null; E_ALREADYTHERE when there is one of
    /// this kind, which stays, or when a domain holds `view` already; E_OUTOFMEMORY past s_maxViews; what was
    /// refused stays as it was.
    long addView(QueltExpressionView kind, QueltFltEffectivityView* view);
    /// The view of this kind, not owned by the caller; null when there is none.
    [[nodiscard]] virtual QueltFltEffectivityView* getEffectivityView(QueltExpressionView kind) const;
    /// All views, by ascending kind.
    [[nodiscard]] std::span<const Entry> getViews() const noexcept { return m_views.values(); }

    /// "domain(0: view(...))", by ascending kind.
    [[nodiscard]] QueltInString toString() const override;

private:
    friend class QueltFltEffectivity;
    QueltInSmallVector<Entry, 1> m_views;
    bool m_isHeld = false;
};
