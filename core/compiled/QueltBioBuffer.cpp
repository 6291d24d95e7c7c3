#include "compiled/QueltBioBuffer.h"

#include "infrastructure/QueltInString.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <string_view>

template class QueltInTyped<QueltBioBuffer, QueltInObject>;

QueltBioBuffer::QueltBioBuffer(std::span<const std::uint8_t> bytes) : m_bytes(bytes.begin(), bytes.end()) {}

void QueltBioBuffer::append(std::span<const std::uint8_t> bytes) {
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
}

QueltInString QueltBioBuffer::toString() const {
    constexpr std::string_view digits = "0123456789abcdef";
    QueltInString::Text text;
    text.reserve(m_bytes.size() * 2);
    for (const std::uint8_t byte : m_bytes) {
        text += digits[byte / 16U];
        text += digits[byte % 16U];
    }
    return QueltInString(std::move(text));
}
