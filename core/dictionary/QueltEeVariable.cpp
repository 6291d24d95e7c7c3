#include "dictionary/QueltEeVariable.h"

#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<QueltEeVariable, QueltEeDicoObject>;

QueltEeModelDico* QueltEeVariable::getHolderDico() const {
    return m_pHolder;
}
