#pragma once

#include "infrastructure/QueltInObjectVal.h"
#include "infrastructure/QueltInString.h"

#include <array>
#include <compare>
#include <cstdint>
#include <string_view>

class QueltInGuid;
extern template class QUELT_CORE_API QueltInTyped<QueltInGuid, QueltInObjectVal>;

/// A 128-bit globally unique identifier. Its text is lower-case hexadecimal, 8-4-4-4-12, the first byte first
/// (the form of RFC 4122, section 3).
class QUELT_CORE_API QueltInGuid : public QueltInTyped<QueltInGuid, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInGuid";
    /// The bytes, in the order of the text.
    using Bytes = std::array<std::uint8_t, 16>;

    /// The empty GUID: all bytes zero.
    QueltInGuid() = default;
    /// The GUID with these bytes.
    explicit QueltInGuid(const Bytes& bytes) noexcept : m_bytes(bytes) {}

    /// Reads the 8-4-4-4-12 form, digits of either case, nothing before or after. E_INVALIDARG, and `guid` as
    /// it was, for anything else.
    [[nodiscard]] static long parse(std::string_view text, QueltInGuid& guid) noexcept;

    /// The bytes; valid as long as the object.
    [[nodiscard]] const Bytes& getBytes() const noexcept { return m_bytes; }
    [[nodiscard]] QueltInString toString() const override;
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;
    /// As hash(), all 64 bits, for tables of GUIDs and nothing else.
    [[nodiscard]] std::uint64_t fullHash() const noexcept;

    /// True when all bytes are equal.
    friend bool operator==(const QueltInGuid& left, const QueltInGuid& right) noexcept {
        return left.m_bytes == right.m_bytes;
    }
    /// By the bytes, the first byte first, which is the order of the texts.
    friend std::strong_ordering operator<=>(const QueltInGuid& left, const QueltInGuid& right) noexcept {
        return left.m_bytes <=> right.m_bytes;
    }

private:
    Bytes m_bytes{};
};
