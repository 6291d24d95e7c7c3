#include "QueltEeTarselMigrationServices.h"

#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInTraceSink.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

// Trees. First how the time of a conversion grows with the number of nodes: the exponent over the whole range
// stands beside each series of measurements, as "exponent". Then what a conversion of 40 nodes costs beside
// copying its output.

namespace {

QueltInGuid makeGuid(unsigned int number) {
    QueltInGuid::Bytes bytes{};
    bytes.back() = static_cast<unsigned char>(number);
    return QueltInGuid(bytes);
}

/// Three dictionaries that hold the same ten options; the first holds two series besides, a product series
/// and a counter.
struct Product {
    Product() {
        for (unsigned int number = 0; number < 3; ++number) {
            auto* dictionary =
                new QueltEeModelDico("Dictionary" + std::to_string(number), makeGuid(100 + number));
            for (unsigned int i = 0; i < 10; ++i) {
                auto* const option = new QueltEeCatOptionVar("Option" + std::to_string(i), makeGuid(i));
                option->addValue("yes");
                option->addValue("no");
                if (number == 0) {
                    options.push_back(option);
                }
                dictionary->addVariable(option);
            }
            if (number == 0) {
                dictionary->addVariable(unit);
            }
            context.AddModelDico(dictionary, 1);
        }
        QueltEeExpression* content = new QueltEeGenericExpression((new QueltEeTrue)->getNodeRef());
        constant->setExpr(content);
        for (int year = 1990; year < 2030; ++year) {
            unit->addRevision(std::to_string(year), static_cast<unsigned int>(year - 1989) * 10);
        }
    }

    [[nodiscard]] QueltEeNode* makeOption(unsigned int number) const {
        auto* const effectivity = new QueltEeOptionEff(options[number % options.size()]);
        effectivity->addValue(number % 2);
        return new QueltEeVarEffLeaf(effectivity);
    }
    [[nodiscard]] QueltEeNode* makeSerial(int first) const {
        auto* const effectivity = new QueltEeSerialEff(unit);
        effectivity->addInterval({first, first + 3, 1, 1});
        effectivity->addInterval({first + 5, first + 7, 1, 1});
        effectivity->addInterval({first + 10, 2000000000, 1, 1});
        return new QueltEeVarEffLeaf(effectivity);
    }
    [[nodiscard]] static QueltEeNode* makeDate(std::int64_t from) {
        auto* const effectivity = new QueltEeDateEff;
        effectivity->addInterval({from, from + 1000000});
        return new QueltEeVarEffLeaf(effectivity);
    }

    std::vector<QueltEeCatOptionVar*> options;
    QueltEeSerialVar* unit =
        new QueltEeSerialVar("Unit", makeGuid(50), QueltEeSerialVar::SerialExternalType::productSeries);
    std::unique_ptr<QueltEeBasicEff> constant =
        std::make_unique<QueltEeBasicEff>("Constant", makeGuid(60)); // its content is TRUE
    QueltEeExpressionContext context;
};

using Tree = QueltEeGenericExpression;

template <class Group>
QueltEeGroupOp* makeGroup() {
    return new Group;
}

/// An AND over leaves: `nodes` of them, and the AND.
QueltEeNodeRef* makeWide(const Product& product, std::int64_t nodes) {
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (std::int64_t i = 1; i < nodes; ++i) {
        root->addChild(*product.makeOption(static_cast<unsigned int>(i)));
    }
    return root->getNodeRef();
}

/// An AND and an OR in turn, each over a leaf and the next, `depth` deep.
QueltEeNode* makeChain(const Product& product, std::int64_t nodes) {
    QueltEeNode* below = product.makeOption(0);
    for (std::int64_t made = 1; made + 2 <= nodes; made += 2) {
        QueltEeGroupOp* const group = made % 4 == 1 ? makeGroup<QueltEeAndOp>() : makeGroup<QueltEeOrOp>();
        group->addChild(*product.makeOption(static_cast<unsigned int>(made)));
        group->addChild(*below);
        below = group;
    }
    return below;
}

/// Chains of depth 500, side by side below an AND.
QueltEeNodeRef* makeChains(const Product& product, std::int64_t nodes) {
    constexpr std::int64_t chain = 1000;
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (std::int64_t left = nodes - 1; left > 0; left -= chain) {
        root->addChild(*makeChain(product, std::min(left, chain)));
    }
    return root->getNodeRef();
}

/// The same chains, with a date at the end of the AND: every chain is classified, collected and joined on its
/// own.
QueltEeNodeRef* makeChainsWithDate(const Product& product, std::int64_t nodes) {
    QueltEeNodeRef* const root = makeChains(product, nodes - 1);
    QueltEeGroupOp::cast(root->getNode())->addChild(*Product::makeDate(0));
    return root;
}

/// An AND over leaves and, nested at the end of each, the next with its date, `depth` deep: what is
/// classified and collected again at every level.
QueltEeNodeRef* makeNestedDates(const Product& product, std::int64_t nodes) {
    constexpr std::int64_t chain = 1000;
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (std::int64_t left = nodes - 1; left > 0; left -= chain) {
        QueltEeNode* below = Product::makeDate(left);
        for (std::int64_t made = 1; made + 2 <= std::min(left, chain); made += 2) {
            QueltEeGroupOp* const group = makeGroup<QueltEeAndOp>();
            group->addChild(*product.makeOption(static_cast<unsigned int>(made)));
            group->addChild(*below);
            below = group;
        }
        root->addChild(*below);
    }
    return root->getNodeRef();
}

/// An AND over an option and inherited effectivities whose content is TRUE, which are taken out of it and put
/// back.
QueltEeNodeRef* makeInherited(const Product& product, std::int64_t nodes) {
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (std::int64_t i = 2; i < nodes; ++i) {
        root->addChild(*new QueltEeEffLeaf(product.constant.get(), nullptr));
    }
    root->addChild(*product.makeOption(0));
    return root->getNodeRef();
}

/// Converts as the host does: the lines that are written whether or not anybody traces are kept for the
/// answer, in a capture that serves one conversion after the other.
class Converter {
public:
    QueltInMap* convert(const Product& product, const Tree& tree) {
        m_capture.clear();
        QueltInMap* map = nullptr;
        benchmark::DoNotOptimize(QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
            tree, product.context, 0, map, nullptr));
        benchmark::DoNotOptimize(m_capture.lines().data());
        if (map == nullptr || map->GetLength() == 0) {
            std::abort(); // a measurement of failures is worth nothing
        }
        return map;
    }

private:
    QueltInTraceCapture m_capture{QueltInTraceCapture::Wanted::unconditionalLines};
};

/// Fits time = c * nodes ^ exponent through the measurements of one series, the last one of each size.
class Growth {
public:
    /// Notes a measurement and reports the exponent over all sizes so far.
    void note(benchmark::State& state, std::chrono::duration<double> time) {
        const auto nodes = static_cast<double>(state.range(0));
        m_times[nodes] = time.count() / static_cast<double>(state.iterations());
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

/// The processor's time: on a shared machine the wall clock says more about the neighbours.
struct Clock {
    using duration = std::chrono::duration<double>;
    static duration now() { return duration(static_cast<double>(std::clock()) / CLOCKS_PER_SEC); }
};
using MakeTree = QueltEeNodeRef* (*)(const Product&, std::int64_t);

void convertOne(benchmark::State& state, MakeTree makeTree, Growth& growth) {
    Converter converter;
    const Product product;
    const Tree tree(makeTree(product, state.range(0)));
    QueltInArena arena;
    const Clock::duration start = Clock::now();
    for ([[maybe_unused]] const auto iteration : state) {
        const QueltInArenaScope scope(arena);
        converter.convert(product, tree);
        arena.reset();
    }
    growth.note(state, Clock::now() - start);
}

template <MakeTree makeTree>
void convertTree(benchmark::State& state) {
    static Growth growth;
    convertOne(state, makeTree, growth);
}

/// Trees of ten nodes, one conversion after the other, until there are as many nodes as asked for.
void convertMany(benchmark::State& state) {
    static Growth growth;
    Converter converter;
    const Product product;
    std::vector<std::unique_ptr<Tree>> trees;
    for (std::int64_t nodes = 0; nodes < state.range(0); nodes += 10) {
        trees.push_back(std::make_unique<Tree>(makeWide(product, 10)));
    }
    QueltInArena arena;
    const Clock::duration start = Clock::now();
    for ([[maybe_unused]] const auto iteration : state) {
        for (const auto& tree : trees) {
            const QueltInArenaScope scope(arena);
            converter.convert(product, *tree);
            arena.reset();
        }
    }
    growth.note(state, Clock::now() - start);
}

void sizes(benchmark::internal::Benchmark* series) {
    series->RangeMultiplier(10)->Range(10, 100000)->Complexity(benchmark::oN);
}
BENCHMARK(convertTree<makeWide>)->Apply(sizes);
BENCHMARK(convertTree<makeChains>)->Apply(sizes);
BENCHMARK(convertTree<makeChainsWithDate>)->Apply(sizes);
BENCHMARK(convertTree<makeNestedDates>)->Apply(sizes);
BENCHMARK(convertTree<makeInherited>)->Apply(sizes);
BENCHMARK(convertMany)->Apply(sizes);

/// 40 nodes below an AND: options below ORs and a NOT, series with three intervals, two dates.
QueltEeNodeRef* makeForty(const Product& product, bool hasSeries) {
    QueltEeGroupOp* const root = makeGroup<QueltEeAndOp>();
    for (unsigned int group = 0; group < 5; ++group) {
        QueltEeGroupOp* const choice = makeGroup<QueltEeOrOp>();
        for (unsigned int i = 0; i < 5; ++i) {
            choice->addChild(*product.makeOption(group + i));
        }
        root->addChild(*choice);
    }
    auto* const negation = new QueltEeNotOp;
    negation->setChildRef(*product.makeOption(3)->getNodeRef());
    root->addChild(*negation);
    root->addChild(*product.makeOption(4));
    for (unsigned int i = 0; i < 4; ++i) {
        root->addChild(hasSeries ? *product.makeSerial(2000 + static_cast<int>(i)) : *product.makeOption(i));
    }
    root->addChild(*Product::makeDate(0));
    root->addChild(*Product::makeDate(5000000));
    return root->getNodeRef();
}

/// The parts of all expressions that a conversion has made.
std::vector<const QueltEeNode*> partsOf(const QueltInMap& map) {
    std::vector<const QueltEeNode*> parts;
    auto expressions = map.cBegin();
    while (expressions.IsEnd() == 0) {
        const auto* const expression = QueltEeMultiModelExpression::cast(expressions.GetValGoToNext());
        if (expression->getGlobalCriteria() != nullptr) {
            parts.push_back(expression->getGlobalCriteria()->getNode());
        }
        for (const auto& [dictionary, criteria] : expression->getModelCriteria()) {
            parts.push_back(criteria->getOwn()->getNode());
        }
    }
    return parts;
}

/// Runs `work` a thousand times, in an arena or on the heap, and returns how long that took.
template <class Work>
std::chrono::duration<double> timeOf(QueltInArena* arena, const Work& work) {
    const Clock::duration start = Clock::now();
    for (int i = 0; i < 1000; ++i) {
        if (arena != nullptr) {
            const QueltInArenaScope scope(*arena);
            work();
            arena->reset();
        } else {
            work();
        }
    }
    return Clock::now() - start;
}

/// Conversions and copies of their output, by turns, so that both see the same machine. "ratio" is the time
/// of the conversions in times of the copies; the least of each counts.
void compareWithCopies(benchmark::State& state, bool hasSeries, bool isInArena) {
    Converter converter;
    const Product product;
    const Tree tree(makeForty(product, hasSeries));
    QueltInMap* const map = converter.convert(product, tree);
    const std::vector<const QueltEeNode*> parts = partsOf(*map);
    QueltInArena arena;
    QueltInArena* const inside = isInArena ? &arena : nullptr;
    std::chrono::duration<double> conversion{1e9};
    std::chrono::duration<double> copies{1e9};
    for ([[maybe_unused]] const auto iteration : state) {
        conversion = std::min(conversion, timeOf(inside, [&] {
                                  QueltInMap* const output = converter.convert(product, tree);
                                  if (inside == nullptr) {
                                      QueltInDeleteWithObjects(output);
                                  }
                              }));
        copies = std::min(copies, timeOf(inside, [&] {
                              for (const QueltEeNode* const part : parts) {
                                  const QueltEeNodeRef* const copy = part->clone();
                                  benchmark::DoNotOptimize(copy);
                                  if (inside == nullptr) {
                                      delete copy;
                                  }
                              }
                          }));
    }
    state.counters["conversion_ns"] = conversion.count() * 1e6;
    state.counters["copies_ns"] = copies.count() * 1e6;
    state.counters["ratio"] = conversion / copies;
    state.counters["parts"] = static_cast<double>(parts.size());
    QueltInDeleteWithObjects(map);
}
BENCHMARK_CAPTURE(compareWithCopies, seriesInArena, true, true)->Iterations(60);
BENCHMARK_CAPTURE(compareWithCopies, seriesOnHeap, true, false)->Iterations(60);
BENCHMARK_CAPTURE(compareWithCopies, optionsInArena, false, true)->Iterations(60);
BENCHMARK_CAPTURE(compareWithCopies, optionsOnHeap, false, false)->Iterations(60);

} // namespace
