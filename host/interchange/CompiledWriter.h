#pragma once

#include "compiled/QueltFltEffectivity.h"
#include "interchange/JsonWriter.h"

namespace quelt::host {

/// Writes `effectivity` spelt out, as it stands behind "compiled". Its normal forms have literals of the two
/// kinds that compiled binaries know, on changes and on options.
void writeCompiled(JsonWriter& writer, const QueltFltEffectivity& effectivity);

/// True when every text in `effectivity` is UTF-8, which JSON asks for and compiled binaries do not.
[[nodiscard]] bool isWritable(const QueltFltEffectivity& effectivity);

} // namespace quelt::host
