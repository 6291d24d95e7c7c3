#include "MigrationTrace.h"

#include <new>

namespace quelt {

namespace {

constexpr int s_methodEntry = 1;
constexpr int s_methodExit = 2;

} // namespace

long MigrationTrace::fail(const char* message, long result, std::source_location where) const {
    writeLocation(where);
    writeMessage(QueltInTraceClass::GetErrorIndent(), message);
    return result;
}

long MigrationTrace::failFor(const char* message, int number, std::source_location where) const {
    writeLocation(where);
    writeMessage(QueltInTraceClass::GetErrorIndent(), message, number);
    return E_FAIL;
}

void MigrationTrace::writeLocation(std::source_location where) const {
    writeMessage(QueltInTraceClass::GetError(), where.file_name(), "(", static_cast<int>(where.line()), ")");
}

// Destructors have scopes as well, and nothing may be thrown there: a line for which there is no memory is
// lost.

void MethodTrace::writeEntry(const char* method) noexcept {
    try {
        m_trace.SetMethod(method);
        m_isMethodSet = true;
        m_trace.beginTrace(s_methodEntry).endTraceWithLineNumber(s_methodEntry, m_line);
    } catch (const std::bad_alloc&) {
        QueltInTraceClass::noteLostLine();
    }
}

void MethodTrace::writeExit() noexcept {
    try {
        if (m_trace.IsActivated() != 0) {
            m_trace.beginTrace(s_methodExit).endTraceWithLineNumber(s_methodExit, m_line);
        }
    } catch (const std::bad_alloc&) {
        QueltInTraceClass::noteLostLine();
    }
    if (m_isMethodSet) {
        m_trace.RemoveMethod();
    }
}

} // namespace quelt
