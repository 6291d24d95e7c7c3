#pragma once

#include "infrastructure/QueltInObject.h"

/// The type registry's part of a class, written once. A class says its base and its name; its header says
/// before it that this part is made elsewhere, and by which library:
///
///     class QueltEeTrue;
///     extern template class QUELT_CORE_API QueltInTyped<QueltEeTrue, QueltEeNodeLeaf>;
///
///     class QUELT_CORE_API QueltEeTrue : public QueltInTyped<QueltEeTrue, QueltEeNodeLeaf> {
///     public:
///         static constexpr const char* s_className = "QueltEeTrue";
///     };
///
/// and its source file, in the one library that holds the class, includes QueltInTypedDefinition.h and says
///
///     template class QueltInTyped<QueltEeTrue, QueltEeNodeLeaf>;
///
/// That last line makes the type class when the library is loaded and releases it when it is unloaded.
/// Without the declaration in the header, every source file that registers a class of its own would make a
/// second type class for this one. It stands before the class because a DLL's marks hold from the first
/// use on; a class that no library gives out has none.
template <class Self, class Base>
class QueltInTyped : public Base {
public:
    using Base::Base;

    /// The class's type class, made on the first call; null only when memory was exhausted then.
    [[nodiscard]] static QueltInObjectTypeClass* sType();

    /// The type class of the object's own, most derived class.
    [[nodiscard]] QueltInObjectTypeClass* dType() const override;

    // Always inline, so that no library needs to give these out: a DLL could not, and code that is built
    // without optimisation would look for them there.

    /// Non-zero when `object` is of this class or of one derived from it.
    [[nodiscard, gnu::always_inline]] static int isObjectOfThisType(const QueltInObject& object) {
        const QueltInObjectTypeClass* const type = object.dType();
        return type != nullptr ? type->isa(sType()) : 0;
    }
    /// `object` as this class, or null when it is not one.
    [[nodiscard, gnu::always_inline]] static Self* cast(QueltInObject& object) {
        return isObjectOfThisType(object) != 0 ? static_cast<Self*>(&object) : nullptr;
    }
    /// As above, for a constant object.
    [[nodiscard, gnu::always_inline]] static const Self* cast(const QueltInObject& object) {
        return isObjectOfThisType(object) != 0 ? static_cast<const Self*>(&object) : nullptr;
    }
    /// As above; null gives null.
    [[nodiscard, gnu::always_inline]] static Self* cast(QueltInObject* object) {
        return object != nullptr ? cast(*object) : nullptr;
    }
    /// As above; null gives null.
    [[nodiscard, gnu::always_inline]] static const Self* cast(const QueltInObject* object) {
        return object != nullptr ? cast(*object) : nullptr;
    }

private:
    static const QueltInObjectTypeOwner QueltInObject_internal_staticType_owner;
};
