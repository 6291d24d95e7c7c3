#include "module/support/LiveAllocations.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)

long liveAllocations() noexcept {
    return 0;
}

#else

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> s_live{0};

} // namespace

long liveAllocations() noexcept {
    return s_live;
}

// The other forms of these operators come to these.

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++s_live;
    return memory;
}

void operator delete(void* memory) noexcept {
    if (memory != nullptr) {
        --s_live;
        std::free(memory);
    }
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    operator delete(memory);
}

#endif
