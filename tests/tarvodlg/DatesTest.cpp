#include "tarvodlg/base/Dates.h"

#include <gtest/gtest.h>

namespace {

struct DateCase {
    int day;
    int month;
    int year;
    long julian;
};
void PrintTo(const DateCase &c, std::ostream *out)
{
    *out << c.day << '/' << c.month << '/' << c.year;
}

class DateTest : public testing::TestWithParam<DateCase> {};

TEST_P(DateTest, GoesToItsDayNumberAndBack)
{
    const DateCase &c = GetParam();
    EXPECT_EQ(DateToJulian(c.day, c.month, c.year), c.julian);
    int day = -1;
    int month = -1;
    int year = -1;
    JulianToDate(c.julian, &day, &month, &year);
    EXPECT_EQ((std::tuple{day, month, year}), (std::tuple{c.day, c.month, c.year}));
    EXPECT_EQ((std::tuple{Day(c.julian), Month(c.julian), Year(c.julian)}), (std::tuple{c.day, c.month, c.year}));
}

INSTANTIATE_TEST_SUITE_P(Dates, DateTest,
                         testing::Values(DateCase{1, 1, 1970, 2440588}, DateCase{31, 12, 1969, 2440587},
                                         DateCase{1, 1, 2000, 2451545}, DateCase{29, 2, 2024, 2460370},
                                         DateCase{1, 3, 2024, 2460371}, DateCase{31, 12, 2025, 2461041},
                                         DateCase{28, 2, 1900, 2415079}, DateCase{1, 3, 1900, 2415080},
                                         DateCase{1, 1, 1, 1721426}, DateCase{31, 12, 9999, 5373484}));

TEST(Dates, EveryDayOfFourCenturiesFollowsTheOneBefore)
{
    long expected = DateToJulian(1, 1, 1800);
    for (int year = 1800; year < 2200; ++year)
        for (int month = 1; month <= 12; ++month)
            for (int day = 1; day <= DaysInMonth(month, year); ++day)
                ASSERT_EQ(DateToJulian(day, month, year), expected++) << day << '/' << month << '/' << year;
    EXPECT_EQ(expected, DateToJulian(1, 1, 2200));
}

TEST(Dates, WhatIsNoDateHasNoDayNumber)
{
    constexpr int kNoDates[][3] = {{0, 0, 0},     {29, 2, 2025}, {29, 2, 1900}, {31, 4, 2026},
                                   {32, 1, 2026}, {0, 1, 2026},  {1, 13, 2026}, {1, 0, 2026},
                                   {1, 1, 10000}, {1, 1, 0},     {-1, -1, -1},  {257, 1, 2026}};
    for (const auto &d : kNoDates) EXPECT_EQ(DateToJulian(d[0], d[1], d[2]), 0) << d[0] << '/' << d[1] << '/' << d[2];
}

TEST(Dates, NoDateStaysNoDate)
{
    for (const long none : {0L, -1L, 1721425L, 5373485L}) {
        int day = -1;
        int month = -1;
        int year = -1;
        JulianToDate(none, &day, &month, &year);
        EXPECT_EQ((std::tuple{day, month, year}), (std::tuple{0, 0, 0}));
        EXPECT_EQ(Year(none) + Month(none) + Day(none), 0);
        EXPECT_EQ(LastDayOfMonth(none), 0);
        EXPECT_EQ(FormatDate(none) + FormatIsoDate(none), "");
    }
}

TEST(Dates, MonthsEndWhereTheCalendarSays)
{
    EXPECT_EQ(LastDayOfMonth(DateToJulian(10, 2, 2024)), DateToJulian(29, 2, 2024));
    EXPECT_EQ(LastDayOfMonth(DateToJulian(28, 2, 2026)), DateToJulian(28, 2, 2026));
    EXPECT_EQ(LastDayOfMonth(DateToJulian(31, 12, 2026)), DateToJulian(31, 12, 2026));
    EXPECT_TRUE(IsLeapYear(2000));
    EXPECT_FALSE(IsLeapYear(2100));
}

TEST(Dates, AreWrittenWithAllTheirZeros)
{
    EXPECT_EQ(FormatDate(DateToJulian(5, 3, 2026)), "05/03/2026");
    EXPECT_EQ(FormatIsoDate(DateToJulian(5, 3, 987)), "0987-03-05");
}

TEST(ParseDate, ReadsBothForms)
{
    const long day = DateToJulian(5, 3, 2026);
    for (const char *text : {"2026-03-05", "05/03/2026", "5/3/2026", "5-3-2026", "05.03.2026", " \t2026-03-05\r\n"})
        EXPECT_EQ(ParseDate(text), day) << text;
}

TEST(ParseDate, RefusesWhatIsNoDate)
{
    for (const char *text :
         {"", " ", "0", "5/3", "5/3/26", "5/3-2026", "2026-3-5", "2026/03/05", "31/02/2026", "2025-02-29", "5/3/2026/1",
          "05 03 2026", "2026-03-05Z", "-5/3/2026", "+5/3/2026", "5//2026", "a/b/cdef", "005/3/2026", "0/0/0000"})
        EXPECT_EQ(ParseDate(text), std::nullopt) << text;
}

} // namespace
