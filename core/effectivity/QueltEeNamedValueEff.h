#pragma once

#include "dictionary/QueltEeNamedValueVar.h"
#include "effectivity/QueltEeVarEff.h"
#include "infrastructure/QueltInSmallVector.h"

namespace quelt {
class ValueSet;
enum class SetOperation;
} // namespace quelt

class QueltEeNamedValueEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNamedValueEff, QueltEeVarEff>;

/// An effectivity on a variable whose values have names. It holds value numbers in the order they were given,
/// repetitions included. All values of the variable together, with "no variable", are everything. Without
/// variable there are no values, and only "no variable" counts.
class QUELT_CORE_API QueltEeNamedValueEff : public QueltInTyped<QueltEeNamedValueEff, QueltEeVarEff> {
public:
    static constexpr const char* s_className = "QueltEeNamedValueEff";

    /// Adds the value with this number; E_INVALIDARG when the variable has none such (or there is no
    /// variable).
    long addValue(std::uint32_t number);
    /// The value numbers as given.
    [[nodiscard]] std::span<const std::uint32_t> getValues() const noexcept { return m_values.values(); }
    /// True when a configuration with the value `number` is in; false when the variable has no such value.
    [[nodiscard]] bool holdsFor(std::uint32_t number) const;

    /// "Engine in {V6, V8}", with the flags.
    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] const QueltEeDicoObject* getVar() const override { return m_pVariable; }
    [[nodiscard]] unsigned char equals(const QueltEeVarEff& other) const override;
    long opAnd(const QueltEeVarEff& other) override;
    long opOr(const QueltEeVarEff& other) override;
    long opCut(const QueltEeVarEff& other) override;
    [[nodiscard]] unsigned char isAllFalse() const override;
    [[nodiscard]] unsigned char isAllTrue() const override;

protected:
    /// No values; `variable` (not owned, may be null) must outlive the effectivity.
    explicit QueltEeNamedValueEff(const QueltEeNamedValueVar* variable) noexcept : m_pVariable(variable) {}
    /// The same values of the same variable, with the same flags.
    QueltEeNamedValueEff(const QueltEeNamedValueEff&) = default;

private:
    [[nodiscard]] quelt::ValueSet denotedValues() const;
    [[nodiscard]] quelt::ValueSet denotedValuesOf(const QueltEeNamedValueEff& other) const;
    [[nodiscard]] bool isComparable(const QueltEeVarEff& other) const;
    long combine(const QueltEeVarEff& other, quelt::SetOperation operation);

    const QueltEeNamedValueVar* m_pVariable;
    QueltInSmallVector<std::uint32_t, 4> m_values;
};

class QueltEeOptionEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeOptionEff, QueltEeNamedValueEff>;

/// An effectivity on a catalogue option.
class QUELT_CORE_API QueltEeOptionEff : public QueltInTyped<QueltEeOptionEff, QueltEeNamedValueEff> {
public:
    static constexpr const char* s_className = "QueltEeOptionEff";
    /// No values; `variable` (not owned, may be null) must outlive the effectivity.
    explicit QueltEeOptionEff(const QueltEeCatOptionVar* variable) noexcept;
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override;
};

class QueltEeSelectionEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeSelectionEff, QueltEeNamedValueEff>;

/// An effectivity on a selection.
class QUELT_CORE_API QueltEeSelectionEff : public QueltInTyped<QueltEeSelectionEff, QueltEeNamedValueEff> {
public:
    static constexpr const char* s_className = "QueltEeSelectionEff";
    /// No values; `variable` (not owned, may be null) must outlive the effectivity.
    explicit QueltEeSelectionEff(const QueltEeSelectionVar* variable) noexcept;
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override;
};
