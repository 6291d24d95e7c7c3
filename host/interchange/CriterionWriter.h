#pragma once

#include "effectivity/QueltEeVarEff.h"
#include "interchange/JsonWriter.h"
#include "interchange/LoadedContext.h"

class QueltEeDateEff;
class QueltEeNamedValueEff;
class QueltEeSerialEff;
class QueltEeTreeSeriesEff;

namespace quelt::host {

/// Writes variable effectivities as criteria.
class CriterionWriter {
public:
    /// `context` tells which names need an "of"; it must outlive the writer.
    explicit CriterionWriter(const LoadedContext& context) noexcept : m_context(context) {}

    /// Writes `effectivity`, of one of the five classes of the core.
    void write(JsonWriter& writer, const QueltEeVarEff& effectivity) const;

private:
    void writeVariable(JsonWriter& writer, Key form, const QueltEeDicoObject* variable) const;
    void writeNamedValues(JsonWriter& writer, Key form, const QueltEeNamedValueEff& effectivity) const;
    void writeSerial(JsonWriter& writer, const QueltEeSerialEff& effectivity) const;
    void writeTreeSeries(JsonWriter& writer, const QueltEeTreeSeriesEff& effectivity) const;
    static void writeDate(JsonWriter& writer, const QueltEeDateEff& effectivity);

    const LoadedContext& m_context;
};

} // namespace quelt::host
