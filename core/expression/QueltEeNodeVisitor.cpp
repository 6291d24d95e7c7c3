#include "expression/QueltEeNodeVisitor.h"

#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeNodeVisitor, QueltInObject>;

QueltEeNodeVisitor::~QueltEeNodeVisitor() = default;
