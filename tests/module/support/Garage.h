#pragma once

#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeEffectivity.h"
#include "expression/QueltEeExpressionContext.h"
#include "module/support/Guids.h"

namespace quelt::test {

/// Two dictionaries, Truck and Van, with what the tests of the module need of them. The context is the
/// caller's choice, so that a double can stand for it.
template <class Context = QueltEeExpressionContext>
struct Garage {
    Garage() {
        engine->addValue("V6");
        engine->addValue("V8");
        package->addValue("Sport");
        unit->addRevision("2010", 5);
        unit->addRevision("2012", 7);
        truck->addVariable(engine);
        truck->addVariable(package);
        truck->addVariable(unit);
        truck->addVariable(line);
        context.AddModelDico(truck, 1);
        context.AddModelDico(van, 1);
    }

    QueltEeModelDico* truck = new QueltEeModelDico("Truck", guidOf(1));
    QueltEeModelDico* van = new QueltEeModelDico("Van", guidOf(2));
    QueltEeCatOptionVar* engine = new QueltEeCatOptionVar("Engine", guidOf(3));
    QueltEeSelectionVar* package = new QueltEeSelectionVar("Package", guidOf(4));
    QueltEeSerialVar* unit =
        new QueltEeSerialVar("Unit", guidOf(5), QueltEeSerialVar::SerialExternalType::productSeries);
    QueltEeTreeSeriesVar* line = new QueltEeTreeSeriesVar("Line", guidOf(6), 18);
    QueltEePredefEff change{"ECO-1", guidOf(7)};
    Context context;
};

} // namespace quelt::test
