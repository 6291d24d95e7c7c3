#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace quelt::host {

/// A name that stands in a text, such as "@COMMANDS@", and what is to stand in its place.
struct Placeholder {
    std::string_view name;
    std::string text;
};

/// `text` with each placeholder replaced wherever it stands.
[[nodiscard]] std::string fill(std::string text, std::initializer_list<Placeholder> placeholders);

} // namespace quelt::host
