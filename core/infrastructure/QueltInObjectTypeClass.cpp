#include "infrastructure/QueltInObjectTypeClass.h"

#include "infrastructure/QueltInObject.h"
#include "infrastructure/QueltInTyped.h"

#include <algorithm>
#include <new>

QueltInObjectTypeClass::QueltInObjectTypeClass(const char* name, const QueltInObjectTypeClass* parent)
    : m_name(name != nullptr ? name : ""), m_depth(parent != nullptr ? parent->m_depth + 1U : 0U),
      m_pAncestors(nullptr) {
    m_pAncestors = m_inline.data();
    if (m_depth >= s_inlineAncestors) {
        m_pMore = std::make_unique<const QueltInObjectTypeClass*[]>(m_depth + 1U);
        m_pAncestors = m_pMore.get();
    }
    if (parent != nullptr) {
        std::copy_n(parent->m_pAncestors, m_depth, m_pAncestors);
    }
    m_pAncestors[m_depth] = this;
    if (m_pMore != nullptr) {
        std::copy_n(m_pAncestors, s_inlineAncestors, m_inline.data());
    }
}

QueltInObjectTypeClass* QueltInObjectTypeClass::make(const char* name,
                                                     const QueltInObjectTypeClass* parent) noexcept {
    try {
        return new QueltInObjectTypeClass(name, parent);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

QueltInObject* QueltInObjectTypeClass::cast(QueltInObject& object) const {
    const QueltInObjectTypeClass* const type = quelt::typeOf(object);
    return type != nullptr && type->isa(this) != 0 ? &object : nullptr;
}

const QueltInObject* QueltInObjectTypeClass::cast(const QueltInObject& object) const {
    const QueltInObjectTypeClass* const type = quelt::typeOf(object);
    return type != nullptr && type->isa(this) != 0 ? &object : nullptr;
}

const QueltInObjectTypeClass* QueltInObjectTypeClass::getParent() const noexcept {
    return m_depth > 0 ? m_pAncestors[m_depth - 1U] : nullptr;
}

QueltInObjectTypeOwner::QueltInObjectTypeOwner(QueltInObjectTypeClass* type,
                                               const std::type_info* registered) noexcept
    : m_pType(type), m_pRegistered(registered) {
    if (m_pType != nullptr && m_pRegistered != nullptr) {
        QueltInTypeTable::enter(*m_pRegistered, *m_pType);
    }
}

QueltInObjectTypeOwner::~QueltInObjectTypeOwner() {
    if (m_pRegistered != nullptr) {
        QueltInTypeTable::remove(*m_pRegistered);
    }
}
