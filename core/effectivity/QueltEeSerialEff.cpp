#include "effectivity/QueltEeSerialEff.h"

#include "effectivity/QueltEeIntervalSet.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>
#include <limits>

template class QueltInTyped<QueltEeSerialEff, QueltEeVarEff>;

namespace {

using Numbers = quelt::IntervalSet::Interval;

constexpr int openLower = QueltInSerialInterval::s_openLower;
constexpr int openUpper = QueltInSerialInterval::s_openUpper;
/// All numbers that a series can have.
constexpr Numbers allNumbers{std::numeric_limits<int>::min(),
                             std::int64_t{std::numeric_limits<int>::max()} + 1};

Numbers numbersOf(const QueltEeSerialEff::Interval& interval) noexcept {
    const std::int64_t from = std::int64_t{interval.a} + (interval.aIncl != 0 ? 0 : 1);
    const std::int64_t to = std::int64_t{interval.b} + (interval.bIncl != 0 ? 1 : 0);
    return {interval.a == openLower ? allNumbers.from : from, interval.b == openUpper ? allNumbers.to : to};
}

/// `numbers` as an interval with inclusive bounds. Where a bound would read as an open end and is none, the
/// next number outside stands there, exclusive.
QueltEeSerialEff::Interval intervalOf(const Numbers& numbers) noexcept {
    const auto first = static_cast<int>(numbers.from);
    const auto last = static_cast<int>(numbers.to - 1);
    QueltEeSerialEff::Interval interval{first, last, 1, 1};
    if (numbers.from == allNumbers.from) {
        interval.a = openLower;
    } else if (first == openLower) {
        interval.a = openLower - 1;
        interval.aIncl = 0;
    }
    if (numbers.to == allNumbers.to) {
        interval.b = openUpper;
    } else if (last == openUpper) {
        interval.b = openUpper + 1;
        interval.bIncl = 0;
    }
    return interval;
}

QueltInSerialInterval valueOf(const QueltEeSerialEff::Interval& interval) noexcept {
    QueltInSerialInterval value;
    value.setInterval(interval.a, interval.aIncl, interval.b, interval.bIncl);
    return value;
}

} // namespace

long QueltEeSerialEff::getIntervals(QueltInListVal& intervals) const {
    for (const Interval& interval : m_intervals) {
        if (intervals.PutBack(valueOf(interval)) == nullptr) {
            return E_INVALIDARG;
        }
    }
    return S_OK;
}

long QueltEeSerialEff::set(const QueltInListVal& intervals) {
    QueltInSmallVector<Interval, 3> replacement;
    QueltInListVal::const_iterator values = intervals.cBegin();
    while (const QueltInObjectVal* const value = values.GetGoToNext()) {
        const QueltInSerialInterval* const interval = QueltInSerialInterval::cast(value);
        if (interval == nullptr) {
            return E_INVALIDARG;
        }
        replacement.push_back(
            {interval->getA(), interval->getB(), interval->getAIncl(), interval->getBIncl()});
    }
    m_intervals = replacement;
    return S_OK;
}

bool QueltEeSerialEff::holdsFor(int sequenceNumber) const {
    const bool listed = std::ranges::any_of(m_intervals, [sequenceNumber](const Interval& interval) {
        const Numbers numbers = numbersOf(interval);
        return numbers.from <= sequenceNumber && sequenceNumber < numbers.to;
    });
    return listed != (isNegated() != 0);
}

QueltInString QueltEeSerialEff::toString() const {
    quelt::TextBuilder text;
    if (m_pVariable != nullptr) {
        text.name(m_pVariable->getName().view());
    } else {
        text << "null";
    }
    std::string_view separator = " in ";
    for (const Interval& interval : m_intervals) {
        text << separator << valueOf(interval).toString().view();
        separator = " | ";
    }
    if (m_intervals.empty()) {
        text << " in {}";
    }
    return describe(text.take().view());
}

QueltEeVarEff* QueltEeSerialEff::createVarEffClone() const {
    return new QueltEeSerialEff(*this);
}

unsigned char QueltEeSerialEff::equals(const QueltEeVarEff& other) const {
    if (!isComparable(other) || isNoVarIncluded() != other.isNoVarIncluded()) {
        return 0;
    }
    const QueltInHeapScope scratch;
    return denotedNumbers() == static_cast<const QueltEeSerialEff&>(other).denotedNumbers() ? 1 : 0;
}

long QueltEeSerialEff::opAnd(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::intersection);
}

long QueltEeSerialEff::opOr(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::unification);
}

long QueltEeSerialEff::opCut(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::difference);
}

unsigned char QueltEeSerialEff::isAllFalse() const {
    const QueltInHeapScope scratch;
    return isNoVarIncluded() == 0 && denotedNumbers() == quelt::IntervalSet() ? 1 : 0;
}

unsigned char QueltEeSerialEff::isAllTrue() const {
    const QueltInHeapScope scratch;
    return isNoVarIncluded() != 0 && denotedNumbers() == quelt::IntervalSet(allNumbers) ? 1 : 0;
}

quelt::IntervalSet QueltEeSerialEff::denotedNumbers() const {
    quelt::IntervalSet numbers;
    for (const Interval& interval : m_intervals) {
        numbers.gather(numbersOf(interval));
    }
    numbers.normalise();
    return isNegated() != 0 ? numbers.complementWithin(allNumbers) : numbers;
}

bool QueltEeSerialEff::isComparable(const QueltEeVarEff& other) const {
    const QueltEeSerialEff* const effectivity = cast(other);
    return effectivity != nullptr && quelt::areOfOneVariable(m_pVariable, effectivity->m_pVariable);
}

long QueltEeSerialEff::combine(const QueltEeVarEff& other, quelt::SetOperation operation) {
    if (!isComparable(other)) {
        return E_INVALIDARG;
    }
    const auto numbers = [this, &other, operation] {
        const QueltInHeapScope scratch;
        return quelt::IntervalSet::combine(
            denotedNumbers(), static_cast<const QueltEeSerialEff&>(other).denotedNumbers(), operation);
    }();
    const std::span<const Numbers> result = numbers.intervals();
    if (result.size() > quelt::maxResultLength) {
        return E_OUTOFMEMORY;
    }
    m_intervals.reserve(result.size());
    const bool noVar = quelt::combineMember(operation, isNoVarIncluded() != 0, other.isNoVarIncluded() != 0);
    m_intervals.clear();
    for (const Numbers& part : result) {
        m_intervals.push_back(intervalOf(part));
    }
    setFlags(false, noVar);
    return S_OK;
}
