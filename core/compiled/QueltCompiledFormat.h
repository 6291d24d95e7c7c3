#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// What parser and writer of compiled binaries share. docs/compiled-format.md describes the format.
namespace quelt::compiledFormat {

inline constexpr std::array<std::uint8_t, 4> magic = {'Q', 'F', 'L', 'T'};
inline constexpr std::uint32_t version = 1;

// Where the parts of the header stand, and where what follows it begins.
inline constexpr std::size_t versionAt = 4;
inline constexpr std::size_t lengthAt = 8;
inline constexpr std::size_t checksumAt = 12;
inline constexpr std::size_t headerSize = 16;

/// The two bits that a literal's first byte is made of.
inline constexpr std::uint8_t negatedBit = 1;
inline constexpr std::uint8_t optionBit = 2;

/// The number at `position`, which must be at least four bytes before the end.
[[nodiscard]] std::uint32_t numberAt(std::span<const std::uint8_t> bytes, std::size_t position) noexcept;
/// Writes `number` at `position`, likewise.
void putNumberAt(std::span<std::uint8_t> bytes, std::size_t position, std::uint32_t number) noexcept;

/// The checksum of a binary, which has a header: the CRC-32 of RFC 1952, section 8 (polynomial 0xEDB88320,
/// lowest bit first), over all bytes but the checksum's own. A change of one bit of those, or of any bits
/// within 32 in a row, changes it.
[[nodiscard]] std::uint32_t checksumOf(std::span<const std::uint8_t> binary) noexcept;

} // namespace quelt::compiledFormat
