#include "infrastructure/QueltInGuid.h"

#include "infrastructure/QueltInKeyedHash.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

#include <array>
#include <cstring>

template class QueltInTyped<QueltInGuid, QueltInObjectVal>;

namespace {

constexpr std::size_t s_textLength = 36;

/// True where a hyphen stands before the byte at `position`.
constexpr bool startsGroup(std::size_t position) noexcept {
    return position == 4 || position == 6 || position == 8 || position == 10;
}

/// The value of a hexadecimal digit, -1 when it is none.
constexpr int digitValue(char digit) noexcept {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return -1;
}

} // namespace

long QueltInGuid::parse(std::string_view text, QueltInGuid& guid) noexcept {
    if (text.size() != s_textLength) {
        return E_INVALIDARG;
    }
    Bytes bytes{};
    std::size_t next = 0;
    for (std::size_t position = 0; position < bytes.size(); ++position) {
        if (startsGroup(position) && text[next++] != '-') {
            return E_INVALIDARG;
        }
        const int high = digitValue(text[next++]);
        const int low = digitValue(text[next++]);
        if (high < 0 || low < 0) {
            return E_INVALIDARG;
        }
        bytes[position] = static_cast<std::uint8_t>(high * 16 + low);
    }
    guid.m_bytes = bytes;
    return S_OK;
}

QueltInString QueltInGuid::toString() const {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<char, s_textLength> text{};
    char* next = text.data();
    for (std::size_t position = 0; position < m_bytes.size(); ++position) {
        if (startsGroup(position)) {
            *next++ = '-';
        }
        *next++ = digits[m_bytes[position] / 16U];
        *next++ = digits[m_bytes[position] % 16U];
    }
    return {std::string_view(text.data(), text.size())};
}

QueltInObjectVal* QueltInGuid::clone(QueltInObjectVal* reuse) const {
    return quelt::copyInto(*this, reuse);
}

int QueltInGuid::equals(const QueltInObjectVal& other) const {
    const QueltInGuid* const guid = quelt::asSameClass(*this, other);
    return guid != nullptr && guid->m_bytes == m_bytes ? 1 : 0;
}

unsigned int QueltInGuid::hash() const {
    return quelt::foldHash(fullHash());
}

std::uint64_t QueltInGuid::fullHash() const noexcept {
    std::array<std::uint32_t, 4> words{};
    static_assert(sizeof words == sizeof m_bytes);
    std::memcpy(words.data(), m_bytes.data(), sizeof words);
    return quelt::keyedHash(words);
}
