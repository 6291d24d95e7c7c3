#include "effectivity/QueltEeValueSet.h"

#include <algorithm>

namespace quelt {

ValueSet::ValueSet(std::uint32_t limit) : m_limit(limit) {
    const std::uint32_t words = limit / 64 + (limit % 64 != 0 ? 1 : 0);
    m_words.reserve(words);
    for (std::uint32_t word = 0; word < words; ++word) {
        m_words.push_back(0);
    }
}

void ValueSet::complement() noexcept {
    for (std::uint64_t& word : m_words) {
        word = ~word;
    }
    if (m_limit % 64 != 0) {
        m_words[m_words.size() - 1] &= (std::uint64_t{1} << (m_limit % 64)) - 1;
    }
}

void ValueSet::combineWith(const ValueSet& other, SetOperation operation) noexcept {
    for (std::uint32_t word = 0; word < m_words.size(); ++word) {
        m_words[word] = combineBits(operation, m_words[word], other.m_words[word]);
    }
}

std::uint32_t ValueSet::count() const noexcept {
    int count = 0;
    for (const std::uint64_t word : m_words) {
        count += std::popcount(word);
    }
    return static_cast<std::uint32_t>(count);
}

bool operator==(const ValueSet& left, const ValueSet& right) noexcept {
    return left.m_limit == right.m_limit && std::ranges::equal(left.m_words, right.m_words);
}

} // namespace quelt
