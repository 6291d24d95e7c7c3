#pragma once

#include "expression/QueltEeLeaves.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace quelt {

/// On what a criterion depends. Only criteria with equal keys can be said as one.
struct CriterionKey {
    /// Of a variable effectivity: its class and its variable's GUID.
    explicit CriterionKey(const QueltEeVarEff& effectivity);
    /// Of an effectivity leaf: its effectivity and its dictionary.
    explicit CriterionKey(const QueltEeEffLeaf& leaf);

    const void* kind;     ///< the type class of the effectivity or of the leaf
    std::uint64_t first;  ///< the first half of the GUID, or the address of the effectivity
    std::uint64_t second; ///< the second half of the GUID, or the address of the dictionary
    /// True when both criteria depend on the same.
    friend bool operator==(const CriterionKey&, const CriterionKey&) = default;
    /// A number that equal keys share.
    [[nodiscard]] std::uint64_t hash() const noexcept;
};

/// The numbers of criteria by key, for finding those that can be said as one. Two of these are merged at the
/// cost of the smaller one.
class CriterionIndex {
public:
    /// Enters the criterion `number` under `key`.
    void add(const CriterionKey& key, std::uint32_t number);
    /// Takes everything over from `other`.
    void merge(CriterionIndex&& other);
    /// Calls `join(numbers)` for the criteria under each key that has got some since this was called last;
    /// `join` gets them in ascending order and leaves those that are still there.
    template <class Join>
    void joinNew(Join join) {
        for (const std::uint32_t position : takeNew()) {
            join(m_entries[position].numbers);
        }
    }

private:
    struct Entry {
        CriterionKey key;
        std::vector<std::uint32_t> numbers;
        bool isNew;
    };
    struct KeyHash {
        std::size_t operator()(const CriterionKey& key) const noexcept { return key.hash(); }
    };
    static constexpr std::size_t s_scanLimit = 8;

    [[nodiscard]] Entry* find(const CriterionKey& key);
    void append(Entry&& entry);
    [[nodiscard]] std::vector<std::uint32_t> takeNew();

    std::vector<Entry> m_entries;
    std::vector<std::uint32_t> m_new;                                 // positions of new entries
    std::unordered_map<CriterionKey, std::uint32_t, KeyHash> m_byKey; // only beyond the scan limit
};

/// How many intervals, values or bounds the effectivity is made of; at least 1.
[[nodiscard]] std::size_t sizeOf(const QueltEeVarEff& effectivity);

/// The constant that the effectivity is equivalent to, if it is, where it stands in a tree: below a
/// NOT-domain (isInDomain) it is the constant whose opposite in the domain is equivalent to the
/// effectivity's.
[[nodiscard]] std::optional<bool> constantOf(QueltEeVarEff& effectivity, bool isInDomain);

/// What combining criteria may still cost, in values looked at. Where long effectivities are combined again
/// and again, a limit keeps the cost in proportion; criteria stay apart then.
using JoiningBudget = std::int64_t;

/// Whether all of the criteria must hold, or one.
enum class Joining { all, atLeastOne };

/// Combines the effectivities (all with one key) that can be said as one into the first of them, in place.
/// Each that has been combined into another one is replaced by null; it is not deleted. True for each that
/// another one was combined into (so that it has changed).
std::vector<bool> joinEffectivities(std::span<QueltEeVarEff*> effectivities, Joining joining,
                                    JoiningBudget& budget);

} // namespace quelt
