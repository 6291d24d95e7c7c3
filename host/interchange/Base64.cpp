#include "interchange/Base64.h"

#include <array>

namespace quelt::host {

namespace {

constexpr std::string_view s_alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char s_padding = '=';
constexpr std::uint8_t s_none = 0xFF;

constexpr std::array<std::uint8_t, 256> makeDigits() {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(s_none);
    for (std::size_t digit = 0; digit < s_alphabet.size(); ++digit) {
        digits[static_cast<unsigned char>(s_alphabet[digit])] = static_cast<std::uint8_t>(digit);
    }
    return digits;
}
constexpr std::array<std::uint8_t, 256> s_digits = makeDigits();

std::uint32_t digitOf(char character) noexcept {
    return s_digits[static_cast<unsigned char>(character)];
}

/// The first character that is no digit of the alphabet; the size of the text when all are.
std::size_t findForeign(std::string_view text) noexcept {
    std::size_t position = 0;
    while (position < text.size() && digitOf(text[position]) != s_none) {
        ++position;
    }
    return position;
}

std::string_view withoutPadding(std::string_view text) noexcept {
    for (int count = 0; count < 2 && text.ends_with(s_padding); ++count) {
        text.remove_suffix(1);
    }
    return text;
}

/// The digits of up to four characters in 24 bits, the first digit highest.
std::uint32_t bitsOf(std::string_view group) noexcept {
    std::uint32_t bits = 0;
    for (std::size_t place = 0; place < 4; ++place) {
        bits = (bits << 6U) | (place < group.size() ? digitOf(group[place]) : 0U);
    }
    return bits;
}

} // namespace

std::string encodeBase64(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t position = 0; position < bytes.size(); position += 3) {
        std::uint32_t bits = 0;
        for (std::size_t place = position; place < position + 3; ++place) {
            bits = (bits << 8U) | (place < bytes.size() ? bytes[place] : 0U);
        }
        for (std::size_t place = 0; place < 4; ++place) {
            const bool isPadding = position + place > bytes.size();
            text += isPadding ? s_padding : s_alphabet[(bits >> (18U - 6U * place)) & 0x3FU];
        }
    }
    return text;
}

std::optional<std::string> decodeBase64(std::string_view text, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    const std::string_view digits = withoutPadding(text);
    if (const std::size_t foreign = findForeign(digits); foreign < digits.size()) {
        return "character " + std::to_string(foreign + 1) + " has no meaning there";
    }
    if (text.size() % 4 != 0) {
        return std::to_string(text.size()) + " characters are no groups of four";
    }
    const std::size_t unused = digits.size() % 4 == 2 ? 0xFU : digits.size() % 4 == 3 ? 0x3U : 0U;
    if (unused != 0 && (digitOf(digits.back()) & unused) != 0) {
        return "character " + std::to_string(digits.size()) + " has bits that belong to no byte";
    }
    bytes.reserve(digits.size() / 4 * 3 + 2);
    for (std::size_t position = 0; position < digits.size(); position += 4) {
        const std::string_view group = digits.substr(position, 4);
        const std::uint32_t bits = bitsOf(group);
        for (std::size_t place = 0; place + 1 < group.size(); ++place) {
            bytes.push_back(static_cast<std::uint8_t>(bits >> (16U - 8U * place)));
        }
    }
    return std::nullopt;
}

} // namespace quelt::host
