#pragma once

#include <chrono>
#include <ctime>

namespace quelt::bench {

/// The processor's time: on a shared machine the wall clock says more about the neighbours.
struct Clock {
    using duration = std::chrono::duration<double>;
    static duration now() { return duration(static_cast<double>(std::clock()) / CLOCKS_PER_SEC); }
};

/// How long `work` takes.
template <class Work>
Clock::duration timeOf(const Work& work) {
    const Clock::duration start = Clock::now();
    work();
    return Clock::now() - start;
}

} // namespace quelt::bench
