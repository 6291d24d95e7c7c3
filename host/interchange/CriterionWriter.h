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
    /// Writes the beginning of a criterion, up to what it has `in`.
    void begin(JsonWriter& writer, Key form, const QueltEeDicoObject* variable, const Feature* feature) const;

    const LoadedContext& m_context;
};

} // namespace quelt::host
