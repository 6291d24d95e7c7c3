#include "commands/BatchPipeline.h"

#include <thread>

namespace quelt::host {

namespace {

/// Smaller than what one thread alone reads at a time: several batches are in memory at once.
constexpr std::size_t s_readSize = std::size_t{256} << 10U;

} // namespace

BatchPipeline::BatchPipeline(const MakeLineConverter& makeConverter, unsigned jobs, ByteSource& input,
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
    LineReader reader(m_input, s_readSize);
    try {
        for (std::uint64_t number = 0;; ++number) {
            Slot* const slot = await(number, State::free);
            if (slot == nullptr || !reader.fill(slot->batch)) {
                break;
            }
            const std::lock_guard lock(m_mutex);
            slot->state = State::filled;
            ++m_filled;
            m_changed.notify_all();
        }
    } catch (const StreamFailure& failure) {
        m_result.readFailure = failure;
    }
    const std::lock_guard lock(m_mutex);
    m_isInputRead = true;
    m_changed.notify_all();
}

void BatchPipeline::work() {
    const std::unique_ptr<LineConverter> converter = m_makeConverter();
    while (Slot* const slot = awaitWork()) {
        slot->counts = {};
        for (const Line& line : slot->batch.lines()) {
            converter->convert(line, slot->batch.textOf(line), slot->answers, slot->counts);
        }
        setState(*slot, State::converted);
    }
    const std::lock_guard lock(m_mutex);
    m_result.failures.add(converter->failures());
}

void BatchPipeline::write() {
    try {
        for (std::uint64_t number = 0;; ++number) {
            Slot* const slot = await(number, State::converted);
            if (slot == nullptr) {
                return;
            }
            m_result.counts += slot->counts;
            m_progress.clearForAnswers();
            m_output.write(viewOf(slot->answers));
            m_progress.update(m_result.counts, slot->batch.endOfInput());
            empty(slot->answers);
            setState(*slot, State::free);
        }
    } catch (const StreamFailure& failure) {
        m_result.writeFailure = failure;
        stop(nullptr);
    }
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
