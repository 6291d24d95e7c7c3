#include "interchange/NameTable.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <utility>

namespace quelt::host {
namespace {

/// Texts of all lengths around those at which they are handled otherwise, which differ in one character.
std::deque<std::string> similarTexts() {
    std::deque<std::string> texts{""};
    for (std::size_t length = 1; length < 40; ++length) {
        texts.emplace_back(length, '\0');
        for (std::size_t place = 0; place < length; ++place) {
            for (const char character : {'a', 'b', '\xFF'}) {
                texts.emplace_back(length, 'c')[place] = character;
            }
        }
    }
    return texts;
}

TEST(NameTableTest, findsWhatWasAddedAndNothingElse) {
    const std::deque<std::string> texts = similarTexts();
    NameTable<std::size_t> table;
    EXPECT_EQ(table.find(""), nullptr);
    for (std::size_t number = 0; number < texts.size(); number += 2) {
        EXPECT_TRUE(table.add(texts[number], number));
    }
    EXPECT_FALSE(table.add(texts[2], 0));
    for (std::size_t number = 0; number < texts.size(); ++number) {
        const std::string copy = texts[number];
        const std::size_t* const found = std::as_const(table).find(copy);
        if (number % 2 != 0) {
            EXPECT_EQ(found, nullptr) << copy;
        } else {
            ASSERT_NE(found, nullptr) << copy;
            EXPECT_EQ(*found, number);
        }
    }
}

TEST(NameTableTest, whatIsFiledCanBeChanged) {
    NameTable<int> table;
    table.add("V6", 6);
    *table.find("V6") = 8;
    EXPECT_EQ(*std::as_const(table).find("V6"), 8);
}

TEST(ShortTextTest, comparesAndCopiesEveryLength) {
    const std::deque<std::string> texts = similarTexts();
    for (const std::string& left : texts) {
        EXPECT_TRUE(isSameText(left, std::string(left)));
        std::string copy(left.size() + 1, '.');
        EXPECT_EQ(copyText(left, copy.data()), copy.data() + left.size());
        EXPECT_EQ(copy, left + '.');
    }
    for (std::size_t number = 1; number < texts.size(); ++number) {
        EXPECT_FALSE(isSameText(texts[number - 1], texts[number]));
    }
}

} // namespace
} // namespace quelt::host
