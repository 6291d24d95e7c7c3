#include "infrastructure/QueltInTraceClass.h"

#include "infrastructure/QueltInTraceSink.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

struct OpenMethod {
    const QueltInTraceClass* object;
    const char* name;
};

struct OpenLine {
    const QueltInTraceClass* object = nullptr;
    int level = 0;
    std::string text;
};

/// Lines that are begun and never ended do not pile up: past this many the oldest is forgotten.
constexpr std::size_t s_mostOpenLines = 64;
/// A text with more room than this is not kept for the next line.
constexpr std::size_t s_mostRoomKept = 4096;

/// What a thread has begun and not ended, the innermost last.
class ThreadTrace {
public:
    ThreadTrace() noexcept;
    ~ThreadTrace();
    ThreadTrace(const ThreadTrace&) = delete;
    ThreadTrace& operator=(const ThreadTrace&) = delete;

    std::vector<OpenMethod> methods;

    [[nodiscard]] std::span<OpenLine> openLines() noexcept { return {m_lines.data(), m_open}; }

    std::string& begin(const QueltInTraceClass* object, int level) {
        if (m_open == s_mostOpenLines) {
            close(m_lines.front());
        }
        if (m_open == m_lines.size()) {
            m_lines.emplace_back();
        }
        OpenLine& line = m_lines[m_open++];
        line.object = object;
        line.level = level;
        line.text.clear();
        return line.text;
    }
    /// Takes `line` out of the open ones and gives its text.
    std::string end(OpenLine& line) {
        std::string text = std::move(line.text);
        close(line);
        return text;
    }
    /// The room that `text` takes will do for the next line.
    void reuse(std::string&& text) noexcept {
        if (m_open < m_lines.size() && text.capacity() <= s_mostRoomKept) {
            m_lines[m_open].text = std::move(text);
        }
    }

private:
    /// Those behind `line` move one place forward; its own place becomes free.
    void close(OpenLine& line) {
        OpenLine* const behindLast = m_lines.data() + m_open--;
        if (&line + 1 != behindLast) {
            std::rotate(&line, &line + 1, behindLast);
        }
    }

    std::vector<OpenLine> m_lines; // the open ones, then free places
    std::size_t m_open = 0;
};

thread_local constinit ThreadTrace* t_pTrace = nullptr;
thread_local constinit bool t_isOver = false;

ThreadTrace::ThreadTrace() noexcept {
    t_pTrace = this;
}

ThreadTrace::~ThreadTrace() {
    t_pTrace = nullptr;
    t_isOver = true;
}

ThreadTrace* makeForThread() noexcept {
    if (!t_isOver) {
        thread_local ThreadTrace trace;
    }
    return t_pTrace;
}

/// The state of this thread, null when the thread is so near its end that it is gone: what is destroyed later
/// than thread_local objects, such as statics on the main thread, traces nothing.
ThreadTrace* ofThread() noexcept {
    return t_pTrace != nullptr ? t_pTrace : makeForThread();
}

/// The innermost of `all` for which `isIt` holds, null when there is none.
template <class Opened, class IsIt>
Opened* innermost(std::span<Opened> all, IsIt isIt) {
    for (std::size_t left = all.size(); left > 0; --left) {
        if (isIt(all[left - 1])) {
            return &all[left - 1];
        }
    }
    return nullptr;
}

OpenLine* innermostLine(const QueltInTraceClass* object) {
    ThreadTrace* const trace = ofThread();
    return trace == nullptr
               ? nullptr
               : innermost(trace->openLines(), [&](const OpenLine& line) { return line.object == object; });
}

OpenMethod* innermostMethod(ThreadTrace& trace, const QueltInTraceClass* object) {
    return innermost(std::span(trace.methods),
                     [&](const OpenMethod& method) { return method.object == object; });
}

/// Appends `number` to `text`, behind `prefix` (at most two characters).
template <class Number>
void appendNumber(std::string& text, Number number, int base = 10, std::string_view prefix = {}) {
    std::array<char, 24> digits; // NOLINT(cppcoreguidelines-pro-type-member-init): written before it is read
    char* const first = std::copy(prefix.begin(), prefix.end(), digits.data());
    const std::to_chars_result result = std::to_chars(first, digits.data() + digits.size(), number, base);
    text.append(digits.data(), result.ptr);
}

} // namespace

QueltInTraceClass::QueltInTraceClass(const char* className, const char* domainName) noexcept
    : m_className(className != nullptr ? className : ""),
      m_domainName(domainName != nullptr ? domainName : "") {}

constinit std::atomic<int> QueltInTraceClass::s_howManyWantEverything{0};

int QueltInTraceClass::isWantedHere() noexcept {
    return QueltInTraceCapture::isEverythingWanted() ? 1 : 0;
}

void QueltInTraceClass::SetMethod(const char* name) {
    if (ThreadTrace* const trace = ofThread(); trace != nullptr) {
        trace->methods.push_back({this, name != nullptr ? name : ""});
    }
}

void QueltInTraceClass::RemoveMethod() noexcept {
    ThreadTrace* const trace = ofThread();
    if (trace == nullptr) {
        return;
    }
    if (const OpenMethod* const method = innermostMethod(*trace, this); method != nullptr) {
        trace->methods.erase(trace->methods.begin() + (method - trace->methods.data()));
    }
}

std::string* QueltInTraceClass::beginLine(int level) {
    ThreadTrace* const trace = ofThread();
    return trace != nullptr ? &trace->begin(this, level) : nullptr;
}

void QueltInTraceClass::append(std::string& text, const char* piece) {
    if (piece != nullptr) {
        text += piece;
    }
}

void QueltInTraceClass::append(std::string& text, int number) {
    appendNumber(text, number);
}

void QueltInTraceClass::append(std::string& text, unsigned int number) {
    appendNumber(text, number);
}

void QueltInTraceClass::append(std::string& text, const void* pointer) {
    appendNumber(text, reinterpret_cast<std::uintptr_t>(pointer), 16, "0x");
}

QueltInTraceClass& QueltInTraceClass::beginTrace(int level) {
    beginLine(level);
    return *this;
}

template <class Piece>
QueltInTraceClass& QueltInTraceClass::appendToOpenLine(Piece piece) {
    if (OpenLine* const line = innermostLine(this); line != nullptr) {
        append(line->text, piece);
    }
    return *this;
}

QueltInTraceClass& QueltInTraceClass::operator<<(const char* text) {
    return appendToOpenLine(text);
}

QueltInTraceClass& QueltInTraceClass::operator<<(int number) {
    return appendToOpenLine(number);
}

QueltInTraceClass& QueltInTraceClass::operator<<(unsigned int number) {
    return appendToOpenLine(number);
}

QueltInTraceClass& QueltInTraceClass::operator<<(const void* pointer) {
    return appendToOpenLine(pointer);
}

void QueltInTraceClass::endTrace(int level) {
    endTraceWithLineNumber(level, 0);
}

void QueltInTraceClass::endTraceWithLineNumber(int level, int line) {
    ThreadTrace* const trace = ofThread();
    if (trace == nullptr) {
        return;
    }
    OpenLine* const begun = innermost(
        trace->openLines(), [&](const OpenLine& open) { return open.object == this && open.level == level; });
    if (begun == nullptr) {
        return;
    }
    const OpenMethod* const method = innermostMethod(*trace, this);
    std::string text = trace->end(*begun);
    deliver({m_className, m_domainName, method != nullptr ? method->name : "", level, line, text});
    trace->reuse(std::move(text));
}

void QueltInTraceClass::deliver(const QueltInTraceLine& line) {
    QueltInTraceCapture* const capture = QueltInTraceCapture::innermost();
    const bool allWereAskedFor = QueltInTraceSink::isAskedForAll();
    if (capture == nullptr || allWereAskedFor) {
        QueltInTraceSink::hand(line);
    }
    if (capture != nullptr) {
        capture->take(line, allWereAskedFor);
    }
}

const char* QueltInTraceClass::GetError() noexcept {
    return "[ERROR] ";
}

const char* QueltInTraceClass::GetErrorIndent() noexcept {
    return "        ";
}
