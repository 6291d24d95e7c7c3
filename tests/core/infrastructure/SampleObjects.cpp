#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"

template class QueltInTyped<Part, QueltInObject>;
template class QueltInTyped<SparePart, Part>;
template class QueltInTyped<Crowded, QueltInObjectVal>;

QueltInString Part::toString() const {
    quelt::TextBuilder text;
    text << "part" << std::int64_t{m_number};
    return text.take();
}

QueltInObjectVal* Crowded::clone(QueltInObjectVal* /*reuse*/) const {
    return new Crowded(*this);
}

int Crowded::equals(const QueltInObjectVal& other) const {
    const Crowded* const crowded = cast(&other);
    return crowded != nullptr && crowded->m_number == m_number ? 1 : 0;
}

unsigned int Crowded::hash() const {
    return static_cast<unsigned int>(m_number) % 3U;
}
