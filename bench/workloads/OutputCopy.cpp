#include "workloads/OutputCopy.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeNode.h"
#include "infrastructure/QueltInMap.h"

namespace quelt::bench {

namespace {

QueltEeNodeRef* copyPart(const QueltEeNodeRef* part) {
    return part != nullptr ? part->getNode()->clone() : nullptr;
}

QueltEeExpression* copyFilter(const QueltEeFilterExpression& filter) {
    auto* const copy = new QueltEeFilterExpression(filter.getDictionary(), filter.getSpecList()->clone());
    copy->setListMode(filter.getListMode());
    return copy;
}

QueltEeExpression* copyEffectivity(const QueltEeEffectivityExpression& expression) {
    auto* const copy = new QueltEeEffectivityExpression;
    if (expression.getGlobalCriteria() != nullptr) {
        copy->setGlobalCriteria(copyPart(expression.getGlobalCriteria()));
    }
    for (const auto& [dictionary, criteria] : expression.getModelCriteria()) {
        QueltEeNodeRef* inherited = copyPart(criteria->getInherited());
        QueltEeNodeRef* own = copyPart(criteria->getOwn());
        copy->setModelCriteria(*dictionary, new QueltEeMultiModelExpression::ModelCriteria(&inherited, &own));
    }
    for (const QueltEeExpressionOperation* const operation : expression.getOperations()) {
        QueltInObject* effectivity = operation->getObject();
        copy->addOperation(operation->m_kind, effectivity);
    }
    return copy;
}

} // namespace

QueltInMap* copyOutput(const QueltInMap& map) {
    auto* const copy = new QueltInMap(map.getKeyType(), map.getValueType(), 3, 0.0F);
    auto entries = map.cBegin();
    while (const QueltInMapEntry* const entry = entries.GetEntryGoToNext()) {
        const auto* const filter = QueltEeFilterExpression::cast(entry->value);
        copy->Put(*entry->key, filter != nullptr
                                   ? *copyFilter(*filter)
                                   : *copyEffectivity(*QueltEeEffectivityExpression::cast(entry->value)));
    }
    return copy;
}

std::string describeOutput(const QueltInMap& map) {
    std::string text;
    auto entries = map.cBegin();
    while (const QueltInMapEntry* const entry = entries.GetEntryGoToNext()) {
        text += entry->key->toString().view();
        text += ": ";
        text += entry->value->toString().view();
        text += '\n';
    }
    return text;
}

} // namespace quelt::bench
