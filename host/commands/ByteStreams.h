#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quelt::host {

/// Says that a file, or a stream, could not be opened, read or written; what() is the reason alone.
class StreamFailure : public std::runtime_error {
public:
    /// For the error number `code` of the system.
    explicit StreamFailure(int code);
    /// The same, with a reason that says more.
    StreamFailure(int code, const std::string& reason) : std::runtime_error(reason), m_code(code) {}
    [[nodiscard]] int code() const noexcept { return m_code; }

private:
    int m_code;
};

/// Which file something is, whatever it is called.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// Where bytes come from.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    /// Reads up to `size` bytes into `data`, at least one, waiting for it when need be; 0 at the end. Throws
    /// a StreamFailure; its code is EINTR when the program has been asked to end (see InterruptionScope).
    virtual std::size_t read(char* data, std::size_t size) = 0;
    /// How many bytes there are in all, when that is known beforehand.
    [[nodiscard]] virtual std::optional<std::uint64_t> size() const { return std::nullopt; }
    /// The regular file that is read, if it is one.
    [[nodiscard]] virtual std::optional<FileIdentity> file() const { return std::nullopt; }
};

/// Where bytes go.
class ByteSink {
public:
    virtual ~ByteSink() = default;
    /// Writes all of `bytes`. Throws a StreamFailure; its code is EINTR when the program has been asked to
    /// end and nobody takes the bytes.
    virtual void write(std::string_view bytes) = 0;
    /// Says that nothing more comes. Throws a StreamFailure when it turns out now that something was not
    /// written.
    virtual void finish() {}
    /// The regular file that is written, if it is one.
    [[nodiscard]] virtual std::optional<FileIdentity> file() const { return std::nullopt; }
};

/// Opens `path` for reading; directories are refused. Throws a StreamFailure.
[[nodiscard]] std::unique_ptr<ByteSource> openSource(const std::string& path);
/// Opens `path` for writing and empties it. Throws a StreamFailure.
[[nodiscard]] std::unique_ptr<ByteSink> openSink(const std::string& path);
/// The descriptor `descriptor`, which stays open.
[[nodiscard]] std::unique_ptr<ByteSource> sourceOf(int descriptor);
[[nodiscard]] std::unique_ptr<ByteSink> sinkOf(int descriptor);

/// The regular file at `path`, if there is one.
[[nodiscard]] std::optional<FileIdentity> fileAt(const std::string& path);

/// Everything that `source` has.
[[nodiscard]] std::string readAll(ByteSource& source);

} // namespace quelt::host
