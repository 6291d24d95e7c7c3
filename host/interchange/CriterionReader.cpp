#include "interchange/CriterionReader.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"

#include <string>

namespace quelt::host {

namespace {

std::string_view describeKind(const Feature& feature) {
    switch (feature.form()) {
    case Key::option:
        return "an option";
    case Key::selection:
        return "a selection";
    case Key::serial:
        return "a serial variable";
    default:
        return "a tree series";
    }
}

std::string describeHolder(const QueltEeVariable& variable) {
    const QueltEeModelDico* const holder = variable.getHolderDico();
    return holder != nullptr ? "in " + inQuotes(holder->getName().view()) : "at the top";
}

[[noreturn]] void refuseAmbiguous(const Value& name, const LoadedContext::Bearers& bearers) {
    name.refuse("ambiguous: " + inQuotes(name.text()) + " " + describeHolder(*bearers.first) + " and " +
                describeHolder(*bearers.other) + " are different features, 'of' must say which is meant");
}

/// The two items of an interval written [from, to].
struct Pair {
    explicit Pair(const Value& interval) {
        interval.eachItem([this](const Value& item) {
            if (m_count < m_items.size()) {
                m_items[m_count] = item;
            }
            ++m_count;
        });
        if (m_count != m_items.size()) {
            interval.refuse("an interval has two bounds, not " + std::to_string(m_count));
        }
    }
    [[nodiscard]] const Value& from() const { return *m_items[0]; }
    [[nodiscard]] const Value& to() const { return *m_items[1]; }

private:
    std::array<std::optional<Value>, 2> m_items;
    std::size_t m_count = 0;
};

int readBound(const Value& bound, int openEnd) {
    return bound.isNull() ? openEnd : bound.int32();
}

QueltEeSerialEff::Interval readSerialInterval(const Value& item) {
    constexpr int openLower = QueltInSerialInterval::s_openLower;
    constexpr int openUpper = QueltInSerialInterval::s_openUpper;
    if (item.isArray()) {
        const Pair pair(item);
        return {readBound(pair.from(), openLower), readBound(pair.to(), openUpper), 1, 1};
    }
    if (!item.isObject()) {
        item.refuseType("an interval (an array or an object)");
    }
    const Fields<Key::from, Key::to, Key::fromIncl, Key::toIncl> fields(item);
    const int from = readBound(fields.need<Key::from>(), openLower);
    const int to = readBound(fields.need<Key::to>(), openUpper);
    const bool fromIncluded = fields.flag<Key::fromIncl>(true);
    const bool toIncluded = fields.flag<Key::toIncl>(true);
    return {from, to, static_cast<unsigned char>(fromIncluded), static_cast<unsigned char>(toIncluded)};
}

std::int64_t readDateBound(const Value& bound, std::int64_t openEnd) {
    if (bound.isNull()) {
        return openEnd;
    }
    const std::string_view text = bound.text();
    const std::optional<std::int64_t> seconds = QueltEeDate::parse(text);
    if (!seconds) {
        bound.refuse(inQuotes(text) + " is no date (YYYY-MM-DD or YYYY-MM-DDThh:mm:ssZ)");
    }
    return *seconds;
}

using SelectionFields = Fields<Key::single, Key::singleIncl, Key::from, Key::fromIncl, Key::to, Key::toIncl>;

const QueltEeTreeSeriesElement* findElement(const QueltEeTreeSeriesVar& variable, const Value& number) {
    QueltEeTreeSeriesElement* element = nullptr;
    const unsigned int sequenceNumber = number.uint32();
    if (variable.getElement(sequenceNumber, element) < 0 || element == nullptr) {
        number.refuse("tree series " + inQuotes(variable.getName().view()) + " has no element " +
                      std::to_string(sequenceNumber));
    }
    return element;
}

template <Key Bound, Key Included>
QueltEeTreeSeriesSelectionBound readSelectionBound(const QueltEeTreeSeriesVar& variable,
                                                   const SelectionFields& fields) {
    const QueltEeTreeSeriesElement* const element = findElement(variable, fields.need<Bound>());
    return {element, static_cast<unsigned char>(fields.flag<Included>(true))};
}

/// Reads one entry. A bound is set once at most, so that the selection refuses none.
QueltEeTreeSeriesSelection readSelection(const QueltEeTreeSeriesVar& variable, const Value& item) {
    const SelectionFields fields(item);
    QueltEeTreeSeriesSelection selection;
    if (fields.has<Key::single>()) {
        fields.allowOnly(SelectionFields::s_mask<Key::single, Key::singleIncl>, [] { return "'single'"; });
        selection.setSingleSelection(readSelectionBound<Key::single, Key::singleIncl>(variable, fields));
        return selection;
    }
    const bool hasFrom = fields.has<Key::from>();
    const bool hasTo = fields.has<Key::to>();
    if (!hasFrom && !hasTo) {
        item.refuse("expected 'single', 'from' or 'to'");
    }
    fields.allowOnly((hasFrom ? SelectionFields::s_mask<Key::from, Key::fromIncl> : 0) |
                         (hasTo ? SelectionFields::s_mask<Key::to, Key::toIncl> : 0),
                     [] { return "the bounds that are given"; });
    if (hasFrom) {
        selection.setFromBound(readSelectionBound<Key::from, Key::fromIncl>(variable, fields));
    }
    if (hasTo) {
        selection.addToBound(readSelectionBound<Key::to, Key::toIncl>(variable, fields));
    }
    return selection;
}

} // namespace

std::unique_ptr<QueltEeVarEff> CriterionReader::read(Key form, const NodeFields& fields) const {
    std::unique_ptr<QueltEeVarEff> effectivity;
    switch (form) {
    case Key::option:
        effectivity = readNamedValues<QueltEeOptionEff, QueltEeCatOptionVar>(form, fields);
        break;
    case Key::selection:
        effectivity = readNamedValues<QueltEeSelectionEff, QueltEeSelectionVar>(form, fields);
        break;
    case Key::serial:
        effectivity = readSerial(fields);
        break;
    case Key::treeSeries:
        effectivity = readTreeSeries(fields);
        break;
    default:
        effectivity = readDate(fields);
        break;
    }
    if (fields.flag<Key::negated>()) {
        effectivity->opNot();
    }
    if (fields.flag<Key::noVar>()) {
        effectivity->switchNoVar();
    }
    return effectivity;
}

const Feature* CriterionReader::findFeature(Key form, const NodeFields& fields) const {
    const Value name = fields.get(form);
    if (name.isNull()) {
        if (const std::optional<Value> of = fields.find<Key::of>()) {
            of->refuse("an effectivity without variable has no 'of'");
        }
        return nullptr;
    }
    const Feature& found = lookUp(name, fields);
    if (found.form() != form) {
        name.refuse(inQuotes(name.text()) + " is " + std::string(describeKind(found)) + ", not of the kind " +
                    inQuotes(nameOf(form)));
    }
    return &found;
}

/// The form of its criteria tells a variable's class.
template <class Variable>
const Variable* CriterionReader::findVariable(Key form, const NodeFields& fields) const {
    const Feature* const feature = findFeature(form, fields);
    return feature != nullptr ? static_cast<const Variable*>(&feature->variable()) : nullptr;
}

const Feature& CriterionReader::lookUp(const Value& name, const NodeFields& fields) const {
    const std::string_view text = name.text();
    const std::optional<Value> of = fields.find<Key::of>();
    if (!of) {
        const LoadedContext::Bearers* const bearers = m_context.findBearers(text);
        if (bearers == nullptr) {
            name.refuse("no variable " + inQuotes(text));
        }
        if (bearers->other != nullptr) {
            refuseAmbiguous(name, *bearers);
        }
        return *bearers->feature;
    }
    if (of->isNull()) {
        const Feature* const feature = m_context.findFeature(nullptr, text);
        if (feature == nullptr) {
            name.refuse("no variable " + inQuotes(text) + " at the top");
        }
        return *feature;
    }
    const QueltEeModelDico* const dictionary = m_context.findDictionary(of->text());
    if (dictionary == nullptr) {
        of->refuse("no dictionary " + inQuotes(of->text()));
    }
    const Feature* const feature = m_context.findFeature(dictionary, text);
    if (feature == nullptr) {
        name.refuse("no variable " + inQuotes(text) + " in dictionary " + inQuotes(of->text()));
    }
    return *feature;
}

template <class Effectivity, class Variable>
std::unique_ptr<QueltEeVarEff> CriterionReader::readNamedValues(Key form, const NodeFields& fields) const {
    const Feature* const feature = findFeature(form, fields);
    auto effectivity = std::make_unique<Effectivity>(
        feature != nullptr ? static_cast<const Variable*>(&feature->variable()) : nullptr);
    fields.need<Key::in>().eachItem([&](const Value& item) {
        const std::string_view value = item.text();
        if (feature == nullptr) {
            item.refuse("an effectivity without variable has no values");
        }
        const std::uint32_t* const number = feature->findValue(value);
        if (number == nullptr || effectivity->addValue(*number) < 0) {
            item.refuse(inQuotes(feature->variable().getName().view()) + " has no value " + inQuotes(value));
        }
    });
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> CriterionReader::readSerial(const NodeFields& fields) const {
    auto effectivity =
        std::make_unique<QueltEeSerialEff>(findVariable<QueltEeSerialVar>(Key::serial, fields));
    fields.need<Key::in>().eachItem(
        [&](const Value& item) { effectivity->addInterval(readSerialInterval(item)); });
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> CriterionReader::readTreeSeries(const NodeFields& fields) const {
    const QueltEeTreeSeriesVar* const variable = findVariable<QueltEeTreeSeriesVar>(Key::treeSeries, fields);
    auto effectivity = std::make_unique<QueltEeTreeSeriesEff>(variable);
    fields.need<Key::in>().eachItem([&](const Value& item) {
        if (variable == nullptr) {
            item.refuse("an effectivity without variable has no elements");
        }
        effectivity->addSelection(readSelection(*variable, item));
    });
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> CriterionReader::readDate(const NodeFields& fields) {
    auto effectivity = std::make_unique<QueltEeDateEff>();
    fields.get(Key::date).eachItem([&](const Value& item) {
        const Pair pair(item);
        effectivity->addInterval({readDateBound(pair.from(), QueltEeDate::s_openBelow),
                                  readDateBound(pair.to(), QueltEeDate::s_openAbove)});
    });
    return effectivity;
}

} // namespace quelt::host
