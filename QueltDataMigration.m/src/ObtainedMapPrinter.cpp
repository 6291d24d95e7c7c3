#include "ObtainedMapPrinter.h"

#include "expression/QueltEeMultiModelExpression.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"

namespace quelt {

long printObtainedMap(const MigrationTrace& trace, const QueltInMap& map) {
    trace.inform("Obtained map : ");
    auto entries = map.cBegin();
    while (const QueltInMapEntry* const entry = entries.GetEntryGoToNext()) {
        if (entry->key == nullptr) {
            return trace.fail("ERROR");
        }
        const auto* const domain = QueltInIntHolder::cast(entry->key);
        if (domain == nullptr) {
            return trace.fail("ERROR : error");
        }
        trace.inform("Domain ID : ", domain->m_value);
        if (entry->value == nullptr) {
            return trace.fail("ERROR");
        }
        trace.inform("MultiModelExpression : ");
        const auto* const expression = QueltEeMultiModelExpression::cast(entry->value);
        if (expression == nullptr) {
            return trace.fail("ERROR : error");
        }
        trace.inform(expression->toString().ConvertToChar());
    }
    trace.inform("End print");
    return S_OK;
}

} // namespace quelt
