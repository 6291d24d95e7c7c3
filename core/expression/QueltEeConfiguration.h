#pragma once

#include "infrastructure/QueltInGuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

class QueltEeNode;
class QueltEeExpression;
class QueltEeModelDico;

/// One configuration of the product, for evaluating expressions: values of features by their GUID (so that the same
/// feature has one value in all dictionaries), a date, and the effectivities that hold. What is not said has no value; an
/// effectivity that nothing was said of does not hold.
class QUELT_CORE_API QueltEeConfiguration {
public:
    /// Gives the option or selection `feature` the value with this name.
    void setValue(const QueltInGuid& feature, std::string_view value);
    /// Gives the series (serial or tree) `feature` this sequence number.
    void setSequenceNumber(const QueltInGuid& feature, std::int64_t number);
    /// Sets the date, in seconds as QueltEeDate has them.
    void setDate(std::int64_t seconds) { m_date = seconds; }
    /// Says whether the effectivity holds.
    void setEffectivity(const QueltInGuid& effectivity, bool holds);

    /// What was said, if anything.
    [[nodiscard]] std::optional<std::string_view> getValue(const QueltInGuid& feature) const;
    [[nodiscard]] std::optional<std::int64_t> getSequenceNumber(const QueltInGuid& feature) const;
    [[nodiscard]] std::optional<std::int64_t> getDate() const { return m_date; }
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

/// Tells whether expressions hold in configurations. Uses bounded stack for trees of any depth.
class QUELT_CORE_API QueltEeEvaluator {
public:
    /// For `configuration`, which must outlive the evaluator.
    explicit QueltEeEvaluator(const QueltEeConfiguration& configuration) noexcept : m_configuration(configuration) {}

    /// Whether the tree below `node` holds. NOT-domain keeps what its leaves say of configurations without value: it turns each leaf
    /// below round within its domain, and AND into OR. A restriction leaf is E_UNEXPECTED, a leaf without
    /// effectivity and a missing child E_INVALIDARG; `holds` is then as it was. Every child is looked at until the
    /// result is certain, in order.
    long evaluate(const QueltEeNode& node, bool& holds) const;
    /// Whether `expression` holds in `dictionary`: the global criterion, and for this dictionary the inherited and the
    /// own part (a dictionary without criteria: does not hold when others have some). Of an effectivity expression each operation too: kind 1 and 2 need their
    /// change, of those of kind 2 one is enough, kind 0 needs it absent. A generic expression and a filter by their tree. `dictionary` may
    /// be null: then the global criterion alone. E_INVALIDARG for another class.
    long evaluate(const QueltEeExpression& expression, const QueltEeModelDico* dictionary, bool& holds) const;

private:
    const QueltEeConfiguration& m_configuration;
};
