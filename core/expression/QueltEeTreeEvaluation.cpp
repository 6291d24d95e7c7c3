#include "expression/QueltEeTreeEvaluation.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeNegations.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltEeTreeWalk.h"
#include "infrastructure/QueltInResult.h"

#include <limits>
#include <optional>
#include <unordered_map>
#include <vector>

namespace quelt {

namespace {

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
bool evaluateAs(const QueltEeVarEff& effectivity, const QueltEeConfiguration& configuration,
                Negations negations, bool& holds) {
    const Effectivity* const known = Effectivity::cast(&effectivity);
    if (known == nullptr) {
        return false;
    }
    const Membership member = membership(*known, configuration);
    holds = (member ? *member != negations.domainNegated : effectivity.isNoVarIncluded() != 0) !=
            negations.negated;
    return true;
}

long evaluateVarEff(const QueltEeVarEff& effectivity, const QueltEeConfiguration& configuration,
                    Negations negations, bool& holds) {
    const bool isKnown = evaluateAs<QueltEeNamedValueEff>(effectivity, configuration, negations, holds) ||
                         evaluateAs<QueltEeSerialEff>(effectivity, configuration, negations, holds) ||
                         evaluateAs<QueltEeTreeSeriesEff>(effectivity, configuration, negations, holds) ||
                         evaluateAs<QueltEeDateEff>(effectivity, configuration, negations, holds);
    return isKnown ? S_OK : E_INVALIDARG;
}

long evaluateEffLeaf(const QueltEeEffLeaf& leaf, const QueltEeConfiguration& configuration,
                     Negations negations, bool& holds) {
    const QueltEeEffectivity* const effectivity = leaf.getTargetEff();
    if (effectivity == nullptr) {
        return E_INVALIDARG;
    }
    holds = (configuration.holds(effectivity->getGuid()) != (leaf.isNegated() != 0)) != negations.turnRound();
    return S_OK;
}

long evaluateLeaf(const QueltEeNode& node, const QueltEeConfiguration& configuration, Negations negations,
                  bool& holds) {
    if (const QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(&node)) {
        const QueltEeVarEff* const effectivity = leaf->getVarEff();
        return effectivity != nullptr ? evaluateVarEff(*effectivity, configuration, negations, holds)
                                      : E_INVALIDARG;
    }
    if (const QueltEeEffLeaf* const leaf = QueltEeEffLeaf::cast(&node)) {
        return evaluateEffLeaf(*leaf, configuration, negations, holds);
    }
    const bool isTrue = QueltEeTrue::isObjectOfThisType(node) != 0;
    if (isTrue || QueltEeFalse::isObjectOfThisType(node) != 0) {
        holds = isTrue != negations.turnRound();
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
        NodeChildren children;
        std::uint32_t next;
        Negations negations;
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
    long descend(const QueltEeNode& node, Negations negations) {
        const NodeChildren children(node);
        if (!children.isOperator()) {
            return evaluateLeaf(node, m_configuration, negations, m_value);
        }
        if (node.hasAliases()) {
            const auto known = m_known.find({&node, negations.domainNegated});
            if (known != m_known.end()) {
                m_value = known->second != negations.negated;
                return S_OK;
            }
        }
        m_levels.push_back({&node, children, 0, negations});
        return S_OK;
    }

    /// Looks at the next child of the innermost operator, or closes it.
    long goOn() {
        Level& level = m_levels.back();
        const QueltEeGroupOp* const group = level.children.group();
        const bool isAnd = group != nullptr && group->isAnd() != level.negations.turnRound();
        const bool isDecided = level.next > 0 && (group == nullptr || m_value != isAnd);
        const QueltEeNodeRef* const reference = isDecided ? nullptr : level.children.at(level.next++);
        if (reference != nullptr) {
            const QueltEeNode* const child = reference->getNode();
            return child != nullptr ? descend(*child, negationsBelow(level)) : E_INVALIDARG;
        }
        if (!isDecided && group == nullptr) {
            return E_INVALIDARG;
        }
        close(isDecided ? m_value : isAnd);
        return S_OK;
    }

    static Negations negationsBelow(const Level& level) {
        Negations negations = level.negations;
        if (level.children.single() != nullptr) {
            bool& flag = QueltEeNotDomainOp::isObjectOfThisType(*level.node) != 0 ? negations.domainNegated
                                                                                  : negations.negated;
            flag = !flag;
        }
        return negations;
    }

    void close(bool value) {
        const Level& level = m_levels.back();
        m_value = value;
        if (level.node->hasAliases()) {
            m_known.emplace(Known{level.node, level.negations.domainNegated},
                            value != level.negations.negated);
        }
        m_levels.pop_back();
    }

    const QueltEeConfiguration& m_configuration;
    std::vector<Level> m_levels;
    std::unordered_map<Known, bool, KnownHash> m_known; // operators with aliases, not negated
    bool m_value = false;                               // of the node that was closed last
};

} // namespace

long evaluateTree(const QueltEeNode& node, const QueltEeConfiguration& configuration, bool& holds) {
    return Evaluation(configuration).run(node, holds);
}

long evaluateVarEff(const QueltEeVarEff& effectivity, const QueltEeConfiguration& configuration,
                    bool& holds) {
    return evaluateVarEff(effectivity, configuration, Negations(), holds);
}

} // namespace quelt
