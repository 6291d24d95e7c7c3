#include "interchange/Place.h"

#include <algorithm>
#include <vector>

namespace quelt::host {

namespace {

constexpr std::size_t s_longestName = 100;

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

} // namespace

std::string Place::pointer() const {
    std::vector<const Place*> way;
    for (const Place* place = this; place->m_pAbove != nullptr; place = place->m_pAbove) {
        way.push_back(place);
    }
    std::reverse(way.begin(), way.end());
    std::string pointer;
    for (const Place* const place : way) {
        if (place->m_index == s_noIndex) {
            appendPointerToken(pointer, place->m_key);
        } else {
            appendPointerToken(pointer, std::to_string(place->m_index));
        }
    }
    return pointer;
}

void Place::refuse(std::string_view what) const {
    std::string message(what);
    message += " at ";
    message += m_pAbove == nullptr ? "the root" : pointer();
    throw Refusal(message);
}

void appendPointerToken(std::string& pointer, std::string_view token) {
    pointer += '/';
    for (const char character : token) {
        if (character == '~') {
            pointer += "~0";
        } else if (character == '/') {
            pointer += "~1";
        } else {
            pointer += character;
        }
    }
}

std::string inQuotes(std::string_view name) {
    std::string text = "'";
    if (name.size() <= s_longestName) {
        text += name;
    } else {
        std::size_t end = s_longestName;
        while (isContinuationByte(name[end])) {
            --end;
        }
        text += name.substr(0, end);
        text += "...";
    }
    return text += "'";
}

} // namespace quelt::host
