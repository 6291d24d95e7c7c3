/// Converts one specification list, the engine V8 in the units 10 to 20, and prints what it becomes.

#include "QueltEeTarselMigrationServices.h"
#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInTraceSink.h"

#include <iostream>

namespace {

QueltInGuid guidOf(std::string_view text) {
    QueltInGuid guid;
    if (QueltInGuid::parse(text, guid) < 0) {
        std::cerr << text << " is not a GUID\n";
    }
    return guid;
}

/// The features of the product: an option and a series in one dictionary.
struct Catalogue {
    QueltEeExpressionContext context;
    QueltEeCatOptionVar* engine =
        new QueltEeCatOptionVar("Engine", guidOf("0b6e0000-0000-4000-8000-000000000002"));
    QueltEeSerialVar* unit = new QueltEeSerialVar("Unit", guidOf("0b6e0000-0000-4000-8000-000000000003"),
                                                  QueltEeSerialVar::SerialExternalType::unitCounter);

    Catalogue() {
        engine->addValue("V6");
        engine->addValue("V8");
        auto* truck = new QueltEeModelDico("Truck", guidOf("0b6e0000-0000-4000-8000-000000000001"));
        truck->addVariable(engine); // the dictionary's from here on
        truck->addVariable(unit);
        context.AddModelDico(truck, 1); // the context's from here on
    }
};

/// The list, in the memory that is current; the caller owns it.
QueltQmSpecList* makeList(const Catalogue& catalogue) {
    auto* const engine = new QueltEeOptionEff(catalogue.engine);
    engine->addValue(*catalogue.engine->findValue("V8"));
    auto* const unit = new QueltEeSerialEff(catalogue.unit);
    unit->addInterval({10, 20, 1, 1});

    auto* const list = new QueltQmSpecList;
    for (QueltEeVarEff* criterion :
         {static_cast<QueltEeVarEff*>(engine), static_cast<QueltEeVarEff*>(unit)}) {
        list->addVarEff(criterion); // the list's from here on
    }
    return list;
}

/// Prints the answer to one expression; true when it was converted.
bool convert(const QueltEeGenericExpression& expression, const QueltEeExpressionContext& context) {
    QueltInTraceCapture trace(QueltInTraceCapture::Wanted::unconditionalLines);
    QueltInMap* converted = nullptr;
    const long result = QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(
        expression, context, /*change=*/0, converted, /*basicEff=*/nullptr);
    for (const QueltInTraceLine& line : trace.lines()) {
        std::cout << line.text << '\n'; // why it failed
    }
    QueltInMap::const_iterator walk = converted->cBegin();
    while (const QueltInMapEntry* const entry = walk.GetEntryGoToNext()) {
        std::cout << entry->key->toString().view() << ": " << entry->value->toString().view() << '\n';
    }
    return result >= 0;
}

} // namespace

int main() {
    const Catalogue catalogue; // on the heap, it outlives the arena

    QueltInArena arena;
    const QueltInArenaScope inArena(arena);
    const QueltEeGenericExpression expression(makeList(catalogue), QueltEeGenericExpression::ListMode::all);
    const bool isConverted = convert(expression, catalogue.context);
    return isConverted ? 0 : 1; // what the conversion made goes with the arena
}
