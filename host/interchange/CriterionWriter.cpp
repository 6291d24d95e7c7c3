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

} // namespace

void CriterionWriter::write(JsonWriter& writer, const QueltEeVarEff& effectivity) const {
    writer.beginObject();
    if (const auto* const option = QueltEeOptionEff::cast(&effectivity)) {
        writeNamedValues(writer, Key::option, *option);
    } else if (const auto* const selection = QueltEeSelectionEff::cast(&effectivity)) {
        writeNamedValues(writer, Key::selection, *selection);
    } else if (const auto* const serial = QueltEeSerialEff::cast(&effectivity)) {
        writeSerial(writer, *serial);
    } else if (const auto* const treeSeries = QueltEeTreeSeriesEff::cast(&effectivity)) {
        writeTreeSeries(writer, *treeSeries);
    } else if (const auto* const date = QueltEeDateEff::cast(&effectivity)) {
        writeDate(writer, *date);
    }
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

void CriterionWriter::writeVariable(JsonWriter& writer, Key form, const QueltEeDicoObject* variable) const {
    writer.key(form);
    if (variable == nullptr) {
        writer.null();
        return;
    }
    const std::string_view name = variable->getName().view();
    writer.text(name);
    const auto* const feature = QueltEeVariable::cast(variable);
    const QueltEeModelDico* const holder = feature != nullptr ? feature->getHolderDico() : nullptr;
    if (holder != nullptr) {
        writer.key(Key::of);
        writer.text(holder->getName().view());
        return;
    }
    // Without "of" the name of a variable at the top would be taken for one that a dictionary holds.
    const LoadedContext::Bearers* const bearers = m_context.findBearers(name);
    if (bearers != nullptr && bearers->first != variable) {
        writer.key(Key::of);
        writer.null();
    }
}

void CriterionWriter::writeNamedValues(JsonWriter& writer, Key form,
                                       const QueltEeNamedValueEff& effectivity) const {
    writeVariable(writer, form, effectivity.getVar());
    writer.key(Key::in);
    writer.beginArray();
    const auto* const variable = QueltEeNamedValueVar::cast(effectivity.getVar());
    for (const std::uint32_t number : effectivity.getValues()) {
        writer.text(variable->getValueName(number));
    }
    writer.endArray();
}

void CriterionWriter::writeSerial(JsonWriter& writer, const QueltEeSerialEff& effectivity) const {
    writeVariable(writer, Key::serial, effectivity.getVar());
    writer.key(Key::in);
    writer.beginArray();
    for (const QueltEeSerialEff::Interval& interval : effectivity.intervals()) {
        writeSerialInterval(writer, interval);
    }
    writer.endArray();
}

void CriterionWriter::writeTreeSeries(JsonWriter& writer, const QueltEeTreeSeriesEff& effectivity) const {
    writeVariable(writer, Key::treeSeries, effectivity.getVar());
    writer.key(Key::in);
    writer.beginArray();
    for (const QueltEeTreeSeriesSelection& selection : effectivity.getSelections()) {
        const std::span<const Bound> ends = selection.getTo();
        if (ends.empty()) {
            writeSelection(writer, selection.getSingle(), selection.getFrom(), nullptr);
        }
        for (const Bound& end : ends) { // several ends mean the ways to each
            writeSelection(writer, selection.getSingle(), selection.getFrom(), &end);
        }
    }
    writer.endArray();
}

void CriterionWriter::writeDate(JsonWriter& writer, const QueltEeDateEff& effectivity) {
    writer.key(Key::date);
    writer.beginArray();
    for (const QueltEeDateEff::Interval& interval : effectivity.intervals()) {
        writer.beginArray();
        writeDateBound(writer, interval.from);
        writeDateBound(writer, interval.to);
        writer.endArray();
    }
    writer.endArray();
}

} // namespace quelt::host
