#pragma once

#include "infrastructure/QueltCoreExport.h"
#include "infrastructure/QueltInObjectTypeClass.h"
#include "infrastructure/QueltInResult.h"

#include <cstddef>
#include <cstdint>
#include <new>

class QueltInString;

/// Root of every class whose objects live in containers. Objects are made in the memory that is current on
/// the thread (see QueltInMemory) and are deleted through their virtual destructor.
class QUELT_CORE_API QueltInObject {
public:
    static constexpr const char* s_className = "QueltInObject";

    virtual ~QueltInObject();

    /// The type class of the object's own, most derived class. Never null, unless memory was exhausted at
    /// load.
    [[nodiscard]] virtual QueltInObjectTypeClass* dType() const;
    /// The object's structure on one line, for people. The root's gives the class name.
    [[nodiscard]] virtual QueltInString toString() const;

    /// The type class of this class.
    [[nodiscard]] static QueltInObjectTypeClass* sType();
    /// Non-zero: every object is one.
    [[nodiscard]] static int isObjectOfThisType(const QueltInObject& object);
    /// The object itself.
    [[nodiscard]] static QueltInObject* cast(QueltInObject& object);
    /// The object itself.
    [[nodiscard]] static const QueltInObject* cast(const QueltInObject& object);

    /// Memory for an object, as QueltInMemory::allocate gives it; throws std::bad_alloc when there is none
    /// left.
    static void* operator new(std::size_t bytes);
    /// As above; null when there is none left.
    static void* operator new(std::size_t bytes, const std::nothrow_t& nothrow) noexcept;
    /// `place`, which is memory of the caller's.
    static void* operator new(std::size_t bytes, void* place) noexcept;
    /// Gives the memory back as QueltInMemory::release does: that of an arena is left to the arena.
    static void operator delete(void* memory) noexcept;
    /// The same, for the constructor that fails.
    static void operator delete(void* memory, const std::nothrow_t& nothrow) noexcept;
    /// Leaves the memory to the caller, whose it is.
    static void operator delete(void* memory, void* place) noexcept;

protected:
    /// How many classes are above this one.
    [[nodiscard]] static consteval std::uint32_t depth() { return 0; }

    /// For derived classes; the root itself holds nothing.
    QueltInObject() = default;
    /// Copies nothing.
    QueltInObject(const QueltInObject&) = default;
    /// Copies nothing.
    QueltInObject& operator=(const QueltInObject&) = default;
};
