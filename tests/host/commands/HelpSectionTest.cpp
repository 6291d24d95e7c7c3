#include "commands/HelpSection.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

TEST(HelpSectionTest, putsMeaningsBesideShortTermsAndBelowLongOnes) {
    const std::vector<HelpSection> sections{
        {.title = "Words", .text = "In front.", .entries = {{"a", "first"}, {"bcd", "second"}}},
        {.title = "Lines",
         .text = {},
         .entries = {{"a term that is longer than thirty", "its meaning"}, {"b", "c"}}}};
    EXPECT_EQ(layOut(sections), "Words:\n"
                                "  In front.\n"
                                "  a    first\n"
                                "  bcd  second\n"
                                "\n"
                                "Lines:\n"
                                "  a term that is longer than thirty\n"
                                "      its meaning\n"
                                "  b\n"
                                "      c");
    EXPECT_EQ(layOut({}), "");
}

TEST(HelpSectionTest, wrapsAtAHundredColumns) {
    // "  a  " and 19 times "word " are 100 columns with the last blank, hence 99 without
    std::string nineteen = "word";
    for (int count = 1; count < 19; ++count) {
        nineteen += " word";
    }
    const std::string full = nineteen + "s";     // 100 columns
    const std::string tooLong = nineteen + "ss"; // 101
    const auto shown = [](const std::string& meaning) {
        const std::vector<HelpSection> sections{{.title = "T", .text = {}, .entries = {{"a", meaning}}}};
        return layOut(sections);
    };
    EXPECT_EQ(shown(full), "T:\n  a  " + full);
    EXPECT_EQ(shown(tooLong), "T:\n  a  " + nineteen.substr(0, nineteen.size() - 5) + "\n     wordss");
    EXPECT_EQ(shown(full + " more"), "T:\n  a  " + full + "\n     more");
    const std::string wide(120, 'x');
    EXPECT_EQ(shown(wide), "T:\n  a  " + wide) << "a word is never cut";
}

} // namespace
} // namespace quelt::host
