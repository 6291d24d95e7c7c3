#include "compiled/QueltDnfForm.h"

#include "compiled/QueltDnf.h"
#include "infrastructure/QueltInResult.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace quelt {

namespace {

/// What making one form may use up: literals copied, and conjunctions compared with another one. A fraction
/// of a second each.
constexpr std::int64_t s_maxWork = 50'000'000;
constexpr std::int64_t s_maxComparisons = 100'000'000;
/// How much larger than a form may be what it is reduced from.
constexpr std::size_t s_excess = 4;

std::uint64_t mix(std::uint64_t hash, const DnfLiteral& literal) noexcept {
    hash = (hash ^ ((std::uint64_t{literal.slot} << 32U) | literal.id)) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 32U);
}

} // namespace

DnfConjunction::DnfConjunction(std::vector<DnfLiteral> literals) : m_literals(std::move(literals)) {
    for (const DnfLiteral& literal : m_literals) {
        m_signature |= std::uint64_t{1} << (mix(0, literal) % 64);
    }
}

bool DnfConjunction::includes(const DnfConjunction& other) const {
    return (m_signature & ~other.m_signature) == 0 && std::ranges::includes(other.m_literals, m_literals);
}

std::uint64_t DnfConjunction::hash() const noexcept {
    return std::accumulate(m_literals.begin(), m_literals.end(), std::uint64_t{m_literals.size()}, mix);
}

std::size_t DnfForm::weight() const noexcept {
    std::size_t weight = conjunctions.size();
    for (const DnfConjunction& conjunction : conjunctions) {
        weight += conjunction.literals().size();
    }
    return weight;
}

DnfCalculator::DnfCalculator() noexcept : m_work(s_maxWork), m_comparisons(s_maxComparisons) {}

long DnfCalculator::conjoin(std::vector<DnfLiteral> literals, std::optional<DnfConjunction>& conjunction) {
    conjunction.reset();
    std::ranges::stable_sort(literals, {}, &DnfLiteral::slot);
    std::vector<DnfLiteral> met;
    std::vector<DnfLiteral> ofOneSlot;
    for (std::size_t from = 0; from < literals.size(); from += ofOneSlot.size()) {
        ofOneSlot.clear();
        for (std::size_t at = from; at < literals.size() && literals[at].slot == literals[from].slot; ++at) {
            ofOneSlot.push_back(literals[at]);
        }
        bool isContradiction = false;
        const long result = meetPairwise(ofOneSlot, isContradiction);
        if (result < 0 || isContradiction) {
            return result;
        }
        met.push_back(ofOneSlot.front());
    }
    conjunction.emplace(std::move(met));
    return spend(literals.size());
}

/// Brings all into the first one, pair by pair of equal age, so that many short effectivities do not make a
/// long one that is copied again and again.
long DnfCalculator::meetPairwise(std::vector<DnfLiteral>& ofOneSlot, bool& isContradiction) {
    std::optional<DnfLiteral> both;
    for (std::size_t distance = 1; distance < ofOneSlot.size(); distance *= 2) {
        for (std::size_t at = 0; at + distance < ofOneSlot.size(); at += 2 * distance) {
            const long result = m_literals.meet(ofOneSlot[at], ofOneSlot[at + distance], both);
            if (result < 0 || !both) {
                isContradiction = result >= 0;
                return result;
            }
            ofOneSlot[at] = *both;
        }
    }
    return S_OK;
}

long DnfCalculator::multiply(DnfForm& form, const DnfForm& factor) {
    DnfForm product;
    std::size_t weight = 0;
    for (const DnfConjunction& left : form.conjunctions) {
        for (const DnfConjunction& right : factor.conjunctions) {
            const std::size_t length = product.conjunctions.size();
            const long result = multiply(left, right, product);
            if (result < 0) {
                return result;
            }
            if (product.conjunctions.size() > length) {
                weight += product.conjunctions.back().literals().size();
            }
            if (product.conjunctions.size() > s_excess * QueltDnf::s_maxConjunctions ||
                weight > s_excess * QueltDnf::s_maxLiterals) {
                return E_OUTOFMEMORY;
            }
        }
    }
    form = std::move(product);
    return reduce(form);
}

/// Adds the conjunction of both to `product`, unless they contradict each other.
long DnfCalculator::multiply(const DnfConjunction& left, const DnfConjunction& right, DnfForm& product) {
    std::vector<DnfLiteral> literals;
    literals.reserve(left.literals().size() + right.literals().size());
    auto next = right.literals().begin();
    const auto end = right.literals().end();
    for (const DnfLiteral& literal : left.literals()) {
        for (; next != end && next->slot < literal.slot; ++next) {
            literals.push_back(*next);
        }
        if (next == end || next->slot != literal.slot) {
            literals.push_back(literal);
            continue;
        }
        std::optional<DnfLiteral> both;
        const long result = m_literals.meet(literal, *next++, both);
        if (result < 0 || !both) {
            return result < 0 ? result : spend(literals.size() + 1);
        }
        literals.push_back(*both);
    }
    literals.insert(literals.end(), next, end);
    const std::size_t work = literals.size() + 1;
    product.conjunctions.emplace_back(std::move(literals));
    return spend(work);
}

long DnfCalculator::spend(std::size_t work) noexcept {
    m_work -= static_cast<std::int64_t>(work);
    return m_work >= 0 ? S_OK : E_OUTOFMEMORY;
}

long DnfCalculator::reduce(DnfForm& form) {
    const long result = joinSingles(form);
    if (result < 0) {
        return result;
    }
    absorb(form);
    const std::size_t count = form.conjunctions.size();
    const bool fits =
        count <= QueltDnf::s_maxConjunctions && form.weight() - count <= QueltDnf::s_maxLiterals;
    return fits ? S_OK : E_OUTOFMEMORY;
}

/// The first of the conjunctions that are joined takes the others in.
long DnfCalculator::joinSingles(DnfForm& form) {
    std::map<std::uint32_t, std::vector<DnfConjunction*>> bySlot;
    for (DnfConjunction& conjunction : form.conjunctions) {
        if (conjunction.literals().size() == 1) {
            bySlot[conjunction.literals().front().slot].push_back(&conjunction);
        }
    }
    bool isTrue = false;
    for (auto& [slot, ofOneSlot] : bySlot) {
        const long result = joinPairwise(ofOneSlot, isTrue);
        if (result < 0) {
            return result;
        }
    }
    if (isTrue) {
        form.conjunctions.assign(1, DnfConjunction());
    }
    return S_OK;
}

/// Afterwards all say the same as the first one, so that absorbing leaves that one.
long DnfCalculator::joinPairwise(std::vector<DnfConjunction*>& ofOneSlot, bool& isTrue) {
    std::optional<DnfLiteral> either;
    for (std::size_t distance = 1; distance < ofOneSlot.size(); distance *= 2) {
        for (std::size_t at = 0; at + distance < ofOneSlot.size(); at += 2 * distance) {
            DnfConjunction& first = *ofOneSlot[at];
            const long result = m_literals.join(first.literals().front(),
                                                ofOneSlot[at + distance]->literals().front(), either);
            if (result < 0 || !either) {
                isTrue = result >= 0;
                return result;
            }
            first = DnfConjunction({*either});
        }
    }
    for (DnfConjunction* const conjunction : ofOneSlot) {
        *conjunction = *ofOneSlot.front();
    }
    return S_OK;
}

void DnfCalculator::absorb(DnfForm& form) {
    std::vector<DnfConjunction>& conjunctions = form.conjunctions;
    std::vector<std::size_t> byLength(conjunctions.size());
    std::iota(byLength.begin(), byLength.end(), std::size_t{0});
    std::ranges::stable_sort(byLength, {},
                             [&](std::size_t at) { return conjunctions[at].literals().size(); });

    std::vector<bool> isLeftOut(conjunctions.size());
    std::vector<std::size_t> kept;
    std::unordered_multimap<std::uint64_t, std::size_t> keptByHash;
    for (const std::size_t at : byLength) {
        const auto includesThis = [&](std::size_t shorter) {
            return conjunctions[shorter].includes(conjunctions[at]);
        };
        const auto [same, end] = keptByHash.equal_range(conjunctions[at].hash());
        isLeftOut[at] = std::any_of(same, end, [&](const auto& entry) { return includesThis(entry.second); });
        if (!isLeftOut[at] && m_comparisons > 0) {
            m_comparisons -= static_cast<std::int64_t>(kept.size());
            isLeftOut[at] = std::ranges::any_of(kept, includesThis);
        }
        if (!isLeftOut[at]) {
            kept.push_back(at);
            keptByHash.emplace(conjunctions[at].hash(), at);
        }
    }
    std::size_t at = 0;
    std::erase_if(conjunctions, [&](const DnfConjunction&) { return isLeftOut[at++]; });
}

} // namespace quelt
