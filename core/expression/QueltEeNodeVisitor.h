#pragma once

#include "infrastructure/QueltInTyped.h"

class QueltEeAndOp;
class QueltEeEffLeaf;
class QueltEeFalse;
class QueltEeNotDomainOp;
class QueltEeNotOp;
class QueltEeOrOp;
class QueltEeRestrictionEffLeaf;
class QueltEeTrue;
class QueltEeVarEffLeaf;

class QueltEeNodeVisitor;
extern template class QUELT_CORE_API QueltInTyped<QueltEeNodeVisitor, QueltInObject>;

/// Base of every visitor of expression trees. It carries no data. Each visit takes the node by reference and
/// returns a result code. There is no default: a visitor says what it does with every class of node.
class QUELT_CORE_API QueltEeNodeVisitor : public QueltInTyped<QueltEeNodeVisitor, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeNodeVisitor";
    ~QueltEeNodeVisitor() override;

    /// Visits the constant FALSE. Every visit returns a result code; a negative one ends the walk over a list
    /// or over children (QueltEeExpression::runConstVisitor, QueltEeOperator::childrenAcceptVisitor).
    virtual long visitFalse(QueltEeFalse& node) = 0;
    /// Visits the constant TRUE.
    virtual long visitTrue(QueltEeTrue& node) = 0;
    /// Visits a conjunction. The visitor decides whether its children are visited, and when
    /// (QueltEeOperator::childrenAcceptVisitor); so for all operators.
    virtual long visitAndOp(QueltEeAndOp& node) = 0;
    /// Visits a disjunction.
    virtual long visitOrOp(QueltEeOrOp& node) = 0;
    /// Visits a negation within the domain of values.
    virtual long visitNotDomainOp(QueltEeNotDomainOp& node) = 0;
    /// Visits a negation.
    virtual long visitNotOp(QueltEeNotOp& node) = 0;
    /// Visits a leaf that refers to an effectivity.
    virtual long visitEffLeaf(QueltEeEffLeaf& leaf) = 0;
    /// Visits a leaf that holds a variable effectivity, or none.
    virtual long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) = 0;
    /// Visits a leaf that restricts by a text.
    virtual long visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& leaf) = 0;
};
