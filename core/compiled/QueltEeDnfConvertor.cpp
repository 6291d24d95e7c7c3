#include "compiled/QueltEeDnfConvertor.h"

QueltEeNodeRef* QueltEeDnfConvertor::Dnf2NodeRef(const QueltDnf& /*dnf*/, QueltEeModelDico& /*dictionary*/,
                                                 QueltEeExpressionContext& /*context*/,
                                                 const QueltIDictionaryModelerAccess* /*access*/) {
    return nullptr;
}
