#pragma once

#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInTyped.h"

#include <cstddef>

class QueltEeNode;
class QueltEeNodeRef;

class QueltDnf;
extern template class QUELT_CORE_API QueltInTyped<QueltDnf, QueltInObject>;

/// A disjunctive normal form: conjunctions, each of literals, each a leaf (an effectivity leaf, or a leaf
/// with a variable effectivity; a negation is in the leaf). No conjunction is FALSE, an empty conjunction
/// TRUE. It owns its leaves.
class QUELT_CORE_API QueltDnf : public QueltInTyped<QueltDnf, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltDnf";
    /// How many conjunctions a form may have. This limit and the two below keep a normal form from filling
    /// the memory.
    static constexpr std::size_t s_maxConjunctions = 10'000;
    /// How many literals all conjunctions may have together.
    static constexpr std::size_t s_maxLiterals = 200'000;
    /// How many values, intervals and bounds of selections all literals may be made of; an effectivity leaf
    /// counts as one.
    static constexpr std::size_t s_maxValues = 4'000'000;

    /// The references of a conjunction's literals, in order; the form owns them.
    using Conjunction = QueltInVector<QueltEeNodeRef*>;

    /// FALSE.
    QueltDnf();
    ~QueltDnf() override;
    QueltDnf(const QueltDnf&) = delete;
    QueltDnf& operator=(const QueltDnf&) = delete;

    /// Appends an empty conjunction. E_OUTOFMEMORY at the limit.
    long addConjunction();
    /// Appends a literal to the last conjunction and takes it over. E_INVALIDARG when there is no
    /// conjunction, and when the reference does not stand alone with, as its own, a leaf that has an
    /// effectivity; E_OUTOFMEMORY at a limit; it stays the caller's then. E_POINTER for null.
    long addLiteral(QueltEeNodeRef* literal);
    /// The conjunctions, in order.
    [[nodiscard]] const QueltInVector<Conjunction>& getConjunctions() const noexcept {
        return m_conjunctions;
    }
    /// The form as a tree of copies: FALSE, TRUE, a leaf, an AND, or an OR of such. The caller owns it. Null
    /// when a leaf gives no copy.
    [[nodiscard]] QueltEeNodeRef* makeTree() const;
    /// As the tree prints.
    [[nodiscard]] QueltInString toString() const override;

    /// Makes the normal form of the tree below `node`, or of its negation; the caller owns `dnf`. Leaves on
    /// one variable are one literal in a conjunction, contradictory conjunctions are left out, and so are
    /// those that another one includes, as far as that takes little time. Conjunctions and literals come in
    /// the order of the tree.
    ///
    /// E_OUTOFMEMORY when the form, or what has to be gone through on the way to it, would be too large;
    /// E_UNEXPECTED for a restriction leaf, E_INVALIDARG for a leaf without effectivity, a missing child, and
    /// a class that the core does not know, the first in the order of the tree; E_FAIL when a leaf gives no
    /// copy. `dnf` is null then.
    [[nodiscard]] static long make(const QueltEeNode& node, bool negated, QueltDnf*& dnf);

private:
    friend class QueltFltEffectivityView;
    QueltInVector<Conjunction> m_conjunctions;
    std::size_t m_literals = 0;
    std::size_t m_values = 0;
    bool m_isHeld = false; // by a view
};
