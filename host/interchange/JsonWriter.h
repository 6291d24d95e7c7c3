#pragma once

#include "interchange/Key.h"
#include "interchange/TextBuffer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quelt::host {

/// Writes compact JSON, one document after the other, into a buffer. What is written where is the caller's
/// care: a key in front of each value of an object, and an end for each beginning.
class JsonWriter {
public:
    /// `buffer` must outlive the writer, or another one must be given before the next document.
    explicit JsonWriter(TextBuffer& buffer) noexcept : m_pBuffer(&buffer) {}
    /// Begins a new document at the end of `buffer`.
    void begin(TextBuffer& buffer) noexcept {
        m_pBuffer = &buffer;
        m_commas = 0;
    }

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    void key(Key name) {
        const WrittenKey& written = s_writtenKeys[static_cast<std::size_t>(name)];
        char* const end = m_pBuffer->makeRoom(s_keySize);
        std::memcpy(end, written.text.data() + 1 - m_commas, s_keySize);
        m_pBuffer->endAt(end + written.size + m_commas);
        m_commas = 0;
    }
    void key(std::string_view name) {
        text(name);
        m_pBuffer->append(':');
        m_commas = 0;
    }
    /// Text in UTF-8; its bytes are not looked at beyond what JSON escapes.
    void text(std::string_view value);
    /// Text that may have come from bytes of no known encoding: where those are not UTF-8, U+FFFD stands for
    /// each of them that is not ASCII.
    void utf8Text(std::string_view value);
    void number(std::int64_t value);
    /// A value that was written before.
    void written(std::string_view value) {
        m_pBuffer->endAt(copyText(value, separate(m_pBuffer->makeRoom(value.size() + 1))));
        m_commas = 1;
    }
    /// The beginning of an object or array that was written before; what it ends with has no element yet.
    void writtenBeginning(std::string_view beginning) {
        written(beginning);
        m_commas = 0;
    }
    void flag(bool value) { written(value ? "true" : "false"); }
    void null() { written("null"); }

private:
    static constexpr std::size_t s_keySize = 24; // the longest key has less, with comma, quotes and colon

    /// A key as it stands in a document: a comma, and the key in quotes, with a colon.
    struct WrittenKey {
        std::array<char, 1 + s_keySize> text{};
        std::uint8_t size = 0; // without the comma
    };
    static consteval std::array<WrittenKey, keys::s_count> writeKeys();
    static const std::array<WrittenKey, keys::s_count> s_writtenKeys;

    /// Writes the comma, if there must be one, to `end`, where there is room for one; answers where to go on.
    [[nodiscard]] char* separate(char* end) const noexcept {
        *end = ',';
        return end + m_commas;
    }
    void open(char bracket) {
        char* const end = separate(m_pBuffer->makeRoom(2));
        *end = bracket;
        m_pBuffer->endAt(end + 1);
        m_commas = 0;
    }
    void close(char bracket) {
        m_pBuffer->append(bracket);
        m_commas = 1;
    }

    TextBuffer* m_pBuffer;
    std::size_t m_commas = 0; // how many must stand in front of the next key or value: one, or none
};

consteval std::array<JsonWriter::WrittenKey, keys::s_count> JsonWriter::writeKeys() {
    std::array<WrittenKey, keys::s_count> writtenKeys{};
    for (std::size_t key = 0; key < keys::s_count; ++key) {
        WrittenKey& written = writtenKeys[key];
        written.text[0] = ',';
        const auto append = [&written](char character) { written.text[1U + written.size++] = character; };
        append('"');
        for (const char character : keys::s_names[key]) {
            append(character);
        }
        append('"');
        append(':');
    }
    return writtenKeys;
}
inline constexpr std::array<JsonWriter::WrittenKey, keys::s_count> JsonWriter::s_writtenKeys = writeKeys();

} // namespace quelt::host
