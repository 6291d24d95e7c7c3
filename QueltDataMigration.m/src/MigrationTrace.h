#pragma once

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTraceClass.h"

#include <source_location>

namespace quelt {

/// One source file's way to the trace facility: the shapes of the lines that the module writes.
class MigrationTrace {
public:
    /// For the source file of the class `className` (text with static storage).
    explicit MigrationTrace(const char* className) noexcept : m_trace(className, "QueltDataMigration") {}

    /// Non-zero when informational lines are written.
    [[nodiscard]] bool isActivated() const noexcept { return m_trace.IsActivated() != 0; }

    /// An informational line, made of `pieces` (texts and numbers), when the trace is activated.
    template <class... Pieces>
    void inform(Pieces... pieces) const {
        if (isActivated()) {
            writeMessage(pieces...);
        }
    }
    /// A line that is written whether or not the trace is activated: a warning, and the few others of the
    /// kind.
    template <class... Pieces>
    void writeMessage(Pieces... pieces) const {
        m_trace.writeMessage(pieces...);
    }
    /// The error report of two lines, where and what. Returns `result`, so that a failing step reads as one
    /// statement.
    long fail(const char* message, long result = E_FAIL,
              std::source_location where = std::source_location::current()) const;
    /// The same for a failing check, with the number that it is about behind the message. Returns E_FAIL.
    long failFor(const char* message, int number,
                 std::source_location where = std::source_location::current()) const;

private:
    friend class MethodTrace;
    void writeLocation(std::source_location where) const;

    mutable QueltInTraceClass m_trace; // a facility, not state: lines of all threads go through it
};

/// The trace scope of a method, as long as the object lives.
class MethodTrace {
public:
    /// Opens the scope of `method` (text with static storage).
    MethodTrace(const MigrationTrace& trace, const char* method,
                std::source_location where = std::source_location::current())
        : m_trace(trace.m_trace), m_line(static_cast<int>(where.line())) {
        if (m_trace.IsActivated() != 0) {
            writeEntry(method);
        }
    }
    ~MethodTrace() {
        if (m_isMethodSet || m_trace.IsActivated() != 0) {
            writeExit();
        }
    }
    MethodTrace(const MethodTrace&) = delete;
    MethodTrace& operator=(const MethodTrace&) = delete;

private:
    void writeEntry(const char* method) noexcept;
    void writeExit() noexcept;

    QueltInTraceClass& m_trace;
    int m_line;
    bool m_isMethodSet = false;
};

} // namespace quelt
