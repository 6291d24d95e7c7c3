#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUELT_HAS_LEAK_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) && !defined(_WIN32)
#define QUELT_HAS_LEAK_SANITIZER
#endif
#if defined(QUELT_HAS_LEAK_SANITIZER)
#include <sanitizer/lsan_interface.h>
#endif

namespace quelt::host::test {

/// While it lives, a leak sanitizer forgives what its thread allocates. On the plain heap a conversion that
/// fails may leave objects to nobody.
class LeaksForgiven {
public:
    explicit LeaksForgiven([[maybe_unused]] bool forgives) noexcept : m_forgives(forgives) {
#if defined(QUELT_HAS_LEAK_SANITIZER)
        if (m_forgives) {
            __lsan_disable();
        }
#endif
    }
    ~LeaksForgiven() {
#if defined(QUELT_HAS_LEAK_SANITIZER)
        if (m_forgives) {
            __lsan_enable();
        }
#endif
    }
    LeaksForgiven(const LeaksForgiven&) = delete;
    LeaksForgiven& operator=(const LeaksForgiven&) = delete;

private:
    [[maybe_unused]] bool m_forgives;
};

} // namespace quelt::host::test
