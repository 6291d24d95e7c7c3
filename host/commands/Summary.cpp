#include "commands/Summary.h"

#include "commands/Progress.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>
#include <string>

namespace quelt::host {

namespace {

constexpr std::size_t s_labelWidth = 11;

std::string formatSeconds(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f s", seconds);
    return text.data();
}

std::string padLeft(const std::string& text, std::size_t width) {
    return std::string(width > text.size() ? width - text.size() : 0, ' ') + text;
}

/// A line of the summary: what is counted, and the number, right-aligned.
class Table {
public:
    Table(std::ostream& out, const Counts& counts)
        : m_out(out), m_width(formatCount(counts.records()).size()) {}

    void writeCount(std::string label, std::uint64_t count) const {
        label.resize(s_labelWidth, ' ');
        m_out << "  " << label << padLeft(formatCount(count), m_width) << '\n';
    }
    void writeReason(std::uint64_t count, std::string_view text) const {
        m_out << "  " << std::string(s_labelWidth, ' ') << padLeft(formatCount(count), m_width) << "  "
              << printable(text) << '\n';
    }

private:
    std::ostream& m_out;
    std::size_t m_width;
};

void writeReasons(const Table& table, const FailureTally& failures) {
    const auto reasons = failures.mostFrequent();
    const std::size_t shown = std::min(reasons.size(), s_maxReasonsShown);
    std::uint64_t others = failures.others();
    for (std::size_t index = 0; index < reasons.size(); ++index) {
        if (index < shown) {
            table.writeReason(reasons[index].second, reasons[index].first);
        } else {
            others += reasons[index].second;
        }
    }
    if (others > 0) {
        table.writeReason(others, "for other reasons");
    }
}

} // namespace

void writeSummary(std::ostream& out, const Counts& counts, const FailureTally& failures, double seconds,
                  bool hasColours, std::uint64_t kept) {
    const std::uint64_t records = counts.records();
    const auto done = static_cast<double>(records - std::min(records, kept));
    const auto rate = static_cast<std::uint64_t>(seconds > 0 ? done / seconds : 0);
    out << (hasColours ? "\x1b[1m" : "") << formatCount(records) << (records == 1 ? " record" : " records")
        << (kept > 0 ? " (" + formatCount(kept) + " kept)" : "") << " in " << formatSeconds(seconds) << ", "
        << formatCount(rate) << " records/s" << (hasColours ? "\x1b[0m" : "") << '\n';
    const Table table(out, counts);
    table.writeCount("converted", counts.converted);
    table.writeCount("failed", counts.failed);
    writeReasons(table, failures);
    table.writeCount("malformed", counts.malformed);
    out.flush();
}

} // namespace quelt::host
