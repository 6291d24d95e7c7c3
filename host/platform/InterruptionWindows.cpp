#include "platform/Interruption.h"

#include "platform/Program.h"
#include "platform/WindowsText.h"

#include <atomic>
#include <csignal>
#include <mutex>
#include <utility>

namespace quelt::host {

namespace {

std::atomic<int> s_interruption{0};
std::mutex s_waitingMutex;
HANDLE s_waitingThread = nullptr; // while there is one

/// False when no thread waits for input; else its waiting is ended, if it has begun.
bool endWaitingOnce() noexcept {
    const std::lock_guard lock(s_waitingMutex);
    if (s_waitingThread == nullptr) {
        return false;
    }
    ::CancelSynchronousIo(s_waitingThread);
    return true;
}

/// Ends the wait for input, as long as there is one. A thread that is about to wait does not do so yet: that
/// is why it is told more than once.
void endWaiting() noexcept {
    constexpr int attempts = 100;
    constexpr DWORD pause = 10; // milliseconds
    for (int attempt = 0; attempt < attempts && endWaitingOnce(); ++attempt) {
        ::Sleep(pause);
    }
}

/// Runs on a thread that the system makes for it.
BOOL WINAPI noteInterruption(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    int none = 0;
    if (s_interruption.compare_exchange_strong(none, SIGINT)) {
        endWaiting();
        return TRUE;
    }
    constexpr UINT interrupted = 130;
    restoreConsole();
    ::TerminateProcess(::GetCurrentProcess(), interrupted);
    return TRUE;
}

} // namespace

InterruptionScope::InterruptionScope() {
    ::SetConsoleCtrlHandler(noteInterruption, TRUE);
}

InterruptionScope::~InterruptionScope() {
    ::SetConsoleCtrlHandler(noteInterruption, FALSE);
    s_interruption = 0;
}

int interruption() noexcept {
    return s_interruption.load(std::memory_order_relaxed);
}

InterruptibleWait::InterruptibleWait() noexcept {
    HANDLE thread = nullptr;
    ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(), &thread, 0, FALSE,
                      DUPLICATE_SAME_ACCESS);
    const std::lock_guard lock(s_waitingMutex);
    s_waitingThread = thread;
}

InterruptibleWait::~InterruptibleWait() {
    const std::lock_guard lock(s_waitingMutex);
    if (s_waitingThread != nullptr) {
        ::CloseHandle(std::exchange(s_waitingThread, nullptr));
    }
}

} // namespace quelt::host
