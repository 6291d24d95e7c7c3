#include "interchange/Place.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

std::string refusalAt(const Place& place, std::string_view what) {
    try {
        place.refuse(what);
    } catch (const Refusal& refusal) {
        return refusal.what();
    }
}

TEST(PlaceTest, pointerNamesTheWayFromTheRoot) {
    const Place root;
    const Place list = root.child("list");
    const Place third = list.item(2);
    const Place in = third.child("in");
    EXPECT_EQ(root.pointer(), "");
    EXPECT_EQ(list.pointer(), "/list");
    EXPECT_EQ(third.pointer(), "/list/2");
    EXPECT_EQ(in.pointer(), "/list/2/in");
}

TEST(PlaceTest, pointerEscapesTildeAndSlash) {
    const Place root;
    EXPECT_EQ(root.child("a/b").pointer(), "/a~1b");
    EXPECT_EQ(root.child("m~n").pointer(), "/m~0n");
    EXPECT_EQ(root.child("~1").pointer(), "/~01");
    EXPECT_EQ(root.child("").pointer(), "/");
    EXPECT_EQ(root.child("\xC3\xBC\"").pointer(), "/\xC3\xBC\"");
}

TEST(PlaceTest, refusalSaysWhatAndWhere) {
    const Place root;
    EXPECT_EQ(refusalAt(root.child("list"), "expected text"), "expected text at /list");
    EXPECT_EQ(refusalAt(root, "missing key 'id'"), "missing key 'id' at the root");
}

TEST(PlaceTest, inQuotesCutsLongNamesBetweenCharacters) {
    EXPECT_EQ(inQuotes("lst"), "'lst'");
    EXPECT_EQ(inQuotes(""), "''");
    EXPECT_EQ(inQuotes(std::string(100, 'x')), "'" + std::string(100, 'x') + "'");
    EXPECT_EQ(inQuotes(std::string(101, 'x')), "'" + std::string(100, 'x') + "...'");
    // The 100th byte is the first of two that make one character.
    EXPECT_EQ(inQuotes(std::string(99, 'x') + "\xC3\xBC\xC3\xBC"), "'" + std::string(99, 'x') + "...'");
}

} // namespace
} // namespace quelt::host
