#include "platform/Interruption.h"

#include "platform/Program.h"
#include "platform/WindowsText.h"

#include <atomic>
#include <csignal>

namespace quelt::host {

namespace {

std::atomic<int> s_interruption{0};
std::atomic<bool> s_isWaiting{false};
std::atomic<HANDLE> s_waitingThread{nullptr};

/// Ends the wait for input, as long as there is one. A thread that is about to wait does not do so yet: that
/// is why it is told more than once.
void endWaiting() noexcept {
    constexpr int attempts = 100;
    constexpr DWORD pause = 10; // milliseconds
    for (int attempt = 0; attempt < attempts && s_isWaiting; ++attempt) {
        ::CancelSynchronousIo(s_waitingThread);
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
    HANDLE thread = nullptr;
    ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(), &thread, 0, FALSE,
                      DUPLICATE_SAME_ACCESS);
    s_waitingThread = thread;
    ::SetConsoleCtrlHandler(noteInterruption, TRUE);
}

InterruptionScope::~InterruptionScope() {
    ::SetConsoleCtrlHandler(noteInterruption, FALSE);
    ::CloseHandle(s_waitingThread.exchange(nullptr));
    s_interruption = 0;
}

int interruption() noexcept {
    return s_interruption.load(std::memory_order_relaxed);
}

InterruptibleWait::InterruptibleWait() noexcept {
    s_isWaiting = true;
}

InterruptibleWait::~InterruptibleWait() {
    s_isWaiting = false;
}

} // namespace quelt::host
