#pragma once

#include "dictionary/QueltEeModelDico.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeVarEff.h"
#include "expression/QueltEeNode.h"

class QueltEeNodeLeaf;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNodeLeaf, QueltEeNode>;

/// A node without children.
class QUELT_CORE_API QueltEeNodeLeaf : public QueltInTyped<QueltEeNodeLeaf, QueltEeNode> {
public:
    static constexpr const char* s_className = "QueltEeNodeLeaf";
    ~QueltEeNodeLeaf() override;
};

class QueltEeTrue;
extern template class QUELT_CORE_API QueltInTyped<QueltEeTrue, QueltEeNodeLeaf>;

/// The constant TRUE.
class QUELT_CORE_API QueltEeTrue : public QueltInTyped<QueltEeTrue, QueltEeNodeLeaf> {
public:
    static constexpr const char* s_className = "QueltEeTrue";
    /// Without reference.
    QueltEeTrue() = default;
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
    [[nodiscard]] QueltEeNodeRef* clone() const override;
    [[nodiscard]] QueltInString toString() const override;
};

class QueltEeFalse;
extern template class QUELT_CORE_API QueltInTyped<QueltEeFalse, QueltEeNodeLeaf>;

/// The constant FALSE.
class QUELT_CORE_API QueltEeFalse : public QueltInTyped<QueltEeFalse, QueltEeNodeLeaf> {
public:
    static constexpr const char* s_className = "QueltEeFalse";
    /// Without reference.
    QueltEeFalse() = default;
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
    [[nodiscard]] QueltEeNodeRef* clone() const override;
    [[nodiscard]] QueltInString toString() const override;
};

class QueltEeNodeElementaryLeaf;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNodeElementaryLeaf, QueltEeNodeLeaf>;

/// A leaf that states a criterion.
class QUELT_CORE_API QueltEeNodeElementaryLeaf
    : public QueltInTyped<QueltEeNodeElementaryLeaf, QueltEeNodeLeaf> {
public:
    static constexpr const char* s_className = "QueltEeNodeElementaryLeaf";

    /// Builds a new tree for "this and other": one leaf or constant where one says it exactly, else an
    /// operator over copies. The caller owns `result`. S_OK; E_FAIL, and null, when a leaf gives no copy.
    virtual long opAnd(const QueltEeNodeElementaryLeaf& other, QueltEeNodeRef*& result) const;
    /// As above, for "this or other".
    virtual long opOr(const QueltEeNodeElementaryLeaf& other, QueltEeNodeRef*& result) const;
    /// As above, for "not this".
    virtual long opNot(QueltEeNodeRef*& result) const;
    /// Non-zero when the leaf is true in every configuration.
    [[nodiscard]] virtual unsigned char isEquivalentToTrue() const;
    /// Non-zero when the leaf is false in every configuration.
    [[nodiscard]] virtual unsigned char isEquivalentToFalse() const;
    /// When the leaf is equivalent to a constant, the reference that owns it holds that constant from then on
    /// and the leaf is gone; non-zero when that happened. Nothing happens to a leaf that no reference owns
    /// yet.
    virtual unsigned char convertToTrueFalse();
    /// Makes this leaf say "this and other", where both are on the same criterion and a leaf of the same
    /// class says it; E_INVALIDARG, and nothing is changed, where none does. Variable effectivities add their
    /// own failures.
    virtual long opAnd(const QueltEeNodeElementaryLeaf& other);
    /// As above, for "this or other".
    virtual long opOr(const QueltEeNodeElementaryLeaf& other);
    /// Makes this leaf say the opposite; E_INVALIDARG, and nothing is changed, where no leaf of the same
    /// class does.
    virtual long opNot();
    /// The object on which the leaf's truth depends (a variable, an effectivity), or null; not owned.
    [[nodiscard]] virtual const QueltInObject* getConstraintCriterion() const;
};

class QueltEeEffLeaf;
extern template class QUELT_CORE_API QueltInTyped<QueltEeEffLeaf, QueltEeNodeElementaryLeaf>;

/// A leaf that refers to an effectivity in a dictionary.
class QUELT_CORE_API QueltEeEffLeaf : public QueltInTyped<QueltEeEffLeaf, QueltEeNodeElementaryLeaf> {
public:
    static constexpr const char* s_className = "QueltEeEffLeaf";

    /// Refers to `effectivity` in `dictionary`; neither is owned, both may be null.
    QueltEeEffLeaf(QueltEeEffectivity* effectivity, const QueltEeModelDico* dictionary) noexcept;
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
    [[nodiscard]] QueltEeNodeRef* clone() const override;
    [[nodiscard]] QueltInString toString() const override;

    using QueltEeNodeElementaryLeaf::opAnd;
    using QueltEeNodeElementaryLeaf::opNot;
    using QueltEeNodeElementaryLeaf::opOr;
    long opAnd(const QueltEeNodeElementaryLeaf& other) override;
    long opOr(const QueltEeNodeElementaryLeaf& other) override;
    long opNot() override;
    [[nodiscard]] const QueltInObject* getConstraintCriterion() const override;

    /// The effectivity referred to, or null.
    [[nodiscard]] virtual QueltEeEffectivity* getTargetEff() const;
    /// The dictionary, or null.
    [[nodiscard]] virtual const QueltEeModelDico* getReferencedContext() const;
    /// Puts the leaf in `dictionary` (not owned, may be null).
    virtual void setReferencedContext(const QueltEeModelDico* dictionary);
    /// Non-zero when the leaf holds where the effectivity does not.
    [[nodiscard]] virtual unsigned char isNegated() const;
    /// True when both refer to the same effectivity (not to none) in the same dictionary, negated or not.
    [[nodiscard]] bool isSameCriterion(const QueltEeEffLeaf& other) const noexcept;

private:
    [[nodiscard]] long combineWithSame(const QueltEeNodeElementaryLeaf& other) const;

    QueltEeEffectivity* m_pEffectivity;
    const QueltEeModelDico* m_pDictionary;
    bool m_negated = false;
};

class QueltEeVarEffLeaf;
extern template class QUELT_CORE_API QueltInTyped<QueltEeVarEffLeaf, QueltEeNodeElementaryLeaf>;

/// A leaf that holds a variable effectivity, or, as long as none was set, none.
class QUELT_CORE_API QueltEeVarEffLeaf : public QueltInTyped<QueltEeVarEffLeaf, QueltEeNodeElementaryLeaf> {
public:
    static constexpr const char* s_className = "QueltEeVarEffLeaf";

    /// Takes `effectivity` (may be null) over.
    explicit QueltEeVarEffLeaf(QueltEeVarEff* effectivity = nullptr) noexcept;
    ~QueltEeVarEffLeaf() override;
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
    [[nodiscard]] QueltEeNodeRef* clone() const override;
    [[nodiscard]] QueltInString toString() const override;

    using QueltEeNodeElementaryLeaf::opAnd;
    using QueltEeNodeElementaryLeaf::opNot;
    using QueltEeNodeElementaryLeaf::opOr;
    [[nodiscard]] unsigned char isEquivalentToTrue() const override;
    [[nodiscard]] unsigned char isEquivalentToFalse() const override;
    long opAnd(const QueltEeNodeElementaryLeaf& other) override;
    long opOr(const QueltEeNodeElementaryLeaf& other) override;
    long opNot() override;
    [[nodiscard]] const QueltInObject* getConstraintCriterion() const override;

    /// The variable effectivity, or null; it stays the leaf's.
    [[nodiscard]] virtual QueltEeVarEff* getVarEff() const;
    /// Takes `effectivity` over; the one held before is deleted.
    virtual void setVarEff(QueltEeVarEff& effectivity);
    /// Hands the effectivity (may be null) to the caller and forgets it.
    [[nodiscard]] QueltEeVarEff* releaseVarEff() noexcept;

private:
    /// What `other` holds when both leaves hold something, else null.
    [[nodiscard]] const QueltEeVarEff* partnerIn(const QueltEeNodeElementaryLeaf& other) const;

    QueltEeVarEff* m_pEffectivity;
};

class QueltEeRestrictionEffLeaf;
extern template class QUELT_CORE_API QueltInTyped<QueltEeRestrictionEffLeaf, QueltEeNodeElementaryLeaf>;

/// A leaf that restricts by a text which the core does not interpret.
class QUELT_CORE_API QueltEeRestrictionEffLeaf
    : public QueltInTyped<QueltEeRestrictionEffLeaf, QueltEeNodeElementaryLeaf> {
public:
    static constexpr const char* s_className = "QueltEeRestrictionEffLeaf";

    /// With a copy of `text`.
    explicit QueltEeRestrictionEffLeaf(const QueltInString& text);
    long acceptVisitor(QueltEeNodeVisitor& visitor) override;
    [[nodiscard]] QueltEeNodeRef* clone() const override;
    [[nodiscard]] QueltInString toString() const override;
    /// The text.
    [[nodiscard]] const QueltInString& getText() const noexcept { return m_text; }

private:
    QueltInString m_text;
};
