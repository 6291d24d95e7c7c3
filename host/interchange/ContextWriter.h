#pragma once

#include "interchange/JsonWriter.h"
#include "interchange/LoadedContext.h"

namespace quelt::host {

/// Writes `context` as a context file has it.
void writeContext(JsonWriter& writer, const LoadedContext& context);

} // namespace quelt::host
