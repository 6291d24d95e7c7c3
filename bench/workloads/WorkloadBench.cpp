#include "QueltEeTarselMigrationServices.h"
#include "infrastructure/QueltInMemory.h"
#include "plain/FromCore.h"
#include "workloads/Clock.h"
#include "workloads/OutputCopy.h"
#include "workloads/Workload.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

// What conversions cost beside copies of their output, which is the least that they can cost, and beside the
// same work in plain C++. All of them run by turns, so that they see the same machine, and the least time of
// each counts.

namespace quelt::bench {

namespace {

/// Times of all records.
struct Times {
    Clock::duration conversion{1e9};
    Clock::duration copies{1e9};
    Clock::duration bytes{1e9};
    Clock::duration plain{1e9};
};

void keepLeast(Clock::duration& least, Clock::duration time) {
    least = std::min(least, time);
}

/// The figures of one record, in nanoseconds, and the ratios.
void report(benchmark::State& state, const Times& times, std::size_t records) {
    const double each = 1e9 / static_cast<double>(records);
    state.counters["conversion_ns"] = times.conversion.count() * each;
    state.counters["copies_ns"] = times.copies.count() * each;
    state.counters["bytes_ns"] = times.bytes.count() * each;
    state.counters["plain_ns"] = times.plain.count() * each;
    state.counters["to_copies"] = times.conversion / times.copies;
    state.counters["plain_to"] = times.plain / times.conversion;
}

/// Does `work` for each record, each in the arena, as the host does.
template <class Work>
Clock::duration timeInArena(QueltInArena& arena, std::size_t records, const Work& work) {
    return timeOf([&] {
        for (std::size_t record = 0; record < records; ++record) {
            const QueltInArenaScope scope(arena);
            work(record);
            arena.reset();
        }
    });
}

/// The bytes of copies, as the arena hands them out, one copy behind the other.
class Bytes {
public:
    void add(std::size_t size) {
        m_sizes.push_back(size);
        m_source.resize(m_source.size() + size, 'x');
        m_target.resize(std::max(m_target.size(), size));
    }
    void copy() {
        const char* from = m_source.data();
        for (const std::size_t size : m_sizes) {
            std::memcpy(m_target.data(), from, size);
            benchmark::ClobberMemory();
            from += size;
        }
    }
    [[nodiscard]] double average() const {
        return static_cast<double>(m_source.size()) / static_cast<double>(m_sizes.size());
    }

private:
    std::vector<std::size_t> m_sizes;
    std::vector<char> m_source;
    std::vector<char> m_target;
};

template <class Copy>
Bytes bytesOf(QueltInArena& arena, std::size_t records, const Copy& copy) {
    Bytes bytes;
    for (std::size_t record = 0; record < records; ++record) {
        const QueltInArenaScope scope(arena);
        copy(record);
        bytes.add(arena.bytesInUse());
        arena.reset();
    }
    return bytes;
}

template <class MakeWorkload>
void compare(benchmark::State& state, const MakeWorkload& make) {
    const std::unique_ptr<Workload> workload = make();
    const std::size_t records = workload->records();
    QueltInArena arena;
    const auto copy = [&](std::size_t record) { workload->copyOutput(record); };
    Bytes bytes = bytesOf(arena, records, copy);
    Times times;
    for ([[maybe_unused]] const auto iteration : state) {
        workload->renew();
        keepLeast(times.conversion,
                  timeInArena(arena, records, [&](std::size_t record) { workload->convert(record); }));
        keepLeast(times.copies, timeInArena(arena, records, copy));
        keepLeast(times.bytes, timeOf([&] { bytes.copy(); }));
        keepLeast(times.plain, timeOf([&] {
                      for (std::size_t record = 0; record < records; ++record) {
                          workload->convertPlainly(record);
                      }
                  }));
    }
    report(state, times, records);
    state.counters["bytes"] = bytes.average();
}

void compareExpressions(benchmark::State& state, MakeTree makeTree, std::size_t nodes,
                        unsigned dictionaries) {
    compare(state, [&] { return std::make_unique<Expressions>(makeTree, nodes, dictionaries); });
}

void compareCompiledChanges(benchmark::State& state) {
    compare(state, [] { return std::make_unique<CompiledChanges>(); });
}

/// Branching changes what a conversion has made: it works on copies of that, a few at a time, whose making is
/// not measured.
class Branching {
public:
    Branching() {
        for (std::size_t record = 0; record < m_workload.records(); ++record) {
            m_outputs.push_back(copyOutput(m_workload.output(record)));
            branch(*m_outputs.back());
            plain::Expression plainly = plainCopy(record);
            plain::branch(plainly, m_workload.plainContext());
            if (describeOutput(*m_outputs.back()) != plain::describe(plainly)) {
                throw std::runtime_error("the programs disagree about branches");
            }
        }
    }
    ~Branching() {
        for (QueltInMap* const output : m_outputs) {
            QueltInDeleteWithObjects(output);
        }
    }
    Branching(const Branching&) = delete;
    Branching& operator=(const Branching&) = delete;

    [[nodiscard]] std::size_t records() const { return m_outputs.size(); }
    void copyBranched(std::size_t record) const { benchmark::DoNotOptimize(copyOutput(*m_outputs[record])); }

    [[nodiscard]] Clock::duration timeBranching(QueltInArena& arena) const {
        return timeOfAll([&](std::size_t begin, std::size_t end) {
            const QueltInArenaScope scope(arena);
            std::vector<QueltInMap*> copies;
            for (std::size_t record = begin; record < end; ++record) {
                copies.push_back(copyOutput(m_workload.output(record)));
            }
            const Clock::duration time = timeOf([&] {
                for (QueltInMap* const copy : copies) {
                    branch(*copy);
                }
            });
            arena.reset();
            return time;
        });
    }
    [[nodiscard]] Clock::duration timePlainBranching() const {
        return timeOfAll([&](std::size_t begin, std::size_t end) {
            std::vector<plain::Expression> copies;
            for (std::size_t record = begin; record < end; ++record) {
                copies.push_back(plainCopy(record));
            }
            return timeOf([&] {
                for (plain::Expression& copy : copies) {
                    plain::branch(copy, m_workload.plainContext());
                }
            });
        });
    }

private:
    /// The sum of what `timeOfGroup` says of all records, some at a time.
    template <class TimeOfGroup>
    [[nodiscard]] Clock::duration timeOfAll(const TimeOfGroup& timeOfGroup) const {
        constexpr std::size_t size = 50;
        Clock::duration sum{};
        for (std::size_t begin = 0; begin < records(); begin += size) {
            sum += timeOfGroup(begin, std::min(begin + size, records()));
        }
        return sum;
    }
    [[nodiscard]] plain::Expression plainCopy(std::size_t record) const {
        const plain::Expression& original = m_workload.plainOutput(record);
        plain::Expression copy;
        copy.history = plain::clone(*original.history);
        for (const auto& [name, criterion] : original.criteria) {
            copy.criteria.emplace(name, plain::clone(*criterion));
        }
        return copy;
    }
    void branch(QueltInMap& output) const {
        if (QueltEeTarselMigrationServices::ConvertFromFlatSeriesExprToBranchingExpr(
                m_workload.product().context(), output) < 0) {
            throw std::runtime_error("branching failed");
        }
    }

    Expressions m_workload{makeForty, 40, 3};
    std::vector<QueltInMap*> m_outputs; // branched, with their objects
};

void compareBranching(benchmark::State& state) {
    const Branching branching;
    QueltInArena arena;
    const auto copy = [&](std::size_t record) { branching.copyBranched(record); };
    Bytes bytes = bytesOf(arena, branching.records(), copy);
    Times times;
    for ([[maybe_unused]] const auto iteration : state) {
        keepLeast(times.conversion, branching.timeBranching(arena));
        keepLeast(times.copies, timeInArena(arena, branching.records(), copy));
        keepLeast(times.bytes, timeOf([&] { bytes.copy(); }));
        keepLeast(times.plain, branching.timePlainBranching());
    }
    report(state, times, branching.records());
    state.counters["bytes"] = bytes.average();
}

BENCHMARK_CAPTURE(compareExpressions, W1_eight_options, makeOptions, 9, 3)->Iterations(40);
BENCHMARK_CAPTURE(compareExpressions, W2_forty_nodes, makeForty, 40, 3)->Iterations(40);
BENCHMARK_CAPTURE(compareExpressions, W3_wide, makeWide, 2001, 2)->Iterations(40);
BENCHMARK_CAPTURE(compareExpressions, W4_deep, makeChain, 1001, 2)->Iterations(40);
BENCHMARK_CAPTURE(compareExpressions, W5_list, makeList, 13, 3)->Iterations(40);
BENCHMARK(compareCompiledChanges)->Name("compareCompiledChanges/W6_compiled_changes")->Iterations(40);
BENCHMARK(compareBranching)->Name("compareBranching/W7_branching")->Iterations(40);

} // namespace

} // namespace quelt::bench
