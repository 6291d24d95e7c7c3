#include "infrastructure/QueltInTraceClass.h"

#include "infrastructure/QueltInTraceSink.h"

#include <algorithm>
#include <array>
#include <atomic>
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
/// Nor is the room for more methods than this.
constexpr std::size_t s_mostMethodsKept = 256;

/// What a thread has begun and not ended, the innermost last.
class ThreadTrace {
public:
    std::vector<OpenMethod> methods;
    ThreadTrace* nextIdle = nullptr;

    [[nodiscard]] bool isIdle() const noexcept { return m_open == 0 && methods.empty(); }
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

// A thread has a state only while something of it is open. One for good would have to be destroyed with the
// thread, and the library could not be unloaded before the last thread that ever traced has ended.
thread_local constinit ThreadTrace* t_pTrace = nullptr;

constinit std::atomic_flag s_isIdleTaken;
constinit ThreadTrace* s_pFirstIdle = nullptr;

/// Keeps the idle states to one thread. No std::mutex, which not every platform makes before anything traces.
class IdleScope {
public:
    IdleScope() noexcept {
        while (s_isIdleTaken.test_and_set(std::memory_order_acquire)) {
            s_isIdleTaken.wait(true, std::memory_order_relaxed);
        }
    }
    ~IdleScope() {
        s_isIdleTaken.clear(std::memory_order_release);
        s_isIdleTaken.notify_one();
    }
    IdleScope(const IdleScope&) = delete;
    IdleScope& operator=(const IdleScope&) = delete;
};

ThreadTrace* takeIdle() noexcept {
    const IdleScope alone;
    ThreadTrace* const idle = s_pFirstIdle;
    if (idle != nullptr) {
        s_pFirstIdle = std::exchange(idle->nextIdle, nullptr);
    }
    return idle;
}

/// Deletes the idle states when the library is unloaded. Does not wait: a process that ends may have ended
/// the thread that was about to take one.
struct IdleStatesOwner {
    ~IdleStatesOwner() {
        if (s_isIdleTaken.test()) {
            return;
        }
        while (const ThreadTrace* const idle = takeIdle()) {
            delete idle;
        }
    }
};
const IdleStatesOwner s_idleStatesOwner;

/// The state of this thread, for what is about to be begun.
ThreadTrace& ofThread() {
    if (t_pTrace == nullptr) {
        t_pTrace = takeIdle();
    }
    if (t_pTrace == nullptr) {
        t_pTrace = new ThreadTrace;
    }
    return *t_pTrace;
}

/// At its end the thread gives its state up, unless something is still open.
class Ending {
public:
    Ending() = default;
    ~Ending() {
        if (t_pTrace == nullptr || !t_pTrace->isIdle()) {
            return;
        }
        if (t_pTrace->methods.capacity() > s_mostMethodsKept) {
            std::vector<OpenMethod>().swap(t_pTrace->methods);
        }
        const IdleScope alone;
        t_pTrace->nextIdle = s_pFirstIdle;
        s_pFirstIdle = std::exchange(t_pTrace, nullptr);
    }
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;
};

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
    return t_pTrace == nullptr ? nullptr : innermost(t_pTrace->openLines(), [&](const OpenLine& line) {
        return line.object == object;
    });
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

bool QueltInTraceClass::isKept(const char* beginning) noexcept {
    const QueltInTraceCapture* const capture = QueltInTraceCapture::innermost();
    return capture == nullptr || !capture->wantsReportsOnly() || QueltInTraceSink::isAskedForAll() ||
           QueltInTraceCapture::mayBeReport(beginning);
}

void QueltInTraceClass::SetMethod(const char* name) {
    const Ending ending; // for when there is no memory
    ofThread().methods.push_back({this, name != nullptr ? name : ""});
}

void QueltInTraceClass::RemoveMethod() noexcept {
    ThreadTrace* const trace = t_pTrace;
    if (trace == nullptr) {
        return;
    }
    const Ending ending;
    if (const OpenMethod* const method = innermostMethod(*trace, this); method != nullptr) {
        trace->methods.erase(trace->methods.begin() + (method - trace->methods.data()));
    }
}

std::string& QueltInTraceClass::beginLine(int level) {
    const Ending ending; // for when there is no memory
    return ofThread().begin(this, level);
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

QueltInTraceClass& QueltInTraceClass::operator<<(const char* text) {
    if (OpenLine* const line = innermostLine(this); line != nullptr) {
        append(line->text, text);
    }
    return *this;
}

QueltInTraceClass& QueltInTraceClass::operator<<(int number) {
    if (OpenLine* const line = innermostLine(this); line != nullptr) {
        append(line->text, number);
    }
    return *this;
}

QueltInTraceClass& QueltInTraceClass::operator<<(unsigned int number) {
    if (OpenLine* const line = innermostLine(this); line != nullptr) {
        append(line->text, number);
    }
    return *this;
}

QueltInTraceClass& QueltInTraceClass::operator<<(const void* pointer) {
    if (OpenLine* const line = innermostLine(this); line != nullptr) {
        append(line->text, pointer);
    }
    return *this;
}

void QueltInTraceClass::endTrace(int level) {
    endTraceWithLineNumber(level, 0);
}

void QueltInTraceClass::endTraceWithLineNumber(int level, int line) {
    ThreadTrace* const trace = t_pTrace;
    if (trace == nullptr) {
        return;
    }
    const Ending ending;
    OpenLine* const begun = innermost(
        trace->openLines(), [&](const OpenLine& open) { return open.object == this && open.level == level; });
    if (begun == nullptr) {
        return;
    }
    const OpenMethod* const method = innermostMethod(*trace, this);
    std::string text = trace->end(*begun);
    deliver({m_className, m_domainName, method != nullptr ? method->name : "", level, line, text});
    if (t_pTrace == trace) { // a sink that traces may have given it up
        trace->reuse(std::move(text));
    }
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

void QueltInTraceClass::noteLostLine() noexcept {
    if (QueltInTraceCapture* const capture = QueltInTraceCapture::innermost(); capture != nullptr) {
        capture->m_isIncomplete = true;
    }
}

const char* QueltInTraceClass::GetError() noexcept {
    return "[ERROR] ";
}

const char* QueltInTraceClass::GetErrorIndent() noexcept {
    return "        ";
}
