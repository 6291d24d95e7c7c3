#include "expression/QueltEeExpression.h"

#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeExpression, QueltInObject>;

QueltEeExpression::~QueltEeExpression() = default;
