#include "commands/Progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace quelt::host {

namespace {

constexpr std::chrono::milliseconds s_pause{200};

std::string formatDuration(double seconds) {
    const auto whole = static_cast<std::uint64_t>(std::llround(std::min(seconds, 1e9)));
    const std::uint64_t hours = whole / 3600;
    std::array<char, 40> text{};
    if (hours > 0) {
        std::snprintf(text.data(), text.size(), "%llu:%02u:%02u", static_cast<unsigned long long>(hours),
                      static_cast<unsigned>(whole / 60 % 60), static_cast<unsigned>(whole % 60));
    } else {
        std::snprintf(text.data(), text.size(), "%u:%02u", static_cast<unsigned>(whole / 60),
                      static_cast<unsigned>(whole % 60));
    }
    return text.data();
}

/// The number of characters that a terminal shows of `text`.
std::size_t widthOf(const std::string& text) {
    std::size_t width = 0;
    bool isInSequence = false;
    for (const char character : text) {
        if (character == '\x1b') {
            isInSequence = true;
        } else if (!isInSequence) {
            ++width;
        } else if (character == 'm') {
            isInSequence = false;
        }
    }
    return width;
}

} // namespace

std::string formatCount(std::uint64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t position = text.size(); position > 3;) {
        position -= 3;
        text.insert(position, 1, ',');
    }
    return text;
}

std::string describeProgress(const ProgressState& state, bool hasColours) {
    const std::uint64_t records = state.counts.records();
    std::string text = formatCount(records) + (records == 1 ? " record" : " records");
    if (state.seconds > 0) {
        const auto done = static_cast<double>(records - std::min(records, state.keptRecords));
        text += ", " + formatCount(static_cast<std::uint64_t>(done / state.seconds)) + "/s";
    }
    if (state.share) {
        const double share = std::clamp(*state.share, 0.0, 1.0);
        text += ", " + std::to_string(static_cast<int>(share * 100)) + " % done";
        if (share > state.keptShare) {
            const double left = state.seconds * (1 - share) / (share - state.keptShare);
            text += ", " + formatDuration(left) + " left";
        }
    }
    const auto appendTrouble = [&](std::uint64_t count, const char* what) {
        if (count > 0) {
            const std::string trouble = formatCount(count) + what;
            text += ", " + (hasColours ? "\x1b[31m" + trouble + "\x1b[0m" : trouble);
        }
    };
    appendTrouble(state.counts.failed, " failed");
    appendTrouble(state.counts.malformed, " malformed");
    return text;
}

Progress::Progress(const Console& console, std::optional<std::uint64_t> inputSize)
    : m_console(console), m_inputSize(inputSize) {}

void Progress::beginBehind(const Counts& counts, std::uint64_t bytesRead) {
    m_begin = Clock::now();
    m_keptCounts = counts;
    m_keptBytes = bytesRead;
}

void Progress::update(const Counts& counts, std::uint64_t bytesRead) {
    const Clock::time_point now = Clock::now();
    if (!m_console.messagesAreTerminal || (m_shown && now - *m_shown < s_pause)) {
        return;
    }
    m_shown = now;
    ProgressState state{.counts = m_keptCounts,
                        .seconds = seconds(),
                        .share = {},
                        .keptRecords = m_keptCounts.records(),
                        .keptShare = 0};
    state.counts += counts;
    if (m_inputSize && *m_inputSize > 0) {
        const auto size = static_cast<double>(*m_inputSize);
        state.share = static_cast<double>(bytesRead) / size;
        state.keptShare = static_cast<double>(m_keptBytes) / size;
    }
    const std::string text = describeProgress(state, m_console.hasColours);
    const std::size_t width = widthOf(text);
    m_console.messages << '\r' << text << std::string(m_width > width ? m_width - width : 0, ' ')
                       << std::flush;
    m_width = std::max(m_width, width);
}

void Progress::clear() {
    if (m_width > 0) {
        m_console.messages << '\r' << std::string(m_width, ' ') << '\r' << std::flush;
        m_width = 0;
    }
}

void Progress::clearForAnswers() {
    if (m_console.outputIsTerminal) {
        clear();
    }
}

double Progress::seconds() const {
    return std::chrono::duration<double>(Clock::now() - m_begin).count();
}

} // namespace quelt::host
