#pragma once

#include "infrastructure/QueltCoreExport.h"

#include <atomic>
#include <string>
#include <string_view>

struct QueltInTraceLine;

/// What one source file traces through: it names the class and the domain of its lines, and hands each whole
/// line to the sink (see QueltInTraceSink.h). Methods and unfinished lines belong to the calling thread, so
/// one object serves concurrent calls; their lines may interleave, whole.
class QUELT_CORE_API QueltInTraceClass {
public:
    /// A trace object for the class `className` in the domain `domainName`; both texts need static storage.
    QueltInTraceClass(const char* className, const char* domainName) noexcept;
    ~QueltInTraceClass() = default;
    QueltInTraceClass(const QueltInTraceClass&) = delete;
    QueltInTraceClass& operator=(const QueltInTraceClass&) = delete;

    /// Non-zero when trace output is wanted of this object on this thread: the environment variable
    /// QUELT_TRACE was set when the core was loaded, or a capture that asks for everything is open
    /// (QueltInTraceCapture).
    [[nodiscard]] int IsActivated() const noexcept {
        return s_howManyWantEverything.load(std::memory_order_relaxed) != 0 ? isWantedHere() : 0;
    }
    /// Opens the method `name` (text that lives until RemoveMethod) on this thread; lines of this object show
    /// the innermost method that is still open.
    void SetMethod(const char* name);
    /// Closes the innermost method of this object on this thread; nothing happens when none is open.
    void RemoveMethod() noexcept;
    /// Starts a line at `level` (0 message, 1 method entry, 2 method exit) and returns the object for
    /// chaining.
    QueltInTraceClass& beginTrace(int level);
    /// Appends `text` to the line that this thread has begun; without one nothing happens, nor for null.
    QueltInTraceClass& operator<<(const char* text);
    /// Appends `number` in decimal digits, likewise.
    QueltInTraceClass& operator<<(int number);
    /// Appends `number` in decimal digits, likewise.
    QueltInTraceClass& operator<<(unsigned int number);
    /// Appends the address in hexadecimal digits behind "0x", likewise.
    QueltInTraceClass& operator<<(const void* pointer);
    /// Writes a whole line at level 0: as beginTrace, `<<` with each of `pieces` and endTrace, which look for
    /// the line each time. A line that nobody would keep is not put together.
    template <class... Pieces>
    void writeMessage(const char* beginning, Pieces... pieces) {
        if (!isKept(beginning)) {
            return;
        }
        std::string& text = beginLine(0);
        append(text, beginning);
        (append(text, pieces), ...);
        endTrace(0);
    }
    /// Ends the line started at `level` and hands it to the sink.
    void endTrace(int level);
    /// As endTrace, and records the source line number `line`.
    void endTraceWithLineNumber(int level, int line);

    /// Tells the capture of this thread, if there is one, that a line was lost; for whoever traces where
    /// nothing may be thrown.
    static void noteLostLine() noexcept;

    /// The prefix of the first line of an error report, "[ERROR] ".
    [[nodiscard]] static const char* GetError() noexcept;
    /// The indentation of its second line, eight blanks.
    [[nodiscard]] static const char* GetErrorIndent() noexcept;

    /// The name of the class that its lines carry.
    [[nodiscard]] const char* getClassName() const noexcept { return m_className.data(); }
    /// The name of the domain that its lines carry.
    [[nodiscard]] const char* getDomainName() const noexcept { return m_domainName.data(); }

private:
    friend class QueltInTraceCapture;
    friend class QueltInTraceSink;

    [[nodiscard]] static int isWantedHere() noexcept;
    /// False when a line that starts with `beginning` would go to nobody.
    [[nodiscard]] static bool isKept(const char* beginning) noexcept;
    /// Starts a line and gives its text.
    std::string& beginLine(int level);
    static void append(std::string& text, const char* piece);
    static void append(std::string& text, int number);
    static void append(std::string& text, unsigned int number);
    static void append(std::string& text, const void* pointer);
    /// Hands a finished line to the capture of the thread and to the sink, whichever want it.
    static void deliver(const QueltInTraceLine& line);

    /// The open captures of all threads that want everything, and QUELT_TRACE when it does. Nearly always
    /// none: then no trace object has to look any further.
    static std::atomic<int> s_howManyWantEverything;

    std::string_view m_className;
    std::string_view m_domainName;
};
