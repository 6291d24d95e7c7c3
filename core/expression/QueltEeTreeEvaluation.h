#pragma once

#include "expression/QueltEeConfiguration.h"

class QueltEeNode;
class QueltEeVarEff;

namespace quelt {

/// Whether the tree below `node` holds; results as QueltEeEvaluator::evaluate.
[[nodiscard]] long evaluateTree(const QueltEeNode& node, const QueltEeConfiguration& configuration,
                                bool& holds);

/// Whether the effectivity holds. E_INVALIDARG, and `holds` as it was, for a class that the core does not
/// know.
[[nodiscard]] long evaluateVarEff(const QueltEeVarEff& effectivity, const QueltEeConfiguration& configuration,
                                  bool& holds);

} // namespace quelt
