#include "expression/QueltEeTreeText.h"

#include "expression/QueltEeOperators.h"
#include "expression/QueltEeTreeWalk.h"
#include "infrastructure/QueltInText.h"

namespace quelt {

namespace {

const char* nameOf(const QueltEeNode& node) {
    const NodeChildren children(node);
    if (children.group() != nullptr) {
        return children.group()->isAnd() ? "AND" : "OR";
    }
    return QueltEeNotOp::isObjectOfThisType(node) != 0 ? "NOT" : "NOTDOMAIN";
}

} // namespace

QueltInString describeTree(const QueltEeNode& node) {
    TextBuilder text;
    for (TreeWalk walk(node); walk.next();) {
        if (walk.stop() == TreeWalk::Stop::leave) {
            text << ")";
            continue;
        }
        if (!walk.isFirst()) {
            text << ", ";
        }
        if (walk.stop() == TreeWalk::Stop::missing) {
            text << "null";
        } else if (walk.atOperator()) {
            text << nameOf(walk.node()) << "(";
        } else if (&walk.node() == &node) {
            text << node.dType()->getName();
        } else {
            text << walk.node().toString().view();
        }
    }
    return text.take();
}

} // namespace quelt
