#pragma once

#include "infrastructure/QueltInGuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

/// One configuration of the product, for evaluating expressions: values of features by their GUID (so that
/// the same feature has one value in all dictionaries), a date, and the effectivities that hold. What is not
/// said has no value; an effectivity that nothing was said of does not hold.
class QUELT_CORE_API QueltEeConfiguration {
public:
    /// Gives the option or selection `feature` the value with this name. What is said later replaces what was
    /// said before; so for all that follow.
    void setValue(const QueltInGuid& feature, std::string_view value);
    /// Gives the series (serial or tree) `feature` this sequence number.
    void setSequenceNumber(const QueltInGuid& feature, std::int64_t number);
    /// Sets the date, in seconds as QueltEeDate has them.
    void setDate(std::int64_t seconds) { m_date = seconds; }
    /// Says whether the effectivity holds.
    void setEffectivity(const QueltInGuid& effectivity, bool holds);

    /// The name of the value of the option or selection `feature`, if one was given; valid until the
    /// configuration changes.
    [[nodiscard]] std::optional<std::string_view> getValue(const QueltInGuid& feature) const;
    /// The sequence number of the series `feature`, if one was given.
    [[nodiscard]] std::optional<std::int64_t> getSequenceNumber(const QueltInGuid& feature) const;
    /// The date, in seconds as QueltEeDate has them, if one was given.
    [[nodiscard]] std::optional<std::int64_t> getDate() const { return m_date; }
    /// True when it was said that the effectivity holds.
    [[nodiscard]] bool holds(const QueltInGuid& effectivity) const;

private:
    struct GuidHash {
        std::size_t operator()(const QueltInGuid& guid) const noexcept { return guid.hash(); }
    };
    std::unordered_map<QueltInGuid, std::string, GuidHash> m_values;
    std::unordered_map<QueltInGuid, std::int64_t, GuidHash> m_numbers;
    std::unordered_map<QueltInGuid, bool, GuidHash> m_effectivities;
    std::optional<std::int64_t> m_date;
};
