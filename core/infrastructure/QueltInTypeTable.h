#pragma once

#include "infrastructure/QueltCoreExport.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <typeinfo>

class QueltInObjectTypeClass;

/// Finds the type class of a registered C++ class without a virtual call, which a processor predicts badly
/// where objects of many classes come one after the other.
///
/// Only classes that register themselves are entered, each under its own std::type_info: what derives from
/// them without registering has another one, is not found here, and is asked by dType(). So an override of
/// dType() is always heeded, except in a registered class itself, where it has no place.
class QUELT_CORE_API QueltInTypeTable {
public:
    /// Enters the class `registered`, whose objects answer `type` from dType(). Where its place is taken
    /// already nothing happens: its objects are asked. Any thread may look up meanwhile.
    static void enter(const std::type_info& registered, const QueltInObjectTypeClass& type) noexcept;
    /// Takes the class out again, before its library is unloaded.
    static void remove(const std::type_info& registered) noexcept;
    /// The type class of objects of exactly the class `dynamic`, null when it is not known here.
    [[nodiscard, gnu::always_inline]] static const QueltInObjectTypeClass*
    find(const std::type_info& dynamic) noexcept {
        const Place& place = s_places[numberOf(dynamic)];
        return place.registered.load(std::memory_order_acquire) == &dynamic
                   ? place.type.load(std::memory_order_relaxed)
                   : nullptr;
    }

private:
    struct Place {
        std::atomic<const std::type_info*> registered;
        std::atomic<const QueltInObjectTypeClass*> type;
    };
    static constexpr std::size_t s_size = 2048;

    /// Type information stands side by side in a library, at least 16 bytes a class.
    [[nodiscard]] static std::size_t numberOf(const std::type_info& dynamic) noexcept {
        return reinterpret_cast<std::uintptr_t>(&dynamic) / 16 % s_size;
    }

    static std::array<Place, s_size> s_places;
};
