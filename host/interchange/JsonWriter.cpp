#include "interchange/JsonWriter.h"

#include <simdjson.h>
#include <string>

namespace quelt::host {

void JsonWriter::utf8Text(std::string_view value) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD
    if (simdjson::validate_utf8(value.data(), value.size())) {
        text(value);
        return;
    }
    std::string readable;
    for (const char& character : value) {
        const bool isAscii = static_cast<unsigned char>(character) < 0x80U;
        readable += isAscii ? std::string_view(&character, 1) : replacement;
    }
    text(readable);
}

} // namespace quelt::host
