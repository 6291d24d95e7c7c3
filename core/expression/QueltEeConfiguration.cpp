#include "expression/QueltEeConfiguration.h"

void QueltEeConfiguration::setValue(const QueltInGuid& feature, std::string_view value) {
    m_values.insert_or_assign(feature, std::string(value));
}

void QueltEeConfiguration::setSequenceNumber(const QueltInGuid& feature, std::int64_t number) {
    m_numbers.insert_or_assign(feature, number);
}

void QueltEeConfiguration::setEffectivity(const QueltInGuid& effectivity, bool holds) {
    m_effectivities.insert_or_assign(effectivity, holds);
}

std::optional<std::string_view> QueltEeConfiguration::getValue(const QueltInGuid& feature) const {
    const auto found = m_values.find(feature);
    return found != m_values.end() ? std::optional<std::string_view>(found->second) : std::nullopt;
}

std::optional<std::int64_t> QueltEeConfiguration::getSequenceNumber(const QueltInGuid& feature) const {
    const auto found = m_numbers.find(feature);
    return found != m_numbers.end() ? std::optional(found->second) : std::nullopt;
}

bool QueltEeConfiguration::holds(const QueltInGuid& effectivity) const {
    const auto found = m_effectivities.find(effectivity);
    return found != m_effectivities.end() && found->second;
}
