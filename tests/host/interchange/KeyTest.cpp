#include "interchange/Key.h"

#include <gtest/gtest.h>
#include <string>

namespace quelt::host {
namespace {

TEST(KeyTest, everyKeyIsFoundByItsName) {
    for (std::size_t key = 0; key < keys::s_count; ++key) {
        EXPECT_EQ(keys::find(keys::s_names[key]), key) << keys::s_names[key];
    }
}

TEST(KeyTest, namesStandInTheOrderOfTheKeys) {
    EXPECT_EQ(nameOf(Key::and_), "and");
    EXPECT_EQ(nameOf(Key::list), "list");
    EXPECT_EQ(nameOf(Key::not_), "not");
    EXPECT_EQ(nameOf(Key::notDomain), "notDomain");
    EXPECT_EQ(nameOf(Key::variables), "variables");
    EXPECT_EQ(nameOf(Key::views), "views");
    EXPECT_EQ(static_cast<std::size_t>(Key::views) + 1, keys::s_count);
}

TEST(KeyTest, otherNamesAreNotFound) {
    for (const char* const name :
         {"", "lst", "List", "list ", "i", "idd", "not_", "treeseries", "\xC3\xBC"}) {
        EXPECT_EQ(keys::find(name), keys::s_none) << name;
    }
    for (const std::string_view name : keys::s_names) {
        EXPECT_EQ(keys::find(std::string(name) + "x"), keys::s_none) << name;
        EXPECT_EQ(keys::find(std::string(name) + '\0'), keys::s_none) << name;
    }
}

} // namespace
} // namespace quelt::host
