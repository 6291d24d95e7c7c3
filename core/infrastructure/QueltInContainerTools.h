#pragma once

#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTyped.h"

#include <cstdint>

namespace quelt {

/// True when `object` may be held where `declared` was declared. Nothing may where nothing was declared
/// (null).
[[nodiscard]] inline bool isAdmitted(const QueltInObjectTypeClass* declared, const QueltInObject& object) {
    const QueltInObjectTypeClass* const type = typeOf(object);
    return type != nullptr && type->isa(declared) != 0;
}

/// Room that a container makes ahead for the capacity that its maker names: a wish, not a demand.
[[nodiscard]] constexpr std::uint32_t roomAhead(int capacity) noexcept {
    constexpr int most = 65536;
    return capacity <= 0 ? 0U : static_cast<std::uint32_t>(capacity < most ? capacity : most);
}

/// Writes one container, brackets and separators included. Containers hold objects by pointer, so a container
/// may contain itself: where one comes again inside itself, or nesting gets absurd, three dots stand for it.
class ContainerText {
public:
    /// Starts the text of `container` with `opening`; it ends with `closing`.
    ContainerText(const QueltInObject& container, char opening, char closing);
    ~ContainerText();
    ContainerText(const ContainerText&) = delete;
    ContainerText& operator=(const ContainerText&) = delete;

    /// Adds an element; null is written as "null".
    void element(const QueltInObject* object);
    /// Adds an entry of a map.
    void entry(const QueltInObject* key, const QueltInObject* value);
    /// The finished text.
    [[nodiscard]] QueltInString take();

private:
    void separate();
    void write(const QueltInObject* object);
    [[nodiscard]] bool isBeingWritten(const QueltInObject* object) const noexcept;

    const QueltInObject* m_pContainer;
    const ContainerText* m_pOuter;
    std::uint32_t m_depth;
    char m_closing;
    bool m_first = true;
    TextBuilder m_text;
};

} // namespace quelt
