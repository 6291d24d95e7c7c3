#pragma once

#include "infrastructure/QueltInTraceClass.h"
#include "infrastructure/QueltInTraceSink.h"

#include <span>
#include <string_view>

namespace quelt::host {

/// What a line of the migration module says to whoever reads an answer.
enum class LineKind {
    error,   ///< the message of an error report, or a plain line that begins with "ERROR"
    warning, ///< a line that begins with "WARNING"
    other
};

/// A line of the module as an answer shows it.
struct ReportedLine {
    const QueltInTraceLine& line;
    LineKind kind;
    /// The text, of an error report's message without the indentation.
    std::string_view text;
};

/// Calls `visit` with the lines that the migration module wrote, in order, without the location lines of
/// error reports. `visit` answers whether to go on.
template <class Visit>
void eachReportedLine(std::span<const QueltInTraceLine> lines, Visit visit) {
    const std::string_view location = QueltInTraceClass::GetError();
    const std::string_view indentation = QueltInTraceClass::GetErrorIndent();
    bool isBehindLocation = false;
    for (const QueltInTraceLine& line : lines) {
        if (line.domainName != "QueltDataMigration") {
            continue;
        }
        std::string_view text = line.text;
        if (line.level == 0 && text.starts_with(location)) {
            isBehindLocation = true;
            continue;
        }
        LineKind kind = LineKind::other;
        if (isBehindLocation && line.level == 0 && text.starts_with(indentation)) {
            kind = LineKind::error;
            text.remove_prefix(indentation.size());
        } else if (text.starts_with("ERROR")) {
            kind = LineKind::error;
        } else if (text.starts_with("WARNING")) {
            kind = LineKind::warning;
        }
        isBehindLocation = false;
        if (!visit(ReportedLine{line, kind, text})) {
            return;
        }
    }
}

} // namespace quelt::host
