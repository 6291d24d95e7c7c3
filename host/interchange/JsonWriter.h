#pragma once

#include "interchange/Key.h"

#include <cstddef>
#include <cstdint>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string_view>

namespace quelt::host {

/// Where written text gathers until it is sent off; it keeps its memory when it is emptied.
using TextBuffer = rapidjson::StringBuffer;

[[nodiscard]] inline std::string_view viewOf(const TextBuffer& buffer) {
    return {buffer.GetString(), buffer.GetSize()};
}

/// Empties `buffer`, which gives the memory back when it had grown unusually large.
inline void empty(TextBuffer& buffer) {
    constexpr std::size_t usualSize = std::size_t{8} << 20U;
    const bool isLarge = buffer.GetSize() > usualSize;
    buffer.Clear();
    if (isLarge) {
        buffer.ShrinkToFit();
    }
}

/// Writes compact JSON, one document after the other, into a buffer.
class JsonWriter {
public:
    /// `buffer` must outlive the writer, or another one must be given before the next document.
    explicit JsonWriter(TextBuffer& buffer) : m_writer(buffer) {}
    /// Begins a new document at the end of `buffer`.
    void begin(TextBuffer& buffer) { m_writer.Reset(buffer); }

    void beginObject() { m_writer.StartObject(); }
    void endObject() { m_writer.EndObject(); }
    void beginArray() { m_writer.StartArray(); }
    void endArray() { m_writer.EndArray(); }
    void key(Key name) { write(nameOf(name), true); }
    void key(std::string_view name) { write(name, true); }
    void text(std::string_view value) { write(value, false); }
    /// Text that may have come from bytes of no known encoding: where those are not UTF-8, U+FFFD stands for
    /// each of them that is not ASCII.
    void utf8Text(std::string_view value);
    void number(std::int64_t value) { m_writer.Int64(value); }
    void flag(bool value) { m_writer.Bool(value); }
    void null() { m_writer.Null(); }

private:
    void write(std::string_view text, bool isKey) {
        const char* const data = text.empty() ? "" : text.data();
        const auto size = static_cast<rapidjson::SizeType>(text.size());
        isKey ? m_writer.Key(data, size) : m_writer.String(data, size);
    }

    rapidjson::Writer<TextBuffer> m_writer;
};

} // namespace quelt::host
