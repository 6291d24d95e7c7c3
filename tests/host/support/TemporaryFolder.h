#pragma once

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
    /// A folder of the relative path `name` in `outer`.
    TemporaryFolder(const TemporaryFolder& outer, const std::filesystem::path& name) : m_path(outer.m_path) {
        for (const std::filesystem::path& part : name) {
            m_path /= part;
            std::filesystem::create_directory(native(m_path));
        }
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { removeAll(m_path); }

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
    static std::filesystem::path native(const std::filesystem::path& path);
    static void removeAll(const std::filesystem::path& path);

    std::filesystem::path m_path;
};

} // namespace quelt::host::test
