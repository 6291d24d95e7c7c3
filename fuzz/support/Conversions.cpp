#include "support/Conversions.h"

#include "commands/LineReader.h"
#include "host/support/HeapRecordConverter.h"
#include "host/support/LeaksForgiven.h"
#include "host/support/MemoryStreams.h"
#include "support/Expect.h"

#include <sstream>

namespace quelt::host::fuzz {

namespace {

/// So little is read at a time that several workers get something to do.
constexpr std::size_t s_piece = 256;

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
    const test::LeaksForgiven scope(forgivesLeaks);
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
