#pragma once

#include <optional>
#include <rapidjson/document.h>
#include <string>

namespace quelt::host::test {

/// Where two JSON values differ first, in the order of `expected`, and how: "at /map/0/domain: 2, not 1".
/// Nothing when they are equal; the order of an object's members does not count.
[[nodiscard]] std::optional<std::string> findDifference(const rapidjson::Value& expected,
                                                        const rapidjson::Value& actual);

/// The value on several lines.
[[nodiscard]] std::string pretty(const rapidjson::Value& value);

} // namespace quelt::host::test
