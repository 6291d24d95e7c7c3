#include "infrastructure/QueltInString.h"

#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInResult.h"

#include <clocale>
#include <memory>
#include <string>

namespace {

struct Number {
    std::string_view text;
    int value;
};

struct Text {
    std::string_view text;
};

} // namespace

TEST(QueltInString, HoldsAnyBytes) {
    EXPECT_STREQ(QueltInString().ConvertToChar(), "");
    EXPECT_STREQ(QueltInString("Truck").ConvertToChar(), "Truck");
    EXPECT_EQ(QueltInString(static_cast<const char*>(nullptr)).view(), "");
    const std::string_view withZero("a\0b", 3);
    EXPECT_EQ(QueltInString(withZero).view(), withZero);
    QueltInString text("Tru");
    EXPECT_EQ(&text.append("ck"), &text);
    EXPECT_EQ(text.view(), "Truck");
    EXPECT_EQ(text.toString().view(), "Truck");
}

TEST(QueltInString, ReadsNumbersAsScanfDoes) {
    const Number numbers[] = {
        {"0", 0},
        {"42", 42},
        {"+42", 42},
        {"-42", -42},
        {"007", 7},
        {"-0", 0},
        {" \t\n\v\f\r7", 7},
        {"  -7", -7},
        {"12 apples", 12},
        {"12.9", 12},
        {"1e3", 1},
        {"0x10", 0},
        {"5-3", 5},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1},
        {"0000000000000000000000000000001", 1},
        {std::string_view("8\0009", 3), 8},
    };
    for (const Number& number : numbers) {
        int value = -1;
        EXPECT_EQ(QueltInString(number.text).ConvertToNum(value, "%d"), S_OK) << number.text;
        EXPECT_EQ(value, number.value) << number.text;
    }
}

TEST(QueltInString, RefusesWhatIsNoNumber) {
    const Text texts[] = {
        {""},
        {" "},
        {"apples"},
        {"-"},
        {"+"},
        {"- 5"},
        {"+-5"},
        {"-+5"},
        {"--5"},
        {"++5"},
        {".5"},
        {"\xC2\xA0"
         "5"}, // a no-break space is no white space here
        {"2147483648"},
        {"-2147483649"},
        {"99999999999999999999999999"},
        {std::string_view("\0005", 2)},
    };
    for (const Text& text : texts) {
        int value = 77;
        EXPECT_EQ(QueltInString(text.text).ConvertToNum(value, "%d"), E_INVALIDARG) << text.text;
        EXPECT_EQ(value, 77) << text.text;
    }
}

TEST(QueltInString, NumbersDoNotDependOnTheLocale) {
    const std::string former = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "");
    int value = 0;
    EXPECT_EQ(QueltInString("1234567").ConvertToNum(value, "%d"), S_OK);
    std::setlocale(LC_ALL, former.c_str());
    EXPECT_EQ(value, 1234567);
}

TEST(QueltInString, KnowsOneFormatOnly) {
    int value = 77;
    EXPECT_EQ(QueltInString("5").ConvertToNum(value, "%x"), E_INVALIDARG);
    EXPECT_EQ(QueltInString("5").ConvertToNum(value, ""), E_INVALIDARG);
    EXPECT_EQ(QueltInString("5").ConvertToNum(value, nullptr), E_POINTER);
    EXPECT_EQ(value, 77);
}

TEST(QueltInString, IsAValue) {
    const QueltInString text("Truck");
    EXPECT_NE(text.equals(QueltInString("Truck")), 0);
    EXPECT_EQ(text.equals(QueltInString("truck")), 0);
    EXPECT_EQ(text.equals(QueltInIntHolder(1)), 0);
    EXPECT_EQ(text.hash(), QueltInString("Truck").hash());
    EXPECT_EQ(text.BinHashFunc(), QueltInString("Truck").BinHashFunc());
    EXPECT_NE(text.hash(), QueltInString("Trucks").hash());
}

TEST(QueltInString, ClonesIntoAnOlderCopyOfItsClass) {
    const QueltInString text("Truck");
    const std::unique_ptr<QueltInObjectVal> copy(text.clone(nullptr));
    EXPECT_NE(copy.get(), &text);
    EXPECT_NE(copy->equals(text), 0);
    const QueltInString other("Van");
    EXPECT_EQ(other.clone(copy.get()), copy.get());
    EXPECT_NE(copy->equals(other), 0);
    QueltInIntHolder unfit(1);
    const std::unique_ptr<QueltInObjectVal> fresh(other.clone(&unfit));
    EXPECT_NE(fresh.get(), &unfit);
    EXPECT_NE(fresh->equals(other), 0);
    EXPECT_EQ(unfit.m_value, 1U);
}
