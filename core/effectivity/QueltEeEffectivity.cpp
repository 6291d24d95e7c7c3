#include "effectivity/QueltEeEffectivity.h"

#include "expression/QueltEeExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <utility>

template class QueltInTyped<QueltEeEffectivity, QueltEeDicoObject>;
template class QueltInTyped<QueltEePredefEff, QueltEeEffectivity>;
template class QueltInTyped<QueltEeBasicEff, QueltEeEffectivity>;

QueltEePredefEff::~QueltEePredefEff() = default;

QueltEeEffectivity::QueltEeEffectivity(const QueltInString& name, const QueltInGuid& guid)
    : QueltInTyped(name, guid) {}

QueltEeEffectivity::~QueltEeEffectivity() {
    delete m_pExpression;
}

long QueltEeEffectivity::getExpr(QueltEeExpression*& expression) const {
    expression = m_pExpression;
    return S_OK;
}

void QueltEeEffectivity::setExpr(QueltEeExpression*& expression) {
    if (expression != m_pExpression) {
        delete std::exchange(m_pExpression, expression);
    }
}

long QueltEeEffectivity::removeExpr(QueltEeExpression*& expression) {
    expression = std::exchange(m_pExpression, nullptr);
    return S_OK;
}

QueltEeNodeRef* QueltEeBasicEff::getOwnNodeRef() const {
    QueltEeGenericExpression* const generic = QueltEeGenericExpression::cast(expression());
    // The expression is this effectivity's own, and hands its tree out as constant only because it is asked
    // so.
    return generic != nullptr ? const_cast<QueltEeNodeRef*>(generic->GetNodeRef()) : nullptr;
}
