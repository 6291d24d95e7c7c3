#pragma once

#include "expression/QueltEeExpression.h"

#include <functional>
#include <memory>

class QueltEeEffectivity;

namespace quelt::host {

/// Says which effectivity a copy refers to where the original refers to this one.
using ReplaceEffectivity = std::function<QueltEeEffectivity&(QueltEeEffectivity&)>;

/// A copy of `expression`, in the memory that is current on the thread: trees, criteria and lists are copied,
/// dictionaries and variables shared, effectivities replaced. Uses bounded stack for trees of any depth. Null
/// for an expression that is neither a generic, a filter, an effectivity nor a change expression.
[[nodiscard]] std::unique_ptr<QueltEeExpression> copyExpression(const QueltEeExpression& expression,
                                                                const ReplaceEffectivity& replace);

} // namespace quelt::host
