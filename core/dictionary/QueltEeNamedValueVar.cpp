#include "dictionary/QueltEeNamedValueVar.h"

#include "infrastructure/QueltInKeyedHash.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>

template class QueltInTyped<QueltEeNamedValueVar, QueltEeVariable>;
template class QueltInTyped<QueltEeCatOptionVar, QueltEeNamedValueVar>;
template class QueltInTyped<QueltEeSelectionVar, QueltEeNamedValueVar>;

QueltEeNamedValueVar::~QueltEeNamedValueVar() = default;
QueltEeCatOptionVar::~QueltEeCatOptionVar() = default;
QueltEeSelectionVar::~QueltEeSelectionVar() = default;

std::uint32_t QueltEeNamedValueVar::addValue(std::string_view name) {
    if (const std::optional<std::uint32_t> known = findValue(name)) {
        return *known;
    }
    const std::uint32_t number = getValueCount();
    m_values.emplace_back(name);
    m_index.insert(quelt::keyedHash(name), number);
    return number;
}

std::uint32_t QueltEeNamedValueVar::getValueCount() const noexcept {
    return static_cast<std::uint32_t>(m_values.size());
}

std::string_view QueltEeNamedValueVar::getValueName(std::uint32_t number) const noexcept {
    return number < m_values.size() ? m_values[number].text().view() : std::string_view();
}

std::optional<std::uint32_t> QueltEeNamedValueVar::findValue(std::string_view name) const {
    const std::uint32_t number = m_index.find(quelt::keyedHash(name), [&](std::uint32_t candidate) {
        return m_values[candidate].text().view() == name;
    });
    return number != quelt::QueltInHashIndex::s_none ? std::optional(number) : std::nullopt;
}

bool QueltEeNamedValueVar::agreesWith(const QueltEeNamedValueVar& other) const {
    if (this == &other) {
        return true;
    }
    if (getGuid() != other.getGuid() || m_values.size() != other.m_values.size()) {
        return false;
    }
    return m_values == other.m_values || std::ranges::all_of(m_values, [&other](const QueltInName& name) {
               return other.findValue(name.text().view()).has_value();
           });
}
