#pragma once

#include "infrastructure/QueltInMemory.h"

#include <cstdint>
#include <utility>

namespace quelt {

/// Spreads every bit of `number` over all bits of the result; different numbers give different results.
constexpr std::uint64_t mixBits(std::uint64_t number) noexcept {
    number = (number ^ (number >> 30U)) * 0xBF58476D1CE4E5B9U;
    number = (number ^ (number >> 27U)) * 0x94D049BB133111EBU;
    return number ^ (number >> 31U);
}

/// Finds positions in a sequence by hash, for the containers that keep their elements in the order of
/// insertion. It holds positions only and is built when a sequence has grown past the length at which looking
/// at every element is faster (s_scanLimit). A container builds it when it inserts, never when it looks up,
/// so that many threads may look up in a container that none changes.
class QueltInHashIndex {
public:
    /// "Not found".
    static constexpr std::uint32_t s_none = 0xFFFFFFFFU;
    /// Sequences up to this length are searched without an index.
    static constexpr std::uint32_t s_scanLimit = 8;

    /// True when positions have been entered.
    [[nodiscard]] bool isBuilt() const noexcept { return !m_slots.empty(); }
    /// Forgets all positions.
    void clear() noexcept;
    /// Enters `position` under `hash`.
    void insert(std::uint64_t hash, std::uint32_t position);
    /// Forgets `position`, which was entered under `hash`, and moves all greater ones down by one, as they do
    /// in a sequence that loses the element at `position`.
    void erase(std::uint64_t hash, std::uint32_t position) noexcept;
    /// The first position entered under `hash` for which `matches(position)` holds, else s_none.
    template <class Matches>
    [[nodiscard]] std::uint32_t find(std::uint64_t hash, Matches matches) const {
        if (m_slots.empty()) {
            return s_none;
        }
        const std::uint64_t mask = m_slots.size() - 1;
        for (std::uint64_t slot = hash & mask; m_slots[slot].position != s_none; slot = (slot + 1) & mask) {
            if (m_slots[slot].hash == hash && matches(m_slots[slot].position)) {
                return m_slots[slot].position;
            }
        }
        return s_none;
    }

    /// Enters the element that the container is about to append to `sequence` under `hash`; nothing happens
    /// while the sequence is short. `hashOf` gives the hash of an element that is there already. What throws
    /// leaves the index as it was.
    template <class Sequence, class HashOf>
    void insertInto(const Sequence& sequence, std::uint64_t hash, HashOf hashOf) {
        if (!isBuilt()) {
            if (sequence.size() < s_scanLimit) {
                return;
            }
            QueltInHashIndex index;
            for (std::uint32_t position = 0; position < sequence.size(); ++position) {
                index.insert(hashOf(sequence[position]), position);
            }
            *this = std::move(index);
        }
        insert(hash, sequence.size());
    }
    /// The position of the element of `sequence` that `matches`, else s_none; `hash` computes what such an
    /// element was entered under.
    template <class Sequence, class Hash, class Matches>
    [[nodiscard]] std::uint32_t findIn(const Sequence& sequence, Hash hash, Matches matches) const {
        if (isBuilt()) {
            return find(hash(), [&](std::uint32_t position) { return matches(sequence[position]); });
        }
        for (std::uint32_t position = 0; position < sequence.size(); ++position) {
            if (matches(sequence[position])) {
                return position;
            }
        }
        return s_none;
    }

private:
    struct Slot {
        std::uint64_t hash = 0;
        std::uint32_t position = s_none;
    };
    void place(const Slot& slot) noexcept;
    void grow();

    QueltInVector<Slot> m_slots; // a power of two, at most half full
    std::uint32_t m_count = 0;
};

} // namespace quelt
