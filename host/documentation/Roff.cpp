#include "documentation/Roff.h"

namespace quelt::host::roff {

namespace {

/// How a character is written that the formatter would show as another one, or take for a command.
std::string_view spellingOf(char character) {
    switch (character) {
    case '\\':
        return "\\e";
    case '-':
        return "\\-";
    case '\'':
        return "\\(aq";
    case '`':
        return "\\(ga";
    case '^':
        return "\\(ha";
    case '~':
        return "\\(ti";
    case '"':
        return "\\(dq"; // may stand in the argument of a macro
    default:
        return {};
    }
}

} // namespace

std::string escape(std::string_view text) {
    std::string escaped;
    bool beginsLine = true;
    for (const char character : text) {
        if (beginsLine && character == '.') {
            escaped += "\\&"; // a blank of no width: what follows does not begin the line
        }
        const std::string_view spelling = spellingOf(character);
        escaped += spelling.empty() ? std::string_view(&character, 1) : spelling;
        beginsLine = character == '\n';
    }
    return escaped;
}

std::string bold(std::string_view text) {
    return "\\fB" + escape(text) + "\\fR";
}

std::string italic(std::string_view text) {
    return "\\fI" + escape(text) + "\\fR";
}

} // namespace quelt::host::roff
