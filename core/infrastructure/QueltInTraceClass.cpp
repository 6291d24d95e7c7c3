#include "infrastructure/QueltInTraceClass.h"

#include "infrastructure/QueltInTraceSink.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

struct OpenMethod {
    const QueltInTraceClass* object;
    const char* name;
};

struct OpenLine {
    const QueltInTraceClass* object;
    int level;
    std::string text;
};

/// What a thread has begun and not ended, the innermost last.
struct ThreadTrace {
    std::vector<OpenMethod> methods;
    std::vector<OpenLine> lines;

    ThreadTrace() = default;
    ~ThreadTrace();
    ThreadTrace(const ThreadTrace&) = delete;
    ThreadTrace& operator=(const ThreadTrace&) = delete;
};

thread_local constinit bool t_isOver = false;

ThreadTrace::~ThreadTrace() {
    t_isOver = true;
}

/// The state of this thread, null when the thread is so near its end that it is gone: what is destroyed later
/// than thread_local objects, such as statics on the main thread, traces nothing.
ThreadTrace* ofThread() noexcept {
    thread_local ThreadTrace trace;
    return t_isOver ? nullptr : &trace;
}

/// Lines that are begun and never ended do not pile up: past this many the oldest is forgotten.
constexpr std::size_t s_mostOpenLines = 64;

template <class Opened>
auto innermostOf(std::vector<Opened>& all, const QueltInTraceClass* object) {
    return std::find_if(all.rbegin(), all.rend(),
                        [&](const Opened& opened) { return opened.object == object; });
}

OpenLine* innermostLine(const QueltInTraceClass* object) {
    ThreadTrace* const trace = ofThread();
    if (trace == nullptr) {
        return nullptr;
    }
    const auto line = innermostOf(trace->lines, object);
    return line != trace->lines.rend() ? &*line : nullptr;
}

template <class Number>
void appendNumber(std::string& text, Number number, int base) {
    std::array<char, 24> digits{};
    const std::to_chars_result result =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, base);
    text.append(digits.data(), result.ptr);
}

} // namespace

QueltInTraceClass::QueltInTraceClass(const char* className, const char* domainName) noexcept
    : m_className(className != nullptr ? className : ""),
      m_domainName(domainName != nullptr ? domainName : "") {}

int QueltInTraceClass::IsActivated() const noexcept {
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
    const auto method = innermostOf(trace->methods, this);
    if (method != trace->methods.rend()) {
        trace->methods.erase(std::next(method).base());
    }
}

QueltInTraceClass& QueltInTraceClass::beginTrace(int level) {
    ThreadTrace* const trace = ofThread();
    if (trace == nullptr) {
        return *this;
    }
    if (trace->lines.size() >= s_mostOpenLines) {
        trace->lines.erase(trace->lines.begin());
    }
    trace->lines.push_back({this, level, {}});
    return *this;
}

QueltInTraceClass& QueltInTraceClass::operator<<(const char* text) {
    if (OpenLine* const line = innermostLine(this); line != nullptr && text != nullptr) {
        line->text += text;
    }
    return *this;
}

QueltInTraceClass& QueltInTraceClass::operator<<(int number) {
    if (OpenLine* const line = innermostLine(this); line != nullptr) {
        appendNumber(line->text, number, 10);
    }
    return *this;
}

QueltInTraceClass& QueltInTraceClass::operator<<(unsigned int number) {
    if (OpenLine* const line = innermostLine(this); line != nullptr) {
        appendNumber(line->text, number, 10);
    }
    return *this;
}

QueltInTraceClass& QueltInTraceClass::operator<<(const void* pointer) {
    if (OpenLine* const line = innermostLine(this); line != nullptr) {
        line->text += "0x";
        appendNumber(line->text, reinterpret_cast<std::uintptr_t>(pointer), 16);
    }
    return *this;
}

void QueltInTraceClass::endTrace(int level) {
    endTraceWithLineNumber(level, 0);
}

void QueltInTraceClass::endTraceWithLineNumber(int level, int line) {
    ThreadTrace* const trace = ofThread();
    if (trace == nullptr) {
        return;
    }
    const auto begun = std::find_if(trace->lines.rbegin(), trace->lines.rend(), [&](const OpenLine& open) {
        return open.object == this && open.level == level;
    });
    if (begun == trace->lines.rend()) {
        return;
    }
    const auto method = innermostOf(trace->methods, this);
    QueltInTraceLine ended{m_className, m_domainName, method != trace->methods.rend() ? method->name : "",
                           level,       line,         std::move(begun->text)};
    trace->lines.erase(std::next(begun).base());
    deliver(std::move(ended));
}

void QueltInTraceClass::deliver(QueltInTraceLine&& line) {
    QueltInTraceCapture* const capture = QueltInTraceCapture::innermost();
    const bool allWereAskedFor = QueltInTraceSink::isAskedForAll();
    if (capture == nullptr || allWereAskedFor) {
        QueltInTraceSink::hand(line);
    }
    if (capture != nullptr) {
        capture->take(std::move(line), allWereAskedFor);
    }
}

const char* QueltInTraceClass::GetError() noexcept {
    return "[ERROR] ";
}

const char* QueltInTraceClass::GetErrorIndent() noexcept {
    return "        ";
}
