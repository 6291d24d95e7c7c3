#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quelt::host {

/// How deep JSON objects and arrays may nest in a document.
inline constexpr std::size_t s_maxJsonDepth = 4096;

/// Why a text is not a JSON document that can be read, and where.
struct JsonFault {
    /// What is wrong; begins in lower case and has no full stop.
    std::string what;
    /// Where, in bytes from the beginning of the text.
    std::size_t offset = 0;
    /// The object or array in which it is, or, for a number out of range, its own place, as a JSON pointer.
    std::string pointer;
    /// Whether the text is JSON up to here all the same, and only a number too large or nested too deep.
    bool isJson = false;
    /// The text under "id" in the outermost object, when it stands before the fault.
    std::optional<std::string> id;
};

/// Looks for the first fault of a text that the parser refused; the parser itself does not say where. Nothing
/// when there is none to be found.
[[nodiscard]] std::optional<JsonFault> findJsonFault(std::string_view text);

/// A position for people: the line, and the character in it, both from 1.
struct TextPosition {
    std::size_t line = 1;
    std::size_t column = 1;
};
[[nodiscard]] TextPosition positionOf(std::string_view text, std::size_t offset);

} // namespace quelt::host
