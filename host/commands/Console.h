#pragma once

#include "commands/ByteStreams.h"

#include <iosfwd>
#include <string>
#include <string_view>

namespace quelt::host {

/// What a command reads from and writes to, unless it is told otherwise.
struct Console {
    ByteSource& input;
    ByteSink& output;
    /// Where messages, progress and summaries go.
    std::ostream& messages;
    /// Whether a person sits at the other end.
    bool inputIsTerminal = false;
    bool outputIsTerminal = false;
    bool messagesAreTerminal = false;
    /// Whether messages may be coloured.
    bool hasColours = false;
};

/// `text` with '?' for every control character, so that what stands in a file cannot steer a terminal.
[[nodiscard]] std::string printable(std::string_view text);

/// Writes "quelt-migrate: ..." with `text`, printable, on a line of its own.
void writeMessage(Console& console, std::string_view text);

} // namespace quelt::host
