#include "documentation/Roff.h"

#include <gtest/gtest.h>

namespace quelt::host::roff {
namespace {

TEST(RoffTest, escapesWhatTheFormatterWouldShowAsSomethingElse) {
    struct Case {
        const char* text;
        const char* escaped;
    };
    const Case cases[] = {
        {"", ""},
        {"plain text, and more: {\"a\"}", "plain text, and more: {\\(dqa\\(dq}"},
        {"--jobs", "\\-\\-jobs"}, // else a hyphen that cannot be copied
        {"C:\\new", "C:\\enew"},  // else an escape sequence
        {"the file's `name`", "the file\\(aqs \\(ganame\\(ga"},
        {"~^", "\\(ti\\(ha"},
        {".so other", "\\&.so other"},  // else a request
        {"'so other", "\\(aqso other"}, // likewise
        {"a\n.b\n'c\n\n.d", "a\n\\&.b\n\\(aqc\n\n\\&.d"},
        {"a.b ...", "a.b ..."},
        {"\\&.", "\\e&."},
    };
    for (const Case& given : cases) {
        EXPECT_EQ(escape(given.text), given.escaped) << given.text;
    }
}

TEST(RoffTest, changesTheFontForTheTextOnly) {
    EXPECT_EQ(bold("-o"), "\\fB\\-o\\fR");
    EXPECT_EQ(italic("FILE"), "\\fIFILE\\fR");
    EXPECT_EQ(italic(".x"), "\\fI\\&.x\\fR");
}

} // namespace
} // namespace quelt::host::roff
