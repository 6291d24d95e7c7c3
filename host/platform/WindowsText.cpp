#include "platform/WindowsText.h"

namespace quelt::host {

namespace {

/// The absolute form of `path`, empty when it has none.
std::wstring absolute(const std::wstring& path) {
    std::wstring result(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    result.resize(
        ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(result.size()), result.data(), nullptr));
    return result;
}

} // namespace

std::string toUtf8(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    std::string result(static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr,
                                                                      0, nullptr, nullptr)),
                       '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), static_cast<int>(result.size()),
                          nullptr, nullptr);
    return result;
}

std::wstring toUtf16(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring result(
        static_cast<std::size_t>(::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), static_cast<int>(result.size()));
    return result;
}

std::wstring toNativePath(std::string_view path) {
    constexpr std::size_t longest = MAX_PATH - 12; // what a folder may have, to hold names of the old kind
    const std::wstring name = toUtf16(path);
    const std::wstring full = absolute(name);
    if (full.size() < longest || full.starts_with(LR"(\\?\)") || full.starts_with(LR"(\\.\)")) {
        return name;
    }
    return full.starts_with(LR"(\\)") ? LR"(\\?\UNC\)" + full.substr(2) : LR"(\\?\)" + full;
}

} // namespace quelt::host
