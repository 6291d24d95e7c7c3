#include "commands/ByteStreams.h"

#include "platform/Interruption.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quelt::host {

namespace {

/// A file descriptor that is closed at the end, or one of somebody else's.
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
        return ::close(m_number) == 0 ? 0 : errno;
    }
    [[nodiscard]] std::optional<struct stat> status() const {
        struct stat status {};
        return ::fstat(m_number, &status) == 0 ? std::optional(status) : std::nullopt;
    }

private:
    int m_number;
    bool m_isOwned;
};

std::optional<FileIdentity> identityOf(const std::optional<struct stat>& status) {
    if (!status || !S_ISREG(status->st_mode)) {
        return std::nullopt;
    }
    return FileIdentity{status->st_dev, status->st_ino};
}

/// Whether a call that failed with `error` is to be made again.
bool isPassing(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

/// Waits until there is something to read, or the program is asked to end; then it throws.
void awaitInput(int descriptor) {
    std::array<struct pollfd, 2> waiting{{{descriptor, POLLIN, 0}, {interruptionDescriptor(), POLLIN, 0}}};
    ::poll(waiting.data(), waiting.size(), -1);
    if (interruption() != 0) {
        throw StreamFailure(EINTR);
    }
}

/// Waits until something can be written. When the program is asked to end, whoever reads has a moment to do
/// so; then it throws.
void awaitRoom(int descriptor) {
    constexpr int patience = 1000; // milliseconds
    for (;;) {
        const bool isInterrupted = interruption() != 0;
        std::array<struct pollfd, 2> waiting{
            {{descriptor, POLLOUT, 0}, {isInterrupted ? -1 : interruptionDescriptor(), POLLIN, 0}}};
        const int ready = ::poll(waiting.data(), waiting.size(), isInterrupted ? patience : -1);
        if (ready == 0) {
            throw StreamFailure(EINTR);
        }
        if (waiting[0].revents != 0 || (ready < 0 && errno != EINTR)) {
            return;
        }
    }
}

class DescriptorSource : public ByteSource {
public:
    DescriptorSource(int number, bool isOwned) : m_descriptor(number, isOwned) {}

    std::size_t read(char* data, std::size_t size) override {
        for (;;) {
            awaitInput(m_descriptor.number());
            const ssize_t count = ::read(m_descriptor.number(), data, size);
            if (count >= 0) {
                return static_cast<std::size_t>(count);
            }
            if (!isPassing(errno)) {
                throw StreamFailure(errno);
            }
        }
    }
    [[nodiscard]] std::optional<std::uint64_t> size() const override {
        const std::optional<struct stat> status = m_descriptor.status();
        const off_t position = ::lseek(m_descriptor.number(), 0, SEEK_CUR);
        if (!status || !S_ISREG(status->st_mode) || position < 0 || position > status->st_size) {
            return std::nullopt;
        }
        return static_cast<std::uint64_t>(status->st_size - position);
    }
    [[nodiscard]] std::optional<FileIdentity> file() const override {
        return identityOf(m_descriptor.status());
    }
    [[nodiscard]] bool isDirectory() const {
        const std::optional<struct stat> status = m_descriptor.status();
        return status && S_ISDIR(status->st_mode);
    }

private:
    Descriptor m_descriptor;
};

class DescriptorSink : public ByteSink {
public:
    DescriptorSink(int number, bool isOwned) : m_descriptor(number, isOwned), m_isFile(file().has_value()) {}

    void write(std::string_view bytes) override {
        while (!bytes.empty()) {
            // A pipe that has any room takes so much without waiting.
            const std::size_t size = m_isFile ? bytes.size() : std::min<std::size_t>(bytes.size(), PIPE_BUF);
            if (!m_isFile) {
                awaitRoom(m_descriptor.number());
            }
            const ssize_t count = ::write(m_descriptor.number(), bytes.data(), size);
            if (count < 0 && !isPassing(errno)) {
                throw StreamFailure(errno);
            }
            bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
    }
    void finish() override {
        if (const int error = m_descriptor.close(); error != 0) {
            throw StreamFailure(error);
        }
    }
    [[nodiscard]] std::optional<FileIdentity> file() const final { return identityOf(m_descriptor.status()); }

private:
    Descriptor m_descriptor;
    bool m_isFile;
};

int openDescriptor(const std::string& path, int flags) {
    constexpr mode_t mode = 0666;
    const int number = ::open(path.c_str(), flags | O_CLOEXEC, mode);
    if (number < 0) {
        throw StreamFailure(errno);
    }
    return number;
}

} // namespace

std::unique_ptr<ByteSource> openSource(const std::string& path) {
    auto source = std::make_unique<DescriptorSource>(openDescriptor(path, O_RDONLY), true);
    if (source->isDirectory()) {
        throw StreamFailure(EISDIR);
    }
    return source;
}

std::unique_ptr<ByteSink> openSink(const std::string& path) {
    return std::make_unique<DescriptorSink>(openDescriptor(path, O_WRONLY | O_CREAT | O_TRUNC), true);
}

std::unique_ptr<ByteSource> sourceOf(int descriptor) {
    return std::make_unique<DescriptorSource>(descriptor, false);
}

std::unique_ptr<ByteSink> sinkOf(int descriptor) {
    return std::make_unique<DescriptorSink>(descriptor, false);
}

std::optional<FileIdentity> fileAt(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? identityOf(status) : std::nullopt;
}

} // namespace quelt::host
