#pragma once

#include "interchange/LoadedContext.h"

#include <string>

class QueltEeExpression;

namespace quelt::host::test {

/// Everything there is to know of an expression, or of a context, as a text: equal texts mean equal
/// structures, down to flags and holders. Written independently of the interchange form.
[[nodiscard]] std::string dump(const QueltEeExpression& expression);
[[nodiscard]] std::string dump(const LoadedContext& context);

} // namespace quelt::host::test
