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

#include <array>
#include <utility>
#include <vector>

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

} // namespace

std::uint16_t QueltCoreEVC_NodeClassifier::kindOf(const QueltEeVarEff* effectivity) {
    if (QueltEeNamedValueEff::cast(effectivity) != nullptr) {
        return QueltEVCClassification::s_variant;
    }
    if (QueltEeSerialEff::cast(effectivity) != nullptr || QueltEeTreeBaseEff::cast(effectivity) != nullptr) {
        return QueltEVCClassification::s_evolution;
    }
    return QueltEeDateEff::cast(effectivity) != nullptr ? QueltEVCClassification::s_history : 0;
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
    if (const QueltEeVarEffLeaf* const leaf = QueltEeVarEffLeaf::cast(&node); leaf != nullptr) {
        return kindOf(leaf->getVarEff());
    }
    if (const QueltEeEffLeaf* const leaf = QueltEeEffLeaf::cast(&node); leaf != nullptr) {
        return kindOf(leaf->getTargetEff());
    }
    if (QueltEeRestrictionEffLeaf::isObjectOfThisType(node) != 0) {
        return s_unexpected;
    }
    return QueltEeNotDomainOp::isObjectOfThisType(node) != 0 ? s_notImplemented : std::uint16_t{0};
}

std::uint16_t QueltCoreEVC_NodeClassifier::find(const QueltEeNode& root) {
    if (const std::uint16_t known = root.m_knownClassification.load(std::memory_order_relaxed); known != 0) {
        return known;
    }
    std::vector<std::uint16_t> open; // what was found so far below each operator that is entered and not left
    std::uint16_t found = 0;
    for (quelt::TreeWalk walk(root); walk.next();) {
        if (walk.stop() == quelt::TreeWalk::Stop::leave) {
            found = open.back();
            open.pop_back();
            walk.node().m_knownClassification.store(found, std::memory_order_relaxed);
        } else if (walk.stop() == quelt::TreeWalk::Stop::missing) {
            found = s_missing;
        } else {
            found = walk.node().m_knownClassification.load(std::memory_order_relaxed);
            if (found == 0) {
                found = static_cast<std::uint16_t>(s_known | kindOf(walk.node()));
                if (walk.atOperator() && !isRefused(found)) {
                    open.push_back(found);
                    continue;
                }
                walk.node().m_knownClassification.store(found, std::memory_order_relaxed);
            }
            if (walk.atOperator()) {
                walk.skipChildren();
            }
        }
        if (open.empty()) {
            continue;
        }
        open.back() = static_cast<std::uint16_t>(open.back() | found);
        if (isRefused(found)) {
            walk.skipSiblings();
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
