// Counts for HeapMeter.h under the address sanitizer, whose operators new and delete are not to be replaced.

#include "core/support/HeapMeter.h"

#include <atomic>

#include <sanitizer/allocator_interface.h>

namespace {

std::atomic<std::size_t> s_bytes{0};

void count(const volatile void* /*memory*/, std::size_t size) {
    s_bytes += size;
}

void ignore(const volatile void* /*memory*/) {}

} // namespace

bool heapIsMetered() noexcept {
    static const bool s_isInstalled = __sanitizer_install_malloc_and_free_hooks(count, ignore) != 0;
    return s_isInstalled;
}

std::size_t heapBytesAskedFor() noexcept {
    return heapIsMetered() ? s_bytes.load() : 0;
}
