#include "exhaustion/support/FailingAllocator.h"

#if defined(_WIN32)

namespace quelt::host::test {

bool allocationsCanFail() noexcept {
    return false;
}
long livePieces() noexcept {
    return 0;
}
AllocationFailure::AllocationFailure(std::uint64_t /*number*/, Lasting /*lasting*/) noexcept {}
AllocationFailure::~AllocationFailure() = default;
bool AllocationFailure::end() noexcept {
    return false;
}

} // namespace quelt::host::test

#else

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

struct Plan {
    std::uint64_t countdown = 0; // 0: nothing fails
    bool isForGood = false;
    bool hasFailed = false;
};
thread_local constinit Plan t_plan;
constinit std::atomic<long> s_live{0};

bool isToFail() noexcept {
    if (t_plan.countdown == 0 || --t_plan.countdown > 0) {
        return false;
    }
    t_plan.hasFailed = true;
    t_plan.countdown = t_plan.isForGood ? 1 : 0;
    return true;
}

void* allocate(std::size_t size) noexcept {
    void* const memory = isToFail() ? nullptr : std::malloc(size != 0 ? size : 1);
    s_live += memory != nullptr ? 1 : 0;
    return memory;
}

void* allocateOrThrow(std::size_t size) {
    void* const memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void release(void* memory) noexcept {
    s_live -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

} // namespace

namespace quelt::host::test {

bool allocationsCanFail() noexcept {
    return true;
}

long livePieces() noexcept {
    return s_live;
}

AllocationFailure::AllocationFailure(std::uint64_t number, Lasting lasting) noexcept {
    t_plan = {number, lasting == Lasting::forGood, false};
}

AllocationFailure::~AllocationFailure() {
    end();
}

bool AllocationFailure::end() noexcept {
    t_plan.countdown = 0;
    return t_plan.hasFailed;
}

} // namespace quelt::host::test

// All of them, for a sanitizer has operators of its own for each that is not replaced.

void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    release(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    release(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    release(memory);
}
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
    release(memory);
}

#endif
