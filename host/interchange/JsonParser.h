#pragma once

#include "interchange/JsonFault.h"
#include "interchange/Place.h"

#include <optional>
#include <simdjson.h>
#include <string>
#include <string_view>

namespace quelt::host {

/// A text behind which at least simdjson::SIMDJSON_PADDING more bytes may be read, whatever they hold.
struct PaddedText {
    const char* data;
    std::size_t size;
    [[nodiscard]] std::string_view view() const noexcept { return {data, size}; }
};

/// The text without the byte-order mark that some editors put in front of UTF-8.
[[nodiscard]] PaddedText withoutUtf8Mark(PaddedText text) noexcept;

/// Says that a text is not a JSON document that can be read, with the position of the first fault when it was
/// found.
class SyntaxRefusal : public Refusal {
public:
    /// `what` with the place in the document, without the position.
    explicit SyntaxRefusal(const std::string& what) : Refusal(what) {}
    /// The same for a fault that was found at `position`.
    SyntaxRefusal(const std::string& what, TextPosition position, const JsonFault& fault)
        : Refusal(what), m_position(position), m_isJson(fault.isJson), m_id(fault.id) {}
    [[nodiscard]] const std::optional<TextPosition>& position() const noexcept { return m_position; }
    /// Whether the text is JSON all the same (see JsonFault).
    [[nodiscard]] bool isJson() const noexcept { return m_isJson; }
    /// The outermost object's "id", when it could be read all the same.
    [[nodiscard]] const std::optional<std::string>& id() const noexcept { return m_id; }

private:
    std::optional<TextPosition> m_position;
    bool m_isJson = false;
    std::optional<std::string> m_id;
};

/// Parses one JSON document after the other. Keeps the memory of the usual ones and gives that of unusually
/// large ones back.
class JsonParser {
public:
    JsonParser();

    /// The root of the document `text`, valid until the next call. Throws a SyntaxRefusal.
    [[nodiscard]] simdjson::dom::element parse(PaddedText text);

private:
    void allocate(std::size_t capacity);

    simdjson::dom::parser m_parser;
};

} // namespace quelt::host
