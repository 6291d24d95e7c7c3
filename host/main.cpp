#include "commands/CommandLine.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>
#include <unistd.h>

namespace {

/// See no-color.org: any text but the empty one asks for messages without colours.
bool areColoursWanted() {
    const char* const noColor = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (noColor == nullptr || *noColor == '\0') && terminal != nullptr &&
           std::string_view(terminal) != "dumb";
}

} // namespace

int main(int argumentCount, char** arguments) {
    using namespace quelt::host;
    std::signal(SIGPIPE, SIG_IGN); // NOLINT(cert-err33-c): writing fails then, and that is noticed
    const std::unique_ptr<ByteSource> input = sourceOf(STDIN_FILENO);
    const std::unique_ptr<ByteSink> output = sinkOf(STDOUT_FILENO);
    Console console{*input, *output, std::cerr};
    console.inputIsTerminal = ::isatty(STDIN_FILENO) != 0;
    console.outputIsTerminal = ::isatty(STDOUT_FILENO) != 0;
    console.messagesAreTerminal = ::isatty(STDERR_FILENO) != 0;
    console.hasColours = console.messagesAreTerminal && areColoursWanted();
    try {
        return static_cast<int>(runCommandLine({arguments + 1, arguments + argumentCount}, console));
    } catch (const std::exception& failure) {
        writeMessage(console, failure.what());
        return static_cast<int>(ExitStatus::partly);
    }
}
