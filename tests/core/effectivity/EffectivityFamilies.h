#pragma once

// The five classes of variable effectivities, each with a small domain, for tests that hold for all of them.
// What a set is, is worked out here member by member from what was put in, without help from the classes
// under test.

#include "core/dictionary/TestTools.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "infrastructure/QueltInResult.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// What an effectivity denotes: the members of the small domain that are in, and whether "no variable" is.
struct Denoted {
    std::set<std::int64_t> members;
    bool noVar = false;
    friend bool operator==(const Denoted&, const Denoted&) = default;
};

inline void PrintTo(const Denoted& denoted, std::ostream* stream) {
    *stream << "{";
    for (const std::int64_t member : denoted.members) {
        *stream << member << " ";
    }
    *stream << (denoted.noVar ? "}?" : "}");
}

/// Turns round what the flags turn round: `listed` is what the stored values say.
inline Denoted denotedBy(const QueltEeVarEff& effectivity, const std::vector<std::int64_t>& domain,
                         const std::set<std::int64_t>& listed) {
    Denoted denoted;
    const bool negated = effectivity.isNegated() != 0;
    for (const std::int64_t member : domain) {
        if (listed.contains(member) != negated) {
            denoted.members.insert(member);
        }
    }
    denoted.noVar = (effectivity.getNoVar() != 0) != negated;
    return denoted;
}

inline void randomiseFlags(QueltEeVarEff& effectivity, Random& random) {
    if (random.flip()) {
        effectivity.opNot();
    }
    if (random.flip()) {
        effectivity.switchNoVar();
    }
}

/// What no set operation takes together, in either order, is not equal either.
inline void expectNotCombinable(QueltEeVarEff& effectivity, QueltEeVarEff& alien) {
    EXPECT_EQ(effectivity.opAnd(alien), E_INVALIDARG);
    EXPECT_EQ(effectivity.opOr(alien), E_INVALIDARG);
    EXPECT_EQ(effectivity.opCut(alien), E_INVALIDARG);
    EXPECT_EQ(effectivity.equals(alien), 0);
    EXPECT_EQ(alien.opAnd(effectivity), E_INVALIDARG);
    EXPECT_EQ(alien.opOr(effectivity), E_INVALIDARG);
    EXPECT_EQ(alien.equals(effectivity), 0);
}

/// The bounds that matter, their neighbours, and nothing else: between two of them nothing can change.
template <class Number>
std::vector<std::int64_t> neighboursOf(const std::vector<Number>& bounds, std::int64_t first,
                                       std::int64_t last) {
    std::set<std::int64_t> numbers;
    for (const Number bound : bounds) {
        numbers.insert(bound);
        if (bound > first) {
            numbers.insert(std::int64_t{bound} - 1);
        }
        if (bound < last) {
            numbers.insert(std::int64_t{bound} + 1);
        }
    }
    std::erase_if(numbers, [first, last](std::int64_t number) { return number < first || number > last; });
    return {numbers.begin(), numbers.end()};
}

/// Serial effectivities around the numbers where bounds and open ends lie.
class SerialFamily {
public:
    using Eff = QueltEeSerialEff;

    [[nodiscard]] const std::vector<std::int64_t>& domain() const { return m_domain; }
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> empty() const { return std::make_unique<Eff>(&m_unit); }
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> random(Random& random) const {
        auto effectivity = std::make_unique<Eff>(&m_unit);
        for (unsigned int count = random.below(6); count > 0; --count) {
            effectivity->addInterval({random.oneOf(m_bounds), random.oneOf(m_bounds),
                                      static_cast<unsigned char>(random.below(3)),
                                      static_cast<unsigned char>(random.below(3))});
        }
        randomiseFlags(*effectivity, random);
        return effectivity;
    }
    [[nodiscard]] Denoted read(const QueltEeVarEff& given) const {
        const auto& effectivity = dynamic_cast<const Eff&>(given);
        std::set<std::int64_t> listed;
        for (const std::int64_t number : m_domain) {
            for (const Eff::Interval& interval : effectivity.intervals()) {
                const bool above = interval.a == -2000000000 || number > interval.a ||
                                   (number == interval.a && interval.aIncl != 0);
                const bool below = interval.b == 2000000000 || number < interval.b ||
                                   (number == interval.b && interval.bIncl != 0);
                if (above && below) {
                    listed.insert(number);
                }
            }
        }
        return denotedBy(given, m_domain, listed);
    }
    static bool holds(const QueltEeVarEff& effectivity, std::int64_t member) {
        return dynamic_cast<const Eff&>(effectivity).holdsFor(static_cast<int>(member));
    }

private:
    static constexpr int s_min = std::numeric_limits<int>::min();
    static constexpr int s_max = std::numeric_limits<int>::max();
    QueltEeSerialVar m_unit{"Unit", guidOf(1), QueltEeSerialVar::SerialExternalType::productSeries};
    std::vector<int> m_bounds{s_min,       s_min + 1,  -2000000001, -2000000000, -2000000000, -2000000000,
                              -1999999999, -3,         0,           1,           2,           3,
                              4,           5,          7,           10,          20,          1999999999,
                              2000000000,  2000000000, 2000000000,  2000000001,  s_max - 1,   s_max};
    std::vector<std::int64_t> m_domain = neighboursOf(m_bounds, s_min, s_max);
};

/// Date effectivities; times a few seconds apart, and the ends of time.
class DateFamily {
public:
    using Eff = QueltEeDateEff;

    [[nodiscard]] const std::vector<std::int64_t>& domain() const { return m_domain; }
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> empty() const { return std::make_unique<Eff>(); }
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> random(Random& random) const {
        auto effectivity = std::make_unique<Eff>();
        for (unsigned int count = random.below(6); count > 0; --count) {
            effectivity->addInterval({random.oneOf(m_bounds), random.oneOf(m_bounds)});
        }
        randomiseFlags(*effectivity, random);
        return effectivity;
    }
    [[nodiscard]] Denoted read(const QueltEeVarEff& given) const {
        const auto& effectivity = dynamic_cast<const Eff&>(given);
        std::set<std::int64_t> listed;
        for (const std::int64_t time : m_domain) {
            for (const Eff::Interval& interval : effectivity.intervals()) {
                if (interval.from <= time && time < interval.to) {
                    listed.insert(time);
                }
            }
        }
        return denotedBy(given, m_domain, listed);
    }
    static bool holds(const QueltEeVarEff& effectivity, std::int64_t member) {
        return dynamic_cast<const Eff&>(effectivity).holdsFor(member);
    }

private:
    std::vector<std::int64_t> m_bounds{QueltEeDate::s_openBelow,
                                       QueltEeDate::s_openBelow,
                                       QueltEeDate::s_openBelow + 1,
                                       -62167219200, // the start of the year 0000
                                       -86400,
                                       0,
                                       1,
                                       2,
                                       5,
                                       7,
                                       86400,
                                       253402300800, // the start of the year 10000
                                       QueltEeDate::s_openAbove - 1,
                                       QueltEeDate::s_openAbove,
                                       QueltEeDate::s_openAbove};
    std::vector<std::int64_t> m_domain =
        neighboursOf(m_bounds, QueltEeDate::s_openBelow, QueltEeDate::s_openAbove - 1);
};

/// Option and selection effectivities; with `count` values.
template <class EffClass, class VarClass, std::uint32_t count>
class NamedValueFamily {
public:
    using Eff = EffClass;

    NamedValueFamily() {
        for (std::uint32_t number = 0; number < count; ++number) {
            m_variable.addValue("V" + std::to_string(number));
            m_domain.push_back(number);
        }
    }
    [[nodiscard]] const std::vector<std::int64_t>& domain() const { return m_domain; }
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> empty() const { return std::make_unique<Eff>(&m_variable); }
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> random(Random& random) const {
        auto effectivity = std::make_unique<Eff>(&m_variable);
        for (unsigned int values = random.below(count + 3); values > 0 && count > 0; --values) {
            EXPECT_EQ(effectivity->addValue(random.below(count)), 0);
        }
        randomiseFlags(*effectivity, random);
        return effectivity;
    }
    [[nodiscard]] Denoted read(const QueltEeVarEff& given) const {
        const auto values = dynamic_cast<const Eff&>(given).getValues();
        return denotedBy(given, m_domain, {values.begin(), values.end()});
    }
    static bool holds(const QueltEeVarEff& effectivity, std::int64_t member) {
        return dynamic_cast<const Eff&>(effectivity).holdsFor(static_cast<std::uint32_t>(member));
    }

private:
    VarClass m_variable{"Engine", guidOf(2)};
    std::vector<std::int64_t> m_domain;
};

using OptionFamily = NamedValueFamily<QueltEeOptionEff, QueltEeCatOptionVar, 5>;
using SelectionFamily = NamedValueFamily<QueltEeSelectionEff, QueltEeSelectionVar, 3>;
/// As many values as fill some words of bits exactly, and one more.
using OptionsOf128Family = NamedValueFamily<QueltEeOptionEff, QueltEeCatOptionVar, 128>;
using OptionsOf129Family = NamedValueFamily<QueltEeOptionEff, QueltEeCatOptionVar, 129>;
/// Without any values, only "no variable" is left.
using OptionsOfNothingFamily = NamedValueFamily<QueltEeOptionEff, QueltEeCatOptionVar, 0>;

/// The sequence numbers of the elements of `selection` in `variable`, found by walking every way from end to
/// end.
inline std::set<std::int64_t> elementsByWalking(const QueltEeTreeSeriesVar& variable,
                                                const QueltEeTreeSeriesSelection& selection) {
    const auto wayFromRoot = [](const QueltEeTreeSeriesElement* element) {
        std::vector<const QueltEeTreeSeriesElement*> way;
        for (; element != nullptr; element = element->getParent()) {
            way.insert(way.begin(), element);
        }
        return way;
    };
    std::set<std::int64_t> elements;
    if (selection.getSingle()) {
        if (selection.getSingle()->included) {
            elements.insert(selection.getSingle()->element->getSeqNumber());
        }
        return elements;
    }
    // Without to-bound, every element is the end of a way, and is included.
    std::vector<QueltEeTreeSeriesSelection::Bound> ends(selection.getTo().begin(), selection.getTo().end());
    if (ends.empty()) {
        for (const auto& element : variable.getElements()) {
            ends.push_back({element.get(), true});
        }
    }
    for (const auto& end : ends) {
        std::vector<const QueltEeTreeSeriesElement*> way = wayFromRoot(end.element);
        if (!end.included) {
            way.pop_back();
        }
        if (const auto& from = selection.getFrom()) {
            const std::vector<const QueltEeTreeSeriesElement*> whole = wayFromRoot(end.element);
            if (std::find(whole.begin(), whole.end(), from->element) == whole.end()) {
                continue;
            }
            const auto start = std::find(way.begin(), way.end(), from->element);
            way.erase(way.begin(), start == way.end() ? start : start + (from->included ? 0 : 1));
        }
        for (const QueltEeTreeSeriesElement* const element : way) {
            elements.insert(element->getSeqNumber());
        }
    }
    return elements;
}

/// Tree-series effectivities on a tree with chains and branches.
class TreeSeriesFamily {
public:
    using Eff = QueltEeTreeSeriesEff;

    TreeSeriesFamily() {
        m_line.addRootElement(100);
        for (const auto& [number, parent] : std::vector<std::pair<unsigned int, unsigned int>>{
                 {5, 100}, {7, 5}, {9, 7}, {8, 7}, {3, 100}, {2, 3}, {1, 2}, {40, 1}, {41, 2}, {0, 9}}) {
            EXPECT_EQ(m_line.addElement(number, parent), 0);
        }
        for (const auto& element : m_line.getElements()) {
            m_domain.push_back(element->getSeqNumber());
        }
        std::sort(m_domain.begin(), m_domain.end());
    }
    [[nodiscard]] const std::vector<std::int64_t>& domain() const { return m_domain; }
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> empty() const { return std::make_unique<Eff>(m_line); }
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> random(Random& random) const {
        auto effectivity = std::make_unique<Eff>(m_line);
        for (unsigned int count = random.below(4); count > 0; --count) {
            EXPECT_EQ(effectivity->addSelection(randomSelection(random)), 0);
        }
        randomiseFlags(*effectivity, random);
        return effectivity;
    }
    [[nodiscard]] Denoted read(const QueltEeVarEff& given) const {
        std::set<std::int64_t> listed;
        for (const QueltEeTreeSeriesSelection& selection : dynamic_cast<const Eff&>(given).getSelections()) {
            listed.merge(elementsByWalking(m_line, selection));
        }
        return denotedBy(given, m_domain, listed);
    }
    [[nodiscard]] bool holds(const QueltEeVarEff& effectivity, std::int64_t member) const {
        QueltEeTreeSeriesElement* element = nullptr;
        EXPECT_EQ(m_line.getElement(static_cast<unsigned int>(member), element), 0);
        return dynamic_cast<const Eff&>(effectivity).holdsFor(*element);
    }

private:
    [[nodiscard]] QueltEeTreeSeriesSelectionBound randomBound(Random& random) const {
        return {random.oneOf(m_line.getElements()).get(), static_cast<unsigned char>(random.below(3))};
    }
    [[nodiscard]] QueltEeTreeSeriesSelection randomSelection(Random& random) const {
        QueltEeTreeSeriesSelection selection;
        if (random.below(4) == 0) {
            EXPECT_EQ(selection.setSingleSelection(randomBound(random)), 0);
            return selection;
        }
        if (random.below(4) != 0) {
            EXPECT_EQ(selection.setFromBound(randomBound(random)), 0);
        }
        for (unsigned int count = random.below(4); count > 0; --count) {
            EXPECT_EQ(selection.addToBound(randomBound(random)), 0);
        }
        return selection;
    }

    QueltEeTreeSeriesVar m_line{"Line", guidOf(3), 18};
    std::vector<std::int64_t> m_domain;
};
