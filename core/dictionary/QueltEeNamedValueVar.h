#pragma once

#include "dictionary/QueltEeVariable.h"
#include "infrastructure/QueltInHashIndex.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInNamePool.h"

#include <cstdint>
#include <optional>
#include <string_view>

class QueltEeNamedValueVar;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNamedValueVar, QueltEeVariable>;

/// A variable whose values have names. Values are known by their number, 0 for the first that was added.
class QUELT_CORE_API QueltEeNamedValueVar : public QueltInTyped<QueltEeNamedValueVar, QueltEeVariable> {
public:
    static constexpr const char* s_className = "QueltEeNamedValueVar";
    ~QueltEeNamedValueVar() override;

    using QueltInTyped::QueltInTyped;

    /// Adds a value and gives its number; a name that is there already keeps its number.
    std::uint32_t addValue(std::string_view name);
    /// The number of values.
    [[nodiscard]] std::uint32_t getValueCount() const noexcept;
    /// The name of the value `number`; empty past the last.
    [[nodiscard]] std::string_view getValueName(std::uint32_t number) const noexcept;
    /// The number of the value with this name, if there is one. Constant time.
    [[nodiscard]] std::optional<std::uint32_t> findValue(std::string_view name) const;
    /// True when `other` is the same feature (the same GUID) with the same values, in whatever order.
    [[nodiscard]] bool agreesWith(const QueltEeNamedValueVar& other) const;

private:
    QueltInVector<QueltInName> m_values;
    quelt::QueltInHashIndex m_index; // finds them by name
};

class QueltEeCatOptionVar;
extern template class QUELT_CORE_API QueltInTyped<QueltEeCatOptionVar, QueltEeNamedValueVar>;

/// An option of the catalogue: "Engine" with the values V6 and V8.
class QUELT_CORE_API QueltEeCatOptionVar : public QueltInTyped<QueltEeCatOptionVar, QueltEeNamedValueVar> {
public:
    static constexpr const char* s_className = "QueltEeCatOptionVar";
    ~QueltEeCatOptionVar() override;
    using QueltInTyped::QueltInTyped;
};

class QueltEeSelectionVar;
extern template class QUELT_CORE_API QueltInTyped<QueltEeSelectionVar, QueltEeNamedValueVar>;

/// A selection: "Package" with the values Sport and Winter.
class QUELT_CORE_API QueltEeSelectionVar : public QueltInTyped<QueltEeSelectionVar, QueltEeNamedValueVar> {
public:
    static constexpr const char* s_className = "QueltEeSelectionVar";
    ~QueltEeSelectionVar() override;
    using QueltInTyped::QueltInTyped;
};
