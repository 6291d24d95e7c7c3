#include "SerialRenumbering.h"

#include "dictionary/QueltEeSerialVar.h"
#include "effectivity/QueltEeSerialEff.h"
#include "infrastructure/QueltInListVal.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInSerialInterval.h"

#include <algorithm>
#include <cstdint>
#include <typeinfo>

namespace quelt {

namespace {

// Stored series write their last number as 99999; one below it stands for "none" and becomes 0.
constexpr int s_lastNumberShifted = 99998;
// Where the search for the next model year starts: keys from here on are never found by it.
constexpr unsigned int s_searchStart = 99999;

/// Sums of 32-bit numbers wrap round.
int oneLess(int number) noexcept {
    return static_cast<int>(static_cast<unsigned int>(number) - 1U);
}

bool isOpenEnd(int bound) noexcept {
    return bound == QueltInSerialInterval::s_openLower || bound == QueltInSerialInterval::s_openUpper;
}

bool isRewritten(const QueltEeSerialVar& variable) {
    using Type = QueltEeSerialVar::SerialExternalType;
    const Type type = variable.getExternalType();
    return type == Type::productSeries || type == Type::manufacturingSeries;
}

/// Rewrites the bounds of one effectivity.
class IntervalRewriter {
public:
    explicit IntervalRewriter(const SerialRewriteRules& rules) noexcept : m_rules(rules) {}

    /// Needed before the first interval where bounds are renumbered.
    long readModelYears(const QueltEeSerialVar& variable) {
        m_rules.trace.inform("=== CGE_MigRen=1 ===");
        const QueltInMap* revisions = nullptr;
        variable.getSeqNb2Revisions(revisions);
        if (revisions == nullptr) {
            return m_rules.trace.fail("ERROR : getSeqNb2Revisions failed", E_FAIL, m_rules.where);
        }
        return m_modelYears.emplace().read(*revisions, m_rules);
    }

    /// What an interval with these bounds becomes.
    [[nodiscard]] QueltEeSerialEff::Interval rewritten(int a, int b) const {
        QueltEeSerialEff::Interval interval{0, 0, 1, 1};
        interval.a = rewriteLower(a);
        interval.b = rewriteUpper(b, interval.bIncl);
        m_rules.trace.inform("interval pushed : ", interval.a, ", ", interval.b);
        return interval;
    }

private:
    [[nodiscard]] int rewriteLower(int old) const {
        if (isOpenEnd(old)) {
            return old;
        }
        const int shifted = oneLess(old);
        traceShifted("Old SeqNB a : ", shifted);
        if (!m_rules.renumbers) {
            return shifted;
        }
        if (shifted == s_lastNumberShifted) {
            return 0;
        }
        return renumbered("New SeqNB a : ", m_modelYears->findLower(shifted)).value_or(shifted);
    }

    [[nodiscard]] int rewriteUpper(int old, unsigned char& included) const {
        if (isOpenEnd(old)) {
            return old;
        }
        const int shifted = oneLess(old);
        traceShifted("Old SeqNB b : ", shifted);
        if (!m_rules.renumbers) {
            return shifted;
        }
        if (shifted == s_lastNumberShifted) {
            return 0;
        }
        const std::int64_t compared =
            m_rules.comparesUpperBoundUnshifted ? std::int64_t{old} - 1 : std::int64_t{shifted};
        if (compared >= m_modelYears->largest()) {
            return QueltInSerialInterval::s_openUpper;
        }
        if (compared < m_modelYears->smallest()) {
            return shifted;
        }
        const std::optional<int> next = renumbered("New SeqNB b : ", m_modelYears->findAbove(shifted));
        included = next ? 0 : 1;
        return next.value_or(shifted);
    }

    void traceShifted(const char* label, int shifted) const {
        if (m_rules.tracesShiftedBounds) {
            m_rules.trace.inform(label, shifted);
        }
    }

    [[nodiscard]] std::optional<int> renumbered(const char* label, std::optional<unsigned int> number) const {
        if (!number) {
            return std::nullopt;
        }
        const int bound = static_cast<int>(*number);
        m_rules.trace.inform(label, bound);
        return bound;
    }

    const SerialRewriteRules& m_rules;
    std::optional<SerialRenumbering> m_modelYears;
};

/// Rewrites what the effectivity shows of its intervals, and sets it.
long rewriteCopies(QueltEeSerialEff& effectivity, const IntervalRewriter& rewriter,
                   const SerialRewriteRules& rules) {
    QueltInListVal intervals(QueltInObjectVal::sType());
    long result = effectivity.getIntervals(intervals);
    if (result < 0) {
        return rules.trace.fail("ERROR : getIntervals failed.", result, rules.where);
    }
    auto elements = intervals.cBegin();
    while (QueltInObjectVal* const element = elements.GetGoToNext()) {
        QueltInSerialInterval* const interval = QueltInSerialInterval::cast(element);
        if (interval == nullptr) {
            return rules.trace.fail("ERROR : unexpected type", E_FAIL, rules.where);
        }
        const auto [a, b, aIncl, bIncl] = rewriter.rewritten(interval->getA(), interval->getB());
        interval->setInterval(a, aIncl, b, bIncl);
    }
    result = effectivity.set(intervals);
    if (result < 0) {
        return rules.trace.fail("ERROR, set new intervals FAILED.", result, rules.where);
    }
    return result;
}

} // namespace

long SerialRenumbering::read(const QueltInMap& revisions, const SerialRewriteRules& rules) {
    auto values = revisions.cBegin();
    while (values.IsEnd() == 0) {
        const QueltEeSerialVarValue* const value = QueltEeSerialVarValue::cast(values.GetValGoToNext());
        if (value == nullptr) {
            return rules.trace.fail("ERROR", E_FAIL, rules.where);
        }
        rules.trace.inform("ModelYear  : ", value->getRev().ConvertToChar());
        int year = 0;
        if (value->getRev().ConvertToNum(year, "%d") < 0) {
            continue;
        }
        const int number = oneLess(year);
        rules.trace.inform("Ren seqNb  : ", number);
        m_smallest = std::min(m_smallest, number);
        m_largest = std::max(m_largest, number);
        if (m_numbers.emplace(static_cast<unsigned int>(number), value->getSeqNumber()).second) {
            rules.trace.inform("Ren seqNb  : ", number, " <=> MD seqNb ", value->getSeqNumber());
        }
    }
    return S_OK;
}

std::optional<unsigned int> SerialRenumbering::find(int number) const {
    const auto entry = m_numbers.find(static_cast<unsigned int>(number));
    return entry != m_numbers.end() ? std::optional(entry->second) : std::nullopt;
}

std::optional<unsigned int> SerialRenumbering::findLower(int a) const {
    if (a < m_smallest) {
        return find(m_smallest);
    }
    if (a > m_largest) {
        return std::nullopt;
    }
    const std::optional<unsigned int> exact = find(a);
    return exact ? exact : findAbove(a);
}

std::optional<unsigned int> SerialRenumbering::findAbove(int b) const {
    const auto next = m_numbers.upper_bound(static_cast<unsigned int>(b));
    if (next != m_numbers.end() && next->first < s_searchStart) {
        return next->second;
    }
    return find(static_cast<int>(s_searchStart));
}

long rewriteSerialIntervals(QueltEeSerialEff& effectivity, const QueltEeSerialVar& variable,
                            const SerialRewriteRules& rules) {
    if (!isRewritten(variable)) {
        return S_OK;
    }
    IntervalRewriter rewriter(rules);
    if (rules.renumbers) {
        const long result = rewriter.readModelYears(variable);
        if (result < 0) {
            return result;
        }
    }
    if (typeid(effectivity) == typeid(QueltEeSerialEff)) { // as nearly always: it would give and take copies
        for (QueltEeSerialEff::Interval& interval : effectivity.intervals()) {
            interval = rewriter.rewritten(interval.a, interval.b);
        }
        return S_OK;
    }
    return rewriteCopies(effectivity, rewriter, rules);
}

} // namespace quelt
