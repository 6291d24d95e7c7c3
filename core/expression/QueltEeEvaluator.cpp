#include "expression/QueltEeEvaluator.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltEeTreeWalk.h"
#include "infrastructure/QueltInResult.h"

#include <limits>
#include <unordered_map>
#include <vector>

namespace {

using OperationKind = QueltEeExpressionOperation::OperationKind;

/// What the operators above a node do to it: turn it round, and turn its leaves round within their domains.
/// Both are handed down to the leaves, where they come to an exclusive or each.
struct Sense {
    bool negated = false;
    bool domainNegated = false;

    friend bool operator==(const Sense&, const Sense&) = default;
    /// True when a constant, and the kind of a group, change into the other one.
    [[nodiscard]] bool turnsRound() const noexcept { return negated != domainNegated; }
};

/// What an effectivity says of the configuration's value; nothing when there is no value.
using Membership = std::optional<bool>;

Membership membership(const QueltEeNamedValueEff& effectivity, const QueltEeConfiguration& configuration) {
    const QueltEeNamedValueVar* const variable = QueltEeNamedValueVar::cast(effectivity.getVar());
    const auto value = variable != nullptr ? configuration.getValue(variable->getGuid()) : std::nullopt;
    const auto number = value ? variable->findValue(*value) : std::nullopt;
    return number ? Membership(effectivity.holdsFor(*number)) : std::nullopt;
}

Membership membership(const QueltEeSerialEff& effectivity, const QueltEeConfiguration& configuration) {
    const QueltEeDicoObject* const variable = effectivity.getVar();
    const auto number =
        variable != nullptr ? configuration.getSequenceNumber(variable->getGuid()) : std::nullopt;
    if (!number || *number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return effectivity.holdsFor(static_cast<int>(*number));
}

Membership membership(const QueltEeTreeSeriesEff& effectivity, const QueltEeConfiguration& configuration) {
    const QueltEeTreeSeriesVar* const variable = effectivity.getTreeVar();
    const auto number =
        variable != nullptr ? configuration.getSequenceNumber(variable->getGuid()) : std::nullopt;
    if (!number || *number < 0 || *number > std::numeric_limits<unsigned int>::max()) {
        return std::nullopt;
    }
    QueltEeTreeSeriesElement* element = nullptr;
    const long result = variable->getElement(static_cast<unsigned int>(*number), element);
    return result >= 0 && element != nullptr ? Membership(effectivity.holdsFor(*element)) : std::nullopt;
}

Membership membership(const QueltEeDateEff& effectivity, const QueltEeConfiguration& configuration) {
    const auto date = configuration.getDate();
    return date && *date != QueltEeDate::s_openAbove ? Membership(effectivity.holdsFor(*date)) : std::nullopt;
}

/// True, with `holds` set, when `effectivity` is of class `Effectivity`.
template <class Effectivity>
bool evaluateAs(const QueltEeVarEff& effectivity, const QueltEeConfiguration& configuration, Sense sense,
                bool& holds) {
    const Effectivity* const known = Effectivity::cast(&effectivity);
    if (known == nullptr) {
        return false;
    }
    const Membership member = membership(*known, configuration);
    holds = (member ? *member != sense.domainNegated : effectivity.isNoVarIncluded() != 0) != sense.negated;
    return true;
}

long evaluateVarEff(const QueltEeVarEff& effectivity, const QueltEeConfiguration& configuration, Sense sense,
                    bool& holds) {
    const bool isKnown = evaluateAs<QueltEeNamedValueEff>(effectivity, configuration, sense, holds) ||
                         evaluateAs<QueltEeSerialEff>(effectivity, configuration, sense, holds) ||
                         evaluateAs<QueltEeTreeSeriesEff>(effectivity, configuration, sense, holds) ||
                         evaluateAs<QueltEeDateEff>(effectivity, configuration, sense, holds);
    return isKnown ? S_OK : E_INVALIDARG;
}

long evaluateEffLeaf(const QueltEeEffLeaf& leaf, const QueltEeConfiguration& configuration, Sense sense,
                     bool& holds) {
    const QueltEeEffectivity* const effectivity = leaf.getTargetEff();
    if (effectivity == nullptr) {
        return E_INVALIDARG;
    }
    holds = (configuration.holds(effectivity->getGuid()) != (leaf.isNegated() != 0)) != sense.turnsRound();
    return S_OK;
}

long evaluateLeaf(const QueltEeNode& node, const QueltEeConfiguration& configuration, Sense sense,
                  bool& holds) {
    if (const QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(&node)) {
        const QueltEeVarEff* const effectivity = leaf->getVarEff();
        return effectivity != nullptr ? evaluateVarEff(*effectivity, configuration, sense, holds)
                                      : E_INVALIDARG;
    }
    if (const QueltEeEffLeaf* const leaf = QueltEeEffLeaf::cast(&node)) {
        return evaluateEffLeaf(*leaf, configuration, sense, holds);
    }
    const bool isTrue = QueltEeTrue::isObjectOfThisType(node) != 0;
    if (isTrue || QueltEeFalse::isObjectOfThisType(node) != 0) {
        holds = isTrue != sense.turnsRound();
        return S_OK;
    }
    return QueltEeRestrictionEffLeaf::isObjectOfThisType(node) != 0 ? E_UNEXPECTED : E_INVALIDARG;
}

/// One walk over a tree.
class Evaluation {
public:
    explicit Evaluation(const QueltEeConfiguration& configuration) : m_configuration(configuration) {}

    long run(const QueltEeNode& root, bool& holds) {
        long result = descend(root, {});
        while (result >= 0 && !m_levels.empty()) {
            result = goOn();
        }
        if (result >= 0) {
            holds = m_value;
        }
        return result;
    }

private:
    /// An operator whose children are being looked at.
    struct Level {
        const QueltEeNode* node;
        quelt::NodeChildren children;
        std::uint32_t next;
        Sense sense;
    };
    struct Known {
        const QueltEeNode* node;
        bool domainNegated;
        friend bool operator==(const Known&, const Known&) = default;
    };
    struct KnownHash {
        std::size_t operator()(const Known& known) const noexcept {
            return std::hash<const void*>()(known.node) * 2 + (known.domainNegated ? 1 : 0);
        }
    };

    /// Comes to a node: either m_value says what it is worth, or its level has been opened.
    long descend(const QueltEeNode& node, Sense sense) {
        const quelt::NodeChildren children(node);
        if (!children.isOperator()) {
            return evaluateLeaf(node, m_configuration, sense, m_value);
        }
        if (node.hasAliases()) {
            const auto known = m_known.find({&node, sense.domainNegated});
            if (known != m_known.end()) {
                m_value = known->second != sense.negated;
                return S_OK;
            }
        }
        m_levels.push_back({&node, children, 0, sense});
        return S_OK;
    }

    /// Looks at the next child of the innermost operator, or closes it.
    long goOn() {
        Level& level = m_levels.back();
        const QueltEeGroupOp* const group = level.children.group();
        const bool isAnd = group != nullptr && group->isAnd() != level.sense.turnsRound();
        const bool isDecided = level.next > 0 && (group == nullptr || m_value != isAnd);
        const QueltEeNodeRef* const reference = isDecided ? nullptr : level.children.at(level.next++);
        if (reference != nullptr) {
            const QueltEeNode* const child = reference->getNode();
            return child != nullptr ? descend(*child, senseBelow(level)) : E_INVALIDARG;
        }
        if (!isDecided && group == nullptr) {
            return E_INVALIDARG;
        }
        close(isDecided ? m_value : isAnd);
        return S_OK;
    }

    static Sense senseBelow(const Level& level) {
        Sense sense = level.sense;
        if (level.children.single() != nullptr) {
            bool& flag = QueltEeNotDomainOp::isObjectOfThisType(*level.node) != 0 ? sense.domainNegated
                                                                                  : sense.negated;
            flag = !flag;
        }
        return sense;
    }

    void close(bool value) {
        const Level& level = m_levels.back();
        m_value = value;
        if (level.node->hasAliases()) {
            m_known.emplace(Known{level.node, level.sense.domainNegated}, value != level.sense.negated);
        }
        m_levels.pop_back();
    }

    const QueltEeConfiguration& m_configuration;
    std::vector<Level> m_levels;
    std::unordered_map<Known, bool, KnownHash> m_known; // operators with aliases, not negated
    bool m_value = false;                               // of the node that was closed last
};

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
        goesOn = tally.add([&](bool& oneHolds) { return evaluateVarEff(*one, configuration, {}, oneHolds); });
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
    return node != nullptr ? Evaluation(configuration).run(*node, holds) : E_INVALIDARG;
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
    return Evaluation(m_configuration).run(node, holds);
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
