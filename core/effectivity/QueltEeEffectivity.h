#pragma once

#include "dictionary/QueltEeDicoObject.h"

class QueltEeExpression;
class QueltEeNodeRef;

class QueltEeEffectivity;
extern template class QUELT_CORE_API QueltInTyped<QueltEeEffectivity, QueltEeDicoObject>;

/// A named effectivity with an expression of its own, which it owns. Leaves, lists and operations share
/// effectivities and never delete them: they belong to a context or to whoever made them, and must outlive
/// what refers to them.
///
/// Whoever has to change the expression of an effectivity that others read works on one of a derived class
/// that stands for it (getOrigin): the same effectivity to every context that knows the original.
class QUELT_CORE_API QueltEeEffectivity : public QueltInTyped<QueltEeEffectivity, QueltEeDicoObject> {
public:
    static constexpr const char* s_className = "QueltEeEffectivity";

    /// Without expression.
    QueltEeEffectivity(const QueltInString& name, const QueltInGuid& guid);
    /// Deletes the expression.
    ~QueltEeEffectivity() override;
    QueltEeEffectivity(const QueltEeEffectivity&) = delete;
    QueltEeEffectivity& operator=(const QueltEeEffectivity&) = delete;

    /// Hands out the expression (null when there is none); it stays the effectivity's. S_OK always.
    virtual long getExpr(QueltEeExpression*& expression) const;
    /// Takes `expression` (may be null) over; another one held before is deleted.
    virtual void setExpr(QueltEeExpression*& expression);
    /// Hands the expression (may be null) to the caller, who owns it then, and forgets it. S_OK always.
    virtual long removeExpr(QueltEeExpression*& expression);
    /// The effectivity that this one stands for; itself unless it was made to stand for another one.
    [[nodiscard]] virtual const QueltEeEffectivity& getOrigin() const { return *this; }

protected:
    /// The expression, or null.
    [[nodiscard]] QueltEeExpression* expression() const noexcept { return m_pExpression; }

private:
    QueltEeExpression* m_pExpression = nullptr;
};

class QueltEePredefEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEePredefEff, QueltEeEffectivity>;

/// A predefined effectivity: an engineering change.
class QUELT_CORE_API QueltEePredefEff : public QueltInTyped<QueltEePredefEff, QueltEeEffectivity> {
public:
    static constexpr const char* s_className = "QueltEePredefEff";
    ~QueltEePredefEff() override;
    using QueltInTyped::QueltInTyped;
};

class QueltEeBasicEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeBasicEff, QueltEeEffectivity>;

/// A basic effectivity, which dictionaries can inherit.
class QUELT_CORE_API QueltEeBasicEff : public QueltInTyped<QueltEeBasicEff, QueltEeEffectivity> {
public:
    static constexpr const char* s_className = "QueltEeBasicEff";
    using QueltInTyped::QueltInTyped;

    /// The root of its own expression when that is a generic expression with a tree, else null; not owned by
    /// the caller.
    [[nodiscard]] virtual QueltEeNodeRef* getOwnNodeRef() const;
};
