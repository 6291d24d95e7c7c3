#pragma once

#include "commands/ConversionRun.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <vector>

namespace quelt::host {

/// Runs a conversion on several threads. Batches go round in a ring: the calling thread fills the next free
/// one, a worker converts it, the writer writes it when all before it are written, and it is free again. A
/// lock is taken a few times for each batch, never for a record.
class BatchPipeline {
public:
    /// See runConversion; `jobs` workers. `makeConverter` must outlive the pipeline.
    BatchPipeline(const MakeLineConverter& makeConverter, unsigned jobs, LineReader& input, ByteSink& output,
                  Progress& progress);

    /// Runs once.
    [[nodiscard]] RunResult run();

private:
    enum class State { free, filled, converted };
    struct Slot {
        State state = State::free;
        LineBatch batch;
        TextBuffer answers;
        Counts counts;
        FailureTally failures;
        bool isCut = false; // an interruption left lines without an answer
    };

    void read();
    void work();
    void convert(LineConverter& converter, Slot& slot);
    void write();
    void writeAnswers(Slot& slot);
    /// Runs `step`; an exception ends the run, which throws it again.
    template <class Step>
    void guard(Step step) noexcept;

    /// Waits until the batch `number` is in `state`. Null when that will never be.
    [[nodiscard]] Slot* await(std::uint64_t number, State state);
    /// The next batch that wants converting, or null at the end.
    [[nodiscard]] Slot* awaitWork();
    void setState(Slot& slot, State state);
    void stop(std::exception_ptr error);

    const MakeLineConverter& m_makeConverter;
    unsigned m_jobs;
    LineReader& m_input;
    ByteSink& m_output;
    Progress& m_progress;
    RunResult m_result;

    std::vector<Slot> m_slots;
    std::mutex m_mutex; // guards what follows and the slots' states
    std::condition_variable m_changed;
    std::uint64_t m_filled = 0; // batches filled so far
    std::uint64_t m_taken = 0;  // of those, batches that workers took
    bool m_isInputRead = false;
    bool m_isStopped = false;
    std::exception_ptr m_error;
};

} // namespace quelt::host
