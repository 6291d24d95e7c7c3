#include "infrastructure/QueltInString.h"

#include "infrastructure/QueltInKeyedHash.h"
#include "infrastructure/QueltInResult.h"
#include "infrastructure/QueltInTypedDefinition.h"
#include "infrastructure/QueltInValueTools.h"

#include <algorithm>
#include <charconv>
#include <system_error>

template class QueltInTyped<QueltInString, QueltInObjectVal>;

long QueltInString::ConvertToNum(int& number, const char* format) const {
    if (format == nullptr) {
        return E_POINTER;
    }
    if (std::string_view(format) != "%d") {
        return E_INVALIDARG;
    }
    std::string_view rest = m_text;
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t\n\v\f\r"), rest.size()));
    if (rest.starts_with('+')) {
        rest.remove_prefix(1);
        if (rest.starts_with('-')) {
            return E_INVALIDARG;
        }
    }
    int parsed = 0;
    const std::from_chars_result result = std::from_chars(rest.data(), rest.data() + rest.size(), parsed);
    if (result.ec != std::errc()) {
        return E_INVALIDARG;
    }
    number = parsed;
    return S_OK;
}

QueltInString& QueltInString::append(std::string_view text) {
    m_text.append(text);
    return *this;
}

QueltInObjectVal* QueltInString::clone(QueltInObjectVal* reuse) const {
    return quelt::copyInto(*this, reuse);
}

int QueltInString::equals(const QueltInObjectVal& other) const {
    const QueltInString* const text = quelt::asSameClass(*this, other);
    return text != nullptr && text->m_text == m_text ? 1 : 0;
}

unsigned int QueltInString::hash() const {
    return quelt::foldHash(quelt::keyedHash(view()));
}
