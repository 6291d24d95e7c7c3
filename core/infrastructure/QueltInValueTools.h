#pragma once

#include "infrastructure/QueltInHashIndex.h"
#include "infrastructure/QueltInObjectVal.h"

#include <cstdint>

namespace quelt {

/// `other` as Self when its class is exactly that of `self`, else null: values of different classes are never
/// equal.
template <class Self>
[[nodiscard]] const Self* asSameClass(const Self& self, const QueltInObjectVal& other) {
    return typeOf(self) == typeOf(other) ? static_cast<const Self*>(&other) : nullptr;
}

/// A copy of `self`: in `reuse` when that is of the same class, else a new one.
template <class Self>
[[nodiscard]] QueltInObjectVal* copyInto(const Self& self, QueltInObjectVal* reuse) {
    if (reuse == nullptr || typeOf(*reuse) != typeOf(self)) {
        return new Self(self);
    }
    *static_cast<Self*>(reuse) = self;
    return reuse;
}

/// 64 bits folded to the 32 that hash() gives.
[[nodiscard]] constexpr unsigned int foldHash(std::uint64_t hash) noexcept {
    return static_cast<unsigned int>(hash ^ (hash >> 32U));
}

/// A number for the object's identity.
[[nodiscard]] inline std::uint64_t hashOfAddress(const void* object) noexcept {
    return mixBits(reinterpret_cast<std::uintptr_t>(object));
}

/// The hash of a sequence from the hash of its beginning and that of its next element.
[[nodiscard]] constexpr std::uint64_t hashInOrder(std::uint64_t beginning, std::uint64_t next) noexcept {
    return mixBits(beginning ^ (next + 0x9E3779B97F4A7C15U));
}

} // namespace quelt
