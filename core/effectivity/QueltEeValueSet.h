#pragma once

#include "effectivity/QueltEeSetOperation.h"
#include "infrastructure/QueltInSmallVector.h"

#include <bit>
#include <cstdint>

namespace quelt {

/// A set of numbers below a limit, a bit each: the values of a variable by their number, the elements of a
/// tree by their index.
class ValueSet {
public:
    /// The empty set of numbers below `limit`.
    explicit ValueSet(std::uint32_t limit);

    /// Adds `number`, which must be below the limit.
    void insert(std::uint32_t number) noexcept { m_words[number / 64] |= std::uint64_t{1} << (number % 64); }
    /// True when `number` (below the limit) is in.
    [[nodiscard]] bool contains(std::uint32_t number) const noexcept {
        return ((m_words[number / 64] >> (number % 64)) & 1U) != 0;
    }
    /// Replaces the set by the numbers below the limit that are not in it.
    void complement() noexcept;
    /// Replaces the set by what `operation` makes of it and `other`, which must have the same limit.
    void combineWith(const ValueSet& other, SetOperation operation) noexcept;

    /// The limit.
    [[nodiscard]] std::uint32_t limit() const noexcept { return m_limit; }
    /// How many numbers are in.
    [[nodiscard]] std::uint32_t count() const noexcept;
    /// Calls `visit(number)` for each number, ascending.
    template <class Visit>
    void forEach(Visit visit) const {
        for (std::uint32_t word = 0; word < m_words.size(); ++word) {
            for (std::uint64_t bits = m_words[word]; bits != 0; bits &= bits - 1) {
                visit(word * 64 + static_cast<std::uint32_t>(std::countr_zero(bits)));
            }
        }
    }

    /// True when both have the same limit and hold the same numbers.
    friend bool operator==(const ValueSet& left, const ValueSet& right) noexcept;

private:
    std::uint32_t m_limit;
    QueltInSmallVector<std::uint64_t, 4> m_words;
};

} // namespace quelt
