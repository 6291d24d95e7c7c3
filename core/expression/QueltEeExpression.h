#pragma once

#include "infrastructure/QueltInTyped.h"

class QueltEeNodeVisitor;

class QueltEeExpression;
extern template class QUELT_CORE_API QueltInTyped<QueltEeExpression, QueltInObject>;

/// Base of all expressions.
class QUELT_CORE_API QueltEeExpression : public QueltInTyped<QueltEeExpression, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeExpression";
    ~QueltEeExpression() override;

    /// Runs `visitor` over the expression; the first negative result ends the walk and is returned, else the
    /// last one.
    virtual long runConstVisitor(QueltEeNodeVisitor& visitor) const = 0;
};
