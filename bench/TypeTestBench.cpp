#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeVarEff.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

// A type test against the comparison of an integer tag, over objects of four classes, shuffled and grouped by
// class. The stream is long enough that the branch predictor does not learn the answers.

namespace {

constexpr std::size_t s_objects = 40000;

struct Tagged {
    int tag;
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

void typeTest(benchmark::State& state) {
    std::vector<std::unique_ptr<QueltEeVarEff>> objects;
    for (const int kind : makeKinds(state.range(0) != 0)) {
        objects.push_back(makeEffectivity(kind));
    }
    for ([[maybe_unused]] const auto iteration : state) {
        int found = 0;
        for (const auto& object : objects) {
            found += QueltEeOptionEff::isObjectOfThisType(*object);
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(s_objects));
}
BENCHMARK(typeTest)->ArgName("grouped")->Arg(0)->Arg(1);

void integerTag(benchmark::State& state) {
    std::vector<std::unique_ptr<Tagged>> objects;
    for (const int kind : makeKinds(state.range(0) != 0)) {
        objects.push_back(std::make_unique<Tagged>(Tagged{kind}));
    }
    for ([[maybe_unused]] const auto iteration : state) {
        int found = 0;
        for (const auto& object : objects) {
            found += object->tag == 1 ? 1 : 0;
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(s_objects));
}
BENCHMARK(integerTag)->ArgName("grouped")->Arg(0)->Arg(1);

} // namespace
