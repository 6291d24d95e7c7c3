#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quelt::host {

/// A word, a form or a command line, and what it means.
struct HelpEntry {
    std::string_view term;
    std::string_view meaning;
};

/// A part of a help text that describes something else than options. The help shows it behind them, the
/// manual page under a heading of its own.
struct HelpSection {
    std::string_view title;
    /// What stands in front of the entries; may be empty.
    std::string_view text;
    std::vector<HelpEntry> entries;
};

/// The section that a manual page gathers from all commands.
inline constexpr std::string_view examplesTitle = "Examples";

/// How a run ends; the same for every command.
[[nodiscard]] HelpSection exitStatusSection();

/// The sections as the help shows them, for a terminal.
[[nodiscard]] std::string layOut(std::span<const HelpSection> sections);

} // namespace quelt::host
