#include "commands/HelpSection.h"

#include <algorithm>

namespace quelt::host {

namespace {

constexpr std::size_t s_width = 100;
/// Terms that are longer have their meaning on the lines below.
constexpr std::size_t s_longestTermBeside = 30;
constexpr std::size_t s_indentation = 2;
constexpr std::size_t s_hangingIndentation = 6;

/// Appends the words of `text` to `output`, whose last line is `column` wide; further lines begin at `left`.
void appendWrapped(std::string& output, std::string_view text, std::size_t column, std::size_t left) {
    bool isFirst = true;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        if (!isFirst && column + 1 + word.size() > s_width) {
            output.append(1, '\n').append(left, ' ');
            column = left;
        } else if (!isFirst) {
            output += ' ';
            ++column;
        }
        output += word;
        column += word.size();
        isFirst = false;
    }
    output += '\n';
}

void appendEntries(std::string& output, const std::vector<HelpEntry>& entries) {
    std::size_t longest = 0;
    for (const HelpEntry& entry : entries) {
        longest = std::max(longest, entry.term.size());
    }
    const bool isBeside = longest <= s_longestTermBeside;
    const std::size_t left = isBeside ? s_indentation + longest + 2 : s_hangingIndentation;
    for (const HelpEntry& entry : entries) {
        output.append(s_indentation, ' ').append(entry.term);
        if (isBeside) {
            output.append(longest + 2 - entry.term.size(), ' ');
        } else {
            output.append(1, '\n').append(left, ' ');
        }
        appendWrapped(output, entry.meaning, left, left);
    }
}

} // namespace

HelpSection exitStatusSection() {
    return {
        .title = "Exit status",
        .text = {},
        .entries = {{"0", "every record was converted, compiled or decompiled"},
                    {"1", "some records failed or were malformed, or not all answers could be written"},
                    {"2", "the command line, or a file that it names, could not be used; nothing was done"},
                    {"130", "Ctrl-C, or SIGINT, ended the run; what was converted by then was answered"},
                    {"143", "SIGTERM did"}}};
}

std::string layOut(std::span<const HelpSection> sections) {
    std::string output;
    for (const HelpSection& section : sections) {
        output += output.empty() ? "" : "\n";
        output.append(section.title).append(":\n");
        if (!section.text.empty()) {
            output.append(s_indentation, ' ');
            appendWrapped(output, section.text, s_indentation, s_indentation);
        }
        appendEntries(output, section.entries);
    }
    if (!output.empty()) {
        output.pop_back(); // the help ends the line itself
    }
    return output;
}

} // namespace quelt::host
