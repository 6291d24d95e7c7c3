#pragma once

#include "infrastructure/QueltInTyped.h"

#include <cstddef>
#include <memory>
#include <vector>

class QueltEeNode;
class QueltEeNodeRef;

/// A disjunctive normal form: conjunctions, each of literals, each a leaf (an effectivity leaf, or a leaf with a variable
/// effectivity; a negation is in the leaf). No conjunction is FALSE, an empty conjunction TRUE. It owns its leaves.
class QUELT_CORE_API QueltDnf : public QueltInTyped<QueltDnf, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltDnf";
    /// The limits that keep a normal form from filling the memory: conjunctions, and literals in all.
    static constexpr std::size_t s_maxConjunctions = 10'000;
    static constexpr std::size_t s_maxLiterals = 200'000;

    using Conjunction = std::vector<QueltEeNodeRef*>;

    /// FALSE.
    QueltDnf();
    ~QueltDnf() override;
    QueltDnf(const QueltDnf&) = delete;
    QueltDnf& operator=(const QueltDnf&) = delete;

    /// Appends an empty conjunction. E_OUTOFMEMORY at the limit.
    long addConjunction();
    /// Appends a literal (a reference that stands alone, on a leaf) to the last conjunction and takes it over. E_INVALIDARG when there
    /// is no conjunction or the reference is none of a criterion's leaf; E_OUTOFMEMORY at the limit; it stays the caller's then.
    long addLiteral(QueltEeNodeRef* literal);
    /// The conjunctions, in order.
    [[nodiscard]] const std::vector<Conjunction>& getConjunctions() const noexcept { return m_conjunctions; }
    /// The form as a tree of copies: FALSE, TRUE, a leaf, an AND, or an OR of such. The caller owns it.
    [[nodiscard]] QueltEeNodeRef* makeTree() const;
    /// As the tree prints.
    [[nodiscard]] QueltInString toString() const override;

    /// Makes the normal form of the tree below `node`, or of its negation; the caller owns `dnf`. E_OUTOFMEMORY, and null, past the
    /// limits; E_NOTIMPL for NOT-domain over anything but what the core can turn round leaf by leaf; E_UNEXPECTED for a restriction leaf;
    /// E_INVALIDARG for an empty leaf or a missing child.
    static long make(const QueltEeNode& node, bool negated, QueltDnf*& dnf);

private:
    std::vector<Conjunction> m_conjunctions;
    std::size_t m_literals = 0;
};
