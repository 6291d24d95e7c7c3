#include "platform/Program.h"

#include "platform/WindowsText.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <shellapi.h>
#include <string_view>

namespace quelt::host {

namespace {

// What the console had before; 0 for what was not changed.
std::atomic<UINT> s_outputPage{0};
std::atomic<DWORD> s_messagesMode{0};

constexpr DWORD s_escapes = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING, for headers that do not know it

/// The console's mode, or 0 when standard error is no console.
DWORD messagesMode() {
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0 ? mode : 0;
}

} // namespace

ProgramScope::ProgramScope() {
    for (const int descriptor : {0, 1, 2}) {
        static_cast<void>(::_setmode(descriptor, _O_BINARY));
    }
    // Unbuffered, messages would come to the console byte by byte, and their letters beyond ASCII in pieces.
    static_cast<void>(std::setvbuf(stderr, nullptr, _IOFBF, BUFSIZ));
    s_outputPage = ::GetConsoleOutputCP();
    if (s_outputPage != 0) {
        ::SetConsoleOutputCP(CP_UTF8);
    }
    const DWORD mode = messagesMode();
    s_messagesMode = mode;
    const char* const terminal = std::getenv("TERM");
    m_hasColours = mode != 0 && ::SetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), mode | s_escapes) != 0 &&
                   (terminal == nullptr || std::string_view(terminal) != "dumb");
}

ProgramScope::~ProgramScope() {
    restoreConsole();
}

void restoreConsole() noexcept {
    if (const DWORD mode = s_messagesMode.exchange(0); mode != 0) {
        ::SetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), mode);
    }
    if (const UINT page = s_outputPage.exchange(0); page != 0) {
        ::SetConsoleOutputCP(page);
    }
}

std::vector<std::string> programArguments(int, char**) {
    // main() gets them in the system's code page, in which not every name can be written.
    int count = 0;
    const std::unique_ptr<LPWSTR[], decltype(&::LocalFree)> arguments(
        ::CommandLineToArgvW(::GetCommandLineW(), &count), &::LocalFree);
    std::vector<std::string> result;
    for (int index = 1; index < count; ++index) {
        result.push_back(toUtf8(arguments[static_cast<std::size_t>(index)]));
    }
    return result;
}

const char* endOfInputKeys() noexcept {
    return "Ctrl-Z, Enter";
}

bool isTerminal(int descriptor) {
    DWORD mode = 0;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the runtime hands out handles as numbers
    return ::GetConsoleMode(reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor)), &mode) != 0;
}

} // namespace quelt::host
