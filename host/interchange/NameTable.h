#pragma once

#include "infrastructure/QueltInKeyedHash.h"
#include "interchange/ShortText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quelt::host {

/// Finds objects by name. Names are most often short, and then hashed and compared in place. The hashes
/// depend on a secret of the process (see quelt::keyedHash), since names come from outside.
template <class Object>
class NameTable {
public:
    NameTable() {
        for (std::uint32_t number = 0; number < m_factors.size(); ++number) {
            m_factors[number] = keyedHash({number, 0, 0, 0}) | 1U;
        }
    }

    /// Files `object` under `name`, whose text must outlive the table. False when the name is taken.
    bool add(std::string_view name, const Object& object) {
        if (find(name) != nullptr) {
            return false;
        }
        if ((m_count + 1) * 2 > m_slots.size()) {
            grow();
        }
        place({hashOf(name), name, object});
        ++m_count;
        return true;
    }
    /// What is filed under `name`, or null; valid until something is added.
    [[nodiscard]] const Object* find(std::string_view name) const {
        if (m_count == 0) {
            return nullptr;
        }
        const std::uint64_t hash = hashOf(name);
        for (std::size_t place = hash & m_mask;; place = (place + 1) & m_mask) {
            const Slot& slot = m_slots[place];
            if (slot.hash == hash && isSameText(slot.name, name)) {
                return &slot.object;
            }
            if (slot.hash == s_free) {
                return nullptr;
            }
        }
    }
    [[nodiscard]] Object* find(std::string_view name) {
        return const_cast<Object*>(static_cast<const NameTable*>(this)->find(name));
    }

private:
    static constexpr std::uint64_t s_free = 0;
    static constexpr std::size_t s_firstSlots = 8;
    struct Slot {
        std::uint64_t hash = s_free;
        std::string_view name;
        Object object{};
    };

    /// Not s_free. A short text is taken for four words, which its two ends hold together.
    [[nodiscard]] std::uint64_t hashOf(std::string_view name) const {
        if (name.size() > s_shortText) {
            return keyedHash(name) | 1U;
        }
        const auto [first, last] = endsOf(name);
        const std::uint64_t sum = m_factors[0] * static_cast<std::uint32_t>(first) +
                                  m_factors[1] * (first >> 32U) +
                                  m_factors[2] * static_cast<std::uint32_t>(last) +
                                  m_factors[3] * (last >> 32U) + m_factors[4] * name.size();
        return (sum >> 32U) | 1U << 31U; // the upper half depends on all words
    }
    void place(const Slot& added) {
        std::size_t slot = added.hash & m_mask;
        while (m_slots[slot].hash != s_free) {
            slot = (slot + 1) & m_mask;
        }
        m_slots[slot] = added;
    }
    void grow() {
        std::vector<Slot> former(m_slots.empty() ? s_firstSlots : m_slots.size() * 2);
        former.swap(m_slots);
        m_mask = m_slots.size() - 1;
        for (const Slot& slot : former) {
            if (slot.hash != s_free) {
                place(slot);
            }
        }
    }

    std::vector<Slot> m_slots; // a power of two, at most half full
    std::size_t m_mask = 0;    // that number less one
    std::size_t m_count = 0;
    std::array<std::uint64_t, 5> m_factors{};
};

} // namespace quelt::host
