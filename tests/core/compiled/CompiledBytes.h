#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

/// CRC-32 as RFC 1952 defines it, worked out bit by bit, over all bytes but those at 12 to 15.
inline std::uint32_t plainChecksum(std::span<const std::uint8_t> binary) {
    std::uint32_t remainder = 0xFFFFFFFFU;
    for (std::size_t position = 0; position < binary.size(); ++position) {
        if (position >= 12 && position < 16) {
            continue;
        }
        remainder ^= binary[position];
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder & 1U) != 0 ? (remainder >> 1U) ^ 0xEDB88320U : remainder >> 1U;
        }
    }
    return ~remainder;
}

/// Writes a number at a position, lowest byte first.
inline void putNumber(std::span<std::uint8_t> bytes, std::size_t position, std::uint32_t number) {
    for (std::size_t place = 0; place < 4; ++place) {
        bytes[position + place] = static_cast<std::uint8_t>((number >> (8 * place)) & 0xFFU);
    }
}

/// Gives a binary of at least 16 bytes the header that its bytes should have; the version stays.
inline void repairHeader(std::span<std::uint8_t> binary) {
    constexpr std::array<std::uint8_t, 4> magic = {0x51, 0x46, 0x4C, 0x54};
    std::copy(magic.begin(), magic.end(), binary.begin());
    putNumber(binary, 8, static_cast<std::uint32_t>(binary.size()));
    putNumber(binary, 12, plainChecksum(binary));
}

/// Puts compiled binaries together byte by byte, without the writer.
class CompiledBytes {
public:
    CompiledBytes& byte(std::uint8_t value) {
        m_bytes.push_back(value);
        return *this;
    }
    CompiledBytes& number(std::uint32_t value) {
        m_bytes.resize(m_bytes.size() + 4);
        putNumber(m_bytes, m_bytes.size() - 4, value);
        return *this;
    }
    /// A GUID whose last bytes are `value`, the highest first, all others zero.
    CompiledBytes& guid(std::uint32_t value) {
        m_bytes.resize(m_bytes.size() + 12);
        for (std::uint32_t place = 4; place-- > 0;) {
            byte(static_cast<std::uint8_t>((value >> (8 * place)) & 0xFFU));
        }
        return *this;
    }
    CompiledBytes& text(std::string_view value) {
        number(static_cast<std::uint32_t>(value.size()));
        m_bytes.insert(m_bytes.end(), value.begin(), value.end());
        return *this;
    }
    /// Literals: an effectivity, and an option up to the number of its values.
    CompiledBytes& effectivity(std::uint32_t number, bool isNegated = false) {
        return byte(isNegated ? 1 : 0).guid(number);
    }
    CompiledBytes& option(std::uint32_t number, std::uint32_t valueCount, bool isNegated = false) {
        return byte(isNegated ? 3 : 2).guid(number).number(valueCount);
    }
    /// What stands in front of the conjunctions of the only context (guid 11) of the only view (0) of the
    /// only domain (2).
    CompiledBytes& onlyDnf(std::uint32_t conjunctions) {
        return number(1).number(2).number(1).number(0).number(1).guid(11).number(conjunctions);
    }

    /// The binary: a header, and what was put together so far.
    [[nodiscard]] std::vector<std::uint8_t> sealed(std::uint32_t version = 1) const {
        constexpr std::size_t header = 16;
        std::vector<std::uint8_t> binary(header + m_bytes.size());
        std::copy(m_bytes.begin(), m_bytes.end(), binary.begin() + header);
        putNumber(binary, 4, version);
        repairHeader(binary);
        return binary;
    }

private:
    std::vector<std::uint8_t> m_bytes;
};
