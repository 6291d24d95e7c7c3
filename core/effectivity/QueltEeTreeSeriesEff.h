#pragma once

#include "effectivity/QueltEeTreeSeriesSelection.h"
#include "effectivity/QueltEeVarEff.h"

namespace quelt {
class ValueSet;
enum class SetOperation;
} // namespace quelt

class QueltEeTreeBaseEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeTreeBaseEff, QueltEeVarEff>;

/// Root of the effectivities on trees.
class QUELT_CORE_API QueltEeTreeBaseEff : public QueltInTyped<QueltEeTreeBaseEff, QueltEeVarEff> {
public:
    static constexpr const char* s_className = "QueltEeTreeBaseEff";
    ~QueltEeTreeBaseEff() override;
};

class QueltEeTreeSeriesEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeTreeSeriesEff, QueltEeTreeBaseEff>;

/// An effectivity on a branching series: the elements of its selections, kept as given. All elements
/// together, with "no variable", are everything. Without variable there are no elements, and only "no
/// variable" counts.
class QUELT_CORE_API QueltEeTreeSeriesEff : public QueltInTyped<QueltEeTreeSeriesEff, QueltEeTreeBaseEff> {
public:
    static constexpr const char* s_className = "QueltEeTreeSeriesEff";

    /// No selections; `variable` (not owned) must outlive the effectivity.
    explicit QueltEeTreeSeriesEff(const QueltEeTreeSeriesVar& variable) noexcept : m_pVariable(&variable) {}
    /// As above; null makes an effectivity without variable.
    explicit QueltEeTreeSeriesEff(const QueltEeTreeSeriesVar* variable) noexcept : m_pVariable(variable) {}

    /// "Line in [5] | [7, 9]", with the flags.
    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override;
    [[nodiscard]] const QueltEeDicoObject* getVar() const override { return m_pVariable; }
    [[nodiscard]] unsigned char equals(const QueltEeVarEff& other) const override;
    long opAnd(const QueltEeVarEff& other) override;
    long opOr(const QueltEeVarEff& other) override;
    long opCut(const QueltEeVarEff& other) override;
    [[nodiscard]] unsigned char isAllFalse() const override;
    [[nodiscard]] unsigned char isAllTrue() const override;
    /// Appends a copy of `selection`. E_INVALIDARG, and nothing is changed, when it is not a
    /// QueltEeTreeSeriesSelection, or names an element that is not of the variable; so always without
    /// variable.
    virtual long addSelection(const QueltEeTreeSelection& selection);

    /// The selections as given.
    [[nodiscard]] const QueltInVector<QueltEeTreeSeriesSelection>& getSelections() const noexcept {
        return m_selections;
    }
    /// The variable, or null.
    [[nodiscard]] const QueltEeTreeSeriesVar* getTreeVar() const noexcept { return m_pVariable; }
    /// True when a configuration with this element is in. An element of another series stands for the
    /// variable's own with the same number; false when there is none.
    [[nodiscard]] bool holdsFor(const QueltEeTreeSeriesElement& element) const;

private:
    [[nodiscard]] quelt::ValueSet denotedElements() const;
    [[nodiscard]] quelt::ValueSet denotedElementsOf(const QueltEeTreeSeriesEff& other) const;
    [[nodiscard]] bool isComparable(const QueltEeVarEff& other) const;
    long combine(const QueltEeVarEff& other, quelt::SetOperation operation);

    const QueltEeTreeSeriesVar* m_pVariable;
    QueltInVector<QueltEeTreeSeriesSelection> m_selections;
};
