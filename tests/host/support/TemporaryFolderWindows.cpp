#include "host/support/TemporaryFolder.h"

#include "platform/WindowsText.h"

namespace quelt::host::test {

namespace {

/// `path` is in the form without limit to its length, which the standard library's walks through folders do
/// not take.
void removeTree(const std::wstring& path) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = ::FindFirstFileW((path + LR"(\*)").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            if (name != L"." && name != L"..") {
                removeTree(path + L'\\' + name);
            }
        } while (::FindNextFileW(search, &found) != 0);
        ::FindClose(search);
        ::RemoveDirectoryW(path.c_str());
    } else {
        ::DeleteFileW(path.c_str());
    }
}

} // namespace

std::filesystem::path TemporaryFolder::native(const std::filesystem::path& path) {
    return LR"(\\?\)" + std::filesystem::path(path).make_preferred().wstring();
}

void TemporaryFolder::removeAll(const std::filesystem::path& path) {
    removeTree(native(path).wstring());
}

} // namespace quelt::host::test
