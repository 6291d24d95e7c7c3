#pragma once

#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInTyped.h"

#include <cstddef>
#include <cstdint>
#include <span>

class QueltBioBuffer;
extern template class QUELT_CORE_API QueltInTyped<QueltBioBuffer, QueltInObject>;

/// A string of bytes that holds a compiled expression. It says nothing of what the bytes mean: see
/// QueltCompiledBinaryWriter, which makes them, and QueltCompiledBinaryParser, which reads them.
class QUELT_CORE_API QueltBioBuffer : public QueltInTyped<QueltBioBuffer, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltBioBuffer";

    /// Without bytes.
    QueltBioBuffer() = default;
    /// With a copy of `bytes`.
    explicit QueltBioBuffer(std::span<const std::uint8_t> bytes);

    /// The bytes; valid until the buffer changes or goes.
    [[nodiscard]] std::span<const std::uint8_t> getBytes() const noexcept { return m_bytes; }
    /// The number of bytes.
    [[nodiscard]] std::size_t getSize() const noexcept { return m_bytes.size(); }
    /// Appends a copy of `bytes`, which must not be this buffer's own.
    void append(std::span<const std::uint8_t> bytes);
    /// Takes all bytes out.
    void clear() noexcept { m_bytes.clear(); }

    /// The bytes as lower-case hexadecimal digits, two a byte, nothing between them; empty for an empty
    /// buffer.
    [[nodiscard]] QueltInString toString() const override;

    /// True when both hold the same bytes.
    friend bool operator==(const QueltBioBuffer& left, const QueltBioBuffer& right) noexcept {
        return left.m_bytes == right.m_bytes;
    }

private:
    QueltInVector<std::uint8_t> m_bytes;
};
