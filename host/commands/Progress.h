#pragma once

#include "commands/Console.h"
#include "commands/Tally.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace quelt::host {

/// `number` with its digits in groups of three: "1,000,000".
[[nodiscard]] std::string formatCount(std::uint64_t number);

/// How far a run has come, for one line of text.
struct ProgressState {
    Counts counts = {};
    double seconds = 0;
    /// Between 0 and 1, when the size of the input is known.
    std::optional<double> share = {};
    /// Of both, what an earlier run has done.
    std::uint64_t keptRecords = 0;
    double keptShare = 0;
};

/// "12,345 records, 8,230/s, 41 % done, 0:02 left, 3 failed, 1 malformed".
[[nodiscard]] std::string describeProgress(const ProgressState& state, bool hasColours);

/// Shows how far a run has come, on one line of a terminal that is written over and over; nothing elsewhere.
class Progress {
public:
    /// Shows nothing unless the messages of `console` go to a terminal. `inputSize` is that of the input in
    /// bytes, when it is known.
    Progress(const Console& console, std::optional<std::uint64_t> inputSize);

    /// Tells that the run begins now, behind `counts` records and `bytesRead` bytes that an earlier one has
    /// answered.
    void beginBehind(const Counts& counts, std::uint64_t bytesRead);
    /// Tells that `counts` records were answered by this run and the first `bytesRead` bytes of the input
    /// used; shows it when the last time was a moment ago.
    void update(const Counts& counts, std::uint64_t bytesRead);
    /// Takes the line from the terminal, before something else is written there.
    void clear();
    /// The same, when answers go to a terminal, too.
    void clearForAnswers();
    /// The time since the beginning.
    [[nodiscard]] double seconds() const;

private:
    using Clock = std::chrono::steady_clock;

    const Console& m_console;
    std::optional<std::uint64_t> m_inputSize;
    Clock::time_point m_begin = Clock::now();
    std::optional<Clock::time_point> m_shown;
    std::size_t m_width = 0;
    Counts m_keptCounts;
    std::uint64_t m_keptBytes = 0;
};

} // namespace quelt::host
