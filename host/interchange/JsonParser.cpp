#include "interchange/JsonParser.h"

#include <new>

namespace quelt::host {

namespace {

constexpr std::size_t s_usualSize = std::size_t{1} << 20U;

[[noreturn]] void refuseSyntax(std::string_view text, simdjson::error_code error) {
    const std::optional<JsonFault> fault = findJsonFault(text);
    if (!fault) {
        throw SyntaxRefusal(simdjson::error_message(error));
    }
    std::string what = fault->what;
    if (!fault->pointer.empty()) {
        what += (fault->isJson ? " at " : " in ") + fault->pointer;
    }
    throw SyntaxRefusal(what, positionOf(text, fault->offset), *fault);
}

} // namespace

PaddedText withoutUtf8Mark(PaddedText text) noexcept {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.view().starts_with(mark) ? PaddedText{text.data + mark.size(), text.size - mark.size()}
                                         : text;
}

JsonParser::JsonParser() {
    allocate(s_usualSize);
}

simdjson::dom::element JsonParser::parse(PaddedText text) {
    if (text.size > m_parser.capacity()) {
        allocate(text.size);
    } else if (m_parser.capacity() > s_usualSize && text.size <= s_usualSize) {
        m_parser = simdjson::dom::parser();
        allocate(s_usualSize);
    }
    simdjson::dom::element root;
    const simdjson::error_code error = m_parser.parse(text.data, text.size, false).get(root);
    if (error == simdjson::MEMALLOC) {
        throw std::bad_alloc();
    }
    if (error != simdjson::SUCCESS) {
        refuseSyntax(text.view(), error);
    }
    return root;
}

void JsonParser::allocate(std::size_t capacity) {
    if (m_parser.allocate(capacity, s_maxJsonDepth) != simdjson::SUCCESS) {
        throw std::bad_alloc();
    }
}

} // namespace quelt::host
