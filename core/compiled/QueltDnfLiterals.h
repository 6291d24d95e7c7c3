#pragma once

#include "expression/QueltEeCriteria.h"
#include "expression/QueltEeNode.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace quelt {

/// What the literal on `node` is made of, as the limits of QueltDnf count; 0 when the node is none that can
/// be a literal.
[[nodiscard]] std::size_t sizeOfLiteral(const QueltEeNode* node);

/// A literal of a normal form that is being made: the slot is what it depends on, the id what it says. Equal
/// ids have equal slots and mean the same.
struct DnfLiteral {
    std::uint32_t slot;
    std::uint32_t id;
    friend auto operator<=>(const DnfLiteral&, const DnfLiteral&) = default;
};

/// The literals of a normal form that is being made, each kept once.
class DnfLiterals {
public:
    /// Enters a copy of the leaf. E_FAIL when it gives none, E_OUTOFMEMORY when there would be too much of
    /// them.
    [[nodiscard]] long enter(const QueltEeNode& leaf, DnfLiteral& literal);
    /// What two literals of one slot say together: one literal, or, when they contradict each other, nothing.
    /// Failures as above.
    [[nodiscard]] long meet(const DnfLiteral& left, const DnfLiteral& right, std::optional<DnfLiteral>& both);
    /// The leaf that says it.
    [[nodiscard]] const QueltEeNode& leafOf(const DnfLiteral& literal) const {
        return *m_entries[literal.id].leaf->getNode();
    }

private:
    using OwnedLeaf = std::unique_ptr<QueltEeNodeRef>;
    struct Entry {
        OwnedLeaf leaf;
        std::uint32_t slot;
    };
    struct Slot {
        const void* variable; // null for an effectivity leaf
        std::uint32_t representative;
        std::unordered_map<std::string, std::uint32_t> byText;
    };
    /// How many variables with one GUID, but different values, are told apart before each leaf has a slot of
    /// its own.
    static constexpr std::size_t s_maxDisagreeing = 8;

    [[nodiscard]] long slotFor(const QueltEeNode& leaf, std::uint32_t& slot);
    [[nodiscard]] long enterIn(std::uint32_t slot, OwnedLeaf leaf, DnfLiteral& literal);
    [[nodiscard]] long computeMeet(const DnfLiteral& left, const DnfLiteral& right,
                                   std::optional<DnfLiteral>& both);

    struct KeyHash {
        std::size_t operator()(const CriterionKey& key) const noexcept { return key.hash(); }
    };
    std::vector<Entry> m_entries;
    std::vector<Slot> m_slots;
    std::unordered_map<CriterionKey, std::vector<std::uint32_t>, KeyHash> m_slotsOf;
    std::unordered_map<std::uint64_t, std::optional<DnfLiteral>> m_meets;
    std::size_t m_values = 0;
};

} // namespace quelt
