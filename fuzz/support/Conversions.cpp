#include "support/Conversions.h"

#include "commands/LineReader.h"
#include "host/support/HeapRecordConverter.h"
#include "host/support/MemoryStreams.h"
#include "support/Expect.h"

#include <sstream>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUELT_HAS_LEAK_SANITIZER
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) && !defined(_WIN32)
#define QUELT_HAS_LEAK_SANITIZER
#endif
#if defined(QUELT_HAS_LEAK_SANITIZER)
#include <sanitizer/lsan_interface.h>
#endif

namespace quelt::host::fuzz {

namespace {

/// So little is read at a time that several workers get something to do.
constexpr std::size_t s_piece = 256;

/// A leak sanitizer forgives what is allocated meanwhile.
class LeaksForgiven {
public:
    explicit LeaksForgiven([[maybe_unused]] bool forgives) : m_forgives(forgives) {
#if defined(QUELT_HAS_LEAK_SANITIZER)
        if (m_forgives) {
            __lsan_disable();
        }
#endif
    }
    ~LeaksForgiven() {
#if defined(QUELT_HAS_LEAK_SANITIZER)
        if (m_forgives) {
            __lsan_enable();
        }
#endif
    }
    LeaksForgiven(const LeaksForgiven&) = delete;
    LeaksForgiven& operator=(const LeaksForgiven&) = delete;

private:
    [[maybe_unused]] bool m_forgives;
};

std::string run(const MakeLineConverter& makeConverter, std::string_view records, unsigned jobs) {
    test::TextSource source(records, s_piece);
    test::TextSink sink;
    std::ostringstream messages;
    Console console{.input = source, .output = sink, .messages = messages};
    Progress progress(console, source.size());
    const RunResult result = runConversion(makeConverter, jobs, source, sink, progress);
    expect(!result.readFailure && !result.writeFailure, "the run came to its end");
    return sink.text();
}

} // namespace

std::string answersTo(const LoadedContext& context, std::string_view records, const Way& way,
                      bool forgivesLeaks) {
    const LeaksForgiven scope(forgivesLeaks);
    const MakeLineConverter makeConverter = [&]() -> std::unique_ptr<LineConverter> {
        if (way.usesArena) {
            return std::make_unique<RecordConverter>(context, way.options);
        }
        return std::make_unique<test::HeapRecordConverter>(context, way.options);
    };
    return run(makeConverter, records, way.jobs);
}

Unfailed withoutFailed(std::string_view records, std::string_view answers) {
    Unfailed unfailed;
    test::TextSource source(records);
    LineReader reader(source, records.size() + 1);
    std::uint64_t next = 1;
    for (LineBatch batch; reader.fill(batch);) {
        for (const Line& line : batch.lines()) {
            const std::string_view answer = answers.substr(0, answers.find('\n') + 1);
            answers.remove_prefix(answer.size());
            unfailed.records.append(line.number - next, '\n');
            next = line.number + 1;
            if (answer.find(R"(,"code":"0x)") == std::string_view::npos) {
                unfailed.records += batch.textOf(line).view();
                unfailed.answers += answer;
            }
            unfailed.records += line.isUnfinished ? "" : "\n";
        }
    }
    return unfailed;
}

} // namespace quelt::host::fuzz
