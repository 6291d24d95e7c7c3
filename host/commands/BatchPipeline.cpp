#include "commands/BatchPipeline.h"

#include "platform/Interruption.h"

#include <utility>

namespace quelt::host {

BatchPipeline::BatchPipeline(const MakeLineConverter& makeConverter, unsigned jobs, LineReader& input,
                             ByteSink& output, Progress& progress)
    : m_makeConverter(makeConverter), m_jobs(jobs), m_input(input), m_output(output), m_progress(progress),
      m_slots(jobs + 3U) {} // one a thread, and some that wait to be written

RunResult BatchPipeline::run() {
    std::vector<std::thread> threads;
    startThreads(threads);
    guard([this] { work(); });
    for (std::thread& thread : threads) {
        thread.join();
    }
    if (m_error) {
        std::rethrow_exception(m_error);
    }
    return std::move(m_result);
}

template <class Step>
void BatchPipeline::guard(Step step) noexcept {
    try {
        step();
    } catch (...) {
        stop(std::current_exception());
    }
}

void BatchPipeline::startThreads(std::vector<std::thread>& threads) {
    const std::lock_guard lock(m_inputMutex); // nothing is read, or written, before all are there
    guard([&] {
        for (unsigned job = 1; job < m_jobs; ++job) {
            threads.emplace_back([this] { guard([this] { work(); }); });
        }
    });
}

void BatchPipeline::work() {
    const std::unique_ptr<LineConverter> converter = m_makeConverter();
    while (Slot* const slot = read()) {
        convert(*converter, *slot);
        finish(*slot);
    }
}

BatchPipeline::Slot* BatchPipeline::read() {
    const std::lock_guard lock(m_inputMutex);
    try {
        Slot* const slot = m_isInputRead ? nullptr : awaitRoom();
        if (slot != nullptr && m_input.fill(slot->batch)) {
            return take(*slot);
        }
    } catch (const StreamFailure& failure) {
        noteReadFailure(failure);
    } catch (...) {
        stop(std::current_exception()); // what the reader has is not whole: nobody may read on
    }
    m_isInputRead = true;
    return nullptr;
}

void BatchPipeline::convert(LineConverter& converter, Slot& slot) {
    slot.counts = {};
    for (const Line& line : slot.batch.lines()) {
        slot.isCut = interruption() != 0;
        if (slot.isCut) {
            break;
        }
        converter.convert(line, slot.batch.textOf(line), slot.answers, slot.counts);
    }
    slot.failures = converter.takeFailures();
}

void BatchPipeline::finish(Slot& converted) {
    std::unique_lock lock(m_mutex);
    converted.isConverted = true;
    if (m_isWriting) {
        return;
    }
    m_isWriting = true;
    while (!m_isStopped && slotOf(m_written).isConverted) {
        Slot& next = slotOf(m_written);
        lock.unlock();
        const bool goesOn = write(next);
        lock.lock();
        if (!goesOn) {
            m_result.isInterrupted |= next.isCut;
            lock.unlock();
            stop(nullptr);
            return;
        }
        next.isConverted = false;
        ++m_written;
        m_hasRoom.notify_one(); // only the thread that reads waits
    }
    m_isWriting = false;
}

bool BatchPipeline::write(Slot& slot) {
    m_progress.clearForAnswers();
    try {
        m_output.write(slot.answers.view());
    } catch (const StreamFailure& failure) {
        m_result.writeFailure = failure;
        return false;
    }
    m_result.counts += slot.counts; // only what was written counts
    m_result.failures.add(slot.failures);
    m_progress.update(m_result.counts, slot.batch.endOfInput());
    slot.answers.clear();
    return !slot.isCut; // what was converted of later batches has a gap in front
}

BatchPipeline::Slot* BatchPipeline::awaitRoom() {
    std::unique_lock lock(m_mutex);
    m_hasRoom.wait(lock, [this] { return m_isStopped || m_read - m_written < m_slots.size(); });
    return m_isStopped ? nullptr : &slotOf(m_read);
}

BatchPipeline::Slot* BatchPipeline::take(Slot& slot) {
    const std::lock_guard lock(m_mutex);
    if (m_isStopped) {
        return nullptr;
    }
    ++m_read;
    return &slot;
}

void BatchPipeline::noteReadFailure(const StreamFailure& failure) {
    const std::lock_guard lock(m_mutex);
    m_result.noteReadFailure(failure);
}

void BatchPipeline::stop(std::exception_ptr error) {
    const std::lock_guard lock(m_mutex);
    m_isStopped = true;
    if (!m_error) {
        m_error = std::move(error);
    }
    m_hasRoom.notify_all();
}

} // namespace quelt::host
