#pragma once

#include "compiled/QueltFltDomainEffectivity.h"
#include "infrastructure/QueltInMemory.h"

#include <cstddef>
#include <memory>
#include <span>

class QueltFltEffectivity;
extern template class QUELT_CORE_API QueltInTyped<QueltFltEffectivity, QueltInObject>;

/// A compiled effectivity: what it says in each domain, by number (1 history, 2 evolution, variant and
/// change, 3 constant). It owns its domains, and with them all views and normal forms; and, where they were
/// handed over to it, the effectivities and variables that the leaves of the normal forms refer to.
class QUELT_CORE_API QueltFltEffectivity : public QueltInTyped<QueltFltEffectivity, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltFltEffectivity";
    /// How many domains an effectivity may have.
    static constexpr std::size_t s_maxDomains = 1'000;

    /// A domain (owned by the effectivity) with its number.
    struct Entry {
        unsigned int number;               ///< 1 history; 2 evolution, variant and change; 3 constant
        QueltFltDomainEffectivity* domain; ///< never null
    };

    /// Without domains.
    QueltFltEffectivity() = default;
    /// Deletes the domains, then what was handed over to adopt().
    ~QueltFltEffectivity() override;
    QueltFltEffectivity(const QueltFltEffectivity&) = delete;
    QueltFltEffectivity& operator=(const QueltFltEffectivity&) = delete;

    /// Takes `domain` over as the one with this number. E_POINTER for null; E_ALREADYTHERE when there is one
    /// with this number, which stays, or when an effectivity holds `domain` already; E_OUTOFMEMORY past
    /// s_maxDomains; what was refused stays as it was.
    long addDomain(unsigned int number, QueltFltDomainEffectivity* domain);
    /// Takes over an object that leaves of the normal forms refer to: an effectivity, a variable. It is
    /// deleted after the domains. Null is accepted.
    void adopt(std::unique_ptr<QueltInObject> object);

    /// The number of domains.
    [[nodiscard]] virtual unsigned int getNbDomainEffectivity() const;
    /// The domain with this number (not the position), not owned by the caller; null when there is none.
    [[nodiscard]] virtual QueltFltDomainEffectivity* getDomainEffectivity(unsigned int number) const;
    /// All domains, by ascending number.
    [[nodiscard]] std::span<const Entry> getDomains() const noexcept { return m_domains.values(); }

    /// "compiled(2: domain(...))", by ascending number.
    [[nodiscard]] QueltInString toString() const override;

private:
    QueltInSmallVector<Entry, 1> m_domains;
    QueltInVector<QueltInObject*> m_adopted;
};
