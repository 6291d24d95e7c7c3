#pragma once

#include "infrastructure/QueltInObject.h"
#include "infrastructure/QueltInTypeTable.h"

#include <cstdint>
#include <typeinfo>

namespace quelt {

/// What object.dType() answers, without the virtual call where the object's own class is registered. Null
/// when memory was exhausted at load.
[[nodiscard, gnu::always_inline]] inline const QueltInObjectTypeClass* typeOf(const QueltInObject& object) {
    const QueltInObjectTypeClass* const known = QueltInTypeTable::find(typeid(object));
    return known != nullptr ? known : object.dType();
}

} // namespace quelt

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
/// A registered class leaves dType() as it is. Without the declaration in the header, every source file that
/// registers a class of its own would make a second type class for this one. It stands before the class
/// because a DLL's marks hold from the first use on; a class that no library gives out has none.
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
        return isOfThisType(quelt::typeOf(object)) ? 1 : 0;
    }
    /// True when `type` (null is none) is this class's type class or derives from it; for whoever asks about
    /// several classes in turn, with what quelt::typeOf has answered.
    [[nodiscard, gnu::always_inline]] static bool isOfThisType(const QueltInObjectTypeClass* type) {
        const QueltInObjectTypeClass* const made = QueltInObject_internal_staticType_owner.get();
        const QueltInObjectTypeClass* const wanted = made != nullptr ? made : sType();
        return type != nullptr && wanted != nullptr && type->ancestorAt(depth()) == wanted;
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

protected:
    /// How many classes are above this one. Known to the compiler alone, so that no library gives it out.
    [[nodiscard]] static consteval std::uint32_t depth() { return Base::depth() + 1; }

private:
    static const QueltInObjectTypeOwner QueltInObject_internal_staticType_owner;
};
