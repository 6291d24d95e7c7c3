#include "compiled/QueltFltEffectivity.h"

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>

template class QueltInTyped<QueltFltEffectivity, QueltInObject>;

QueltFltEffectivity::~QueltFltEffectivity() {
    for (const Entry& entry : m_domains) {
        delete entry.domain;
    }
    for (const QueltInObject* const object : m_adopted) {
        delete object;
    }
}

long QueltFltEffectivity::addDomain(unsigned int number, QueltFltDomainEffectivity* domain) {
    if (domain == nullptr) {
        return E_POINTER;
    }
    const Entry* const place = std::ranges::lower_bound(m_domains, number, {}, &Entry::number);
    if (domain->m_isHeld || (place != m_domains.end() && place->number == number)) {
        return E_ALREADYTHERE;
    }
    if (m_domains.size() >= s_maxDomains) {
        return E_OUTOFMEMORY;
    }
    m_domains.insert(static_cast<std::uint32_t>(place - m_domains.begin()), {number, domain});
    domain->m_isHeld = true;
    return S_OK;
}

void QueltFltEffectivity::adopt(std::unique_ptr<QueltInObject> object) {
    m_adopted.push_back(object.get());
    static_cast<void>(object.release()); // only now, for the vector may throw
}

unsigned int QueltFltEffectivity::getNbDomainEffectivity() const {
    return m_domains.size();
}

QueltFltDomainEffectivity* QueltFltEffectivity::getDomainEffectivity(unsigned int number) const {
    const auto found = std::ranges::lower_bound(m_domains, number, {}, &Entry::number);
    return found != m_domains.end() && found->number == number ? found->domain : nullptr;
}

QueltInString QueltFltEffectivity::toString() const {
    quelt::TextBuilder text;
    std::string_view separator = "compiled(";
    for (const Entry& entry : m_domains) {
        text << separator << std::int64_t{entry.number} << ": " << entry.domain->toString().view();
        separator = ", ";
    }
    text << (m_domains.empty() ? "compiled()" : ")");
    return text.take();
}
