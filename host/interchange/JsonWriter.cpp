#include "interchange/JsonWriter.h"

#include <charconv>
#include <simdjson.h>
#include <string>
#include <type_traits>

namespace quelt::host {

namespace {

/// Characters are copied and looked at eight at a time.
using Word = std::uint64_t;
constexpr std::size_t s_wordSize = sizeof(Word);

constexpr Word everyByte(unsigned value) {
    return 0x0101010101010101U * Word{value};
}

/// True for eight characters that stand in JSON as they are. The lowest byte that is counted is one that
/// must be escaped; those above it may be counted by its carry.
bool isPlain(Word word) {
    const Word quote = word ^ everyByte('"');
    const Word backslash = word ^ everyByte('\\');
    const Word isControl = (word - everyByte(0x20)) & ~word;
    const Word isQuote = (quote - everyByte(1)) & ~quote;
    const Word isBackslash = (backslash - everyByte(1)) & ~backslash;
    return ((isControl | isQuote | isBackslash) & everyByte(0x80)) == 0;
}

Word load(const char* from) {
    Word word = 0;
    std::memcpy(&word, from, s_wordSize);
    return word;
}

/// The first `size` characters, less than eight, behind them others that stand in JSON as they are.
Word loadPart(const char* from, std::size_t size) {
    std::array<char, s_wordSize> bytes{' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
    // Two pieces of one known length, which may overlap, are copied faster than one of any length.
    const auto copyEnds = [&](auto length) {
        std::memcpy(bytes.data(), from, length);
        std::memcpy(bytes.data() + size - length, from + size - length, length);
    };
    if (size >= 4) {
        copyEnds(std::integral_constant<std::size_t, 4>());
    } else if (size >= 2) {
        copyEnds(std::integral_constant<std::size_t, 2>());
    } else {
        bytes[0] = *from;
    }
    return load(bytes.data());
}

char* escape(char* to, char character) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    constexpr std::string_view named = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    const auto code = static_cast<unsigned char>(character);
    if (const std::size_t found = named.find(character); found != std::string_view::npos) {
        *to++ = '\\';
        *to++ = letters[found];
    } else if (code < 0x20U) {
        to = std::copy_n("\\u00", 4, to);
        *to++ = digits[code >> 4U];
        *to++ = digits[code & 0xFU];
    } else {
        *to++ = character;
    }
    return to;
}

char* copyWord(char* to, Word word, const char* from, std::size_t size) {
    if (isPlain(word)) {
        std::memcpy(to, &word, s_wordSize);
        return to + size;
    }
    for (std::size_t position = 0; position < size; ++position) {
        to = escape(to, from[position]);
    }
    return to;
}

/// Copies `text` with escapes to `to`, where there is room for the worst case and a word more.
char* copyEscaped(char* to, std::string_view text) {
    const char* from = text.data();
    std::size_t left = text.size();
    for (; left >= s_wordSize; left -= s_wordSize, from += s_wordSize) {
        to = copyWord(to, load(from), from, s_wordSize);
    }
    return left != 0 ? copyWord(to, loadPart(from, left), from, left) : to;
}

/// Room for so many characters of a text is made at a time, in the worst case, in which each is escaped.
constexpr std::size_t s_pieceSize = 64;
constexpr std::size_t s_pieceRoom = 6 * s_pieceSize + s_wordSize;

} // namespace

void JsonWriter::text(std::string_view value) {
    char* end = separate(m_pBuffer->makeRoom(s_pieceRoom + 3));
    m_commas = 1;
    *end++ = '"';
    while (value.size() > s_pieceSize) {
        m_pBuffer->endAt(copyEscaped(end, value.substr(0, s_pieceSize)));
        value.remove_prefix(s_pieceSize);
        end = m_pBuffer->makeRoom(s_pieceRoom + 1);
    }
    end = copyEscaped(end, value);
    *end++ = '"';
    m_pBuffer->endAt(end);
}

void JsonWriter::utf8Text(std::string_view value) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD
    if (simdjson::validate_utf8(value.data(), value.size())) {
        text(value);
        return;
    }
    std::string readable;
    for (const char& character : value) {
        const bool isAscii = static_cast<unsigned char>(character) < 0x80U;
        readable += isAscii ? std::string_view(&character, 1) : replacement;
    }
    text(readable);
}

void JsonWriter::number(std::int64_t value) {
    constexpr std::size_t longest = 20;
    char* const end = separate(m_pBuffer->makeRoom(longest + 1));
    m_pBuffer->endAt(std::to_chars(end, end + longest, value).ptr);
    m_commas = 1;
}

} // namespace quelt::host
