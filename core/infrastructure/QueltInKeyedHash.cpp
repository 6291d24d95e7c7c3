#include "infrastructure/QueltInKeyedHash.h"

#include "infrastructure/QueltInHashIndex.h"

#include <bit>
#include <chrono>
#include <cstring>
#include <exception>
#include <random>

namespace quelt {

namespace {

/// What nobody outside the process knows.
struct Secret {
    Secret() noexcept {
        for (std::uint64_t& word : words) {
            word = draw();
        }
    }

    static std::uint64_t draw() noexcept {
        try {
            std::random_device source;
            return std::uint64_t{source()} << 32U | source();
        } catch (const std::exception&) {
            // No source of randomness: the clock and where the process happens to lie are better than
            // nothing.
            static std::uint64_t state =
                static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
                reinterpret_cast<std::uintptr_t>(&draw);
            state = state * 0x5851F42D4C957F2DU + 0x14057B7EF767814FU;
            return state ^ (state >> 29U);
        }
    }

    std::array<std::uint64_t, 6> words;
};

const std::array<std::uint64_t, 6>& secret() noexcept {
    static const Secret drawn;
    return drawn.words;
}

class SipState {
public:
    SipState(std::uint64_t key0, std::uint64_t key1) noexcept
        : m_v0(key0 ^ 0x736F6D6570736575U), m_v1(key1 ^ 0x646F72616E646F6DU),
          m_v2(key0 ^ 0x6C7967656E657261U), m_v3(key1 ^ 0x7465646279746573U) {}

    void take(std::uint64_t word) noexcept {
        m_v3 ^= word;
        round();
        m_v0 ^= word;
    }
    [[nodiscard]] std::uint64_t finish() noexcept {
        m_v2 ^= 0xFFU;
        round();
        round();
        round();
        return m_v0 ^ m_v1 ^ m_v2 ^ m_v3;
    }

private:
    void round() noexcept {
        m_v0 += m_v1;
        m_v1 = std::rotl(m_v1, 13) ^ m_v0;
        m_v0 = std::rotl(m_v0, 32);
        m_v2 += m_v3;
        m_v3 = std::rotl(m_v3, 16) ^ m_v2;
        m_v0 += m_v3;
        m_v3 = std::rotl(m_v3, 21) ^ m_v0;
        m_v2 += m_v1;
        m_v1 = std::rotl(m_v1, 17) ^ m_v2;
        m_v2 = std::rotl(m_v2, 32);
    }

    std::uint64_t m_v0;
    std::uint64_t m_v1;
    std::uint64_t m_v2;
    std::uint64_t m_v3;
};

template <class Word>
Word load(const char* bytes) noexcept {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof(Word));
    return word;
}

std::uint64_t littleEndian(std::string_view bytes) noexcept {
    std::uint64_t word = 0;
    for (std::size_t position = bytes.size(); position > 0; --position) {
        word = word << 8U | static_cast<unsigned char>(bytes[position - 1]);
    }
    return word;
}

constexpr std::size_t s_shortSize = 16;

/// A text of up to 16 bytes as four words. Texts of the same length give different words when they are
/// different: pieces at the two ends, which may overlap, hold all of it.
std::array<std::uint32_t, 4> wordsOf(std::string_view text) noexcept {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    if (text.size() >= 8) {
        return {load<std::uint32_t>(begin), load<std::uint32_t>(begin + 4), load<std::uint32_t>(end - 8),
                load<std::uint32_t>(end - 4)};
    }
    if (text.size() >= 4) {
        return {load<std::uint32_t>(begin), load<std::uint32_t>(end - 4), 0, 0};
    }
    return {static_cast<std::uint32_t>(littleEndian(text)), 0, 0, 0};
}

/// The factors are secret. The length is a fifth word.
std::uint64_t sumOfProducts(const std::array<std::uint32_t, 4>& words, std::uint64_t length) noexcept {
    const std::array<std::uint64_t, 6>& factors = secret();
    std::uint64_t sum = factors[4] + factors[5] * length;
    for (std::size_t position = 0; position < words.size(); ++position) {
        sum += factors[position] * words[position];
    }
    return mixBits(sum);
}

std::uint64_t hashOfLongText(std::string_view text) noexcept {
    SipState state(secret()[0], secret()[1]);
    const std::uint64_t length = text.size();
    while (text.size() >= 8) {
        state.take(load<std::uint64_t>(text.data()));
        text.remove_prefix(8);
    }
    state.take(length << 56U | littleEndian(text));
    return state.finish();
}

} // namespace

std::uint64_t keyedHash(std::string_view text) noexcept {
    return text.size() <= s_shortSize ? sumOfProducts(wordsOf(text), text.size()) : hashOfLongText(text);
}

std::uint64_t keyedHash(const std::array<std::uint32_t, 4>& words) noexcept {
    return sumOfProducts(words, 0);
}

} // namespace quelt
