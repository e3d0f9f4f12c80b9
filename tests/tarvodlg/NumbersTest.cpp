#include "tarvodlg/base/Numbers.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <stdexcept>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

struct RoundCase {
    const char *name;
    double value;
    int decimals;
    double expected;
};
void PrintTo(const RoundCase &c, std::ostream *out)
{
    *out << fmt::format("{} to {} decimals", c.value, c.decimals);
}

class RoundTest : public testing::TestWithParam<RoundCase> {};

TEST_P(RoundTest, GoesToTheDecimalThatPeopleRead)
{
    const RoundCase &c = GetParam();
    const double rounded = Round(c.value, c.decimals);
    EXPECT_EQ(rounded, c.expected);
    EXPECT_FALSE(std::signbit(rounded) && rounded == 0) << "-0";
    EXPECT_EQ(Round(rounded, c.decimals), rounded) << "rounding twice moved it";
    if (c.expected != 0) {
        EXPECT_EQ(Round(-c.value, c.decimals), -c.expected);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RoundTest,
    testing::Values(
        RoundCase{"HalfBelowItsDouble", 1.005, 2, 1.01}, RoundCase{"HalfOfTwoDecimals", 2.675, 2, 2.68},
        RoundCase{"LargeHalf", 1234567.005, 2, 1234567.01},
        RoundCase{"HalfOfABillion", 1000000000.005, 2, 1000000000.01},
        RoundCase{"FifteenDigitsBelowTheHalf", 999999999.004999, 2, 999999999.00},
        RoundCase{"BelowTheHalf", 1.00499999999999, 2, 1.00}, RoundCase{"Noise", 0.1 + 0.2, 2, 0.30},
        RoundCase{"HalfFromASum", 0.1 + 0.2 - 0.295, 2, 0.01}, RoundCase{"HalfFromAProduct", 0.35 * 2.3, 2, 0.81},
        RoundCase{"HalfFromASumInCents", (0.1 + 0.2) * 100.0 + 0.5, 0, 31}, RoundCase{"WholeEuro", 0.5, 0, 1},
        RoundCase{"BelowHalfAEuro", 0.49, 0, 0}, RoundCase{"FourteenNinesBelowAHalf", 0.499999999999999, 0, 0},
        RoundCase{"ThreeDecimals", 8.8885, 3, 8.889}, RoundCase{"NineDecimals", 0.1234567895, 9, 0.123456790},
        RoundCase{"CarriesOver", 999.995, 2, 1000.00}, RoundCase{"NothingLeft", 0.004, 2, 0.0},
        RoundCase{"Zero", 0.0, 2, 0.0}, RoundCase{"Smallest", 5e-324, 2, 0.0},
        RoundCase{"EighthsOfLargeNumbers", 562949953421312.375, 0, 562949953421312.0},
        RoundCase{"BeyondAllFractions", 9007199254740993.0, 2, 9007199254740993.0},
        RoundCase{"BeyondAnyBook", 1e300, 2, 1e300}),
    [](const auto &param) { return std::string(param.param.name); });

TEST(Round, GivesNoNegativeZero)
{
    EXPECT_FALSE(std::signbit(Round(-0.004, 2)));
    EXPECT_FALSE(std::signbit(Round(-0.0, 2)));
    EXPECT_FALSE(std::signbit(MyCeil(-0.0, 2)));
}

TEST(Round, LeavesWhatIsNoNumber)
{
    EXPECT_TRUE(std::isnan(Round(std::nan(""), 2)));
    EXPECT_TRUE(std::isinf(Round(std::numeric_limits<double>::infinity(), 2)));
}

/// Half away from zero in whole numbers: the truth that doubles are held against.
long long DividedRounded(long long dividend, long long divisor)
{
    return (dividend + divisor / 2) / divisor;
}

TEST(Round, AgreesWithWholeNumbersOnEveryDecimalOfFifteenDigits)
{
    std::mt19937_64 random(20260115);
    for (int i = 0; i < 300000; ++i) {
        const int behind_the_unit = 1 + static_cast<int>(random() % 5); // digits that rounding takes off
        const int digits =
            behind_the_unit + 1 + static_cast<int>(random() % (15U - static_cast<unsigned>(behind_the_unit)));
        const auto cut = static_cast<long long>(std::pow(10, behind_the_unit));
        long long number = static_cast<long long>(random() % static_cast<unsigned long long>(std::pow(10, digits)));
        // Every other one is a half or its neighbour, where all the faults live.
        if (i % 2 == 0) number = number / cut * cut + cut / 2 + static_cast<long long>(random() % 3) - 1;
        const std::string text = fmt::format("{}e-{}", number, behind_the_unit + 2);
        const double value = std::strtod(text.c_str(), nullptr);
        const long long expected = DividedRounded(number, cut);
        ASSERT_EQ(ToCents(value), expected) << text;
        ASSERT_EQ(Round(value, 2), static_cast<double>(expected) / 100) << text;
    }
}

TEST(Round, AgreesWithWholeNumbersOnEveryComputedTax)
{
    std::mt19937_64 random(633);
    constexpr int kRates[] = {400, 500, 1000, 2200, 730, 765, 830, 850, 880, 1230};
    for (int i = 0; i < 300000; ++i) {
        const auto cents = static_cast<long long>(random() % 10000000000ULL);
        const int rate = kRates[random() % std::size(kRates)];
        const long long expected = DividedRounded(cents * rate, 10000);
        const double taxable = FromCents(cents);
        const double percent = rate / 100.0;
        ASSERT_EQ(ToCents(taxable * percent / 100), expected) << taxable << " at " << percent;
        ASSERT_EQ(Round(taxable / 100 * percent, 2), FromCents(expected)) << taxable << " at " << percent;
        ASSERT_EQ(Round(taxable * (percent / 100), 2), FromCents(expected)) << taxable << " at " << percent;
    }
}

struct CeilCase {
    const char *name;
    double value;
    double expected;
};
void PrintTo(const CeilCase &c, std::ostream *out)
{
    *out << fmt::format("{}", c.value);
}

class MyCeilTest : public testing::TestWithParam<CeilCase> {};

TEST_P(MyCeilTest, GoesAwayFromZeroOnBothSides)
{
    EXPECT_EQ(MyCeil(GetParam().value, 2), GetParam().expected);
    EXPECT_EQ(MyCeil(-GetParam().value, 2), GetParam().expected == 0 ? 0 : -GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, MyCeilTest,
                         testing::Values(CeilCase{"Third", 100.0 / 3, 33.34}, CeilCase{"ACentAlready", 33.33, 33.33},
                                         CeilCase{"ACentFromADivision", 99.99 / 3, 33.33},
                                         CeilCase{"ACentFromADifference", 100.10 - 33.35, 66.75},
                                         CeilCase{"JustOverACent", 33.330001, 33.34},
                                         CeilCase{"WithinAMillionthOfACent", 33.33 + 9e-9, 33.33},
                                         CeilCase{"LeastAmount", 0.001, 0.01}, CeilCase{"Zero", 0, 0},
                                         CeilCase{"LargeCent", 1234567890.12, 1234567890.12},
                                         CeilCase{"LargeThird", 1000000000.0 / 3, 333333333.34}),
                         [](const auto &param) { return std::string(param.param.name); });

TEST(MyCeil, LeavesEveryCentAlone)
{
    for (long long cents = 1; cents < 4000000000000LL; cents = cents * 17 / 16 + 7)
        ASSERT_EQ(MyCeil(FromCents(cents), 2), FromCents(cents));
}

TEST(TestIfZero, LooksAtTheDecimalsAsked)
{
    EXPECT_TRUE(TestIfZero(0.0049));
    EXPECT_FALSE(TestIfZero(0.005));
    EXPECT_FALSE(TestIfZero(-0.01));
    EXPECT_TRUE(TestIfZero(100.10 - 33.35 - 66.75));
    EXPECT_FALSE(TestIfZero(0.0049, 3));
}

TEST(ToCents, RefusesWhatHasNoCents)
{
    EXPECT_EQ(ToCents(-1.005), -101);
    EXPECT_EQ(ToCents(999999999999999.0), 99999999999999900LL);
    EXPECT_THROW(ToCents(1e17), std::out_of_range);
    EXPECT_THROW(ToCents(std::nan("")), std::out_of_range);
}

TEST(FormatAmount, WritesTheItalianWay)
{
    const std::pair<double, const char *> cases[] = {{0, "0,00"},
                                                     {-0.004, "0,00"},
                                                     {1.005, "1,01"},
                                                     {999.999, "1.000,00"},
                                                     {1234567.891, "1.234.567,89"},
                                                     {-123456.7, "-123.456,70"},
                                                     {-1234.5, "-1.234,50"},
                                                     {1e15, "1.000.000.000.000.000,00"}};
    for (const auto &[value, expected] : cases) EXPECT_EQ(FormatAmount(value), expected);
    EXPECT_EQ(FormatAmount(1234.5, 0), "1.235");
    EXPECT_EQ(FormatAmount(22.5, 3), "22,500");
}

struct ParseCase {
    const char *text;
    std::optional<double> expected;
};
void PrintTo(const ParseCase &c, std::ostream *out)
{
    *out << '"' << c.text << '"';
}

class ParseAmountTest : public testing::TestWithParam<ParseCase> {};

TEST_P(ParseAmountTest, ReadsWhatPeopleType)
{
    EXPECT_EQ(ParseAmount(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Read, ParseAmountTest,
    testing::Values(ParseCase{"1.234,56", 1234.56}, ParseCase{"1234,5", 1234.5}, ParseCase{"1,234.56", 1234.56},
                    ParseCase{"1234.56", 1234.56}, ParseCase{" 12 ", 12}, ParseCase{"-3", -3}, ParseCase{"+3", 3},
                    ParseCase{"€ 5", 5}, ParseCase{"-€ 1.000", -1000}, ParseCase{"€ -5,10", -5.10},
                    ParseCase{"5,00\u00A0€", 5}, ParseCase{"1.234", 1234}, ParseCase{"12.345.678", 12345678},
                    ParseCase{"1.2345", 1.2345}, ParseCase{"0.125", 0.125}, ParseCase{"1234.567", 1234.567},
                    ParseCase{"1,234", 1.234}, ParseCase{"1,234,567.8", 1234567.8}, ParseCase{",5", 0.5},
                    ParseCase{"5,", 5}, ParseCase{"-0", 0}, ParseCase{"123456789012345", 123456789012345.0}));

INSTANTIATE_TEST_SUITE_P(Refused, ParseAmountTest,
                         testing::Values(ParseCase{"", {}}, ParseCase{"  ", {}}, ParseCase{"-", {}}, ParseCase{"€", {}},
                                         ParseCase{",", {}}, ParseCase{"12a", {}}, ParseCase{"1e5", {}},
                                         ParseCase{"1,2,3", {}}, ParseCase{"1.5,3.2", {}}, ParseCase{"1.23.456", {}},
                                         ParseCase{"1.234.56", {}}, ParseCase{"1234.567,8", {}},
                                         ParseCase{".123,4", {}}, ParseCase{"1 234", {}}, ParseCase{"--3", {}},
                                         ParseCase{"3-", {}}, ParseCase{"nan", {}}, ParseCase{"1234567890123456", {}},
                                         ParseCase{"0,1234567890123456", {}}));

class ParseDecimalTest : public testing::TestWithParam<ParseCase> {};

TEST_P(ParseDecimalTest, ReadsWhatFilesCarry)
{
    EXPECT_EQ(ParseDecimal(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, ParseDecimalTest,
                         testing::Values(ParseCase{"12.50", 12.5}, ParseCase{"-0.01", -0.01}, ParseCase{"+7", 7},
                                         ParseCase{"007.0", 7}, ParseCase{"123456789012345.67", 123456789012345.67},
                                         ParseCase{"", {}}, ParseCase{"-", {}}, ParseCase{".5", {}},
                                         ParseCase{"5.", {}}, ParseCase{"1,5", {}}, ParseCase{" 1", {}},
                                         ParseCase{"1e3", {}}, ParseCase{"1.2.3", {}}, ParseCase{"+-1", {}},
                                         ParseCase{"inf", {}}, ParseCase{"0x10", {}}));

TEST(ParseDecimal, RefusesWhatNoDoubleHolds)
{
    EXPECT_EQ(ParseDecimal(std::string(400, '9')), std::nullopt);
    EXPECT_FALSE(std::signbit(*ParseDecimal("-0.00")));
}

} // namespace
