#include "effectivity/QueltEeDateEff.h"

#include "infrastructure/QueltInResult.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

constexpr std::int64_t day = 86400;
constexpr std::int64_t openBelow = QueltEeDate::s_openBelow;
constexpr std::int64_t openAbove = QueltEeDate::s_openAbove;

QueltEeDateEff of(const std::vector<QueltEeDateEff::Interval>& intervals) {
    QueltEeDateEff effectivity;
    for (const QueltEeDateEff::Interval& interval : intervals) {
        effectivity.addInterval(interval);
    }
    return effectivity;
}

struct Point {
    const char* text;
    std::int64_t seconds;
};

// Days counted by hand: a year has 365 days, one more when 4 divides it, but not when 100 does and 400 does
// not.
constexpr Point points[] = {
    {"1970-01-01", 0},
    {"1970-01-02", day},
    {"1969-12-31", -day},
    {"1969-12-31T23:59:59Z", -1},
    {"1970-01-01T00:00:01Z", 1},
    {"1970-01-01T23:59:59Z", day - 1},
    {"1971-01-01", 365 * day},
    {"1972-02-29", (2 * 365 + 31 + 28) * day},
    {"1973-01-01", (3 * 365 + 1) * day},
    {"2000-01-01", (30 * 365 + 7) * day},
    {"2000-02-29", (30 * 365 + 7 + 31 + 28) * day},
    {"2000-03-01", (30 * 365 + 7 + 31 + 29) * day},
    {"2100-02-28", (130 * 365 + 32 + 31 + 27) * day}, // leap days of 1972, 1976, ..., 2096
    {"2100-03-01", (130 * 365 + 32 + 31 + 28) * day},
    {"1900-03-01", -(70 * 365 + 17 - 59) * day}, // leap days of 1904, ..., 1968
    // From 0000 to 1970: 1970 years, 493 of them divisible by 4, 20 by 100, 5 by 400 (the year 0000 among
    // them).
    {"0000-01-01", -(1970 * 365 + 493 - 20 + 5) * day},
    {"0000-02-29", -(1970 * 365 + 493 - 20 + 5 - 59) * day},
    {"0000-12-31", -(1970 * 365 + 493 - 20 + 5 - 365) * day},
    // From 1970 to 9999: 8029 years; 2007 of them divisible by 4, 80 by 100, 20 by 400.
    {"9999-01-01", (8029 * 365 + 2007 - 80 + 20) * day},
    {"9999-12-31T23:59:59Z", (8029 * 365 + 2007 - 80 + 20 + 365) * day - 1},
    {"2024-06-01T12:34:56Z", (54 * 365 + 13 + 31 + 29 + 31 + 30 + 31) * day + (12 * 60 + 34) * 60 + 56},
};

TEST(QueltEeDateTest, ReadsPointsInTime) {
    for (const Point& point : points) {
        EXPECT_EQ(QueltEeDate::parse(point.text), point.seconds) << point.text;
    }
    EXPECT_EQ(QueltEeDate::parse("1970-01-02T00:00:00Z"), day);
}

TEST(QueltEeDateTest, WritesTheShorterForm) {
    for (const Point& point : points) {
        EXPECT_EQ(QueltEeDate::format(point.seconds), point.text);
    }
}

TEST(QueltEeDateTest, RefusesEverythingElse) {
    constexpr const char* texts[] = {
        "",
        " ",
        "1970",
        "1970-01",
        "1970-1-1",
        "70-01-01",
        "01970-01-01",
        "+1970-01-01",
        "-001-01-01",
        "10000-01-01",
        "1970-00-01",
        "1970-13-01",
        "1970-01-00",
        "1970-01-32",
        "1970-04-31",
        "1970-02-29",
        "1900-02-29",
        "2100-02-29",
        "2000-02-30",
        "1970/01/01",
        "1970-01-01 ",
        " 1970-01-01",
        "1970-01-01T",
        "1970-01-01Z",
        "1970-01-01T00",
        "1970-01-01T00:00",
        "1970-01-01T00:00Z",
        "1970-01-01T00:00:00",
        "1970-01-01 00:00:00Z",
        "1970-01-01t00:00:00Z",
        "1970-01-01T00:00:00z",
        "1970-01-01T24:00:00Z",
        "1970-01-01T00:60:00Z",
        "1970-01-01T00:00:60Z",
        "1970-01-01T00:00:00.0Z",
        "1970-01-01T00:00:00+00:00",
        "1970-01-01T00:00:00Z ",
        "1970-01-01T-1:00:00Z",
        "197O-01-01",
        "1970-01-0\xC2\xB9",
        "now",
    };
    for (const char* const text : texts) {
        EXPECT_EQ(QueltEeDate::parse(text), std::nullopt) << text;
    }
    EXPECT_EQ(QueltEeDate::parse(std::string_view("1970-01-01\0", 11)), std::nullopt);
}

TEST(QueltEeDateTest, ReadsWhatItWrites) {
    const std::int64_t first = *QueltEeDate::parse("0000-01-01");
    const std::int64_t last = *QueltEeDate::parse("9999-12-31T23:59:59Z");
    std::mt19937_64 engine(20240601);
    std::uniform_int_distribution<std::int64_t> anySecond(first, last);
    for (int round = 0; round < 20000; ++round) {
        const std::int64_t seconds = anySecond(engine);
        ASSERT_EQ(QueltEeDate::parse(QueltEeDate::format(seconds)), seconds);
    }
}

// Each text is the one that a calendar kept by hand comes to, day after day through four centuries.
TEST(QueltEeDateTest, AgreesWithACalendarKeptByHand) {
    int year = 1600;
    int month = 1;
    int dayOfMonth = 1;
    std::int64_t seconds = *QueltEeDate::parse("1600-01-01");
    while (year < 2001) {
        std::string text = std::to_string(year);
        text += (month < 10 ? "-0" : "-") + std::to_string(month);
        text += (dayOfMonth < 10 ? "-0" : "-") + std::to_string(dayOfMonth);
        ASSERT_EQ(QueltEeDate::format(seconds), text);
        ASSERT_EQ(QueltEeDate::parse(text), seconds);
        seconds += day;
        const bool isLeapYear = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
        const int lengths[] = {31, isLeapYear ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        if (++dayOfMonth > lengths[month - 1]) {
            dayOfMonth = 1;
            month = month % 12 + 1;
            year += month == 1 ? 1 : 0;
        }
    }
}

TEST(QueltEeDateTest, WritesSecondsOutsideTheYearsThatHaveAForm) {
    const std::int64_t first = *QueltEeDate::parse("0000-01-01");
    const std::int64_t last = *QueltEeDate::parse("9999-12-31T23:59:59Z");
    EXPECT_EQ(QueltEeDate::format(first - 1), "-62167219201");
    EXPECT_EQ(QueltEeDate::format(last + 1), "253402300800");
    EXPECT_EQ(QueltEeDate::format(openBelow), "-9223372036854775808");
    EXPECT_EQ(QueltEeDate::format(openAbove), "9223372036854775807");
}

TEST(QueltEeDateEffTest, HasNoVariable) {
    EXPECT_EQ(QueltEeDateEff().getVar(), nullptr);
}

TEST(QueltEeDateEffTest, KeepsIntervalsAsGiven) {
    const std::vector<QueltEeDateEff::Interval> given{{5, 3}, {0, 9}, {0, 9}, {openBelow, openAbove}};
    EXPECT_TRUE(std::ranges::equal(of(given).intervals(), given));
}

TEST(QueltEeDateEffTest, PrintsDates) {
    const std::int64_t start = *QueltEeDate::parse("2020-01-01");
    const std::int64_t end = *QueltEeDate::parse("2021-01-01");
    const std::int64_t again = *QueltEeDate::parse("2024-06-01T08:00:00Z");
    EXPECT_EQ(of({}).toString().view(), "date in {}");
    EXPECT_EQ(of({{start, end}, {again, openAbove}}).toString().view(),
              "date in [2020-01-01, 2021-01-01) | [2024-06-01T08:00:00Z, +inf)");
    EXPECT_EQ(of({{openBelow, start}}).toString().view(), "date in [-inf, 2020-01-01)");
    EXPECT_EQ(of({{end, start}}).toString().view(), "date in [2021-01-01, 2020-01-01)");
    EXPECT_EQ(of({{openBelow + 1, openAbove - 1}}).toString().view(),
              "date in [-9223372036854775807, 9223372036854775806)");
}

TEST(QueltEeDateEffTest, WritesResultsInNormalForm) {
    struct Case {
        QueltEeDateEff effectivity;
        bool negated;
        const char* text;
    };
    const Case cases[] = {
        {of({}), false, "date in {}"},
        {of({{day, day}, {day, 0}}), false, "date in {}"},
        {of({{openAbove, openBelow}}), false, "date in {}"},
        {of({{day, 2 * day}, {0, day}}), false, "date in [1970-01-01, 1970-01-03)"},
        {of({{day, 2 * day}, {0, day - 1}}), false,
         "date in [1970-01-01, 1970-01-01T23:59:59Z) | [1970-01-02, 1970-01-03)"},
        {of({{openBelow, day}, {0, openAbove}}), false, "date in [-inf, +inf)"},
        {of({}), true, "date in [-inf, +inf)"},
        {of({{0, day}}), true, "date in [-inf, 1970-01-01) | [1970-01-02, +inf)"},
        {of({{openBelow, day}}), true, "date in [1970-01-02, +inf)"},
        {of({{openBelow, openAbove}}), true, "date in {}"},
    };
    for (const Case& testCase : cases) {
        QueltEeDateEff result = testCase.effectivity;
        if (testCase.negated) {
            result.opNotDom();
        }
        const QueltEeDateEff before = result;
        ASSERT_EQ(result.opAnd(result), S_OK);
        EXPECT_EQ(result.toString().view(), testCase.text);
        EXPECT_NE(result.equals(before), 0) << testCase.text;
    }
}

TEST(QueltEeDateEffTest, StopsAtTheLimit) {
    QueltEeDateEff many;
    for (std::int64_t place = 0; place < 1000000; ++place) {
        many.addInterval({2 * place, 2 * place + 1});
    }
    QueltEeDateEff result = many;
    EXPECT_EQ(result.opOr(of({{-5, -4}})), E_OUTOFMEMORY);
    EXPECT_TRUE(std::ranges::equal(result.intervals(), many.intervals()));
    EXPECT_EQ(result.opOr(of({{-5, 0}})), S_OK);
    EXPECT_EQ(result.intervals().size(), 1000000U);
    // One interval more than those that are left out between: refused, and the flags stay.
    EXPECT_EQ(result.opNotDom(), S_OK);
    EXPECT_EQ(result.opAnd(result), E_OUTOFMEMORY);
    EXPECT_NE(result.isNegated(), 0);
    EXPECT_NE(result.getNoVar(), 0);
}

} // namespace
