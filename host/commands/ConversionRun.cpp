#include "commands/ConversionRun.h"

#include "commands/BatchPipeline.h"
#include "platform/Interruption.h"

#include <cerrno>

namespace quelt::host {

namespace {

constexpr std::size_t s_writeSize = std::size_t{1} << 20U;

RunResult runOnThisThread(const MakeLineConverter& makeConverter, LineReader& input, ByteSink& output,
                          Progress& progress) {
    RunResult result;
    const std::unique_ptr<LineConverter> converter = makeConverter();
    TextBuffer answers;
    Counts unwritten; // of the answers
    const auto flush = [&](std::uint64_t bytesRead) {
        progress.clearForAnswers();
        try {
            output.write(answers.view());
            result.counts += unwritten;
            result.failures.add(converter->takeFailures());
        } catch (const StreamFailure& failure) {
            result.writeFailure = failure;
        }
        progress.update(result.counts, bytesRead);
        answers.clear();
        unwritten = {};
    };

    LineBatch batch;
    try {
        while (!result.writeFailure && !result.isInterrupted && input.fill(batch)) {
            for (const Line& line : batch.lines()) {
                result.isInterrupted = interruption() != 0;
                if (result.writeFailure || result.isInterrupted) {
                    break;
                }
                converter->convert(line, batch.textOf(line), answers, unwritten);
                if (answers.size() >= s_writeSize) {
                    flush(batch.endOfInput());
                }
            }
            if (!result.writeFailure) {
                flush(batch.endOfInput());
            }
        }
    } catch (const StreamFailure& failure) {
        result.noteReadFailure(failure);
    }
    return result;
}

} // namespace

void RunResult::noteReadFailure(const StreamFailure& failure) {
    if (failure.code() == EINTR) {
        isInterrupted = true;
    } else {
        readFailure = failure;
    }
}

std::size_t readSizeFor(unsigned jobs) noexcept {
    // With several jobs, several batches are in memory at once.
    return jobs <= 1 ? std::size_t{1} << 20U : std::size_t{256} << 10U;
}

RunResult runConversion(const MakeLineConverter& makeConverter, unsigned jobs, LineReader& input,
                        ByteSink& output, Progress& progress) {
    if (jobs <= 1) {
        return runOnThisThread(makeConverter, input, output, progress);
    }
    return BatchPipeline(makeConverter, jobs, input, output, progress).run();
}

RunResult runConversion(const MakeLineConverter& makeConverter, unsigned jobs, ByteSource& input,
                        ByteSink& output, Progress& progress) {
    LineReader reader(input, readSizeFor(jobs));
    return runConversion(makeConverter, jobs, reader, output, progress);
}

} // namespace quelt::host
