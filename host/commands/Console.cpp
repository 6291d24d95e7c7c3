#include "commands/Console.h"

#include <algorithm>
#include <ostream>

namespace quelt::host {

std::string printable(std::string_view text) {
    std::string result(text);
    std::replace_if(
        result.begin(), result.end(),
        [](char character) { return static_cast<unsigned char>(character) < 0x20U || character == '\x7f'; },
        '?');
    return result;
}

void writeMessage(Console& console, std::string_view text) {
    console.messages << "quelt-migrate: " << printable(text) << std::endl;
}

} // namespace quelt::host
