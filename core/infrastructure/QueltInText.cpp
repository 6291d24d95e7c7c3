#include "infrastructure/QueltInText.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quelt {

namespace {

bool isPlain(char character) noexcept {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '_' || character == '-' || character == '.';
}

/// The letter that stands for `character` behind a backslash, 0 when there is none.
char shortEscape(char character) noexcept {
    switch (character) {
    case '"':
    case '\\':
        return character;
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return '\0';
    }
}

void appendQuoted(QueltInString::Text& text, char character) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(character);
    if (const char letter = shortEscape(character); letter != '\0') {
        text += '\\';
        text += letter;
    } else if (code < 0x20U) {
        text += "\\u00";
        text += digits[code >> 4U];
        text += digits[code & 0x0FU];
    } else {
        text += character;
    }
}

} // namespace

TextBuilder& TextBuilder::operator<<(std::string_view text) {
    m_text += text;
    return *this;
}

TextBuilder& TextBuilder::operator<<(std::int64_t number) {
    std::array<char, 20> digits{}; // a sign and the 19 digits of the largest magnitude
    const std::to_chars_result result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    m_text.append(digits.data(), result.ptr);
    return *this;
}

TextBuilder& TextBuilder::name(std::string_view name) {
    if (!name.empty() && std::all_of(name.begin(), name.end(), isPlain)) {
        m_text += name;
        return *this;
    }
    m_text += '"';
    for (const char character : name) {
        appendQuoted(m_text, character);
    }
    m_text += '"';
    return *this;
}

QueltInString TextBuilder::take() {
    QueltInString::Text text;
    text.swap(m_text);
    return QueltInString(std::move(text));
}

} // namespace quelt
