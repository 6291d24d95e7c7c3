#include "support/RichContext.h"

#include "host/support/Samples.h"
#include "support/Expect.h"

#include <fstream>
#include <iterator>
#include <string>

namespace quelt::host::fuzz {

const LoadedContext& richContext() {
    static const std::unique_ptr<LoadedContext> s_context = test::contextOf(richContextText());
    return *s_context;
}

std::string_view richContextText() {
    static const std::string s_text = [] {
        std::ifstream file(QUELT_SOURCE_DIR "/examples/context.json", std::ios::binary);
        std::string text{std::istreambuf_iterator<char>(file), {}};
        expect(!text.empty(), "the examples' context is there");
        return text;
    }();
    return s_text;
}

} // namespace quelt::host::fuzz
