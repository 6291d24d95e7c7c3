#include "interchange/JsonFault.h"

#include "interchange/Place.h"

#include <charconv>
#include <cstdint>
#include <vector>

namespace quelt::host {

namespace {

/// The length of the well-formed UTF-8 sequence at the beginning of `text`, 0 when there is none (Unicode,
/// table 3-7).
std::size_t sequenceLength(std::string_view text) {
    const auto byte = [text](std::size_t index) -> unsigned {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    const auto isBetween = [](unsigned value, unsigned least, unsigned greatest) {
        return value >= least && value <= greatest;
    };
    const unsigned first = byte(0);
    std::size_t length = 0;
    unsigned least = 0x80U;
    unsigned greatest = 0xBFU;
    if (first < 0x80U) {
        return 1;
    }
    if (isBetween(first, 0xC2U, 0xDFU)) {
        length = 2;
    } else if (isBetween(first, 0xE0U, 0xEFU)) {
        length = 3;
        least = first == 0xE0U ? 0xA0U : least;       // no longer form than needed
        greatest = first == 0xEDU ? 0x9FU : greatest; // no surrogates
    } else if (isBetween(first, 0xF0U, 0xF4U)) {
        length = 4;
        least = first == 0xF0U ? 0x90U : least;
        greatest = first == 0xF4U ? 0x8FU : greatest; // nothing past U+10FFFF
    }
    if (length == 0 || !isBetween(byte(1), least, greatest)) {
        return 0;
    }
    for (std::size_t index = 2; index < length; ++index) {
        if (!isBetween(byte(index), 0x80U, 0xBFU)) {
            return 0;
        }
    }
    return length;
}

/// Reads a text as strictly as RFC 8259 has it, and throws the first fault.
class Scanner {
public:
    explicit Scanner(std::string_view text) noexcept : m_text(text) {}

    void scanDocument() {
        scanValue();
        while (!m_levels.empty()) {
            scanNextItem();
        }
        skipBlanks();
        if (m_at < m_text.size()) {
            fail("text behind the end of the document");
        }
    }

private:
    struct Level {
        bool isObject;
        std::size_t items;
        std::string key;
    };

    [[nodiscard]] bool isAtEnd() const { return m_at == m_text.size(); }
    [[nodiscard]] char peek() const { return isAtEnd() ? '\0' : m_text[m_at]; }
    [[nodiscard]] bool isAtDigit() const { return peek() >= '0' && peek() <= '9'; }
    bool take(char wanted) {
        const bool isThere = !isAtEnd() && m_text[m_at] == wanted;
        m_at += isThere ? 1 : 0;
        return isThere;
    }
    void skipBlanks() {
        while (peek() == ' ' || peek() == '\t' || peek() == '\n' || peek() == '\r') {
            ++m_at;
        }
    }

    [[noreturn]] void fail(std::string_view what) const {
        if (isAtEnd()) {
            what = m_text.find_first_not_of(" \t\n\r") == std::string_view::npos ? "nothing to read"
                                                                                 : "the text ends too early";
        } else if (sequenceLength(m_text.substr(m_at)) == 0) {
            what = "not UTF-8";
        }
        throw faultAt(m_at, what, pointer(false));
    }
    [[nodiscard]] JsonFault faultAt(std::size_t offset, std::string_view what, std::string pointer) const {
        return {.what = std::string(what),
                .offset = offset,
                .pointer = std::move(pointer),
                .id = m_hasOneId ? m_id : std::nullopt};
    }
    /// The same for what is JSON, but too much for us.
    [[nodiscard]] JsonFault limitAt(std::size_t offset, std::string_view what, std::string pointer) const {
        JsonFault fault = faultAt(offset, what, std::move(pointer));
        fault.isJson = true;
        return fault;
    }
    /// The place of the innermost object or array, or of the value in it that is being read.
    [[nodiscard]] std::string pointer(bool ofValue) const {
        std::string pointer;
        const std::size_t end = ofValue || m_levels.empty() ? m_levels.size() : m_levels.size() - 1;
        for (std::size_t index = 0; index < end; ++index) {
            const Level& level = m_levels[index];
            appendPointerToken(pointer, level.isObject ? level.key : std::to_string(level.items - 1));
        }
        return pointer;
    }

    void scanNextItem() {
        const bool isObject = m_levels.back().isObject;
        skipBlanks();
        if (take(isObject ? '}' : ']')) {
            m_levels.pop_back();
            return;
        }
        if (m_levels.back().items > 0) {
            if (!take(',')) {
                fail(isObject ? "expected ',' or '}'" : "expected ',' or ']'");
            }
            skipBlanks();
        }
        if (isObject) {
            scanKey();
        }
        ++m_levels.back().items;
        scanValue();
    }

    void scanKey() {
        if (peek() != '"') {
            fail("expected a key in double quotes");
        }
        m_levels.back().key = scanText();
        skipBlanks();
        if (!take(':')) {
            fail("expected ':' behind the key");
        }
    }

    void scanValue() {
        skipBlanks();
        if (peek() == '{' || peek() == '[') {
            open();
        } else if (peek() == '"') {
            const bool isId = m_levels.size() == 1 && m_levels.back().isObject && m_levels.back().key == "id";
            std::string text = scanText();
            if (isId) {
                m_hasOneId = !m_id.has_value();
                m_id = std::move(text);
            }
        } else if (peek() == '-' || isAtDigit()) {
            scanNumber();
        } else if (!takeWord("true") && !takeWord("false") && !takeWord("null")) {
            fail("expected a value");
        }
    }

    void open() {
        if (m_levels.size() == s_maxJsonDepth) {
            throw limitAt(
                m_at, "objects and arrays nested more than " + std::to_string(s_maxJsonDepth) + " deep", {});
        }
        m_levels.push_back({m_text[m_at] == '{', 0, {}});
        ++m_at;
    }

    bool takeWord(std::string_view word) {
        const bool isThere = m_text.substr(m_at).starts_with(word);
        if (!isThere && word.starts_with(m_text.substr(m_at))) {
            m_at = m_text.size(); // the text ends within the word
        }
        m_at += isThere ? word.size() : 0;
        return isThere;
    }

    void scanDigits(std::string_view expectation) {
        if (!isAtDigit()) {
            fail(expectation);
        }
        while (isAtDigit()) {
            ++m_at;
        }
    }

    void scanNumber() {
        const std::size_t begin = m_at;
        bool isWhole = true;
        take('-');
        if (!take('0')) {
            scanDigits("expected a digit");
        } else if (isAtDigit()) {
            fail("a number must not begin with 0");
        }
        if (take('.')) {
            isWhole = false;
            scanDigits("expected a digit behind the decimal point");
        }
        if (take('e') || take('E')) {
            isWhole = false;
            take('+') || take('-');
            scanDigits("expected a digit in the exponent");
        }
        if (!isInRange(m_text.substr(begin, m_at - begin), isWhole)) {
            throw limitAt(begin, "number out of range", pointer(true));
        }
    }

    static bool isInRange(std::string_view number, bool isWhole) {
        const char* const end = number.data() + number.size();
        const auto parses = [&](auto value) {
            return std::from_chars(number.data(), end, value).ec == std::errc();
        };
        if (isWhole) {
            return parses(std::int64_t{}) || parses(std::uint64_t{});
        }
        const bool isTiny = number.find('-', 1) != std::string_view::npos; // reads as zero
        return isTiny || parses(double{});
    }

    std::string scanText() {
        std::string text;
        ++m_at;
        while (!take('"')) {
            if (take('\\')) {
                scanEscape(text);
                continue;
            }
            if (!isAtEnd() && static_cast<unsigned char>(peek()) < 0x20U) {
                fail("control character in a text");
            }
            const std::size_t length = isAtEnd() ? 0 : sequenceLength(m_text.substr(m_at));
            if (length == 0) {
                fail("the text in quotes does not end");
            }
            text += m_text.substr(m_at, length);
            m_at += length;
        }
        return text;
    }

    void scanEscape(std::string& text) {
        constexpr std::string_view escapes = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        const std::size_t escape = isAtEnd() ? std::string_view::npos : escapes.find(peek());
        if (escape != std::string_view::npos) {
            text += meanings[escape];
            ++m_at;
        } else if (take('u')) {
            appendUtf8(text, scanCodePoint());
        } else {
            fail("unknown escape");
        }
    }

    /// What stands behind "\u": a code point, or the first half of a surrogate pair with the second to
    /// follow.
    std::uint32_t scanCodePoint() {
        const std::size_t begin = m_at - 2;
        const std::uint32_t high = scanHex();
        if (high < 0xD800U || high > 0xDFFFU) {
            return high;
        }
        if (high <= 0xDBFFU && take('\\') && take('u')) {
            const std::uint32_t low = scanHex();
            if (low >= 0xDC00U && low <= 0xDFFFU) {
                return 0x10000U + ((high - 0xD800U) << 10U) + (low - 0xDC00U);
            }
        }
        throw faultAt(begin, isAtEnd() ? "the text ends too early" : "half of a surrogate pair",
                      pointer(false));
    }

    std::uint32_t scanHex() {
        std::uint32_t value = 0;
        for (int digit = 0; digit < 4; ++digit) {
            constexpr std::string_view digits = "0123456789abcdefABCDEF";
            const std::size_t found = isAtEnd() ? std::string_view::npos : digits.find(peek());
            if (found == std::string_view::npos) {
                fail("expected four hexadecimal digits behind \\u");
            }
            value = value * 16U + static_cast<std::uint32_t>(found < 16 ? found : found - 6);
            ++m_at;
        }
        return value;
    }

    static void appendUtf8(std::string& text, std::uint32_t codePoint) {
        const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
        if (codePoint < 0x80U) {
            append(codePoint);
            return;
        }
        if (codePoint < 0x800U) {
            append(0xC0U | codePoint >> 6U);
        } else {
            if (codePoint < 0x10000U) {
                append(0xE0U | codePoint >> 12U);
            } else {
                append(0xF0U | codePoint >> 18U);
                append(0x80U | (codePoint >> 12U & 0x3FU));
            }
            append(0x80U | (codePoint >> 6U & 0x3FU));
        }
        append(0x80U | (codePoint & 0x3FU));
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::vector<Level> m_levels;
    std::optional<std::string> m_id;
    bool m_hasOneId = false;
};

} // namespace

std::optional<JsonFault> findJsonFault(std::string_view text) {
    try {
        Scanner(text).scanDocument();
    } catch (JsonFault& fault) {
        return std::move(fault);
    }
    return std::nullopt;
}

TextPosition positionOf(std::string_view text, std::size_t offset) {
    TextPosition position;
    for (const char character : text.substr(0, offset)) {
        if (character == '\n') {
            ++position.line;
            position.column = 1;
        } else if ((static_cast<unsigned char>(character) & 0xC0U) != 0x80U) {
            ++position.column;
        }
    }
    return position;
}

} // namespace quelt::host
