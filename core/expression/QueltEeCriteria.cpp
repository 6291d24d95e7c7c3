#include "expression/QueltEeCriteria.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quelt {

namespace {

std::uint64_t addressOf(const void* object) noexcept {
    return reinterpret_cast<std::uintptr_t>(object);
}

/// What one operation on the effectivity may cost: its length, and the domain where sets are kept as one.
std::int64_t costOf(const QueltEeVarEff& effectivity) {
    std::size_t domain = 0;
    if (const auto* const named = QueltEeNamedValueVar::cast(effectivity.getVar())) {
        domain = named->getValueCount() / 64;
    } else if (const auto* const tree = QueltEeTreeSeriesVar::cast(effectivity.getVar())) {
        domain = tree->getElements().size();
    }
    return static_cast<std::int64_t>(sizeOf(effectivity) + domain);
}

/// Combines effectivities of one key, pair by pair of equal age, so that many short ones cost no more than
/// sorting them.
class EffectivityJoin {
public:
    EffectivityJoin(std::span<QueltEeVarEff*> effectivities, Joining joining, JoiningBudget& budget)
        : m_effectivities(effectivities), m_joining(joining), m_budget(budget),
          m_changed(effectivities.size()) {}

    std::vector<bool> run() {
        std::vector<std::size_t> firsts;
        for (const std::vector<std::size_t>& ofOneVariable : byVariable()) {
            joinPairwise(ofOneVariable);
            firsts.push_back(ofOneVariable.front());
        }
        joinAcrossVariables(firsts);
        return std::move(m_changed);
    }

private:
    /// How many variables with one GUID, but different values, are told apart before criteria stay as they
    /// are.
    static constexpr std::size_t s_maxDisagreeing = 8;

    /// The positions, grouped by variable object. Each group is in order, as are the groups' first ones.
    [[nodiscard]] std::vector<std::vector<std::size_t>> byVariable() const {
        std::vector<std::vector<std::size_t>> groups;
        std::unordered_map<const void*, std::size_t> groupOf;
        for (std::size_t position = 0; position < m_effectivities.size(); ++position) {
            const auto [found, isNew] =
                groupOf.try_emplace(m_effectivities[position]->getVar(), groups.size());
            if (isNew) {
                groups.emplace_back();
            }
            groups[found->second].push_back(position);
        }
        return groups;
    }

    void joinPairwise(const std::vector<std::size_t>& positions) {
        for (std::size_t distance = 1; distance < positions.size(); distance *= 2) {
            for (std::size_t at = 0; at + distance < positions.size(); at += 2 * distance) {
                join(positions[at], positions[at + distance]);
            }
        }
    }

    void joinAcrossVariables(const std::vector<std::size_t>& firsts) {
        std::vector<std::size_t> apart;
        for (const std::size_t position : firsts) {
            const bool joined =
                std::ranges::any_of(apart, [&](std::size_t earlier) { return join(earlier, position); });
            if (!joined && apart.size() < s_maxDisagreeing) {
                apart.push_back(position);
            }
        }
    }

    bool join(std::size_t into, std::size_t from) {
        QueltEeVarEff* const left = m_effectivities[into];
        const QueltEeVarEff* const right = m_effectivities[from];
        if (left == nullptr || right == nullptr || m_budget < 0) {
            return false;
        }
        m_budget -= costOf(*left) + costOf(*right);
        const long result = m_joining == Joining::all ? left->opAnd(*right) : left->opOr(*right);
        if (result < 0) {
            return false;
        }
        m_effectivities[from] = nullptr;
        m_changed[into] = true;
        return true;
    }

    std::span<QueltEeVarEff*> m_effectivities;
    Joining m_joining;
    JoiningBudget& m_budget;
    std::vector<bool> m_changed;
};

} // namespace

CriterionKey::CriterionKey(const QueltEeVarEff& effectivity)
    : kind(effectivity.dType()), first(0), second(0) {
    if (const QueltEeDicoObject* const variable = effectivity.getVar()) {
        const QueltInGuid::Bytes& bytes = variable->getGuid().getBytes();
        std::memcpy(&first, bytes.data(), sizeof first);
        std::memcpy(&second, bytes.data() + sizeof first, sizeof second);
    }
}

CriterionKey::CriterionKey(const QueltEeEffLeaf& leaf)
    : kind(leaf.dType()), first(addressOf(leaf.getTargetEff())),
      second(addressOf(leaf.getReferencedContext())) {}

std::uint64_t CriterionKey::hash() const noexcept {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
    std::uint64_t hash = addressOf(kind);
    hash = (hash ^ first) * factor;
    hash = (hash ^ (hash >> 32U) ^ second) * factor;
    return hash ^ (hash >> 32U);
}

void CriterionIndex::add(const CriterionKey& key, std::uint32_t number) {
    Entry* const entry = find(key);
    if (entry == nullptr) {
        append({key, {number}, true});
        return;
    }
    entry->numbers.push_back(number);
    if (!entry->isNew) {
        entry->isNew = true;
        m_new.push_back(static_cast<std::uint32_t>(entry - m_entries.data()));
    }
}

void CriterionIndex::merge(CriterionIndex&& other) {
    if (other.m_entries.size() > m_entries.size()) {
        std::swap(*this, other);
    }
    for (Entry& entry : other.m_entries) {
        if (find(entry.key) == nullptr) {
            append(std::move(entry));
            continue;
        }
        for (const std::uint32_t number : entry.numbers) {
            add(entry.key, number);
        }
    }
}

CriterionIndex::Entry* CriterionIndex::find(const CriterionKey& key) {
    if (m_byKey.empty()) {
        const auto found = std::ranges::find(m_entries, key, &Entry::key);
        return found != m_entries.end() ? &*found : nullptr;
    }
    const auto found = m_byKey.find(key);
    return found != m_byKey.end() ? &m_entries[found->second] : nullptr;
}

void CriterionIndex::append(Entry&& entry) {
    const auto position = static_cast<std::uint32_t>(m_entries.size());
    if (entry.isNew) {
        m_new.push_back(position);
    }
    m_entries.push_back(std::move(entry));
    if (m_entries.size() <= s_scanLimit) {
        return;
    }
    for (std::size_t missing = m_byKey.size(); missing < m_entries.size(); ++missing) {
        m_byKey.emplace(m_entries[missing].key, static_cast<std::uint32_t>(missing));
    }
}

std::vector<std::uint32_t> CriterionIndex::takeNew() {
    for (const std::uint32_t position : m_new) {
        std::ranges::sort(m_entries[position].numbers);
        m_entries[position].isNew = false;
    }
    return std::exchange(m_new, {});
}

std::size_t sizeOf(const QueltEeVarEff& effectivity) {
    std::size_t size = 0;
    if (const auto* const named = QueltEeNamedValueEff::cast(&effectivity)) {
        size = named->getValues().size();
    } else if (const auto* const serial = QueltEeSerialEff::cast(&effectivity)) {
        size = serial->intervals().size();
    } else if (const auto* const date = QueltEeDateEff::cast(&effectivity)) {
        size = date->intervals().size();
    } else if (const auto* const tree = QueltEeTreeSeriesEff::cast(&effectivity)) {
        for (const QueltEeTreeSeriesSelection& selection : tree->getSelections()) {
            size += 1 + selection.getTo().size();
        }
    }
    return std::max<std::size_t>(size, 1);
}

std::optional<bool> constantOf(QueltEeVarEff& effectivity, bool isInDomain) {
    if (isInDomain) {
        effectivity.opNotDom();
    }
    const bool isTrue = effectivity.isAllTrue() != 0;
    const bool isFalse = !isTrue && effectivity.isAllFalse() != 0;
    if (isInDomain) {
        effectivity.opNotDom();
    }
    return isTrue || isFalse ? std::optional(isTrue != isInDomain) : std::nullopt;
}

std::vector<bool> joinEffectivities(std::span<QueltEeVarEff*> effectivities, Joining joining,
                                    JoiningBudget& budget) {
    return EffectivityJoin(effectivities, joining, budget).run();
}

} // namespace quelt
