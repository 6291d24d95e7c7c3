#include "commands/Tally.h"

#include <algorithm>

namespace quelt::host {

void FailureTally::add(std::string_view text, std::uint64_t count) {
    if (const auto found = m_counts.find(text); found != m_counts.end()) {
        found->second += count;
    } else if (m_counts.size() < s_maxTexts) {
        m_counts.emplace(text, count);
    } else {
        m_others += count;
    }
}

void FailureTally::add(const FailureTally& other) {
    for (const auto& [text, count] : other.mostFrequent()) {
        add(text, count);
    }
    m_others += other.m_others;
}

std::vector<std::pair<std::string_view, std::uint64_t>> FailureTally::mostFrequent() const {
    std::vector<std::pair<std::string_view, std::uint64_t>> reasons(m_counts.begin(), m_counts.end());
    std::sort(reasons.begin(), reasons.end(), [](const auto& left, const auto& right) {
        return left.second != right.second ? left.second > right.second : left.first < right.first;
    });
    return reasons;
}

} // namespace quelt::host
