#include "commands/LockedFile.h"

#include "platform/WindowsText.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

namespace quelt::host {

namespace {

constexpr std::size_t s_most = std::size_t{1} << 20U; // the runtime counts bytes in an int

[[noreturn]] void fail() {
    throw StreamFailure(errno);
}

/// What the runtime would say for the error of a system call.
int errorOfSystem() noexcept {
    switch (::GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_WRITE_PROTECT:
        return EACCES;
    case ERROR_DISK_FULL:
        return ENOSPC;
    default:
        return EIO;
    }
}

class LockedDescriptor : public LockedFile {
public:
    LockedDescriptor(const std::string& path, bool mayCreate) : m_name(toNativePath(path)) {
        const int flags = _O_RDWR | _O_BINARY | _O_NOINHERIT | (mayCreate ? _O_CREAT : 0);
        m_number = ::_wsopen(m_name.c_str(), flags, _SH_DENYWR, _S_IREAD | _S_IWRITE);
        if (m_number < 0) {
            // The runtime has one error number for both.
            if (_doserrno == ERROR_SHARING_VIOLATION) {
                throw StreamFailure(EBUSY, "another run is writing it");
            }
            fail();
        }
    }
    LockedDescriptor(const LockedDescriptor&) = delete;
    LockedDescriptor& operator=(const LockedDescriptor&) = delete;
    ~LockedDescriptor() override { close(); }

    [[nodiscard]] std::uint64_t size() const override {
        const std::int64_t size = ::_filelengthi64(m_number);
        if (size < 0) {
            fail();
        }
        return static_cast<std::uint64_t>(size);
    }
    std::size_t read(std::uint64_t offset, char* data, std::size_t size) const override {
        seek(offset);
        const int count = ::_read(m_number, data, static_cast<unsigned int>(std::min(size, s_most)));
        if (count < 0) {
            fail();
        }
        return static_cast<std::size_t>(count);
    }
    void write(std::uint64_t offset, std::string_view bytes) override {
        seek(offset);
        while (!bytes.empty()) {
            const auto size = static_cast<unsigned int>(std::min(bytes.size(), s_most));
            const int count = ::_write(m_number, bytes.data(), size);
            if (count <= 0) {
                throw StreamFailure(count == 0 ? ENOSPC : errno);
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }
    void cut(std::uint64_t size) override {
        if (const int error = ::_chsize_s(m_number, static_cast<std::int64_t>(size)); error != 0) {
            throw StreamFailure(error);
        }
    }
    void moveTo(const std::string& path) override {
        if (close() != 0) { // what is open cannot be moved
            fail();
        }
        if (::MoveFileExW(m_name.c_str(), toNativePath(path).c_str(), MOVEFILE_REPLACE_EXISTING) == 0) {
            throw StreamFailure(errorOfSystem());
        }
    }
    void remove() noexcept override {
        close();
        ::DeleteFileW(m_name.c_str());
    }

private:
    void seek(std::uint64_t offset) const {
        if (::_lseeki64(m_number, static_cast<std::int64_t>(offset), SEEK_SET) < 0) {
            fail();
        }
    }
    int close() noexcept {
        const int number = m_number;
        m_number = -1;
        return number < 0 ? 0 : ::_close(number);
    }

    std::wstring m_name;
    int m_number;
};

} // namespace

std::unique_ptr<LockedFile> openLocked(const std::string& path, bool mayCreate,
                                       std::optional<unsigned> /*permissions*/) {
    const DWORD attributes = ::GetFileAttributesW(toNativePath(path).c_str());
    constexpr DWORD others = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & others) != 0) {
        throw StreamFailure(EEXIST, "something else than a file is there");
    }
    return std::make_unique<LockedDescriptor>(path, mayCreate);
}

/// Files have the permissions of their folder here; all that is asked is whether it could be written.
std::optional<unsigned> permissionsToWrite(const std::string& path) {
    const int number = ::_wopen(toNativePath(path).c_str(), _O_WRONLY | _O_BINARY | _O_NOINHERIT);
    if (number >= 0) {
        ::_close(number);
    } else if (errno != ENOENT) {
        fail();
    }
    return std::nullopt;
}

std::optional<std::string> placeOfFile(const std::string& path) {
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const std::wstring name = toNativePath(path);
    const HANDLE handle =
        ::CreateFileW(name.c_str(), 0, shareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return name.empty() ? std::nullopt : std::optional(path);
    }
    BY_HANDLE_FILE_INFORMATION information{};
    const bool isFile = ::GetFileType(handle) == FILE_TYPE_DISK &&
                        ::GetFileInformationByHandle(handle, &information) != 0 &&
                        (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    std::wstring place;
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    if (isFile && attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        place.resize(::GetFinalPathNameByHandleW(handle, nullptr, 0, FILE_NAME_NORMALIZED));
        place.resize(::GetFinalPathNameByHandleW(handle, place.data(), static_cast<DWORD>(place.size()),
                                                 FILE_NAME_NORMALIZED));
    }
    ::CloseHandle(handle);
    if (!isFile) {
        return std::nullopt;
    }
    return place.empty() ? path : toUtf8(place);
}

} // namespace quelt::host
