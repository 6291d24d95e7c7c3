#include "commands/CommandLine.h"
#include "platform/Interruption.h"
#include "platform/Program.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>

namespace {

/// See no-color.org: any text but the empty one asks for messages without colours.
bool areColoursRefused() {
    const char* const noColor = std::getenv("NO_COLOR");
    return noColor != nullptr && *noColor != '\0';
}

} // namespace

int main(int argumentCount, char** arguments) {
    using namespace quelt::host;
    enum Stream { standardInput, standardOutput, standardError };
    const ProgramScope program;
    const InterruptionScope interruptions;
    const std::unique_ptr<ByteSource> input = sourceOf(standardInput);
    const std::unique_ptr<ByteSink> output = sinkOf(standardOutput);
    Console console{*input, *output, std::cerr};
    console.inputIsTerminal = isTerminal(standardInput);
    console.outputIsTerminal = isTerminal(standardOutput);
    console.messagesAreTerminal = isTerminal(standardError);
    console.hasColours = console.messagesAreTerminal && program.hasColours() && !areColoursRefused();
    try {
        return static_cast<int>(runCommandLine(programArguments(argumentCount, arguments), console));
    } catch (const std::bad_alloc&) {
        std::cerr << "quelt-migrate: out of memory\n"; // what else would be said takes memory
        return static_cast<int>(ExitStatus::partly);
    } catch (const std::exception& failure) {
        writeMessage(console, failure.what());
        return static_cast<int>(ExitStatus::partly);
    }
}
