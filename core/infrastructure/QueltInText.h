#pragma once

#include "infrastructure/QueltInString.h"

#include <cstdint>
#include <string_view>

namespace quelt {

/// Builds the one-line texts that toString() gives.
class QUELT_CORE_API TextBuilder {
public:
    /// Appends as it stands.
    TextBuilder& operator<<(std::string_view text);
    /// Appends the number in decimal digits.
    TextBuilder& operator<<(std::int64_t number);
    /// Appends a name: as it stands when it is made of letters, digits, '_', '-' and '.', else (and when it
    /// is empty) in double quotes with JSON's escapes.
    TextBuilder& name(std::string_view name);
    /// The text so far, handed over; the builder is empty afterwards.
    [[nodiscard]] QueltInString take();

private:
    QueltInString::Text m_text;
};

} // namespace quelt
