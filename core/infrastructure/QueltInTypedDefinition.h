#pragma once

// Only for the source file that registers a class; see QueltInTyped.h.

#include "infrastructure/QueltInTyped.h"

template <class Self, class Base>
QueltInObjectTypeClass* QueltInTyped<Self, Base>::sType() {
    static QueltInObjectTypeClass* const type =
        QueltInObjectTypeClass::make(Self::s_className, Base::sType());
    return type;
}

template <class Self, class Base>
QueltInObjectTypeClass* QueltInTyped<Self, Base>::dType() const {
    return sType();
}

template <class Self, class Base>
const QueltInObjectTypeOwner
    QueltInTyped<Self, Base>::QueltInObject_internal_staticType_owner(QueltInTyped<Self, Base>::sType(),
                                                                      &typeid(Self));
