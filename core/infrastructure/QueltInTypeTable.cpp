#include "infrastructure/QueltInTypeTable.h"

constinit std::array<QueltInTypeTable::Place, QueltInTypeTable::s_size> QueltInTypeTable::s_places{};

void QueltInTypeTable::enter(const std::type_info& registered, const QueltInObjectTypeClass& type) noexcept {
    Place& place = s_places[numberOf(registered)];
    if (place.registered.load(std::memory_order_relaxed) != nullptr) {
        return;
    }
    const QueltInObjectTypeClass* none = nullptr;
    if (place.type.compare_exchange_strong(none, &type, std::memory_order_relaxed)) {
        place.registered.store(&registered, std::memory_order_release);
    }
}

void QueltInTypeTable::remove(const std::type_info& registered) noexcept {
    Place& place = s_places[numberOf(registered)];
    if (place.registered.load(std::memory_order_relaxed) == &registered) {
        place.registered.store(nullptr, std::memory_order_relaxed);
        place.type.store(nullptr, std::memory_order_release);
    }
}
