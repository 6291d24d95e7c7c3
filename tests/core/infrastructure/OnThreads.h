#pragma once

#include <cstddef>
#include <thread>
#include <vector>

/// Calls work(0) to work(count - 1), each on a thread of its own, and waits for all of them.
template <class Work>
void onThreads(unsigned int count, Work work) {
    std::vector<std::thread> threads;
    threads.reserve(count);
    for (unsigned int number = 0; number < count; ++number) {
        threads.emplace_back([&work, number] { work(number); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
