#pragma once

#include <cstdint>

namespace quelt {

/// The most intervals, values or selections that a set operation stores.
inline constexpr std::uint32_t maxResultLength = 1'000'000;

/// What a set operation does with two sets.
enum class SetOperation { intersection, unification, difference };

/// Whether sets of values of the two variables can be combined: the variables agree, or both are missing.
template <class Variable>
[[nodiscard]] bool areOfOneVariable(const Variable* left, const Variable* right) {
    return left != nullptr && right != nullptr ? left->agreesWith(*right) : left == right;
}

/// The operation on the bits of two words, bit by bit.
[[nodiscard]] constexpr std::uint64_t combineBits(SetOperation operation, std::uint64_t left,
                                                  std::uint64_t right) noexcept {
    switch (operation) {
    case SetOperation::intersection:
        return left & right;
    case SetOperation::unification:
        return left | right;
    case SetOperation::difference:
        break;
    }
    return left & ~right;
}

/// The operation on one member: whether it is in the result when it is, or is not, in the two sets.
[[nodiscard]] constexpr bool combineMember(SetOperation operation, bool inLeft, bool inRight) noexcept {
    return combineBits(operation, inLeft ? 1U : 0U, inRight ? 1U : 0U) != 0;
}

} // namespace quelt
