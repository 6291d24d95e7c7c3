#include "expression/QueltEVCClassification.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltEeTreeWalk.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

template class QueltInTyped<QueltEVCClassification, QueltInObject>;
template class QueltInTyped<QueltCoreEVC_NodeClassifier, QueltInObject>;

QueltEVCClassification::QueltEVCClassification(unsigned char all) noexcept : m_flags(all != 0 ? s_all : 0) {}

QueltInString QueltEVCClassification::toString() const {
    static constexpr std::array<std::pair<std::uint8_t, const char*>, 6> names{
        {{s_evolution, "evolution"},
         {s_variant, "variant"},
         {s_change, "change"},
         {s_history, "history"},
         {s_effectivity, "effectivity"},
         {s_inheritedEff, "inherited effectivity"}}};
    quelt::TextBuilder text;
    const char* separator = "";
    for (const auto& [flag, name] : names) {
        if (get(flag) != 0) {
            text << std::exchange(separator, ", ") << name;
        }
    }
    return m_flags != 0 ? text.take() : QueltInString("none");
}

// What is kept with a node: that something is known, and either why the subtree is refused or which kinds it
// holds.
namespace {

constexpr std::uint16_t s_known = 0x8000;
constexpr std::uint16_t s_notImplemented = 0x0100;
constexpr std::uint16_t s_unexpected = 0x0200;
constexpr std::uint16_t s_missing = 0x0400;
constexpr std::uint16_t s_refusals = s_notImplemented | s_unexpected | s_missing;

constexpr bool isRefused(std::uint16_t known) noexcept {
    return (known & s_refusals) != 0;
}

/// Has what comes next fetched from memory: of a group's children behind `position` a reference, and the node
/// of one before it. Whoever classifies a tree is often the first who comes to it for long, and each node
/// would have to be waited for.
void fetchAhead(const QueltEeGroupOp* group, std::uint32_t position) {
    constexpr std::uint32_t nodesAhead = 4;
    constexpr std::uint32_t referencesAhead = 8;
    if (group == nullptr) {
        return;
    }
    const std::span<QueltInObject* const> children = group->getChildren().elements();
    if (position + referencesAhead < children.size()) {
        __builtin_prefetch(children[position + referencesAhead]);
    }
    if (position + nodesAhead < children.size()) {
        __builtin_prefetch(static_cast<const QueltEeNodeRef*>(children[position + nodesAhead])->getNode());
    }
}

/// The same for the first ones.
void fetchFirst(const QueltEeGroupOp* group) {
    constexpr std::size_t most = 8;
    if (group == nullptr) {
        return;
    }
    const std::span<QueltInObject* const> children = group->getChildren().elements();
    const auto first = children.first(std::min(most, children.size()));
    for (const QueltInObject* const child : first) {
        __builtin_prefetch(child);
    }
    for (const QueltInObject* const child : first) {
        __builtin_prefetch(static_cast<const QueltEeNodeRef*>(child)->getNode());
    }
}

} // namespace

std::uint16_t QueltCoreEVC_NodeClassifier::kindOf(const QueltEeVarEff* effectivity) {
    const QueltInObjectTypeClass* const type = effectivity != nullptr ? quelt::typeOf(*effectivity) : nullptr;
    if (QueltEeNamedValueEff::isOfThisType(type)) {
        return QueltEVCClassification::s_variant;
    }
    if (QueltEeSerialEff::isOfThisType(type) || QueltEeTreeBaseEff::isOfThisType(type)) {
        return QueltEVCClassification::s_evolution;
    }
    return QueltEeDateEff::isOfThisType(type) ? QueltEVCClassification::s_history : std::uint16_t{0};
}

std::uint16_t QueltCoreEVC_NodeClassifier::kindOf(const QueltEeEffectivity* effectivity) {
    if (effectivity == nullptr) {
        return 0;
    }
    if (QueltEePredefEff::isObjectOfThisType(*effectivity) != 0) {
        return QueltEVCClassification::s_change;
    }
    return QueltEeBasicEff::isObjectOfThisType(*effectivity) != 0 ? QueltEVCClassification::s_inheritedEff
                                                                  : QueltEVCClassification::s_effectivity;
}

std::uint16_t QueltCoreEVC_NodeClassifier::kindOf(const QueltEeNode& node) {
    if (quelt::NodeChildren(node).group() != nullptr) {
        return 0;
    }
    const QueltInObjectTypeClass* const type = quelt::typeOf(node);
    if (QueltEeVarEffLeaf::isOfThisType(type)) {
        return kindOf(static_cast<const QueltEeVarEffLeaf&>(node).getVarEff());
    }
    if (QueltEeEffLeaf::isOfThisType(type)) {
        return kindOf(static_cast<const QueltEeEffLeaf&>(node).getTargetEff());
    }
    if (QueltEeRestrictionEffLeaf::isOfThisType(type)) {
        return s_unexpected;
    }
    return QueltEeNotDomainOp::isOfThisType(type) ? s_notImplemented : std::uint16_t{0};
}

std::uint16_t QueltCoreEVC_NodeClassifier::find(const QueltEeNode& root) {
    struct Level {
        const QueltEeNode* node;
        std::uint32_t next;  // position of the child to look at next
        std::uint16_t found; // so far
    };
    constexpr std::uint32_t noMore = 0xFFFFFFFFU;
    QueltInSmallVector<Level, 8> open; // the operators that were entered and not left
    // What is known of a node or can be told at once; 0 when its children have to be looked at first.
    const auto lookAt = [&open](const QueltEeNode& node) -> std::uint16_t {
        const std::uint16_t known = node.m_knownClassification.load(std::memory_order_relaxed);
        if (known != 0) {
            return known;
        }
        const auto found = static_cast<std::uint16_t>(s_known | kindOf(node));
        if (quelt::NodeChildren(node).isOperator() && !isRefused(found)) {
            open.push_back({&node, 0, found});
            fetchFirst(quelt::NodeChildren(node).group());
            return 0;
        }
        node.m_knownClassification.store(found, std::memory_order_relaxed);
        return found;
    };
    std::uint16_t found = lookAt(root);
    while (!open.empty()) {
        Level& level = open[open.size() - 1];
        const quelt::NodeChildren children(*level.node);
        const QueltEeNodeRef* const child = level.next != noMore ? children.at(level.next++) : nullptr;
        if (child != nullptr) {
            fetchAhead(children.group(), level.next);
        }
        if (child != nullptr) {
            found = child->getNode() != nullptr ? lookAt(*child->getNode()) : s_missing;
        } else {
            found = level.found;
            level.node->m_knownClassification.store(found, std::memory_order_relaxed);
            open.truncate(open.size() - 1);
        }
        if (found == 0 || open.empty()) {
            continue;
        }
        Level& above = open[open.size() - 1];
        above.found = static_cast<std::uint16_t>(above.found | found);
        if (isRefused(found)) {
            above.next = noMore;
        }
    }
    return found;
}

long QueltCoreEVC_NodeClassifier::classify(const QueltEeNodeRef& reference,
                                           QueltEVCClassification& classification) {
    const QueltEeNode* const node = reference.getNode();
    const std::uint16_t found = node != nullptr ? find(*node) : s_missing;
    if ((found & s_missing) != 0) {
        return E_POINTER;
    }
    if (isRefused(found)) {
        return (found & s_notImplemented) != 0 ? E_NOTIMPL : E_UNEXPECTED;
    }
    classification.m_flags =
        static_cast<std::uint8_t>(classification.m_flags | (found & QueltEVCClassification::s_all));
    return S_OK;
}
