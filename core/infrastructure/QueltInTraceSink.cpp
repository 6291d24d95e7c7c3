#include "infrastructure/QueltInTraceSink.h"

#include "infrastructure/QueltInTraceClass.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

namespace {

/// Appends `text` as a part of one line.
void appendOnOneLine(std::string& line, std::string_view text) {
    for (const char character : text) {
        if (character == '\n') {
            line += "\\n";
        } else if (character == '\r') {
            line += "\\r";
        } else {
            line += character;
        }
    }
}

/// "<domain> <class>::<method>: <text>", for an entry "<domain> <class>::<method> > <number>", for an exit
/// with "<".
std::string format(const QueltInTraceLine& line) {
    std::string whole = line.domainName + ' ' + line.className;
    if (!line.methodName.empty()) {
        whole += "::" + line.methodName;
    }
    if (line.level == 1 || line.level == 2) {
        whole += line.level == 1 ? " > " : " < ";
        whole += std::to_string(line.lineNumber);
    } else {
        whole += ':';
    }
    if (!line.text.empty()) {
        whole += ' ';
        appendOnOneLine(whole, line.text);
    }
    whole += '\n';
    return whole;
}

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};

/// Standard error, or the end of a file that is opened at the first line; standard error too when it cannot
/// be.
class DefaultSink final : public QueltInTraceSink {
public:
    explicit DefaultSink(std::string path) : m_path(std::move(path)) {}

    void write(const QueltInTraceLine& line) override {
        std::FILE* const file = target();
        const std::string text = format(line);
        static_cast<void>(std::fwrite(text.data(), 1, text.size(), file));
        static_cast<void>(std::fflush(file)); // the last lines before a crash are those that matter
    }

private:
    std::FILE* target() {
        if (!m_path.empty()) {
            m_file.reset(std::fopen(m_path.c_str(), "a"));
            if (m_file == nullptr) {
                static_cast<void>(std::fprintf(stderr, "QUELT_TRACE: cannot append to %s\n", m_path.c_str()));
            }
            m_path.clear();
        }
        return m_file != nullptr ? m_file.get() : stderr;
    }

    std::string m_path; // of the file to be opened, empty for standard error
    std::unique_ptr<std::FILE, CloseFile> m_file;
};

/// What QUELT_TRACE said when the library was loaded.
struct Environment {
    Environment() {
        const char* const value = std::getenv("QUELT_TRACE");
        if (value == nullptr || *value == '\0') {
            return;
        }
        asksForAll = true;
        if (std::string_view(value) != "stderr") {
            path = value;
        }
    }

    bool asksForAll = false;
    std::string path;
};

/// The sink of the process and the lock around it. Never destroyed: libraries trace while they are unloaded.
struct Outlet {
    const Environment environment;
    DefaultSink defaultSink{environment.path};
    std::mutex mutex;
    QueltInTraceSink* replacement = nullptr;

    static Outlet& instance() {
        static Outlet* const outlet = new Outlet;
        return *outlet;
    }
};

const bool s_isAskedForAll = Outlet::instance().environment.asksForAll;

thread_local constinit QueltInTraceCapture* t_pInnermost = nullptr;
thread_local constinit bool t_isWriting = false;

/// Marks the thread as writing for as long as it lives.
class WritingScope {
public:
    WritingScope() noexcept { t_isWriting = true; }
    ~WritingScope() { t_isWriting = false; }
    WritingScope(const WritingScope&) = delete;
    WritingScope& operator=(const WritingScope&) = delete;
};

/// True for the shapes of lines that are written whether or not a trace is activated.
bool isErrorOrWarning(const QueltInTraceLine& line) {
    const auto startsWith = [&](std::string_view beginning) { return line.text.starts_with(beginning); };
    return line.level == 0 &&
           (startsWith(QueltInTraceClass::GetError()) || startsWith(QueltInTraceClass::GetErrorIndent()) ||
            startsWith("ERROR") || startsWith("WARNING"));
}

} // namespace

QueltInTraceSink::~QueltInTraceSink() = default;

QueltInTraceSink* QueltInTraceSink::replace(QueltInTraceSink* sink) noexcept {
    Outlet& outlet = Outlet::instance();
    const std::lock_guard lock(outlet.mutex);
    return std::exchange(outlet.replacement, sink);
}

bool QueltInTraceSink::isAskedForAll() noexcept {
    return s_isAskedForAll;
}

void QueltInTraceSink::hand(const QueltInTraceLine& line) {
    if (t_isWriting) {
        return;
    }
    const WritingScope writing;
    Outlet& outlet = Outlet::instance();
    const std::lock_guard lock(outlet.mutex);
    QueltInTraceSink& sink = outlet.replacement != nullptr ? *outlet.replacement : outlet.defaultSink;
    sink.write(line);
}

QueltInTraceCapture::QueltInTraceCapture(Wanted wanted) : m_wanted(wanted), m_pOuter(t_pInnermost) {
    t_pInnermost = this;
}

QueltInTraceCapture::~QueltInTraceCapture() {
    for (QueltInTraceCapture** link = &t_pInnermost; *link != nullptr; link = &(*link)->m_pOuter) {
        if (*link == this) {
            *link = m_pOuter;
            return;
        }
    }
}

bool QueltInTraceCapture::isEverythingWanted() noexcept {
    return s_isAskedForAll || (t_pInnermost != nullptr && t_pInnermost->m_wanted == Wanted::everything);
}

QueltInTraceCapture* QueltInTraceCapture::innermost() noexcept {
    return t_pInnermost;
}

void QueltInTraceCapture::take(QueltInTraceLine&& line, bool allWereAskedFor) {
    if (m_wanted == Wanted::unconditionalLines && allWereAskedFor && !isErrorOrWarning(line)) {
        return;
    }
    m_lines.push_back(std::move(line));
}
