#include "infrastructure/QueltInTraceSink.h"

#include "infrastructure/QueltInTraceClass.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <string>
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
    std::string whole;
    whole.append(line.domainName).append(" ").append(line.className);
    if (!line.methodName.empty()) {
        whole.append("::").append(line.methodName);
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

// What QUELT_TRACE says now, and the file of that name. Where the platform's names are wide, narrow ones
// cannot say every path.
#if defined(_WIN32)
std::filesystem::path traceVariable() {
    const wchar_t* const value = ::_wgetenv(L"QUELT_TRACE");
    return value != nullptr ? value : L"";
}
std::FILE* openToAppend(const std::filesystem::path& path) {
    constexpr std::size_t longest = 259; // longer paths need the prefix, which wants the whole path
    std::error_code ignored;
    const std::filesystem::path whole = std::filesystem::absolute(path, ignored).make_preferred();
    const bool isLong = whole.native().size() > longest;
    return ::_wfopen(isLong ? (LR"(\\?\)" + whole.native()).c_str() : path.c_str(), L"ab");
}
#else
std::filesystem::path traceVariable() {
    const char* const value = std::getenv("QUELT_TRACE");
    return value != nullptr ? value : "";
}
std::FILE* openToAppend(const std::filesystem::path& path) {
    return std::fopen(path.c_str(), "a");
}
#endif

/// Standard error, or the end of a file that is opened at the first line; standard error too when it cannot
/// be.
class DefaultSink final : public QueltInTraceSink {
public:
    explicit DefaultSink(std::filesystem::path path) : m_path(std::move(path)) {}

    void write(const QueltInTraceLine& line) override {
        if (m_isClosed) {
            return;
        }
        std::FILE* const file = target();
        const std::string text = format(line);
        static_cast<void>(std::fwrite(text.data(), 1, text.size(), file));
        static_cast<void>(std::fflush(file)); // the last lines before a crash are those that matter
    }

    /// Gives everything up; lines are dropped from then on.
    void close() noexcept {
        m_isClosed = true;
        m_file.reset();
        std::filesystem::path().swap(m_path);
    }

private:
    std::FILE* target() {
        if (!m_path.empty()) {
            m_file.reset(openToAppend(m_path));
            if (m_file == nullptr) {
                static_cast<void>(
                    std::fprintf(stderr, "QUELT_TRACE: cannot append to %s\n", m_path.string().c_str()));
            }
            m_path.clear();
        }
        return m_file != nullptr ? m_file.get() : stderr;
    }

    std::filesystem::path m_path; // of the file to be opened, empty for standard error
    std::unique_ptr<std::FILE, CloseFile> m_file;
    bool m_isClosed = false;
};

/// The sink of the process and the lock around it.
struct Outlet {
    explicit Outlet(const std::filesystem::path& asked)
        : asksForAll(!asked.empty()), defaultSink(asked != "stderr" ? asked : std::filesystem::path()) {}

    const bool asksForAll;
    DefaultSink defaultSink;
    std::mutex mutex;
    QueltInTraceSink* replacement = nullptr;

    /// Never destroyed: a thread may be writing while the process ends.
    static Outlet& instance() {
        alignas(Outlet) static std::byte storage[sizeof(Outlet)];
        static Outlet* const outlet = new (storage) Outlet(traceVariable());
        return *outlet;
    }
};

/// Gives back what the default sink holds when the library is unloaded; all that link the library and trace
/// while they are unloaded have gone before.
struct DefaultSinkCloser {
    ~DefaultSinkCloser() {
        Outlet& outlet = Outlet::instance();
        // Does not wait: a process that ends may have ended the thread that holds the lock.
        const std::unique_lock lock(outlet.mutex, std::try_to_lock);
        if (lock.owns_lock()) {
            outlet.defaultSink.close();
        }
    }
};
const DefaultSinkCloser s_defaultSinkCloser;

/// Lines that a capture makes room for at its first one.
constexpr std::size_t s_firstLines = 32;
/// The texts of lines stand in blocks of this many bytes, which nearly every conversion gets by with one of.
constexpr std::size_t s_blockSize = 4096;
/// A name is kept again when so many others were kept behind it.
constexpr std::size_t s_mostNamesLookedAt = 16;
/// Room for more lines than this is given back with the lines.
constexpr std::size_t s_mostLinesKept = 1024;

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

/// What the lines begin with that report an error or a warning.
std::array<std::string_view, 4> reportBeginnings() noexcept {
    return {QueltInTraceClass::GetErrorIndent(), QueltInTraceClass::GetError(), "ERROR", "WARNING"};
}

/// True when one of the two texts begins with the other.
bool beginEqually(std::string_view left, std::string_view right) noexcept {
    const std::size_t common = std::min(left.size(), right.size());
    return left.substr(0, common) == right.substr(0, common);
}

bool isReport(const QueltInTraceLine& line) noexcept {
    return line.level == 0 && std::ranges::any_of(reportBeginnings(), [&](std::string_view beginning) {
               return line.text.starts_with(beginning);
           });
}

} // namespace

QueltInTraceSink::~QueltInTraceSink() = default;

QueltInTraceSink* QueltInTraceSink::replace(QueltInTraceSink* sink) noexcept {
    Outlet& outlet = Outlet::instance();
    const std::lock_guard lock(outlet.mutex);
    return std::exchange(outlet.replacement, sink);
}

bool QueltInTraceSink::readEnvironment() {
    const bool asksForAll = Outlet::instance().asksForAll;
    if (asksForAll) {
        QueltInTraceClass::s_howManyWantEverything.fetch_add(1, std::memory_order_relaxed);
    }
    return asksForAll;
}

const bool QueltInTraceSink::s_isAskedForAll = readEnvironment();

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
    if (wanted == Wanted::everything) {
        QueltInTraceClass::s_howManyWantEverything.fetch_add(1, std::memory_order_relaxed);
    }
}

QueltInTraceCapture::~QueltInTraceCapture() {
    if (m_wanted == Wanted::everything) {
        QueltInTraceClass::s_howManyWantEverything.fetch_sub(1, std::memory_order_relaxed);
    }
    for (QueltInTraceCapture** link = &t_pInnermost; *link != nullptr; link = &(*link)->m_pOuter) {
        if (*link == this) {
            *link = m_pOuter;
            return;
        }
    }
}

bool QueltInTraceCapture::isEverythingWanted() noexcept {
    return QueltInTraceSink::isAskedForAll() ||
           (t_pInnermost != nullptr && t_pInnermost->m_wanted == Wanted::everything);
}

bool QueltInTraceCapture::mayBeReport(const char* beginning) noexcept {
    if (beginning == nullptr || *beginning == '\0') {
        return true;
    }
    // Most lines differ in their first character; finding out how long they are takes more than that.
    return std::ranges::any_of(reportBeginnings(), [&](std::string_view report) {
        return *beginning == report.front() && beginEqually(beginning, report);
    });
}

QueltInTraceCapture* QueltInTraceCapture::innermost() noexcept {
    return t_pInnermost;
}

void QueltInTraceCapture::clear() noexcept {
    m_isIncomplete = false;
    m_lines.clear();
    m_names.clear();
    if (m_lines.capacity() > s_mostLinesKept) {
        m_lines.shrink_to_fit();
    }
    if (!m_blocks.empty()) {
        m_blocks.resize(1);
        m_pNext = m_blocks.front().get();
        m_room = s_blockSize;
    }
}

void QueltInTraceCapture::take(const QueltInTraceLine& line, bool allWereAskedFor) {
    const bool onlyReports =
        m_wanted == Wanted::reports || (m_wanted == Wanted::unconditionalLines && allWereAskedFor);
    if (onlyReports && !isReport(line)) {
        return;
    }
    if (m_lines.empty()) {
        m_lines.reserve(s_firstLines);
    }
    QueltInTraceLine kept = line;
    kept.className = keepName(line.className);
    kept.domainName = keepName(line.domainName);
    kept.methodName = keep(line.methodName);
    kept.text = keep(line.text);
    m_lines.push_back(kept);
}

std::string_view QueltInTraceCapture::keep(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    char* const kept = text.size() <= m_room ? m_pNext : makeRoom(text.size());
    std::copy(text.begin(), text.end(), kept);
    m_pNext = kept + text.size();
    m_room -= text.size();
    return {kept, text.size()};
}

std::string_view QueltInTraceCapture::keepName(std::string_view name) {
    // Few classes trace in one conversion, and one writes many lines in a row: the last names are looked at
    // first.
    const std::size_t looked = std::min(m_names.size(), s_mostNamesLookedAt);
    const auto known =
        std::find(m_names.rbegin(), m_names.rbegin() + static_cast<std::ptrdiff_t>(looked), name);
    if (known != m_names.rbegin() + static_cast<std::ptrdiff_t>(looked)) {
        return *known;
    }
    return m_names.emplace_back(keep(name));
}

char* QueltInTraceCapture::makeRoom(std::size_t bytes) {
    const std::size_t size = m_blocks.empty() ? s_blockSize : std::max(bytes, s_blockSize);
    m_blocks.push_back(std::make_unique_for_overwrite<char[]>(size));
    m_room = size;
    return bytes <= size ? m_blocks.back().get() : makeRoom(bytes);
}
