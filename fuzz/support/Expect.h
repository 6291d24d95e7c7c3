#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

/// Ends the process unless `holds`: says what does not hold, and shows the texts that it is about.
inline void expect(bool holds, const char* what, std::string_view text = {}, std::string_view other = {}) {
    if (holds) {
        return;
    }
    std::fprintf(stderr, "not so: %s\n", what);
    for (const std::string_view shown : {text, other}) {
        std::fputs("    ", stderr);
        static_cast<void>(std::fwrite(shown.data(), 1, shown.size(), stderr));
        std::fputs("\n", stderr);
    }
    std::abort();
}
