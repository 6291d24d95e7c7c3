#pragma once

#include "commands/ConversionRun.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace quelt::host {

/// Runs a conversion on several threads, of which the calling one is one. Each reads a batch, when nobody
/// else reads, and converts it; whoever has converted the first that is not written writes that and those
/// behind it that are ready. So a batch stays with its thread, and a thread waits for input, and for room
/// when one batch takes longer than many, and for nothing else. A lock is taken a few times for each batch,
/// never for a record.
class BatchPipeline {
public:
    /// See runConversion; `jobs` threads. `makeConverter` must outlive the pipeline.
    BatchPipeline(const MakeLineConverter& makeConverter, unsigned jobs, LineReader& input, ByteSink& output,
                  Progress& progress);

    /// Runs once.
    [[nodiscard]] RunResult run();

private:
    /// One place of the ring that batches go round in; of the thread that has read the batch, and of the one
    /// that writes it from when it is converted.
    struct Slot {
        LineBatch batch;
        TextBuffer answers;
        Counts counts;
        FailureTally failures;
        bool isCut = false;       // an interruption left lines without an answer
        bool isConverted = false; // and waits to be written
    };

    /// Runs `step`; an exception ends the run, which throws it again.
    template <class Step>
    void guard(Step step) noexcept;
    void startThreads(std::vector<std::thread>& threads);
    void work();
    /// Reads the next batch. Null at the end.
    [[nodiscard]] Slot* read();
    void convert(LineConverter& converter, Slot& slot);
    void finish(Slot& converted);
    /// Writes the answers of a batch; false when nothing more is to be written.
    [[nodiscard]] bool write(Slot& slot);

    [[nodiscard]] Slot& slotOf(std::uint64_t number) { return m_slots[number % m_slots.size()]; }
    /// Waits until the next batch can be read. Null when the run ends before.
    [[nodiscard]] Slot* awaitRoom();
    /// Counts what was read; null when the run has ended meanwhile.
    [[nodiscard]] Slot* take(Slot& slot);
    void noteReadFailure(const StreamFailure& failure);
    void stop(std::exception_ptr error);

    const MakeLineConverter& m_makeConverter;
    unsigned m_jobs;

    std::mutex m_inputMutex; // guards the two that follow; is taken before the other
    LineReader& m_input;
    bool m_isInputRead = false;

    ByteSink& m_output; // of whoever writes, like the next one
    Progress& m_progress;
    // Counts and writing failure are of whoever writes, too; the mutex below guards what else ends a run.
    RunResult m_result;

    std::mutex m_mutex; // guards what follows, and which slots are converted
    std::vector<Slot> m_slots;
    std::condition_variable m_hasRoom;
    std::uint64_t m_read = 0;    // batches read so far
    std::uint64_t m_written = 0; // of those, batches written
    bool m_isWriting = false;    // somebody is at it
    bool m_isStopped = false;
    std::exception_ptr m_error;
};

} // namespace quelt::host
