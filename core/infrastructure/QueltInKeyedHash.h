#pragma once

#include "infrastructure/QueltCoreExport.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quelt {

// Hashes for tables whose keys come from outside. They depend on a secret that each process draws for itself,
// so that nobody can write down names, GUIDs or numbers of which thousands meet in one place of a table. No
// order that shows depends on them.

/// Of a text. Up to 16 bytes, which most names have: as four words, below, with the length for a fifth.
/// Longer ones: SipHash-1-3 (J.-P. Aumasson, D. J. Bernstein, "SipHash: a fast short-input PRF", 2012, with
/// one round for each word and three at the end).
[[nodiscard]] QUELT_CORE_API std::uint64_t keyedHash(std::string_view text) noexcept;
/// Of four words: the sum of their products with secret factors (M. Dietzfelbinger, "Universal hashing and
/// k-wise independent random variables via integer arithmetic without primes", 1996), its bits mixed, since
/// tables use the lower ones.
[[nodiscard]] QUELT_CORE_API std::uint64_t keyedHash(const std::array<std::uint32_t, 4>& words) noexcept;

/// For the unordered containers of the standard library. That the call may throw, for all they know, makes
/// them keep the hashes.
struct KeyedTextHash {
    /// Tells the containers that a key may be looked up by its view.
    using is_transparent = void;
    /// The keyed hash of `text`.
    [[nodiscard]] std::size_t operator()(std::string_view text) const { return keyedHash(text); }
};
/// The same for numbers.
struct KeyedNumberHash {
    /// The keyed hash of `number`.
    [[nodiscard]] std::size_t operator()(std::uint32_t number) const { return keyedHash({number, 0, 0, 0}); }
};

} // namespace quelt
