#include "tarvodlg/base/Words.h"

#include <limits>
#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

struct WordsCase {
    const char *name;
    double euro;
    const char *words;
};
void PrintTo(const WordsCase &c, std::ostream *out)
{
    *out << c.euro;
}

class WordsTest : public testing::TestWithParam<WordsCase> {};

TEST_P(WordsTest, WritesTheAmount)
{
    EXPECT_EQ(AmountInWords(GetParam().euro), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WordsTest,
    testing::Values(
        WordsCase{"Nothing", 0, "zero/00"}, WordsCase{"CentsAlone", 0.5, "zero/50"},
        WordsCase{"OneCent", 0.01, "zero/01"}, WordsCase{"One", 1, "uno/00"}, WordsCase{"Three", 3, "tre/00"},
        WordsCase{"Eleven", 11, "undici/00"}, WordsCase{"Seventeen", 17.17, "diciassette/17"},
        WordsCase{"Nineteen", 19, "diciannove/00"}, WordsCase{"Twenty", 20, "venti/00"},
        WordsCase{"ElisionBeforeOne", 21, "ventuno/00"}, WordsCase{"AccentOnThree", 23, "ventitré/00"},
        WordsCase{"ElisionBeforeEight", 28, "ventotto/00"}, WordsCase{"FortyEight", 48, "quarantotto/00"},
        WordsCase{"EightyOne", 81, "ottantuno/00"}, WordsCase{"NinetyThree", 93, "novantatré/00"},
        WordsCase{"Hundred", 100, "cento/00"}, WordsCase{"HundredAndOne", 101, "centouno/00"},
        WordsCase{"HundredAndThree", 103, "centotré/00"}, WordsCase{"HundredAndEight", 108, "centotto/00"},
        WordsCase{"HundredAndEleven", 111, "centoundici/00"}, WordsCase{"HundredAndEighty", 180, "centottanta/00"},
        WordsCase{"HundredAndEightyEight", 188, "centottantotto/00"},
        WordsCase{"TwoHundredAndEightyOne", 281, "duecentottantuno/00"},
        WordsCase{"NineHundredAndNinetyNine", 999.99, "novecentonovantanove/99"},
        WordsCase{"Thousand", 1000, "mille/00"}, WordsCase{"ThousandAndOne", 1001, "milleuno/00"},
        WordsCase{"ThousandAndThree", 1003, "milletré/00"}, WordsCase{"ThousandAndEight", 1008, "milleotto/00"},
        WordsCase{"Invoice", 1220.05, "milleduecentoventi/05"}, WordsCase{"TwoThousand", 2000, "duemila/00"},
        WordsCase{"NoAccentInside", 3000, "tremila/00"}, WordsCase{"NoAccentInsideALongWord", 23000, "ventitremila/00"},
        WordsCase{"TwentyOneThousand", 21021, "ventunomilaventuno/00"},
        WordsCase{"HundredThousand", 100000, "centomila/00"},
        WordsCase{"BelowTheMillion", 999999.99, "novecentonovantanovemilanovecentonovantanove/99"},
        WordsCase{"Million", 1e6, "un milione/00"}, WordsCase{"MillionAndThree", 1000003, "un milione tre/00"},
        WordsCase{"MillionAndTwoHundredThousand", 1200000, "un milione duecentomila/00"},
        WordsCase{"TwentyThreeMillion", 23000001, "ventitré milioni uno/00"},
        WordsCase{"Milliard", 1e9, "un miliardo/00"},
        WordsCase{"MilliardsAndOneMillion", 2001000000, "due miliardi un milione/00"},
        WordsCase{"Largest", 999999999999.0,
                  "novecentonovantanove miliardi novecentonovantanove milioni "
                  "novecentonovantanovemilanovecentonovantanove/00"},
        WordsCase{"Negative", -122.30, "meno centoventidue/30"}, WordsCase{"NoNegativeNothing", -0.001, "zero/00"},
        WordsCase{"RoundedBeforeItIsParted", 99.999, "cento/00"}, WordsCase{"DoubleBelowItsHalf", 1.005, "uno/01"}),
    [](const auto &param) { return std::string(param.param.name); });

TEST(Words, DifferForDifferentNumbers)
{
    std::set<std::string> seen;
    for (long long number = 0; number <= 20'000; ++number)
        EXPECT_TRUE(seen.insert(NumberInWords(number)).second) << number;
}

TEST(Words, RefuseWhatTheyHaveNoNameFor)
{
    EXPECT_THROW(AmountInWords(1e12), std::out_of_range);
    EXPECT_THROW(AmountInWords(std::numeric_limits<double>::quiet_NaN()), std::out_of_range);
    EXPECT_THROW(NumberInWords(-1), std::out_of_range);
}

} // namespace
