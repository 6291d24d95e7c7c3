#include "infrastructure/QueltInKeyedHash.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// The secret is another one in each process, so that no value is known beforehand.

using quelt::keyedHash;

TEST(QueltInKeyedHash, IsTheSameForEqualTexts) {
    const std::string one = "Engine";
    const std::string two = "Engine";
    EXPECT_EQ(keyedHash(one), keyedHash(std::string_view(two)));
    EXPECT_EQ(keyedHash(std::string_view()), keyedHash(""));
}

TEST(QueltInKeyedHash, SeesEveryByteAndTheLength) {
    std::set<std::uint64_t> hashes;
    std::size_t count = 0;
    for (std::size_t length = 0; length <= 40; ++length) {
        const std::string zeros(length, '\0');
        hashes.insert(keyedHash(zeros));
        ++count;
        for (std::size_t position = 0; position < length; ++position) {
            for (int bit = 0; bit < 8; ++bit) {
                std::string text = zeros;
                text[position] = static_cast<char>(1U << static_cast<unsigned>(bit));
                hashes.insert(keyedHash(text));
                ++count;
            }
        }
    }
    EXPECT_EQ(hashes.size(), count);
}

TEST(QueltInKeyedHash, SpreadsWords) {
    // What differs in few bits, wherever these are, shares a place of a table no more often than anything
    // else: of 4,096 words in 65,536 places, some 128 pairs do.
    constexpr std::uint32_t words = 4096;
    for (std::size_t word = 0; word < 4; ++word) {
        for (const unsigned shift : {0U, 4U, 12U, 20U}) {
            std::vector<int> places(65'536);
            int pairs = 0;
            for (std::uint32_t number = 0; number < words; ++number) {
                std::array<std::uint32_t, 4> key{1, 2, 3, 4};
                key[word] = number << shift;
                pairs += places[keyedHash(key) % places.size()]++;
            }
            EXPECT_LT(pairs, 4 * 128) << word << " " << shift;
        }
    }
}

TEST(QueltInKeyedHash, SpreadsNumberedNames) {
    // As above, for names that only a number tells apart, of every length up to the longest short ones.
    constexpr int names = 4096;
    for (const char* const beginning : {"", "v", "Option", "Selection-00"}) {
        std::vector<int> places(65'536);
        int pairs = 0;
        for (int number = 0; number < names; ++number) {
            pairs += places[keyedHash(beginning + std::to_string(number)) % places.size()]++;
        }
        EXPECT_LT(pairs, 4 * 128) << beginning;
    }
}
