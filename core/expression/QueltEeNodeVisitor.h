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

/// Base of every visitor of expression trees. It carries no data. Each visit takes the node by reference and
/// returns a result code. There is no default: a visitor says what it does with every class of node.
class QUELT_CORE_API QueltEeNodeVisitor : public QueltInTyped<QueltEeNodeVisitor, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeNodeVisitor";
    ~QueltEeNodeVisitor() override;

    virtual long visitFalse(QueltEeFalse& node) = 0;
    virtual long visitTrue(QueltEeTrue& node) = 0;
    virtual long visitAndOp(QueltEeAndOp& node) = 0;
    virtual long visitOrOp(QueltEeOrOp& node) = 0;
    virtual long visitNotDomainOp(QueltEeNotDomainOp& node) = 0;
    virtual long visitNotOp(QueltEeNotOp& node) = 0;
    virtual long visitEffLeaf(QueltEeEffLeaf& leaf) = 0;
    virtual long visitVarEffLeaf(QueltEeVarEffLeaf& leaf) = 0;
    virtual long visitRestrictionEffLeaf(QueltEeRestrictionEffLeaf& leaf) = 0;
};
extern template class QueltInTyped<QueltEeNodeVisitor, QueltInObject>;
