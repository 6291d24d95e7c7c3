#include "platform/Interruption.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace quelt::host {

namespace {

constexpr std::array<int, 2> s_signals{SIGINT, SIGTERM};
/// Whoever passes a terminal's signal on sends it a second time; a person is slower.
constexpr std::int64_t s_sameRequest = 200'000'000; // nanoseconds

std::atomic<int> s_interruption{0};
std::atomic<std::int64_t> s_interruptedAt{0}; // 0: not yet
std::atomic<int> s_wakingEnd{-1};
std::atomic<int> s_wokenEnd{-1};
std::array<struct sigaction, s_signals.size()> s_actionsBefore;

static_assert(std::atomic<int>::is_always_lock_free && std::atomic<std::int64_t>::is_always_lock_free,
              "they are used in a signal's handler");

std::int64_t now() noexcept {
    struct timespec time {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

extern "C" void noteInterruption(int signal) {
    const int errorBefore = errno;
    const std::int64_t time = now();
    std::int64_t before = 0;
    if (s_interruptedAt.compare_exchange_strong(before, time)) {
        s_interruption = signal;
        const char byte = 0;
        static_cast<void>(!::write(s_wakingEnd, &byte, 1)); // the pipe is empty: there is room
    } else if (time - before > s_sameRequest) {
        constexpr int statusOfSignals = 128;
        ::_exit(statusOfSignals + signal);
    }
    errno = errorBefore;
}

} // namespace

InterruptionScope::InterruptionScope() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    s_wokenEnd = ends[0];
    s_wakingEnd = ends[1];
    struct sigaction noting {};
    noting.sa_handler = noteInterruption;
    ::sigemptyset(&noting.sa_mask);
    for (const int signal : s_signals) {
        ::sigaddset(&noting.sa_mask, signal);
    }
    // Not restarting: whatever waits shall look at what has happened.
    for (std::size_t index = 0; index < s_signals.size(); ++index) {
        ::sigaction(s_signals[index], nullptr, &s_actionsBefore[index]);
        if (s_actionsBefore[index].sa_handler != SIG_IGN) {
            ::sigaction(s_signals[index], &noting, nullptr);
        }
    }
}

InterruptionScope::~InterruptionScope() {
    for (std::size_t index = 0; index < s_signals.size(); ++index) {
        ::sigaction(s_signals[index], &s_actionsBefore[index], nullptr);
    }
    ::close(s_wakingEnd.exchange(-1));
    ::close(s_wokenEnd.exchange(-1));
    s_interruption = 0;
    s_interruptedAt = 0;
}

int interruption() noexcept {
    return s_interruption.load(std::memory_order_relaxed);
}

int interruptionDescriptor() noexcept {
    return s_wokenEnd.load(std::memory_order_relaxed);
}

} // namespace quelt::host
