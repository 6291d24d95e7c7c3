#include "platform/Program.h"

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace quelt::host {

ProgramScope::ProgramScope() {
    std::signal(SIGPIPE, SIG_IGN); // NOLINT(cert-err33-c): writing fails then, and that is noticed
    const char* const terminal = std::getenv("TERM");
    m_hasColours = terminal != nullptr && std::string_view(terminal) != "dumb";
}

ProgramScope::~ProgramScope() = default;

void restoreConsole() noexcept {}

std::vector<std::string> programArguments(int count, char** arguments) {
    return {arguments + 1, arguments + count};
}

const char* endOfInputKeys() noexcept {
    return "Ctrl-D";
}

bool isTerminal(int descriptor) {
    return ::isatty(descriptor) != 0;
}

} // namespace quelt::host
