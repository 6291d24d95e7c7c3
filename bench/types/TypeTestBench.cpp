#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeVarEff.h"
#include "workloads/Clock.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <random>
#include <vector>

// A type test against the comparison of an integer tag, over objects of four classes, shuffled and grouped by
// class. The stream is long enough that the branch predictor does not learn the answers. Both run by turns,
// and the least time of each counts.

namespace quelt::bench {

namespace {

constexpr std::size_t s_objects = 40000;

/// As large as an effectivity, so that both streams take the same way through the caches.
struct Tagged {
    virtual ~Tagged() = default;
    int tag = 0;
    std::array<std::byte, sizeof(QueltEeOptionEff) - 2 * sizeof(void*)> rest{};
};

/// The class of the object at each place: `grouped` puts equal ones side by side.
std::vector<int> makeKinds(bool grouped) {
    std::vector<int> kinds(s_objects);
    std::mt19937 random(7);
    std::generate(kinds.begin(), kinds.end(), [&random] { return static_cast<int>(random() % 4); });
    if (grouped) {
        std::sort(kinds.begin(), kinds.end());
    }
    return kinds;
}

std::unique_ptr<QueltEeVarEff> makeEffectivity(int kind) {
    switch (kind) {
    case 0:
        return std::make_unique<QueltEeSerialEff>(nullptr);
    case 1:
        return std::make_unique<QueltEeOptionEff>(nullptr);
    case 2:
        return std::make_unique<QueltEeSelectionEff>(nullptr);
    default:
        return std::make_unique<QueltEeDateEff>();
    }
}

/// How long `isIt` takes for each object, a few times over.
template <class Objects, class IsIt>
Clock::duration timeOfTests(const Objects& objects, const IsIt& isIt) {
    return timeOf([&] {
        for (int round = 0; round < 5; ++round) {
            int found = 0;
            for (const auto& object : objects) {
                found += isIt(*object);
            }
            benchmark::DoNotOptimize(found);
        }
    });
}

void typeTest(benchmark::State& state, bool grouped) {
    std::vector<std::unique_ptr<QueltEeVarEff>> objects;
    std::vector<std::unique_ptr<Tagged>> tagged;
    for (const int kind : makeKinds(grouped)) {
        objects.push_back(makeEffectivity(kind));
        tagged.push_back(std::make_unique<Tagged>());
        tagged.back()->tag = kind;
    }
    Clock::duration tests{1e9};
    Clock::duration tags{1e9};
    for ([[maybe_unused]] const auto iteration : state) {
        tests = std::min(tests, timeOfTests(objects, [](const QueltEeVarEff& object) {
                             return QueltEeOptionEff::isObjectOfThisType(object);
                         }));
        tags =
            std::min(tags, timeOfTests(tagged, [](const Tagged& object) { return object.tag == 1 ? 1 : 0; }));
    }
    state.counters["type_test_ns"] = tests.count() * 1e9 / (5 * s_objects);
    state.counters["tag_ns"] = tags.count() * 1e9 / (5 * s_objects);
    state.counters["ratio"] = tests / tags;
}
BENCHMARK_CAPTURE(typeTest, random, false)->Iterations(100);
BENCHMARK_CAPTURE(typeTest, grouped, true)->Iterations(100);

} // namespace

} // namespace quelt::bench
