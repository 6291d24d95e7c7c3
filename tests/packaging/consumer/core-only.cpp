// Uses the configuration core alone, as another project does.

#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"

#include <cstdio>

int main() {
    auto* const both = new QueltEeAndOp;
    const QueltEeGenericExpression expression(both->getNodeRef());
    if (both->addChild(*new QueltEeTrue) < 0 || both->addChild(*new QueltEeFalse) < 0) {
        return 1;
    }
    const QueltInString text = expression.toString();
    std::printf("%s\n", text.ConvertToChar());
    return text.view() == "generic(AND(TRUE, FALSE))" ? 0 : 1;
}
