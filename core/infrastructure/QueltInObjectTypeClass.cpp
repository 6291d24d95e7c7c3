#include "infrastructure/QueltInObjectTypeClass.h"

#include "infrastructure/QueltInObject.h"

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
    const QueltInObjectTypeClass* const type = object.dType();
    return type != nullptr && type->isa(this) != 0 ? &object : nullptr;
}

const QueltInObject* QueltInObjectTypeClass::cast(const QueltInObject& object) const {
    const QueltInObjectTypeClass* const type = object.dType();
    return type != nullptr && type->isa(this) != 0 ? &object : nullptr;
}

const QueltInObjectTypeClass* QueltInObjectTypeClass::getParent() const noexcept {
    return m_depth > 0 ? m_pAncestors[m_depth - 1U] : nullptr;
}
