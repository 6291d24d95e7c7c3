#include "infrastructure/QueltInIntHolder.h"

#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

template class QueltInTyped<QueltInIntHolder, QueltInObjectVal>;

QueltInString QueltInIntHolder::toString() const {
    quelt::TextBuilder text;
    text << std::int64_t{m_value};
    return text.take();
}

QueltInObjectVal* QueltInIntHolder::clone(QueltInObjectVal* reuse) const {
    return quelt::copyInto(*this, reuse);
}

int QueltInIntHolder::equals(const QueltInObjectVal& other) const {
    const QueltInIntHolder* const holder = quelt::asSameClass(*this, other);
    return holder != nullptr && holder->m_value == m_value ? 1 : 0;
}

unsigned int QueltInIntHolder::hash() const {
    return m_value;
}
