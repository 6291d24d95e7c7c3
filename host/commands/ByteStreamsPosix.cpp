#include "commands/ByteStreams.h"

#include <cerrno>
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

/// Repeats `call` until it is neither interrupted nor asked to come again; throws for any other failure.
template <class Call>
std::size_t persist(int descriptor, short event, Call call) {
    for (;;) {
        const ssize_t count = call();
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            struct pollfd waiting {
                descriptor, event, 0
            };
            ::poll(&waiting, 1, -1);
        } else if (errno != EINTR) {
            throw StreamFailure(errno);
        }
    }
}

class DescriptorSource : public ByteSource {
public:
    DescriptorSource(int number, bool isOwned) : m_descriptor(number, isOwned) {}

    std::size_t read(char* data, std::size_t size) override {
        const int number = m_descriptor.number();
        return persist(number, POLLIN, [&] { return ::read(number, data, size); });
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
    DescriptorSink(int number, bool isOwned) : m_descriptor(number, isOwned) {}

    void write(std::string_view bytes) override {
        const int number = m_descriptor.number();
        while (!bytes.empty()) {
            bytes.remove_prefix(
                persist(number, POLLOUT, [&] { return ::write(number, bytes.data(), bytes.size()); }));
        }
    }
    void finish() override {
        if (const int error = m_descriptor.close(); error != 0) {
            throw StreamFailure(error);
        }
    }
    [[nodiscard]] std::optional<FileIdentity> file() const override {
        return identityOf(m_descriptor.status());
    }

private:
    Descriptor m_descriptor;
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
