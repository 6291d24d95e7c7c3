#include "loading/support/Library.h"

#include <cstdlib>
#include <mutex>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace quelt::test {

#if defined(_WIN32)

namespace {

std::filesystem::path native(const std::filesystem::path& path) {
    std::filesystem::path changed = path;
    return changed.make_preferred();
}

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": error " + std::to_string(GetLastError()));
}

} // namespace

// The libraries that it needs are looked for in its own folder, too.
Library::Library(const std::filesystem::path& path)
    : m_handle(LoadLibraryExW(native(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
    if (m_handle == nullptr) {
        fail(path.string());
    }
}

Library::~Library() {
    FreeLibrary(static_cast<HMODULE>(m_handle));
}

bool Library::isLoaded(const std::filesystem::path& path) {
    return GetModuleHandleW(native(path).filename().c_str()) != nullptr;
}

void* Library::address(const char* name) const {
    const FARPROC found = GetProcAddress(static_cast<HMODULE>(m_handle), name);
    if (found == nullptr) {
        fail(name);
    }
    return reinterpret_cast<void*>(found);
}

void setEnvironment(const char* name, const char* value) {
    _putenv_s(name, value != nullptr ? value : "");
}

#else

namespace {

#if defined(__SANITIZE_THREAD__)
/// The loader's own lock, which the sanitizer does not see: what one thread has unloaded, another may load
/// again to the same addresses.
std::mutex s_loader;
using LoaderScope = std::lock_guard<std::mutex>;
#else
constexpr int s_loader = 0;
struct LoaderScope {
    explicit LoaderScope(int /*none*/) noexcept {}
};
#endif

void* load(const std::filesystem::path& path) {
    [[maybe_unused]] const LoaderScope scope(s_loader);
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

} // namespace

Library::Library(const std::filesystem::path& path) : m_handle(load(path)) {
    if (m_handle == nullptr) {
        throw std::runtime_error(dlerror());
    }
}

Library::~Library() {
    [[maybe_unused]] const LoaderScope scope(s_loader);
    dlclose(m_handle);
}

bool Library::isLoaded(const std::filesystem::path& path) {
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
    if (handle == nullptr) {
        return false;
    }
    dlclose(handle);
    return true;
}

void* Library::address(const char* name) const {
    void* const found = dlsym(m_handle, name);
    if (found == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return found;
}

void setEnvironment(const char* name, const char* value) {
    if (value != nullptr) {
        setenv(name, value, 1);
    } else {
        unsetenv(name);
    }
}

#endif

} // namespace quelt::test
