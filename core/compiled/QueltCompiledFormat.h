#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// What parser and writer of compiled binaries share. docs/compiled-format.md describes the format.
namespace quelt::compiledFormat {

/// The first four bytes of every compiled binary.
inline constexpr std::array<std::uint8_t, 4> magic = {'Q', 'F', 'L', 'T'};
/// The version of the format, a number of four bytes, that is written, and the only one that is read.
inline constexpr std::uint32_t version = 1;

/// Where the version stands, in bytes from the start.
inline constexpr std::size_t versionAt = 4;
/// Where the length of the whole binary, in bytes, stands; it is a number of four bytes.
inline constexpr std::size_t lengthAt = 8;
/// Where the checksum (see checksumOf) stands; it is a number of four bytes.
inline constexpr std::size_t checksumAt = 12;
/// Where the header ends and the content begins.
inline constexpr std::size_t headerSize = 16;

/// The bits that a literal's first byte is made of: this one is set when the literal is negated.
inline constexpr std::uint8_t negatedBit = 1;
/// Set when the literal is on an option; else it is on an effectivity.
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
