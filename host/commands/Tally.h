#pragma once

#include "infrastructure/QueltInKeyedHash.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quelt::host {

/// What became of records, in numbers.
struct Counts {
    std::uint64_t converted = 0;
    std::uint64_t failed = 0;
    std::uint64_t malformed = 0;

    [[nodiscard]] std::uint64_t records() const noexcept { return converted + failed + malformed; }
    Counts& operator+=(const Counts& other) noexcept {
        converted += other.converted;
        failed += other.failed;
        malformed += other.malformed;
        return *this;
    }
};

/// How often records failed for which reason. Texts past a bound are counted together, so that an input whose
/// every error is different fills no memory.
class FailureTally {
public:
    /// So many texts are told apart.
    static constexpr std::size_t s_maxTexts = 1000;

    /// Counts a failure for the reason `text`.
    void add(std::string_view text) { add(text, 1); }
    /// Adds what `other` counted.
    void add(const FailureTally& other);
    /// The reasons with how often each came, the most frequent first, equally frequent ones in the order of
    /// their texts.
    [[nodiscard]] std::vector<std::pair<std::string_view, std::uint64_t>> mostFrequent() const;
    /// How many failures had a text that was not told apart.
    [[nodiscard]] std::uint64_t others() const noexcept { return m_others; }

private:
    void add(std::string_view text, std::uint64_t count);

    std::unordered_map<std::string, std::uint64_t, KeyedTextHash, std::equal_to<>> m_counts;
    std::uint64_t m_others = 0;
};

} // namespace quelt::host
