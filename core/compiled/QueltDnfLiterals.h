#pragma once

#include "expression/QueltEeCriteria.h"
#include "expression/QueltEeNode.h"
#include "infrastructure/QueltInKeyedHash.h"

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
/// ids have equal slots and mean the same. The place is where it stood first in the tree, for the order of
/// literals in the end; it does not tell literals apart.
struct DnfLiteral {
    /// What the literal depends on.
    std::uint32_t slot;
    /// What it says; unique among the literals of one DnfLiterals.
    std::uint32_t id;
    /// Where it stood first in the tree.
    std::uint32_t place;

    /// True when both say the same, wherever they stood.
    friend bool operator==(const DnfLiteral& left, const DnfLiteral& right) noexcept {
        return left.id == right.id;
    }
    /// By slot, then by what they say.
    friend std::strong_ordering operator<=>(const DnfLiteral& left, const DnfLiteral& right) noexcept {
        return left.slot != right.slot ? left.slot <=> right.slot : left.id <=> right.id;
    }
};

/// The literals of a normal form that is being made, each kept once.
class DnfLiterals {
public:
    /// Enters a copy of the leaf. E_FAIL when it gives none, E_OUTOFMEMORY when there would be too much of
    /// them.
    [[nodiscard]] long enter(const QueltEeNode& leaf, DnfLiteral& literal);
    /// What two literals of one slot say when both hold: one literal, or, when they contradict each other,
    /// nothing. Failures as above.
    [[nodiscard]] long meet(const DnfLiteral& left, const DnfLiteral& right, std::optional<DnfLiteral>& both);
    /// What they say when one of them is enough: one literal, or, when that is always so, nothing.
    [[nodiscard]] long join(const DnfLiteral& left, const DnfLiteral& right,
                            std::optional<DnfLiteral>& either);
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
        std::unordered_map<std::string, std::uint32_t, KeyedTextHash> byText;
    };
    /// How many variables with one GUID, but different values, are told apart before each leaf has a slot of
    /// its own.
    static constexpr std::size_t s_maxDisagreeing = 8;

    [[nodiscard]] long slotFor(const QueltEeNode& leaf, std::uint32_t& slot);
    [[nodiscard]] long enterIn(std::uint32_t slot, OwnedLeaf leaf, DnfLiteral& literal);
    [[nodiscard]] long combine(const DnfLiteral& left, const DnfLiteral& right, Joining joining,
                               std::optional<DnfLiteral>& combined);

    struct KeyHash {
        std::size_t operator()(const CriterionKey& key) const noexcept { return key.hash(); }
    };
    std::vector<Entry> m_entries;
    std::vector<Slot> m_slots;
    std::unordered_map<CriterionKey, std::vector<std::uint32_t>, KeyHash> m_slotsOf;
    std::unordered_map<std::uint64_t, std::optional<DnfLiteral>> m_meets;
    std::size_t m_values = 0;
    std::uint32_t m_places = 0;
};

} // namespace quelt
