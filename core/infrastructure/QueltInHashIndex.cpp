#include "infrastructure/QueltInHashIndex.h"

namespace quelt {

namespace {

constexpr std::size_t s_firstSlots = 32;

}

void QueltInHashIndex::clear() noexcept {
    m_slots.clear();
    m_count = 0;
}

void QueltInHashIndex::insert(std::uint64_t hash, std::uint32_t position) {
    if (m_slots.size() < (std::size_t{m_count} + 1) * 2) {
        grow();
    }
    place({hash, position});
    ++m_count;
}

void QueltInHashIndex::erase(std::uint64_t hash, std::uint32_t position) noexcept {
    if (m_slots.empty()) {
        return;
    }
    const std::uint64_t mask = m_slots.size() - 1;
    std::uint64_t gap = hash & mask;
    while (m_slots[gap].position != position) {
        if (m_slots[gap].position == s_none) {
            return;
        }
        gap = (gap + 1) & mask;
    }
    // Whatever a search would have to step over the gap to reach moves into it, so that no search stops too
    // early.
    for (std::uint64_t next = (gap + 1) & mask; m_slots[next].position != s_none; next = (next + 1) & mask) {
        const std::uint64_t distanceFromHome = (next - m_slots[next].hash) & mask;
        if (distanceFromHome >= ((next - gap) & mask)) {
            m_slots[gap] = m_slots[next];
            gap = next;
        }
    }
    m_slots[gap] = {};
    --m_count;
    for (Slot& slot : m_slots) {
        slot.position -= slot.position > position && slot.position != s_none ? 1U : 0U;
    }
}

void QueltInHashIndex::place(const Slot& slot) noexcept {
    const std::uint64_t mask = m_slots.size() - 1;
    std::uint64_t home = slot.hash & mask;
    while (m_slots[home].position != s_none) {
        home = (home + 1) & mask;
    }
    m_slots[home] = slot;
}

void QueltInHashIndex::grow() {
    QueltInVector<Slot> former(m_slots.empty() ? s_firstSlots : m_slots.size() * 2);
    former.swap(m_slots);
    for (const Slot& slot : former) {
        if (slot.position != s_none) {
            place(slot);
        }
    }
}

} // namespace quelt
