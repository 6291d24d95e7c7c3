#include "compiled/QueltDnfLiterals.h"

#include "compiled/QueltDnf.h"
#include "expression/QueltEeLeaves.h"
#include "infrastructure/QueltInResult.h"

#include <algorithm>
#include <utility>

namespace quelt {

namespace {

const QueltEeVarEff* effectivityOf(const QueltEeNode& leaf) {
    const auto* const varEffLeaf = QueltEeVarEffLeaf::cast(&leaf);
    return varEffLeaf != nullptr ? varEffLeaf->getVarEff() : nullptr;
}

CriterionKey keyOf(const QueltEeNode& leaf) {
    const QueltEeVarEff* const effectivity = effectivityOf(leaf);
    return effectivity != nullptr ? CriterionKey(*effectivity) : CriterionKey(*QueltEeEffLeaf::cast(&leaf));
}

const void* variableOf(const QueltEeNode& leaf) {
    const QueltEeVarEff* const effectivity = effectivityOf(leaf);
    return effectivity != nullptr ? effectivity->getVar() : nullptr;
}

/// Makes `leaf` say what both say; both hold variable effectivities.
long combineInPlace(QueltEeNodeRef& leaf, const QueltEeNode& other, Joining joining) {
    QueltEeVarEff& effectivity = *static_cast<QueltEeVarEffLeaf*>(leaf.getNode())->getVarEff();
    return joining == Joining::all ? effectivity.opAnd(*effectivityOf(other))
                                   : effectivity.opOr(*effectivityOf(other));
}

} // namespace

std::size_t sizeOfLiteral(const QueltEeNode* node) {
    if (const auto* const leaf = QueltEeVarEffLeaf::cast(node)) {
        return leaf->getVarEff() != nullptr ? sizeOf(*leaf->getVarEff()) : 0;
    }
    const auto* const leaf = QueltEeEffLeaf::cast(node);
    return leaf != nullptr && leaf->getTargetEff() != nullptr ? 1 : 0;
}

long DnfLiterals::enter(const QueltEeNode& leaf, DnfLiteral& literal) {
    OwnedLeaf copy(leaf.clone());
    if (copy == nullptr) {
        return E_FAIL;
    }
    std::uint32_t slot = 0;
    const long result = slotFor(leaf, slot);
    return result >= 0 ? enterIn(slot, std::move(copy), literal) : result;
}

/// Leaves on one variable object share a slot, and so do those whose variables agree.
long DnfLiterals::slotFor(const QueltEeNode& leaf, std::uint32_t& slot) {
    std::vector<std::uint32_t>& candidates = m_slotsOf[keyOf(leaf)];
    for (const std::uint32_t candidate : candidates) {
        slot = candidate;
        if (m_slots[candidate].variable == variableOf(leaf)) {
            return S_OK;
        }
    }
    for (const std::uint32_t candidate : candidates) {
        const OwnedLeaf copy(leaf.clone());
        if (copy == nullptr) {
            return E_FAIL;
        }
        slot = candidate;
        const QueltEeNode& other = *m_entries[m_slots[candidate].representative].leaf->getNode();
        if (combineInPlace(*copy, other, Joining::all) >= 0) {
            return S_OK;
        }
    }
    slot = static_cast<std::uint32_t>(m_slots.size());
    m_slots.push_back({variableOf(leaf), static_cast<std::uint32_t>(m_entries.size()), {}});
    if (candidates.size() < s_maxDisagreeing) {
        candidates.push_back(slot);
    }
    return S_OK;
}

/// Texts tell literals of one slot apart: there, the same text means the same.
long DnfLiterals::enterIn(std::uint32_t slot, OwnedLeaf leaf, DnfLiteral& literal) {
    const std::string text(leaf->toString().view());
    const auto [found, isNew] =
        m_slots[slot].byText.try_emplace(text, static_cast<std::uint32_t>(m_entries.size()));
    literal = {slot, found->second, m_places++};
    if (!isNew) {
        return S_OK;
    }
    m_values += sizeOfLiteral(leaf->getNode());
    m_entries.push_back({std::move(leaf), slot});
    return m_values <= QueltDnf::s_maxValues ? S_OK : E_OUTOFMEMORY;
}

long DnfLiterals::meet(const DnfLiteral& left, const DnfLiteral& right, std::optional<DnfLiteral>& both) {
    const std::uint64_t pair = (std::uint64_t{left.id} << 32U) | right.id;
    if (left == right) {
        both = left;
    } else if (const auto known = m_meets.find(pair); known != m_meets.end()) {
        both = known->second;
    } else {
        const long result = combine(left, right, Joining::all, both);
        if (result < 0) {
            return result;
        }
        m_meets.emplace(pair, both);
    }
    if (both) {
        both->place = std::min(left.place, right.place);
    }
    return S_OK;
}

long DnfLiterals::join(const DnfLiteral& left, const DnfLiteral& right, std::optional<DnfLiteral>& either) {
    if (left == right) {
        either = left;
        return S_OK;
    }
    const long result = combine(left, right, Joining::atLeastOne, either);
    if (either) {
        either->place = std::min(left.place, right.place);
    }
    return result;
}

long DnfLiterals::combine(const DnfLiteral& left, const DnfLiteral& right, Joining joining,
                          std::optional<DnfLiteral>& combined) {
    combined.reset();
    const QueltEeVarEff* const one = effectivityOf(leafOf(left));
    const QueltEeVarEff* const other = effectivityOf(leafOf(right));
    if (one == nullptr || other == nullptr) {
        return S_OK; // the same effectivity in the same dictionary, once negated and once not
    }
    OwnedLeaf leaf(leafOf(left).clone());
    if (leaf == nullptr) {
        return E_FAIL;
    }
    const long result = combineInPlace(*leaf, leafOf(right), joining);
    if (result < 0) {
        return result;
    }
    const QueltEeVarEff& made = *effectivityOf(*leaf->getNode());
    if ((joining == Joining::all ? made.isAllFalse() : made.isAllTrue()) != 0) {
        return S_OK;
    }
    if (one->equals(made) != 0 || other->equals(made) != 0) {
        combined = one->equals(made) != 0 ? left : right;
        return S_OK;
    }
    combined.emplace();
    return enterIn(left.slot, std::move(leaf), *combined);
}

} // namespace quelt
