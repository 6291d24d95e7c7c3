#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

namespace quelt::host {

// Keys and names are short. Two pieces of a known length at the ends of a text, which may overlap, are
// compared, loaded and copied in place, where a text of any length takes a call.

/// Texts up to this size are short.
inline constexpr std::size_t s_shortText = 16;

/// Calls `use` with the length of the pieces that hold a short text of `size` characters, at least one.
template <class Use>
[[gnu::always_inline]] inline auto withPiecesOf(std::size_t size, const Use& use) {
    if (size >= 8) {
        return use(std::integral_constant<std::size_t, 8>());
    }
    if (size >= 4) {
        return use(std::integral_constant<std::size_t, 4>());
    }
    return size >= 2 ? use(std::integral_constant<std::size_t, 2>())
                     : use(std::integral_constant<std::size_t, 1>());
}

/// True when both texts are equal.
[[nodiscard]] inline bool isSameText(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) {
        return false;
    }
    if (left.size() > s_shortText) {
        return left == right;
    }
    return left.empty() || withPiecesOf(left.size(), [&](auto length) {
               const std::size_t last = left.size() - length;
               return std::memcmp(left.data(), right.data(), length) == 0 &&
                      std::memcmp(left.data() + last, right.data() + last, length) == 0;
           });
}

/// The two ends of a short text; different for different texts of the same size.
[[nodiscard]] inline std::pair<std::uint64_t, std::uint64_t> endsOf(std::string_view text) {
    std::pair<std::uint64_t, std::uint64_t> ends{0, 0};
    if (!text.empty()) {
        withPiecesOf(text.size(), [&](auto length) {
            std::memcpy(&ends.first, text.data(), length);
            std::memcpy(&ends.second, text.data() + text.size() - length, length);
        });
    }
    return ends;
}

/// Copies `text` to `to`; answers the end of the copy.
inline char* copyText(std::string_view text, char* to) {
    if (text.size() > 2 * s_shortText) {
        std::memcpy(to, text.data(), text.size());
    } else if (text.size() > s_shortText) {
        std::memcpy(to, text.data(), s_shortText);
        std::memcpy(to + text.size() - s_shortText, text.data() + text.size() - s_shortText, s_shortText);
    } else if (!text.empty()) {
        withPiecesOf(text.size(), [&](auto length) {
            const std::size_t last = text.size() - length;
            std::memcpy(to, text.data(), length);
            std::memcpy(to + last, text.data() + last, length);
        });
    }
    return to + text.size();
}

} // namespace quelt::host
