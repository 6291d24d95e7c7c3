#include "compiled/QueltCompiledFormat.h"

namespace quelt::compiledFormat {

namespace {

/// What each value of a byte does to the remainder.
constexpr std::array<std::uint32_t, 256> makeTable() noexcept {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder >> 1U) ^ ((remainder & 1U) != 0 ? 0xEDB88320U : 0U);
        }
        table[byte] = remainder;
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> s_table = makeTable();

std::uint32_t continueOver(std::uint32_t remainder, std::span<const std::uint8_t> bytes) noexcept {
    for (const std::uint8_t byte : bytes) {
        remainder = s_table[(remainder ^ byte) & 0xFFU] ^ (remainder >> 8U);
    }
    return remainder;
}

} // namespace

std::uint32_t numberAt(std::span<const std::uint8_t> bytes, std::size_t position) noexcept {
    std::uint32_t number = 0;
    for (std::size_t place = 4; place-- > 0;) {
        number = (number << 8U) | bytes[position + place];
    }
    return number;
}

void putNumberAt(std::span<std::uint8_t> bytes, std::size_t position, std::uint32_t number) noexcept {
    for (std::size_t place = 0; place < 4; ++place) {
        bytes[position + place] = static_cast<std::uint8_t>(number >> (8U * place));
    }
}

std::uint32_t checksumOf(std::span<const std::uint8_t> binary) noexcept {
    return ~continueOver(continueOver(~0U, binary.first(checksumAt)), binary.subspan(headerSize));
}

} // namespace quelt::compiledFormat
