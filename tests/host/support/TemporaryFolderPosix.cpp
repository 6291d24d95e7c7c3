#include "host/support/TemporaryFolder.h"

namespace quelt::host::test {

std::filesystem::path TemporaryFolder::native(const std::filesystem::path& path) {
    return path;
}

void TemporaryFolder::removeAll(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

} // namespace quelt::host::test
