#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>
#include <string_view>

namespace quelt::host {

/// `text` in UTF-8; what is no UTF-16 in it becomes U+FFFD.
[[nodiscard]] std::string toUtf8(std::wstring_view text);

/// `text`, UTF-8, in UTF-16; what is no UTF-8 in it becomes U+FFFD.
[[nodiscard]] std::wstring toUtf16(std::string_view text);

/// `path`, UTF-8, as the system's file functions take it, in the form without limit to its length when it is
/// long.
[[nodiscard]] std::wstring toNativePath(std::string_view path);

} // namespace quelt::host
