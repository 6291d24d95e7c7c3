#pragma once

// What the source files of QueltEeGenExprToEeMMExprVisitor share.

#include "Belongings.h"
#include "ConversionSteps.h"
#include "MigrationTrace.h"

#include "expression/QueltEeNode.h"

namespace quelt::conversion {

/// The visitor's trace object and its copies of the configuration flags.
extern const MigrationTrace s_trace;
extern const bool s_isRenumbering;
extern const bool s_isOptimized;

/// The node that an element of a list of children refers to; null when it is no reference, or an empty one.
inline QueltEeNode* findChildNode(QueltInObject* element) {
    const QueltEeNodeRef* const reference = QueltEeNodeRef::cast(element);
    return reference != nullptr ? reference->getNode() : nullptr;
}

/// True for no reference, and for one without node: what a clone is that could not be made.
inline bool isEmpty(const QueltEeNodeRef* reference) {
    return reference == nullptr || reference->getNode() == nullptr;
}

} // namespace quelt::conversion
