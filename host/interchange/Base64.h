#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quelt::host {

/// `bytes` in base64 with the standard alphabet and padding (RFC 4648, section 4).
[[nodiscard]] std::string encodeBase64(std::span<const std::uint8_t> bytes);

/// Puts the bytes that `text` stands for into `bytes`. Every byte string has exactly one text: a character of
/// no meaning (white space and line ends included), missing padding, and bits set that no byte takes up are
/// faults. Answers what is wrong, beginning in lower case and without full stop, and leaves `bytes` empty
/// then; nothing when all is well.
[[nodiscard]] std::optional<std::string> decodeBase64(std::string_view text,
                                                      std::vector<std::uint8_t>& bytes);

} // namespace quelt::host
