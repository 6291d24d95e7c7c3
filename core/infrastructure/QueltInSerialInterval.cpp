#include "infrastructure/QueltInSerialInterval.h"

#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInText.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

template class QueltInTyped<QueltInSerialInterval, QueltInObjectVal>;

long QueltInSerialInterval::setInterval(const int& a, const unsigned char& aIncl, const int& b,
                                        const unsigned char& bIncl) noexcept {
    const QueltInSerialInterval given = [&] { // the arguments may be this interval's own bounds
        QueltInSerialInterval interval;
        interval.m_a = a;
        interval.m_b = b;
        interval.m_aIncl = aIncl;
        interval.m_bIncl = bIncl;
        return interval;
    }();
    *this = given;
    return S_OK;
}

QueltInString QueltInSerialInterval::toString() const {
    quelt::TextBuilder text;
    text << (m_aIncl != 0 ? "[" : "(");
    if (m_a == s_openLower) {
        text << "-inf";
    } else {
        text << std::int64_t{m_a};
    }
    text << ", ";
    if (m_b == s_openUpper) {
        text << "+inf";
    } else {
        text << std::int64_t{m_b};
    }
    text << (m_bIncl != 0 ? "]" : ")");
    return text.take();
}

QueltInObjectVal* QueltInSerialInterval::clone(QueltInObjectVal* reuse) const {
    return quelt::copyInto(*this, reuse);
}

int QueltInSerialInterval::equals(const QueltInObjectVal& other) const {
    const QueltInSerialInterval* const interval = quelt::asSameClass(*this, other);
    return interval != nullptr && interval->m_a == m_a && interval->m_b == m_b &&
                   (interval->m_aIncl != 0) == (m_aIncl != 0) && (interval->m_bIncl != 0) == (m_bIncl != 0)
               ? 1
               : 0;
}

unsigned int QueltInSerialInterval::hash() const {
    const std::uint64_t bounds =
        std::uint64_t{static_cast<std::uint32_t>(m_a)} << 32U | static_cast<std::uint32_t>(m_b);
    const std::uint64_t flags = (m_aIncl != 0 ? 1U : 0U) | (m_bIncl != 0 ? 2U : 0U);
    return quelt::foldHash(quelt::hashInOrder(quelt::mixBits(bounds), flags));
}
