#pragma once

#if defined(_WIN32)
#include "platform/WindowsText.h"
#endif

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace quelt::host::test {

/// A folder that is there for one test.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::random_device random;
        do {
            m_path = std::filesystem::temp_directory_path() / ("quelt-host-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(m_path));
    }
    /// One with a name of its own, in `outer`.
    TemporaryFolder(const TemporaryFolder& outer, const std::string& name) : m_path(outer.m_path / name) {
        std::filesystem::create_directories(native(m_path));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(native(m_path), ignored);
    }

    [[nodiscard]] std::string path(const std::string& name = {}) const { return (m_path / name).string(); }
    /// Writes a file and answers its path.
    std::string write(const std::string& name, std::string_view text) const {
        std::ofstream(native(m_path / name), std::ios::binary) << text;
        return path(name);
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream stream(native(m_path / name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    /// The form in which the system takes paths of any length.
    static std::filesystem::path native(const std::filesystem::path& path) {
#if defined(_WIN32)
        return toNativePath(path.string());
#else
        return path;
#endif
    }

    std::filesystem::path m_path;
};

} // namespace quelt::host::test
