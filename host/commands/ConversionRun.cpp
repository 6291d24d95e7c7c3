#include "commands/ConversionRun.h"

#include "commands/BatchPipeline.h"

namespace quelt::host {

namespace {

constexpr std::size_t s_readSize = std::size_t{1} << 20U;
constexpr std::size_t s_writeSize = std::size_t{1} << 20U;

RunResult runOnThisThread(const MakeLineConverter& makeConverter, ByteSource& input, ByteSink& output,
                          Progress& progress) {
    RunResult result;
    const std::unique_ptr<LineConverter> converter = makeConverter();
    TextBuffer answers;
    const auto flush = [&](std::uint64_t bytesRead) {
        progress.clearForAnswers();
        try {
            output.write(viewOf(answers));
        } catch (const StreamFailure& failure) {
            result.writeFailure = failure;
        }
        progress.update(result.counts, bytesRead);
        empty(answers);
    };

    LineReader reader(input, s_readSize);
    LineBatch batch;
    try {
        while (!result.writeFailure && reader.fill(batch)) {
            for (const Line& line : batch.lines()) {
                converter->convert(line, batch.textOf(line), answers, result.counts);
                if (answers.GetSize() >= s_writeSize) {
                    flush(batch.endOfInput());
                }
                if (result.writeFailure) {
                    break;
                }
            }
            flush(batch.endOfInput());
        }
    } catch (const StreamFailure& failure) {
        result.readFailure = failure;
    }
    result.failures = converter->failures();
    return result;
}

} // namespace

RunResult runConversion(const MakeLineConverter& makeConverter, unsigned jobs, ByteSource& input,
                        ByteSink& output, Progress& progress) {
    if (jobs <= 1) {
        return runOnThisThread(makeConverter, input, output, progress);
    }
    return BatchPipeline(makeConverter, jobs, input, output, progress).run();
}

} // namespace quelt::host
