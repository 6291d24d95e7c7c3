#pragma once

#include "infrastructure/QueltCoreExport.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

/// One line of the trace facility as data. Its texts are not its own: a sink has them until it has written
/// the line, of what a capture has taken they stay as long as the capture keeps the line, also when the
/// library that wrote it is unloaded.
struct QueltInTraceLine {
    /// The class of the trace object that wrote the line.
    std::string_view className;
    /// Its domain.
    std::string_view domainName;
    /// The innermost open method of that object, empty when none was.
    std::string_view methodName;
    /// 0 message, 1 method entry, 2 method exit.
    int level = 0;
    /// The source line number that entry and exit lines carry, else 0.
    int lineNumber = 0;
    /// The text of the line.
    std::string_view text;

    /// True when all members are equal, texts by what they say.
    friend bool operator==(const QueltInTraceLine&, const QueltInTraceLine&) = default;
};

/// Where lines go that no capture takes. The default sink writes to standard error, or appends to the file
/// that the environment variable QUELT_TRACE names (read once, when the core is loaded; "stderr" names
/// standard error).
class QUELT_CORE_API QueltInTraceSink {
public:
    virtual ~QueltInTraceSink();
    /// Takes one line. Called on any thread, by one at a time.
    virtual void write(const QueltInTraceLine& line) = 0;

    /// Makes `sink` the one of the process until another call; null brings the default sink back. The sink is
    /// not owned and must stay until it is replaced. Returns the one before, null for the default sink.
    static QueltInTraceSink* replace(QueltInTraceSink* sink) noexcept;

private:
    friend class QueltInTraceCapture;
    friend class QueltInTraceClass;
    /// What QUELT_TRACE asks for counts as a capture that is never closed.
    static bool readEnvironment();
    static const bool s_isAskedForAll;

    /// True when QUELT_TRACE asks for all lines.
    [[nodiscard]] static bool isAskedForAll() noexcept { return s_isAskedForAll; }
    /// Hands `line` to the sink of the process. A line that comes out of the writing of another is dropped.
    static void hand(const QueltInTraceLine& line);
};

/// Keeps the lines of its own thread, in order, for as long as the scope lives; captures nest, the innermost
/// takes the lines. When QUELT_TRACE is set the lines go to the sink as well.
class QUELT_CORE_API QueltInTraceCapture {
public:
    /// What the capture asks the trace objects for on this thread.
    enum class Wanted {
        reports,            ///< errors and warnings only; lines of other kinds are not even put together
        unconditionalLines, ///< what is written without any trace; when QUELT_TRACE is set, as reports
        everything          ///< every line: trace objects answer that they are activated
    };
    /// Opens the capture.
    explicit QueltInTraceCapture(Wanted wanted);
    /// Closes it.
    ~QueltInTraceCapture();
    QueltInTraceCapture(const QueltInTraceCapture&) = delete;
    QueltInTraceCapture& operator=(const QueltInTraceCapture&) = delete;

    /// The lines so far.
    [[nodiscard]] const std::vector<QueltInTraceLine>& lines() const noexcept { return m_lines; }
    /// True when a line was lost because there was no memory for it (QueltInTraceClass::noteLostLine).
    [[nodiscard]] bool isIncomplete() const noexcept { return m_isIncomplete; }
    /// Forgets the lines so far, lost ones too, so that one capture serves many conversions; room for the
    /// usual number of lines stays.
    void clear() noexcept;

private:
    friend class QueltInTraceClass;
    /// True when QUELT_TRACE or the capture of this thread asks for all lines.
    [[nodiscard]] static bool isEverythingWanted() noexcept;
    /// The capture that takes the lines of this thread, null when there is none.
    [[nodiscard]] static QueltInTraceCapture* innermost() noexcept;
    [[nodiscard]] bool wantsReportsOnly() const noexcept { return m_wanted == Wanted::reports; }
    /// False when no error or warning begins like this.
    [[nodiscard]] static bool mayBeReport(const char* beginning) noexcept;
    void take(const QueltInTraceLine& line, bool allWereAskedFor);
    [[nodiscard]] std::string_view keep(std::string_view text);
    [[nodiscard]] std::string_view keepName(std::string_view name);
    [[nodiscard]] char* makeRoom(std::size_t bytes);

    std::vector<std::unique_ptr<char[]>> m_blocks; // the first one stays when the lines are forgotten
    char* m_pNext = nullptr;
    std::size_t m_room = 0;
    std::vector<QueltInTraceLine> m_lines;
    std::vector<std::string_view> m_names; // those of classes and domains, each kept once
    Wanted m_wanted;
    bool m_isIncomplete = false;
    QueltInTraceCapture* m_pOuter;
};
