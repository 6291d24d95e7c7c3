#include "core/support/HeapMeter.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUELT_IS_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32) ||                      \
    defined(QUELT_IS_SANITIZED)

bool heapIsMetered() noexcept {
    return false;
}

std::size_t heapBytesAskedFor() noexcept {
    return 0;
}

#else

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> s_bytes{0};

} // namespace

bool heapIsMetered() noexcept {
    return true;
}

std::size_t heapBytesAskedFor() noexcept {
    return s_bytes;
}

// The other forms of these operators come to these.

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    s_bytes += size;
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

#endif
