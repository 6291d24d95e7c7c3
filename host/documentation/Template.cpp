#include "documentation/Template.h"

namespace quelt::host {

std::string fill(std::string text, std::initializer_list<Placeholder> placeholders) {
    for (const Placeholder& placeholder : placeholders) {
        std::size_t at = 0;
        while ((at = text.find(placeholder.name, at)) != std::string::npos) {
            text.replace(at, placeholder.name.size(), placeholder.text);
            at += placeholder.text.size();
        }
    }
    return text;
}

} // namespace quelt::host
