#include "QueltEeTarselMigrationServices.h"

#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInMemory.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

// One specification list of twelve criteria: converted, and, for comparison, copied, with an arena and on the
// heap.

namespace {

QueltInGuid makeGuid(unsigned char number) {
    QueltInGuid::Bytes bytes{};
    bytes.back() = number;
    return QueltInGuid(bytes);
}

/// A dictionary with ten options and a series.
struct Product {
    Product() {
        for (unsigned char i = 0; i < 10; ++i) {
            auto* const option = new QueltEeCatOptionVar("Option" + std::to_string(i), makeGuid(i));
            option->addValue("yes");
            option->addValue("no");
            options.push_back(option);
            truck->addVariable(option);
        }
        for (int year = 1990; year < 2030; ++year) {
            unit->addRevision(std::to_string(year), static_cast<unsigned int>(year - 1989) * 10);
        }
        truck->addVariable(unit);
        context.AddModelDico(truck, 1);
        context.AddModelDico(van, 1);
    }

    /// Ten options, a series with three intervals, a date.
    [[nodiscard]] QueltQmSpecList* makeList() const {
        auto* const list = new QueltQmSpecList;
        for (const QueltEeCatOptionVar* const option : options) {
            auto* const effectivity = new QueltEeOptionEff(option);
            effectivity->addValue(1);
            QueltEeVarEff* criterion = effectivity;
            list->addVarEff(criterion);
        }
        auto* const serial = new QueltEeSerialEff(unit);
        serial->addInterval({2000, 2005, 1, 1});
        serial->addInterval({2008, 2010, 1, 1});
        serial->addInterval({2020, 2000000000, 1, 1});
        QueltEeVarEff* criterion = serial;
        list->addVarEff(criterion);
        auto* const date = new QueltEeDateEff;
        date->addInterval({0, 1000000});
        criterion = date;
        list->addVarEff(criterion);
        return list;
    }

    std::vector<QueltEeCatOptionVar*> options;
    QueltEeSerialVar* unit =
        new QueltEeSerialVar("Unit", makeGuid(50), QueltEeSerialVar::SerialExternalType::productSeries);
    QueltEeModelDico* truck = new QueltEeModelDico("Truck", makeGuid(100));
    QueltEeModelDico* van = new QueltEeModelDico("Van", makeGuid(101));
    QueltEeExpressionContext context;
};

void convertInArena(benchmark::State& state) {
    const Product product;
    const QueltEeGenericExpression expression(product.makeList(), QueltEeGenericExpression::ListMode::all);
    QueltInArena arena;
    for ([[maybe_unused]] const auto iteration : state) {
        const QueltInArenaScope scope(arena);
        QueltInMap* map = nullptr;
        benchmark::DoNotOptimize(QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
            expression, product.context, 0, map, nullptr));
        arena.reset();
    }
}
BENCHMARK(convertInArena);

void copyInArena(benchmark::State& state) {
    const Product product;
    const QueltQmSpecList* const list = product.makeList();
    QueltInArena arena;
    for ([[maybe_unused]] const auto iteration : state) {
        const QueltInArenaScope scope(arena);
        benchmark::DoNotOptimize(list->clone());
        arena.reset();
    }
    delete list;
}
BENCHMARK(copyInArena);

void convertOnHeap(benchmark::State& state) {
    const Product product;
    const QueltEeGenericExpression expression(product.makeList(), QueltEeGenericExpression::ListMode::all);
    for ([[maybe_unused]] const auto iteration : state) {
        QueltInMap* map = nullptr;
        benchmark::DoNotOptimize(QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
            expression, product.context, 0, map, nullptr));
        QueltInDeleteWithObjects(map);
    }
}
BENCHMARK(convertOnHeap);

void copyOnHeap(benchmark::State& state) {
    const Product product;
    const QueltQmSpecList* const list = product.makeList();
    for ([[maybe_unused]] const auto iteration : state) {
        const QueltQmSpecList* const copy = list->clone();
        benchmark::DoNotOptimize(copy);
        delete copy;
    }
    delete list;
}
BENCHMARK(copyOnHeap);

} // namespace
