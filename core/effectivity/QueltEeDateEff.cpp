#include "effectivity/QueltEeDateEff.h"

#include "effectivity/QueltEeIntervalSet.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <algorithm>
#include <chrono>

template class QueltInTyped<QueltEeDateEff, QueltEeVarEff>;

namespace {

using Times = quelt::IntervalSet::Interval;

constexpr Times allTimes{QueltEeDate::s_openBelow, QueltEeDate::s_openAbove};
constexpr std::int64_t secondsPerDay = 86400;
constexpr std::string_view dateForm = "0000-00-00";
constexpr std::string_view timeForm = "T00:00:00Z";

bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

/// True when `text` has digits exactly where `form` has noughts, and the form's own characters elsewhere.
bool hasForm(std::string_view text, std::string_view form) noexcept {
    return std::ranges::equal(text, form, [](char character, char expected) {
        return expected == '0' ? isDigit(character) : character == expected;
    });
}

/// The number that the `length` digits from `position` on make.
int numberAt(std::string_view text, std::size_t position, std::size_t length) noexcept {
    int number = 0;
    for (const char digit : text.substr(position, length)) {
        number = number * 10 + (digit - '0');
    }
    return number;
}

/// Midnight of the day that `text`, which has the form of a date, says.
std::optional<std::int64_t> parseDay(std::string_view text) noexcept {
    const std::chrono::year_month_day day{std::chrono::year(numberAt(text, 0, 4)),
                                          std::chrono::month(static_cast<unsigned int>(numberAt(text, 5, 2))),
                                          std::chrono::day(static_cast<unsigned int>(numberAt(text, 8, 2)))};
    if (!day.ok()) {
        return std::nullopt;
    }
    return std::int64_t{std::chrono::sys_days(day).time_since_epoch().count()} * secondsPerDay;
}

/// Seconds since midnight at the time that `text`, which has the form of a time, says.
std::optional<std::int64_t> parseTimeOfDay(std::string_view text) noexcept {
    const int hours = numberAt(text, 1, 2);
    const int minutes = numberAt(text, 4, 2);
    const int seconds = numberAt(text, 7, 2);
    if (hours > 23 || minutes > 59 || seconds > 59) {
        return std::nullopt;
    }
    return (hours * 60 + minutes) * 60 + seconds;
}

/// Writes `number` with leading noughts over the `length` characters from `position` on.
void putNumber(std::string& text, std::size_t position, std::size_t length, std::int64_t number) {
    for (std::size_t place = position + length; place > position; number /= 10) {
        text[--place] = static_cast<char>('0' + number % 10);
    }
}

void appendTimeOfDay(std::string& text, std::int64_t seconds) {
    const std::size_t begin = text.size();
    text += timeForm;
    putNumber(text, begin + 1, 2, seconds / 3600);
    putNumber(text, begin + 4, 2, seconds / 60 % 60);
    putNumber(text, begin + 7, 2, seconds % 60);
}

/// Midnight of the first day of `year`.
constexpr std::int64_t startOfYear(int year) noexcept {
    const std::chrono::sys_days day{std::chrono::year(year) / std::chrono::January / 1};
    return std::int64_t{day.time_since_epoch().count()} * secondsPerDay;
}

void describeInterval(quelt::TextBuilder& text, const QueltEeDateEff::Interval& interval) {
    if (interval.from == QueltEeDate::s_openBelow) {
        text << "[-inf, ";
    } else {
        text << "[" << QueltEeDate::format(interval.from) << ", ";
    }
    if (interval.to == QueltEeDate::s_openAbove) {
        text << "+inf)";
    } else {
        text << QueltEeDate::format(interval.to) << ")";
    }
}

} // namespace

std::optional<std::int64_t> QueltEeDate::parse(std::string_view text) noexcept {
    const std::string_view dateText = text.substr(0, dateForm.size());
    const std::string_view timeText = text.substr(dateText.size());
    if (!hasForm(dateText, dateForm) || !(timeText.empty() || hasForm(timeText, timeForm))) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> day = parseDay(dateText);
    const std::optional<std::int64_t> time = timeText.empty() ? 0 : parseTimeOfDay(timeText);
    return day && time ? std::optional(*day + *time) : std::nullopt;
}

std::string QueltEeDate::format(std::int64_t seconds) {
    if (seconds < startOfYear(0) || seconds >= startOfYear(10000)) {
        return std::to_string(seconds);
    }
    const auto days =
        std::chrono::floor<std::chrono::days>(std::chrono::sys_seconds(std::chrono::seconds(seconds)));
    const std::chrono::year_month_day day(days);
    std::string text(dateForm);
    putNumber(text, 0, 4, static_cast<int>(day.year()));
    putNumber(text, 5, 2, static_cast<unsigned int>(day.month()));
    putNumber(text, 8, 2, static_cast<unsigned int>(day.day()));
    const std::int64_t timeOfDay = seconds - std::int64_t{days.time_since_epoch().count()} * secondsPerDay;
    if (timeOfDay != 0) {
        appendTimeOfDay(text, timeOfDay);
    }
    return text;
}

bool QueltEeDateEff::holdsFor(std::int64_t seconds) const {
    const bool listed = std::ranges::any_of(m_intervals, [seconds](const Interval& interval) {
        return interval.from <= seconds && seconds < interval.to;
    });
    return listed != (isNegated() != 0);
}

QueltInString QueltEeDateEff::toString() const {
    quelt::TextBuilder text;
    std::string_view separator = "date in ";
    for (const Interval& interval : m_intervals) {
        text << separator;
        describeInterval(text, interval);
        separator = " | ";
    }
    if (m_intervals.empty()) {
        text << "date in {}";
    }
    return describe(text.take().view());
}

QueltEeVarEff* QueltEeDateEff::createVarEffClone() const {
    return new QueltEeDateEff(*this);
}

unsigned char QueltEeDateEff::equals(const QueltEeVarEff& other) const {
    const QueltEeDateEff* const effectivity = cast(other);
    if (effectivity == nullptr || isNoVarIncluded() != other.isNoVarIncluded()) {
        return 0;
    }
    const QueltInHeapScope scratch;
    return denotedTimes() == effectivity->denotedTimes() ? 1 : 0;
}

long QueltEeDateEff::opAnd(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::intersection);
}

long QueltEeDateEff::opOr(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::unification);
}

long QueltEeDateEff::opCut(const QueltEeVarEff& other) {
    return combine(other, quelt::SetOperation::difference);
}

unsigned char QueltEeDateEff::isAllFalse() const {
    const QueltInHeapScope scratch;
    return isNoVarIncluded() == 0 && denotedTimes() == quelt::IntervalSet() ? 1 : 0;
}

unsigned char QueltEeDateEff::isAllTrue() const {
    const QueltInHeapScope scratch;
    return isNoVarIncluded() != 0 && denotedTimes() == quelt::IntervalSet(allTimes) ? 1 : 0;
}

quelt::IntervalSet QueltEeDateEff::denotedTimes() const {
    quelt::IntervalSet times;
    for (const Interval& interval : m_intervals) {
        times.gather({interval.from, interval.to});
    }
    times.normalise();
    return isNegated() != 0 ? times.complementWithin(allTimes) : times;
}

long QueltEeDateEff::combine(const QueltEeVarEff& other, quelt::SetOperation operation) {
    const QueltEeDateEff* const effectivity = cast(other);
    if (effectivity == nullptr) {
        return E_INVALIDARG;
    }
    const auto times = [this, effectivity, operation] {
        const QueltInHeapScope scratch;
        return quelt::IntervalSet::combine(denotedTimes(), effectivity->denotedTimes(), operation);
    }();
    const std::span<const Times> result = times.intervals();
    if (result.size() > quelt::maxResultLength) {
        return E_OUTOFMEMORY;
    }
    m_intervals.reserve(result.size());
    const bool noVar = quelt::combineMember(operation, isNoVarIncluded() != 0, other.isNoVarIncluded() != 0);
    m_intervals.clear();
    for (const Times& part : result) {
        m_intervals.push_back({part.from, part.to});
    }
    setFlags(false, noVar);
    return S_OK;
}
