#include "commands/ByteStreams.h"

#include "platform/Interruption.h"
#include "platform/Program.h"
#include "platform/WindowsText.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace quelt::host {

namespace {

constexpr std::size_t s_most = std::size_t{1} << 20U; // the runtime counts bytes in an int
constexpr std::size_t s_mostForConsole = 8192;        // older consoles refuse much more at a time

HANDLE handleOf(int descriptor) noexcept {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the runtime hands out handles as numbers
    return reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor));
}

std::optional<FileIdentity> identityOf(HANDLE handle) {
    BY_HANDLE_FILE_INFORMATION information{};
    if (::GetFileType(handle) != FILE_TYPE_DISK || ::GetFileInformationByHandle(handle, &information) == 0 ||
        (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::nullopt;
    }
    constexpr unsigned int half = 32;
    return FileIdentity{information.dwVolumeSerialNumber,
                        (std::uint64_t{information.nFileIndexHigh} << half) | information.nFileIndexLow};
}

/// A descriptor of the runtime that is closed at the end, or one of somebody else's.
class Descriptor {
public:
    Descriptor(int number, bool isOwned) noexcept : m_number(number), m_isOwned(isOwned) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    [[nodiscard]] int number() const noexcept { return m_number; }
    /// Closes an owned descriptor; 0 or an error number.
    int close() noexcept {
        if (!m_isOwned) {
            return 0;
        }
        m_isOwned = false;
        return ::_close(m_number) == 0 ? 0 : errno;
    }

private:
    int m_number;
    bool m_isOwned;
};

void refuseWhenInterrupted() {
    if (interruption() != 0) {
        throw StreamFailure(EINTR);
    }
}

class DescriptorSource : public ByteSource {
public:
    DescriptorSource(int number, bool isOwned) : m_descriptor(number, isOwned) {}

    std::size_t read(char* data, std::size_t size) override {
        const auto most = static_cast<unsigned int>(std::min(size, s_most));
        const InterruptibleWait waiting;
        refuseWhenInterrupted();
        const int count = ::_read(m_descriptor.number(), data, most);
        const int error = errno;
        refuseWhenInterrupted();
        if (count < 0) {
            throw StreamFailure(error);
        }
        return static_cast<std::size_t>(count);
    }
    [[nodiscard]] std::optional<std::uint64_t> size() const override {
        LARGE_INTEGER size{};
        const std::int64_t position = ::_lseeki64(m_descriptor.number(), 0, SEEK_CUR);
        if (!file() || ::GetFileSizeEx(handleOf(m_descriptor.number()), &size) == 0 || position < 0 ||
            position > size.QuadPart) {
            return std::nullopt;
        }
        return static_cast<std::uint64_t>(size.QuadPart - position);
    }
    [[nodiscard]] std::optional<FileIdentity> file() const override {
        return identityOf(handleOf(m_descriptor.number()));
    }

private:
    Descriptor m_descriptor;
};

/// The console's input, read as UTF-16: as bytes, consoles give no letters beyond ASCII in UTF-8.
class ConsoleSource : public ByteSource {
public:
    explicit ConsoleSource(int descriptor) : m_handle(handleOf(descriptor)) {}

    std::size_t read(char* data, std::size_t size) override {
        while (m_text.empty() && !m_isOver) {
            readLine();
        }
        const std::size_t count = std::min(size, m_text.size());
        m_text.copy(data, count);
        m_text.erase(0, count);
        return count;
    }

private:
    void readLine() {
        constexpr wchar_t endOfInput = 0x1A; // Ctrl+Z
        std::vector<wchar_t> units(s_mostForConsole);
        DWORD count = 0;
        const InterruptibleWait waiting;
        refuseWhenInterrupted();
        ::SetLastError(ERROR_SUCCESS);
        const bool isRead =
            ::ReadConsoleW(m_handle, units.data(), static_cast<DWORD>(units.size()), &count, nullptr) != 0;
        // Ctrl-C ends the reading, and is told on another thread, which may not have got to it.
        if (count == 0 && ::GetLastError() == ERROR_OPERATION_ABORTED) {
            throw StreamFailure(EINTR);
        }
        refuseWhenInterrupted();
        if (!isRead) {
            throw StreamFailure(EIO);
        }
        // The halves of a letter beyond the first plane may come in two pieces.
        std::wstring text = std::exchange(m_half, {}) + std::wstring(units.data(), count);
        if (!text.empty() && IS_HIGH_SURROGATE(text.back())) {
            m_half = text.back();
            text.pop_back();
        }
        const std::size_t end = text.find(endOfInput);
        m_isOver = count == 0 || end != std::wstring::npos;
        m_text = toUtf8(std::wstring_view(text).substr(0, end));
    }

    HANDLE m_handle;
    std::string m_text; // of what was read, not yet handed out
    std::wstring m_half;
    bool m_isOver = false;
};

/// How much of `bytes` goes to a console at a time: no letter is cut in two.
std::size_t pieceForConsole(std::string_view bytes) {
    if (bytes.size() <= s_mostForConsole) {
        return bytes.size();
    }
    const auto continues = [&](std::size_t place) {
        return (static_cast<unsigned char>(bytes[place]) & 0xC0U) == 0x80U;
    };
    std::size_t size = s_mostForConsole;
    while (size > s_mostForConsole - 4 && continues(size)) {
        --size;
    }
    return size;
}

/// What made writing fail. The runtime knows no error number for a pipe that nobody reads any more.
int writingError() noexcept {
    const unsigned long code = _doserrno;
    return code == ERROR_NO_DATA || code == ERROR_BROKEN_PIPE ? EPIPE : errno;
}

class DescriptorSink : public ByteSink {
public:
    DescriptorSink(int number, bool isOwned)
        : m_descriptor(number, isOwned), m_isConsole(isTerminal(number)) {}

    void write(std::string_view bytes) override {
        while (!bytes.empty()) {
            bytes.remove_prefix(m_isConsole ? writeToConsole(bytes) : writeBytes(bytes));
        }
    }
    void finish() override {
        if (const int error = m_descriptor.close(); error != 0) {
            throw StreamFailure(error);
        }
    }
    [[nodiscard]] std::optional<FileIdentity> file() const override {
        return identityOf(handleOf(m_descriptor.number()));
    }

private:
    [[nodiscard]] std::size_t writeBytes(std::string_view bytes) const {
        const auto size = static_cast<unsigned int>(std::min(bytes.size(), s_most));
        const int count = ::_write(m_descriptor.number(), bytes.data(), size);
        if (count <= 0) {
            throw StreamFailure(count == 0 ? ENOSPC : writingError());
        }
        return static_cast<std::size_t>(count);
    }
    /// As text: the console's code page, which other programs share, does not matter then.
    [[nodiscard]] std::size_t writeToConsole(std::string_view bytes) const {
        const std::size_t size = pieceForConsole(bytes);
        const std::wstring text = toUtf16(bytes.substr(0, size));
        DWORD count = 0;
        if (::WriteConsoleW(handleOf(m_descriptor.number()), text.data(), static_cast<DWORD>(text.size()),
                            &count, nullptr) == 0) {
            throw StreamFailure(EIO);
        }
        return size;
    }

    Descriptor m_descriptor;
    bool m_isConsole;
};

int openDescriptor(const std::string& path, int flags) {
    const std::wstring name = toNativePath(path);
    if (name.empty()) {
        throw StreamFailure(ENOENT);
    }
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw StreamFailure(EISDIR);
    }
    const int number = ::_wopen(name.c_str(), flags | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    if (number < 0) {
        throw StreamFailure(errno);
    }
    return number;
}

} // namespace

std::unique_ptr<ByteSource> openSource(const std::string& path) {
    return std::make_unique<DescriptorSource>(openDescriptor(path, _O_RDONLY), true);
}

std::unique_ptr<ByteSink> openSink(const std::string& path) {
    return std::make_unique<DescriptorSink>(openDescriptor(path, _O_WRONLY | _O_CREAT | _O_TRUNC), true);
}

std::unique_ptr<ByteSource> sourceOf(int descriptor) {
    if (isTerminal(descriptor)) {
        return std::make_unique<ConsoleSource>(descriptor);
    }
    return std::make_unique<DescriptorSource>(descriptor, false);
}

std::unique_ptr<ByteSink> sinkOf(int descriptor) {
    return std::make_unique<DescriptorSink>(descriptor, false);
}

std::optional<FileIdentity> fileAt(const std::string& path) {
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = ::CreateFileW(toNativePath(path).c_str(), 0, shareAll, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    const std::optional<FileIdentity> identity = identityOf(handle);
    ::CloseHandle(handle);
    return identity;
}

} // namespace quelt::host
