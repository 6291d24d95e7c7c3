#include "QueltEeTarselMigrationServices.h"

#include "effectivity/QueltEeEffectivity.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInTraceSink.h"
#include "workloads/Clock.h"
#include "workloads/Product.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <vector>

// How the time of a conversion grows with the number of nodes: the exponent over the whole range stands
// beside each series of measurements, as "exponent".

namespace quelt::bench {

namespace {

/// What trees are made of.
class Material {
public:
    Material() {
        QueltEeExpression* content = new QueltEeGenericExpression((new QueltEeTrue)->getNodeRef());
        constant.setExpr(content);
    }
    [[nodiscard]] QueltEeNode* makeOption() { return new QueltEeVarEffLeaf(product.makeOption(m_random)); }
    [[nodiscard]] QueltEeNode* makeDate() { return new QueltEeVarEffLeaf(Product::makeDate(m_random)); }

    Product product{3};
    /// Its content is TRUE.
    QueltEeBasicEff constant{"Constant", makeGuid(60)};

private:
    Random m_random;
};

template <class Group>
QueltEeGroupOp* makeGroup() {
    return new Group;
}

/// An AND over leaves: `nodes` of them, and the AND.
QueltEeNodeRef* makeWideRoot(Material& material, std::int64_t nodes) {
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (std::int64_t i = 1; i < nodes; ++i) {
        root->addChild(*material.makeOption());
    }
    return root->getNodeRef();
}

/// An AND and an OR in turn, each over a leaf and the next, `depth` deep.
QueltEeNode* makeOneChain(Material& material, std::int64_t nodes) {
    QueltEeNode* below = material.makeOption();
    for (std::int64_t made = 1; made + 2 <= nodes; made += 2) {
        QueltEeGroupOp* const group = made % 4 == 1 ? makeGroup<QueltEeAndOp>() : makeGroup<QueltEeOrOp>();
        group->addChild(*material.makeOption());
        group->addChild(*below);
        below = group;
    }
    return below;
}

/// Chains of depth 500, side by side below an AND.
QueltEeNodeRef* makeChains(Material& material, std::int64_t nodes) {
    constexpr std::int64_t chain = 1000;
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (std::int64_t left = nodes - 1; left > 0; left -= chain) {
        root->addChild(*makeOneChain(material, std::min(left, chain)));
    }
    return root->getNodeRef();
}

/// The same chains, with a date at the end of the AND: every chain is classified, collected and joined on its
/// own.
QueltEeNodeRef* makeChainsWithDate(Material& material, std::int64_t nodes) {
    QueltEeNodeRef* const root = makeChains(material, nodes - 1);
    QueltEeGroupOp::cast(root->getNode())->addChild(*material.makeDate());
    return root;
}

/// An AND over leaves and, nested at the end of each, the next with its date, `depth` deep: what is
/// classified and collected again at every level.
QueltEeNodeRef* makeNestedDates(Material& material, std::int64_t nodes) {
    constexpr std::int64_t chain = 1000;
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (std::int64_t left = nodes - 1; left > 0; left -= chain) {
        QueltEeNode* below = material.makeDate();
        for (std::int64_t made = 1; made + 2 <= std::min(left, chain); made += 2) {
            QueltEeGroupOp* const group = makeGroup<QueltEeAndOp>();
            group->addChild(*material.makeOption());
            group->addChild(*below);
            below = group;
        }
        root->addChild(*below);
    }
    return root->getNodeRef();
}

/// An AND over an option and inherited effectivities whose content is TRUE, which are taken out of it and put
/// back.
QueltEeNodeRef* makeInherited(Material& material, std::int64_t nodes) {
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (std::int64_t i = 2; i < nodes; ++i) {
        root->addChild(*new QueltEeEffLeaf(&material.constant, nullptr));
    }
    root->addChild(*material.makeOption());
    return root->getNodeRef();
}

/// Converts as the host does: the lines that are written whether or not anybody traces are kept for the
/// answer, in a capture that serves one conversion after the other.
class Converter {
public:
    QueltInMap* convert(Material& material, const Tree& tree) {
        m_capture.clear();
        QueltInMap* map = nullptr;
        benchmark::DoNotOptimize(QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
            tree, material.product.context(), 0, map, nullptr));
        benchmark::DoNotOptimize(m_capture.lines().data());
        if (map == nullptr || map->GetLength() == 0) {
            std::abort(); // a measurement of failures is worth nothing
        }
        return map;
    }

private:
    QueltInTraceCapture m_capture{QueltInTraceCapture::Wanted::reports};
};

/// Fits time = c * nodes ^ exponent through the measurements of one series, the least one of each size.
class Growth {
public:
    /// Notes a measurement and reports the exponent over all sizes so far.
    void note(benchmark::State& state, Clock::duration time) {
        const auto nodes = static_cast<double>(state.range(0));
        const double each = time.count() / static_cast<double>(state.iterations());
        const auto [place, isNew] = m_times.try_emplace(nodes, each);
        place->second = std::min(place->second, each);
        state.SetItemsProcessed(state.iterations() * state.range(0));
        state.SetComplexityN(state.range(0));
        if (m_times.size() > 1) {
            state.counters["exponent"] = exponent();
        }
    }

private:
    [[nodiscard]] double exponent() const {
        double x = 0;
        double y = 0;
        double xx = 0;
        double xy = 0;
        for (const auto& [nodes, time] : m_times) {
            x += std::log(nodes);
            y += std::log(time);
            xx += std::log(nodes) * std::log(nodes);
            xy += std::log(nodes) * std::log(time);
        }
        const auto count = static_cast<double>(m_times.size());
        return (count * xy - x * y) / (count * xx - x * x);
    }

    std::map<double, double> m_times;
};

using MakeRoot = QueltEeNodeRef* (*)(Material&, std::int64_t);

void convertOne(benchmark::State& state, MakeRoot makeRoot, Growth& growth) {
    Converter converter;
    Material material;
    const Tree tree(makeRoot(material, state.range(0)));
    QueltInArena arena;
    const Clock::duration start = Clock::now();
    for ([[maybe_unused]] const auto iteration : state) {
        const QueltInArenaScope scope(arena);
        converter.convert(material, tree);
        arena.reset();
    }
    growth.note(state, Clock::now() - start);
}

template <MakeRoot makeRoot>
void convertTree(benchmark::State& state) {
    static Growth growth;
    convertOne(state, makeRoot, growth);
}

/// Trees of ten nodes, one conversion after the other, until there are as many nodes as asked for.
void convertMany(benchmark::State& state) {
    static Growth growth;
    Converter converter;
    Material material;
    std::vector<std::unique_ptr<Tree>> trees;
    for (std::int64_t nodes = 0; nodes < state.range(0); nodes += 10) {
        trees.push_back(std::make_unique<Tree>(makeWideRoot(material, 10)));
    }
    QueltInArena arena;
    const Clock::duration start = Clock::now();
    for ([[maybe_unused]] const auto iteration : state) {
        for (const auto& tree : trees) {
            const QueltInArenaScope scope(arena);
            converter.convert(material, *tree);
            arena.reset();
        }
    }
    growth.note(state, Clock::now() - start);
}

void sizes(benchmark::internal::Benchmark* series) {
    series->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);
}
BENCHMARK(convertTree<makeWideRoot>)->Apply(sizes);
BENCHMARK(convertTree<makeChains>)->Apply(sizes);
BENCHMARK(convertTree<makeChainsWithDate>)->Apply(sizes);
BENCHMARK(convertTree<makeNestedDates>)->Apply(sizes);
BENCHMARK(convertTree<makeInherited>)->Apply(sizes);
BENCHMARK(convertMany)->Apply(sizes);

} // namespace

} // namespace quelt::bench
