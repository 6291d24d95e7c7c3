#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace quelt::test {

/// A shared library, loaded for as long as the object lives, as far as nobody else holds it.
class Library {
public:
    /// Loads the library, resolving every name now and offering none to others; throws std::runtime_error
    /// with the system's reason when it cannot.
    explicit Library(const std::filesystem::path& path);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// The function with this (mangled) name; throws std::runtime_error when the library does not export it.
    template <class Function>
    [[nodiscard]] Function* function(const char* name) const {
        return reinterpret_cast<Function*>(address(name));
    }

    /// True when somebody has the library loaded.
    [[nodiscard]] static bool isLoaded(const std::filesystem::path& path);

private:
    [[nodiscard]] void* address(const char* name) const;

    void* m_handle;
};

/// Sets an environment variable as the libraries will see it when they are loaded; null removes it.
void setEnvironment(const char* name, const char* value);

} // namespace quelt::test
