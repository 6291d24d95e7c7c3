// Uses the migration module as another project does: builds an expression, converts it, looks at the result.

#include "QueltEeTarselMigrationServices.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"

#include <cstdio>
#include <memory>
#include <string>

namespace {

constexpr unsigned int s_evolutionAndVariants = 2;

QueltInGuid guidOf(const char* text) {
    QueltInGuid guid;
    return QueltInGuid::parse(text, guid) >= 0 ? guid : QueltInGuid();
}

std::string converted(const QueltEeGenericExpression& expression, const QueltEeExpressionContext& context) {
    QueltInMap* map = nullptr;
    const long result =
        QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(expression, context, 0, map, nullptr);
    std::string text = "failed";
    if (result >= 0 && map->GetLength() == 1) {
        // A cast between classes of the core, done here, with an object that the module made.
        const auto* const effectivity =
            QueltEeEffectivityExpression::cast(map->Get(QueltInIntHolder(s_evolutionAndVariants)));
        text = effectivity != nullptr ? effectivity->toString().ConvertToChar() : "of another class";
    }
    QueltInDeleteWithObjects(map);
    return text;
}

} // namespace

int main() {
    QueltEeModelDico truck("Truck", guidOf("0b6e0000-0000-4000-8000-000000000001"));
    auto* const engine = new QueltEeCatOptionVar("Engine", guidOf("0b6e0000-0000-4000-8000-000000000002"));
    if (truck.addVariable(engine) < 0) {
        return 1;
    }
    engine->addValue("V6");
    const auto big = engine->addValue("V8");
    QueltEeExpressionContext context;
    QueltEeModelDico* dictionary = &truck;
    if (context.AddModelDico(dictionary, 0) < 0) {
        return 1;
    }

    auto effectivity = std::make_unique<QueltEeOptionEff>(engine);
    effectivity->addValue(big);
    const QueltEeGenericExpression expression((new QueltEeVarEffLeaf(effectivity.release()))->getNodeRef());
    const std::string text = converted(expression, context);
    std::printf("%s\n", text.c_str());
    return text == "effectivity(Truck: own Engine in {V8})" ? 0 : 1;
}
