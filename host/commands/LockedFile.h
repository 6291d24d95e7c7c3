#pragma once

#include "commands/ByteStreams.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quelt::host {

/// A regular file that is read, written and moved, by one program at a time. All operations throw a
/// StreamFailure.
class LockedFile {
public:
    virtual ~LockedFile() = default;
    [[nodiscard]] virtual std::uint64_t size() const = 0;
    /// Reads up to `size` bytes from `offset` on into `data`; 0 at the end.
    virtual std::size_t read(std::uint64_t offset, char* data, std::size_t size) const = 0;
    /// Writes all of `bytes` from `offset` on.
    virtual void write(std::uint64_t offset, std::string_view bytes) = 0;
    /// Cuts the file off behind `size` bytes.
    virtual void cut(std::uint64_t size) = 0;
    /// Puts the file into the place of `path`, which it replaces. Nothing else is done with it then.
    virtual void moveTo(const std::string& path) = 0;
    /// Takes the file away. Nothing else is done with it then.
    virtual void remove() noexcept = 0;
};

/// Opens the file at `path`, or makes it when `mayCreate`; it gets `permissions` when there are any. Throws a
/// StreamFailure, also when another program has it open here, or when something else than a regular file is
/// at `path`.
[[nodiscard]] std::unique_ptr<LockedFile> openLocked(const std::string& path, bool mayCreate,
                                                     std::optional<unsigned> permissions);

/// The permissions of the file at `path`, in the system's form; nothing when there is none. Throws a
/// StreamFailure when it could not be written.
[[nodiscard]] std::optional<unsigned> permissionsToWrite(const std::string& path);

/// The path, links followed, of the regular file that is at `path`, or that would be made there; nothing when
/// something else is there, or when the name is that of a stream that is open already. Throws a
/// StreamFailure.
[[nodiscard]] std::optional<std::string> placeOfFile(const std::string& path);

} // namespace quelt::host
