#include "commands/BatchPipeline.h"

#include "platform/Interruption.h"

#include <thread>

namespace quelt::host {

BatchPipeline::BatchPipeline(const MakeLineConverter& makeConverter, unsigned jobs, LineReader& input,
                             ByteSink& output, Progress& progress)
    : m_makeConverter(makeConverter), m_jobs(jobs), m_input(input), m_output(output), m_progress(progress),
      m_slots(jobs + 3U) {} // one being read, one being written, one in reserve

RunResult BatchPipeline::run() {
    std::vector<std::thread> threads;
    guard([&] {
        threads.emplace_back([this] { guard([this] { write(); }); });
        for (unsigned job = 0; job < m_jobs; ++job) {
            threads.emplace_back([this] { guard([this] { work(); }); });
        }
        read();
    });
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

void BatchPipeline::read() {
    std::optional<StreamFailure> failure;
    try {
        for (std::uint64_t number = 0;; ++number) {
            Slot* const slot = await(number, State::free);
            if (slot == nullptr || !m_input.fill(slot->batch)) {
                break;
            }
            const std::lock_guard lock(m_mutex);
            slot->state = State::filled;
            ++m_filled;
            m_changed.notify_all();
        }
    } catch (const StreamFailure& reason) {
        failure = reason;
    }
    const std::lock_guard lock(m_mutex);
    if (failure) {
        m_result.noteReadFailure(*failure);
    }
    m_isInputRead = true;
    m_changed.notify_all();
}

void BatchPipeline::work() {
    const std::unique_ptr<LineConverter> converter = m_makeConverter();
    while (Slot* const slot = awaitWork()) {
        convert(*converter, *slot);
        setState(*slot, State::converted);
    }
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

void BatchPipeline::write() {
    try {
        for (std::uint64_t number = 0;; ++number) {
            Slot* const slot = await(number, State::converted);
            if (slot == nullptr) {
                return;
            }
            writeAnswers(*slot);
            if (slot->isCut) {
                break; // what was converted of later batches has a gap in front
            }
            setState(*slot, State::free);
        }
        const std::lock_guard lock(m_mutex);
        m_result.isInterrupted = true;
    } catch (const StreamFailure& failure) {
        m_result.writeFailure = failure;
    }
    stop(nullptr);
}

void BatchPipeline::writeAnswers(Slot& slot) {
    m_progress.clearForAnswers();
    m_output.write(slot.answers.view());
    m_result.counts += slot.counts; // only what was written counts
    m_result.failures.add(slot.failures);
    m_progress.update(m_result.counts, slot.batch.endOfInput());
    slot.answers.clear();
}

BatchPipeline::Slot* BatchPipeline::await(std::uint64_t number, State state) {
    Slot& slot = m_slots[number % m_slots.size()];
    std::unique_lock lock(m_mutex);
    m_changed.wait(
        lock, [&] { return m_isStopped || slot.state == state || (m_isInputRead && number >= m_filled); });
    return !m_isStopped && slot.state == state && !(m_isInputRead && number >= m_filled) ? &slot : nullptr;
}

BatchPipeline::Slot* BatchPipeline::awaitWork() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_isStopped || m_taken < m_filled || m_isInputRead; });
    return !m_isStopped && m_taken < m_filled ? &m_slots[m_taken++ % m_slots.size()] : nullptr;
}

void BatchPipeline::setState(Slot& slot, State state) {
    const std::lock_guard lock(m_mutex);
    slot.state = state;
    m_changed.notify_all();
}

void BatchPipeline::stop(std::exception_ptr error) {
    const std::lock_guard lock(m_mutex);
    m_isStopped = true;
    if (!m_error) {
        m_error = std::move(error);
    }
    m_changed.notify_all();
}

} // namespace quelt::host
