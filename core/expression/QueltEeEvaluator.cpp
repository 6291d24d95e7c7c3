#include "expression/QueltEeEvaluator.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeNode.h"
#include "expression/QueltEeTreeEvaluation.h"
#include "infrastructure/QueltInResult.h"

namespace {

using OperationKind = QueltEeExpressionOperation::OperationKind;

/// Brings results together until one decides.
class Tally {
public:
    /// All must hold, or one.
    explicit Tally(bool all) noexcept : m_all(all), m_holds(all) {}

    /// Takes one more result, which `evaluate(holds)` gives; false when there is nothing left to look at,
    /// because of a failure or because the result is certain.
    template <class Evaluate>
    bool add(Evaluate evaluate) {
        m_result = evaluate(m_holds);
        return m_result >= 0 && m_holds == m_all;
    }
    /// The result of all.
    long finish(bool& holds) const noexcept {
        if (m_result >= 0) {
            holds = m_holds;
        }
        return m_result;
    }

private:
    bool m_all;
    bool m_holds;
    long m_result = S_OK;
};

long evaluateNamed(const QueltEeEffectivity& effectivity, const QueltEeConfiguration& configuration,
                   bool& holds) {
    holds = configuration.holds(effectivity.getGuid());
    return S_OK;
}

long evaluateList(const QueltQmSpecList* list, bool all, const QueltEeConfiguration& configuration,
                  bool& holds) {
    Tally tally(all);
    bool goesOn = list != nullptr;
    if (!goesOn) {
        return tally.finish(holds);
    }
    QueltInMap::const_iterator effectivities = list->getVarEffs().cBegin();
    while (const QueltEeVarEff* const one =
               goesOn ? QueltEeVarEff::cast(effectivities.GetValGoToNext()) : nullptr) {
        goesOn =
            tally.add([&](bool& oneHolds) { return quelt::evaluateVarEff(*one, configuration, oneHolds); });
    }
    QueltInSet::const_iterator named = list->getNamedEffectivities().cBegin();
    while (const QueltEeEffectivity* const one =
               goesOn ? QueltEeEffectivity::cast(named.GetGoToNext()) : nullptr) {
        goesOn = tally.add([&](bool& oneHolds) { return evaluateNamed(*one, configuration, oneHolds); });
    }
    return tally.finish(holds);
}

/// What a part says that may be missing: then it restricts nothing.
long evaluatePart(const QueltEeNodeRef* part, const QueltEeConfiguration& configuration, bool& holds) {
    if (part == nullptr) {
        holds = true;
        return S_OK;
    }
    const QueltEeNode* const node = part->getNode();
    return node != nullptr ? quelt::evaluateTree(*node, configuration, holds) : E_INVALIDARG;
}

long evaluateGeneric(const QueltEeGenericExpression& expression, const QueltEeConfiguration& configuration,
                     bool& holds) {
    if (expression.IsList() == 0) {
        return evaluatePart(expression.GetNodeRef(), configuration, holds);
    }
    const QueltQmSpecList* list = nullptr;
    auto mode = QueltEeGenericExpression::ListMode::all;
    long result = expression.GetList(list);
    if (result >= 0) {
        result = expression.GetMode(mode);
    }
    if (result < 0) {
        return result;
    }
    return evaluateList(list, mode == QueltEeGenericExpression::ListMode::all, configuration, holds);
}

/// What is filed under `dictionary`.
long evaluateCriteria(const QueltEeMultiModelExpression& expression, const QueltEeModelDico& dictionary,
                      const QueltEeConfiguration& configuration, bool& holds) {
    const auto* const criteria = expression.findModelCriteria(dictionary);
    if (criteria == nullptr) {
        holds = expression.getModelCriteria().empty();
        return S_OK;
    }
    Tally tally(true);
    if (tally.add([&](bool& part) { return evaluatePart(criteria->getInherited(), configuration, part); })) {
        tally.add([&](bool& part) { return evaluatePart(criteria->getOwn(), configuration, part); });
    }
    return tally.finish(holds);
}

long evaluateOperations(const QueltEeEffectivityExpression& expression,
                        const QueltEeConfiguration& configuration, bool& holds) {
    bool allHold = true;
    bool hasAlternatives = false;
    bool alternativeHolds = false;
    for (const QueltEeExpressionOperation* const operation : expression.getOperations()) {
        const QueltEeEffectivity* const change = QueltEeEffectivity::cast(operation->getObject());
        if (change == nullptr) {
            return E_INVALIDARG;
        }
        const bool isThere = configuration.holds(change->getGuid());
        switch (operation->m_kind) {
        case OperationKind::remove:
            allHold = allHold && !isThere;
            break;
        case OperationKind::apply:
            allHold = allHold && isThere;
            break;
        case OperationKind::applyAlternative:
            hasAlternatives = true;
            alternativeHolds = alternativeHolds || isThere;
            break;
        default:
            return E_INVALIDARG;
        }
    }
    holds = allHold && (alternativeHolds || !hasAlternatives);
    return S_OK;
}

long evaluateMultiModel(const QueltEeMultiModelExpression& expression, const QueltEeModelDico* dictionary,
                        const QueltEeConfiguration& configuration, bool& holds) {
    Tally tally(true);
    bool goesOn = tally.add(
        [&](bool& part) { return evaluatePart(expression.getGlobalCriteria(), configuration, part); });
    if (goesOn && dictionary != nullptr) {
        goesOn = tally.add(
            [&](bool& part) { return evaluateCriteria(expression, *dictionary, configuration, part); });
    }
    const QueltEeEffectivityExpression* const effectivity = QueltEeEffectivityExpression::cast(&expression);
    if (goesOn && effectivity != nullptr) {
        tally.add([&](bool& part) { return evaluateOperations(*effectivity, configuration, part); });
    }
    return tally.finish(holds);
}

} // namespace

long QueltEeEvaluator::evaluate(const QueltEeNode& node, bool& holds) const {
    return quelt::evaluateTree(node, m_configuration, holds);
}

long QueltEeEvaluator::evaluate(const QueltEeExpression& expression, const QueltEeModelDico* dictionary,
                                bool& holds) const {
    if (const auto* const filter = QueltEeFilterExpression::cast(&expression)) {
        return evaluateList(filter->getSpecList(), filter->getListMode() == 0, m_configuration, holds);
    }
    if (const auto* const generic = QueltEeGenericExpression::cast(&expression)) {
        return evaluateGeneric(*generic, m_configuration, holds);
    }
    if (const auto* const multiModel = QueltEeMultiModelExpression::cast(&expression)) {
        return evaluateMultiModel(*multiModel, dictionary, m_configuration, holds);
    }
    return E_INVALIDARG;
}
