#include "commands/LockedFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quelt::host {

namespace {

[[noreturn]] void fail() {
    throw StreamFailure(errno);
}

std::optional<struct stat> statusOf(const std::string& path, bool followsLink) {
    struct stat status {};
    const int result = followsLink ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
    if (result != 0 && errno != ENOENT) {
        fail();
    }
    return result == 0 ? std::optional(status) : std::nullopt;
}

class LockedDescriptor : public LockedFile {
public:
    LockedDescriptor(const std::string& path, bool mayCreate) : m_path(path) {
        constexpr mode_t mode = 0666;
        const int flags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | (mayCreate ? O_CREAT : 0);
        m_number = ::open(path.c_str(), flags, mode);
        if (m_number < 0) {
            fail();
        }
    }
    LockedDescriptor(const LockedDescriptor&) = delete;
    LockedDescriptor& operator=(const LockedDescriptor&) = delete;
    ~LockedDescriptor() override { ::close(m_number); }

    /// False when the file was moved away meanwhile, by the program that had it locked.
    [[nodiscard]] bool lock() const {
        if (::flock(m_number, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            throw StreamFailure(EBUSY, "another run is writing it");
        } // a file system that knows no locks has none to offer
        const std::optional<struct stat> there = statusOf(m_path, false);
        const struct stat opened = status();
        return there && there->st_dev == opened.st_dev && there->st_ino == opened.st_ino;
    }
    void setPermissions(unsigned permissions) const {
        static_cast<void>(::fchmod(m_number, permissions)); // the file may be another user's
    }

    [[nodiscard]] std::uint64_t size() const override { return static_cast<std::uint64_t>(status().st_size); }
    std::size_t read(std::uint64_t offset, char* data, std::size_t size) const override {
        for (;;) {
            const ssize_t count = ::pread(m_number, data, size, static_cast<off_t>(offset));
            if (count >= 0) {
                return static_cast<std::size_t>(count);
            }
            if (errno != EINTR) {
                fail();
            }
        }
    }
    void write(std::uint64_t offset, std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::pwrite(m_number, bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (count > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(count));
                offset += static_cast<std::uint64_t>(count);
            } else if (errno != EINTR) {
                fail();
            }
        }
    }
    void cut(std::uint64_t size) override {
        if (::ftruncate(m_number, static_cast<off_t>(size)) != 0) {
            fail();
        }
    }
    void moveTo(const std::string& path) override {
        // Some file systems say at the closing only what they could not write; the lock outlives this one.
        if (::close(::dup(m_number)) != 0 || ::rename(m_path.c_str(), path.c_str()) != 0) {
            fail();
        }
    }
    void remove() noexcept override { ::unlink(m_path.c_str()); }

private:
    [[nodiscard]] struct stat status() const {
        struct stat status {};
        if (::fstat(m_number, &status) != 0) {
            fail();
        }
        return status;
    }

    std::string m_path;
    int m_number;
};

/// Whether `link` stands where the system shows the open descriptors of programs.
bool leadsToDescriptor(const std::filesystem::path& link) {
    std::error_code ignored;
    const std::filesystem::path folder = std::filesystem::canonical(link.parent_path(), ignored);
    return folder.native().starts_with("/proc/");
}

} // namespace

std::unique_ptr<LockedFile> openLocked(const std::string& path, bool mayCreate,
                                       std::optional<unsigned> permissions) {
    for (;;) {
        const std::optional<struct stat> there = statusOf(path, false);
        if (there && !S_ISREG(there->st_mode)) {
            throw StreamFailure(EEXIST, "something else than a file is there");
        }
        auto file = std::make_unique<LockedDescriptor>(path, mayCreate);
        if (!file->lock()) {
            continue;
        }
        if (permissions) {
            file->setPermissions(*permissions);
        }
        return file;
    }
}

std::optional<unsigned> permissionsToWrite(const std::string& path) {
    const int number = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (number < 0) {
        return errno == ENOENT ? std::nullopt : throw StreamFailure(errno);
    }
    struct stat status {};
    const bool isKnown = ::fstat(number, &status) == 0;
    ::close(number);
    constexpr mode_t permissions = 0777;
    return isKnown ? std::optional<unsigned>(status.st_mode & permissions) : std::nullopt;
}

std::optional<std::string> placeOfFile(const std::string& path) {
    if (path.empty()) {
        throw StreamFailure(ENOENT);
    }
    const std::optional<struct stat> there = statusOf(path, true);
    if (there && !S_ISREG(there->st_mode)) {
        return std::nullopt;
    }
    std::filesystem::path place = path;
    // As many links as the system itself follows; it has followed them above.
    constexpr int mostLinks = 40;
    for (int link = 0; link < mostLinks; ++link) {
        const std::optional<struct stat> status = statusOf(place, false);
        if (!status || !S_ISLNK(status->st_mode)) {
            return place.string();
        }
        if (leadsToDescriptor(place)) {
            return std::nullopt;
        }
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(place, error);
        if (error) {
            throw StreamFailure(error.value());
        }
        place = place.parent_path() / target; // an absolute target replaces what it is appended to
    }
    throw StreamFailure(ELOOP);
}

} // namespace quelt::host
