#pragma once

namespace quelt::host {

/// While it exists, the signals that ask a program to end (SIGINT and SIGTERM; on Windows Ctrl-C and
/// Ctrl-Break) are noted instead of ending it, so that it can end in order. The next one ends the program at
/// once, unless it comes so soon that it is the same request sent twice. Signals that are ignored stay so.
/// There is one at a time.
class InterruptionScope {
public:
    InterruptionScope();
    ~InterruptionScope();
    InterruptionScope(const InterruptionScope&) = delete;
    InterruptionScope& operator=(const InterruptionScope&) = delete;
};

/// The signal that has asked the program to end, 0 as long as none has.
[[nodiscard]] int interruption() noexcept;

#if defined(_WIN32)
/// Around a call that may wait for input: an interruption ends the waiting. There is one at a time.
class InterruptibleWait {
public:
    InterruptibleWait() noexcept;
    ~InterruptibleWait();
    InterruptibleWait(const InterruptibleWait&) = delete;
    InterruptibleWait& operator=(const InterruptibleWait&) = delete;
};
#else
/// A descriptor that can be read from the moment when the program is asked to end, for poll(); -1, which
/// poll() passes over, while nothing is noted.
[[nodiscard]] int interruptionDescriptor() noexcept;
#endif

} // namespace quelt::host
