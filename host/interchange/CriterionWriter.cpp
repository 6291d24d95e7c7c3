#include "interchange/CriterionWriter.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"

namespace quelt::host {

namespace {

void writeBound(JsonWriter& writer, std::int64_t bound, std::int64_t openEnd) {
    if (bound == openEnd) {
        writer.null();
    } else {
        writer.number(bound);
    }
}

void writeExclusive(JsonWriter& writer, Key name, bool isIncluded) {
    if (!isIncluded) {
        writer.key(name);
        writer.flag(false);
    }
}

void writeSerialInterval(JsonWriter& writer, const QueltEeSerialEff::Interval& interval) {
    constexpr int openLower = QueltInSerialInterval::s_openLower;
    constexpr int openUpper = QueltInSerialInterval::s_openUpper;
    if (interval.aIncl != 0 && interval.bIncl != 0) {
        writer.beginArray();
        writeBound(writer, interval.a, openLower);
        writeBound(writer, interval.b, openUpper);
        writer.endArray();
        return;
    }
    writer.beginObject();
    writer.key(Key::from);
    writeBound(writer, interval.a, openLower);
    writer.key(Key::to);
    writeBound(writer, interval.b, openUpper);
    writeExclusive(writer, Key::fromIncl, interval.aIncl != 0);
    writeExclusive(writer, Key::toIncl, interval.bIncl != 0);
    writer.endObject();
}

using Bound = QueltEeTreeSeriesSelection::Bound;

/// Writes a selection with at most one end.
void writeSelection(JsonWriter& writer, const std::optional<Bound>& single, const std::optional<Bound>& from,
                    const Bound* to) {
    const auto isIncluded = [](const Bound* bound) { return bound == nullptr || bound->included; };
    const auto writeElement = [&writer](Key name, const Bound* bound) {
        if (bound != nullptr) {
            writer.key(name);
            writer.number(bound->element->getSeqNumber());
        }
    };
    const Bound* const singleBound = single ? &*single : nullptr;
    const Bound* const fromBound = from ? &*from : nullptr;
    writer.beginObject();
    writeElement(Key::single, singleBound);
    writeElement(Key::from, fromBound);
    writeElement(Key::to, to);
    writeExclusive(writer, Key::fromIncl, isIncluded(fromBound));
    writeExclusive(writer, Key::toIncl, isIncluded(to));
    writeExclusive(writer, Key::singleIncl, isIncluded(singleBound));
    writer.endObject();
}

void writeDateBound(JsonWriter& writer, std::int64_t seconds) {
    if (seconds == QueltEeDate::s_openBelow || seconds == QueltEeDate::s_openAbove) {
        writer.null();
    } else {
        writer.text(QueltEeDate::format(seconds));
    }
}

void writeValues(JsonWriter& writer, const QueltEeNamedValueEff& effectivity, const Feature* feature) {
    if (feature != nullptr) {
        for (const std::uint32_t number : effectivity.getValues()) {
            writer.written(feature->writtenValue(number));
        }
        return;
    }
    const auto* const variable = QueltEeNamedValueVar::cast(effectivity.getVar());
    for (const std::uint32_t number : effectivity.getValues()) {
        writer.text(variable->getValueName(number));
    }
}

void writeIntervals(JsonWriter& writer, const QueltEeSerialEff& effectivity) {
    for (const QueltEeSerialEff::Interval& interval : effectivity.intervals()) {
        writeSerialInterval(writer, interval);
    }
}

void writeSelections(JsonWriter& writer, const QueltEeTreeSeriesEff& effectivity) {
    for (const QueltEeTreeSeriesSelection& selection : effectivity.getSelections()) {
        const std::span<const Bound> ends = selection.getTo();
        if (ends.empty()) {
            writeSelection(writer, selection.getSingle(), selection.getFrom(), nullptr);
        }
        for (const Bound& end : ends) { // several ends mean the ways to each
            writeSelection(writer, selection.getSingle(), selection.getFrom(), &end);
        }
    }
}

void writeDate(JsonWriter& writer, const QueltEeDateEff& effectivity) {
    writer.beginObject();
    writer.key(Key::date);
    writer.beginArray();
    for (const QueltEeDateEff::Interval& interval : effectivity.intervals()) {
        writer.beginArray();
        writeDateBound(writer, interval.from);
        writeDateBound(writer, interval.to);
        writer.endArray();
    }
}

} // namespace

void CriterionWriter::write(JsonWriter& writer, const QueltEeVarEff& effectivity) const {
    const QueltEeDicoObject* const variable = effectivity.getVar();
    const Feature* const feature = variable != nullptr ? m_context.featureOf(variable) : nullptr;
    if (const auto* const option = QueltEeOptionEff::cast(&effectivity)) {
        begin(writer, Key::option, variable, feature);
        writeValues(writer, *option, feature);
    } else if (const auto* const selection = QueltEeSelectionEff::cast(&effectivity)) {
        begin(writer, Key::selection, variable, feature);
        writeValues(writer, *selection, feature);
    } else if (const auto* const serial = QueltEeSerialEff::cast(&effectivity)) {
        begin(writer, Key::serial, variable, feature);
        writeIntervals(writer, *serial);
    } else if (const auto* const treeSeries = QueltEeTreeSeriesEff::cast(&effectivity)) {
        begin(writer, Key::treeSeries, variable, feature);
        writeSelections(writer, *treeSeries);
    } else if (const auto* const date = QueltEeDateEff::cast(&effectivity)) {
        writeDate(writer, *date);
    }
    writer.endArray();
    if (effectivity.isNegated() != 0) {
        writer.key(Key::negated);
        writer.flag(true);
    }
    if (effectivity.getNoVar() != 0) {
        writer.key(Key::noVar);
        writer.flag(true);
    }
    writer.endObject();
}

void CriterionWriter::begin(JsonWriter& writer, Key form, const QueltEeDicoObject* variable,
                            const Feature* feature) const {
    if (feature != nullptr) {
        writer.writtenBeginning(feature->writtenBeginning());
        return;
    }
    writer.beginObject();
    if (const auto* const known = QueltEeVariable::cast(variable)) {
        const LoadedContext::Bearers* const bearers = m_context.findBearers(known->getName().view());
        writeVariable(writer, form, *known, bearers == nullptr || bearers->first == known);
    } else {
        writer.key(form);
        writer.null();
    }
    writer.key(Key::in);
    writer.beginArray();
}

} // namespace quelt::host
