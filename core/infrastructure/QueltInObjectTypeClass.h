#pragma once

#include "infrastructure/QueltCoreExport.h"

#include <array>
#include <cstdint>
#include <memory>
#include <typeinfo>

class QueltInObject;

/// What the type registry knows of one class: its name and its ancestors. There is one object a class, and
/// its address is the class's identity; names are for people and are never compared.
class QUELT_CORE_API QueltInObjectTypeClass {
public:
    /// The type class of the class `name` (text with static storage; not copied) below `parent` (null for the
    /// root; not owned, must outlive this object).
    QueltInObjectTypeClass(const char* name, const QueltInObjectTypeClass* parent);
    /// As the constructor, on the plain heap; the caller owns the result. Null when memory is exhausted.
    [[nodiscard]] static QueltInObjectTypeClass* make(const char* name,
                                                      const QueltInObjectTypeClass* parent) noexcept;
    QueltInObjectTypeClass(const QueltInObjectTypeClass&) = delete;
    QueltInObjectTypeClass& operator=(const QueltInObjectTypeClass&) = delete;

    /// Non-zero when this class is `other` or derives from it; 0 for null. Constant time: one look at the
    /// ancestor that stands at `other`'s depth.
    [[nodiscard]] int isa(const QueltInObjectTypeClass* other) const noexcept {
        return other != nullptr && other->m_depth <= m_depth && m_pAncestors[other->m_depth] == other ? 1 : 0;
    }

    /// The ancestor that is `depth` classes below the root (0 is the root, the class itself stands last);
    /// null when the class stands higher. For whoever knows at compile time how deep a class stands.
    [[nodiscard]] const QueltInObjectTypeClass* ancestorAt(std::uint32_t depth) const noexcept {
        if (depth < s_inlineAncestors) {
            return m_inline[depth];
        }
        return depth <= m_depth ? m_pAncestors[depth] : nullptr;
    }

    /// `object` when its dynamic type is this class or derives from it, else null.
    [[nodiscard]] QueltInObject* cast(QueltInObject& object) const;
    /// As above, for a constant object.
    [[nodiscard]] const QueltInObject* cast(const QueltInObject& object) const;

    /// The class's full name, nested classes with their enclosing class and "::".
    [[nodiscard]] const char* getName() const noexcept { return m_name; }
    /// The type class of the base class, null for the root.
    [[nodiscard]] const QueltInObjectTypeClass* getParent() const noexcept;

private:
    static constexpr std::uint32_t s_inlineAncestors = 12;

    const char* m_name;
    std::uint32_t m_depth;
    const QueltInObjectTypeClass** m_pAncestors; // by depth, the root first, this class last
    std::array<const QueltInObjectTypeClass*, s_inlineAncestors> m_inline{}; // the first of them
    std::unique_ptr<const QueltInObjectTypeClass*[]> m_pMore; // all, for the rare class that stands deeper
};

/// Holds one type class with static storage and releases it when the library that registered it is unloaded.
class QUELT_CORE_API QueltInObjectTypeOwner {
public:
    /// Takes `type` over (may be null). `registered`, when it is given, is the C++ class of that type class,
    /// whose own objects' dType() answers it: type tests find it without asking them then (see
    /// QueltInTypeTable).
    explicit QueltInObjectTypeOwner(QueltInObjectTypeClass* type,
                                    const std::type_info* registered = nullptr) noexcept;
    ~QueltInObjectTypeOwner();
    QueltInObjectTypeOwner(const QueltInObjectTypeOwner&) = delete;
    QueltInObjectTypeOwner& operator=(const QueltInObjectTypeOwner&) = delete;

    /// The type class; null before the library that holds the owner has come to make it.
    [[nodiscard]] QueltInObjectTypeClass* get() const noexcept { return m_pType.get(); }

private:
    std::unique_ptr<QueltInObjectTypeClass> m_pType;
    const std::type_info* m_pRegistered;
};
