#pragma once

#include "interchange/JsonParser.h"
#include "interchange/LoadedContext.h"

#include <memory>

namespace quelt::host {

/// Reads the text of a context file. A byte-order mark in front is skipped. Throws a SyntaxRefusal for what
/// is not JSON, and a Refusal that names the place for what a context cannot be made from.
[[nodiscard]] std::unique_ptr<LoadedContext> readContext(PaddedText text);

} // namespace quelt::host
