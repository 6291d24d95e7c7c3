#pragma once

#include "compiled/QueltDnfLiterals.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace quelt {

/// A conjunction of a normal form that is being made: literals in the order of their slots, no slot twice.
class DnfConjunction {
public:
    /// Without literals (which is TRUE).
    DnfConjunction() = default;
    /// With these literals.
    explicit DnfConjunction(std::vector<DnfLiteral> literals);

    /// The literals, by ascending slot; valid as long as the conjunction.
    [[nodiscard]] const std::vector<DnfLiteral>& literals() const noexcept { return m_literals; }
    /// True when whatever satisfies `other` satisfies this one, because all its literals are there.
    [[nodiscard]] bool includes(const DnfConjunction& other) const;
    /// True when both have the same literals.
    friend bool operator==(const DnfConjunction& left, const DnfConjunction& right) noexcept {
        return left.m_literals == right.m_literals;
    }
    /// A number that equal conjunctions share.
    [[nodiscard]] std::uint64_t hash() const noexcept;

private:
    std::uint64_t m_signature = 0; // a bit for each literal, several may share one
    std::vector<DnfLiteral> m_literals;
};

/// A disjunction of conjunctions; without any it is FALSE.
struct DnfForm {
    /// The conjunctions, in the order in which they were made; one is enough for the form to hold.
    std::vector<DnfConjunction> conjunctions;

    /// How much memory it takes, in literals.
    [[nodiscard]] std::size_t weight() const noexcept;
};

/// Calculates with forms as long as there is enough of what it may use up.
class DnfCalculator {
public:
    /// Without literals, with everything left that a calculation may use up.
    DnfCalculator() noexcept;

    /// Makes a conjunction of literals in any order, slots may come several times; nothing when they
    /// contradict each other. Failures as DnfLiterals::meet.
    [[nodiscard]] long conjoin(std::vector<DnfLiteral> literals, std::optional<DnfConjunction>& conjunction);
    /// Replaces `form` by the conjunction of both. E_OUTOFMEMORY when that takes too much.
    [[nodiscard]] long multiply(DnfForm& form, const DnfForm& factor);
    /// Makes one of those conjunctions that are a single literal on the same criterion, and takes
    /// conjunctions out that others include: all the same ones, of the rest as many as can be found in the
    /// time that is left for it. E_OUTOFMEMORY when too much is left; other failures as DnfLiterals::join.
    [[nodiscard]] long reduce(DnfForm& form);

    /// The literals that all conjunctions of this calculation are made of.
    [[nodiscard]] DnfLiterals& literals() noexcept { return m_literals; }

private:
    [[nodiscard]] long meetPairwise(std::vector<DnfLiteral>& ofOneSlot, bool& isContradiction);
    [[nodiscard]] long multiply(const DnfConjunction& left, const DnfConjunction& right, DnfForm& product);
    [[nodiscard]] long spend(std::size_t work) noexcept;
    [[nodiscard]] long joinSingles(DnfForm& form);
    [[nodiscard]] long joinPairwise(std::vector<DnfConjunction*>& ofOneSlot, bool& isTrue);
    void absorb(DnfForm& form);

    DnfLiterals m_literals;
    std::int64_t m_work;
    std::int64_t m_comparisons;
};

} // namespace quelt
