#include "tarvodlg/base/Text.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace {

TEST(Trim, TakesBlanksOffBothSides)
{
    std::string text = " \t Società per azioni \r\n";
    EXPECT_EQ(strtrim(text), "Società per azioni");
    text = " \n ";
    EXPECT_EQ(strtrim(text), "");
    EXPECT_EQ(Trimmed("a"), "a");
}

struct CopyCase {
    const char *name;
    std::string source;
    std::size_t size;
    std::string expected;
};
void PrintTo(const CopyCase &c, std::ostream *out)
{
    *out << c.name;
}

class StrzcpyTest : public testing::TestWithParam<CopyCase> {};

TEST_P(StrzcpyTest, CutsBetweenCharacters)
{
    const CopyCase &c = GetParam();
    char destination[16] = "###############";
    EXPECT_EQ(strzcpy(destination, c.source, c.size), destination);
    EXPECT_STREQ(destination, c.expected.c_str());
    EXPECT_EQ(destination[c.size], '#') << "wrote behind its size";
}

INSTANTIATE_TEST_SUITE_P(Cases, StrzcpyTest,
                         testing::Values(CopyCase{"Fits", "abc", 4, "abc"}, CopyCase{"Cut", "abcd", 4, "abc"},
                                         CopyCase{"OnlyTheEnd", "abc", 1, ""}, CopyCase{"Empty", "", 3, ""},
                                         CopyCase{"AccentFits", "perché", 8, "perché"},
                                         CopyCase{"AccentInTheWay", "perché", 7, "perch"},
                                         CopyCase{"EuroInTheWay", "a€b", 4, "a"}, CopyCase{"EuroFits", "a€b", 5, "a€"},
                                         CopyCase{"FourBytesInTheWay", "a𝄞", 4, "a"},
                                         CopyCase{"NotUtf8", "\xE0\xE0\xE0\xE0", 3, "\xE0\xE0"},
                                         CopyCase{"StrayTrail", "a\x80\x80\x80\x80\x80", 4, "a\x80\x80"}),
                         [](const auto &param) { return std::string(param.param.name); });

TEST(Strzcpy, LeavesADestinationWithoutRoom)
{
    char destination = '#';
    strzcpy(&destination, "abc", 0);
    EXPECT_EQ(destination, '#');
}

TEST(Utf8, CountsCharacters)
{
    EXPECT_EQ(Utf8Length("Niccolò €𝄞"), 10U);
    EXPECT_EQ(Utf8Length("\xE0"
                         "b\xE8"),
              3U); // each malformed byte is one
    EXPECT_EQ(Utf8Prefix("Niccolò e", 7), "Niccolò");
    EXPECT_EQ(Utf8Prefix("Niccolò", 100), "Niccolò");
    EXPECT_EQ(Utf8Prefix("€€€", 2), "€€");
    EXPECT_EQ(Utf8Prefix("€€€", 0), "");
    EXPECT_EQ(Utf8Prefix("\xE0\xE8\xEC", 2), "\xE0\xE8");
}

TEST(Utf8, KnowsWhatIsMalformed)
{
    for (const char *right : {"", "abc", "à", "€", "𝄞", "\xED\x9F\xBF", "\xEE\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(IsValidUtf8(right)) << right;
    for (const char *wrong :
         {"\x80", "\xC3", "\xC0\xAF", "\xC1\xBF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF0\x80\x80\xAF",
          "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xE2\x82", "\xE2\x28\xA1", "caff\xE8"})
        EXPECT_FALSE(IsValidUtf8(wrong)) << testing::PrintToString(wrong);
}

TEST(Utf8, EveryCharacterSurvivesWritingAndReading)
{
    for (char32_t c = 0; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 61) {
        if (c >= 0xD800 && c <= 0xDFFF) continue;
        std::string text;
        AppendUtf8(text, c);
        std::size_t position = 0;
        ASSERT_EQ(DecodeUtf8(text, &position), c);
        ASSERT_EQ(position, text.size());
    }
}

TEST(ToValidUtf8, ReadsMalformedBytesAsOldTexts)
{
    EXPECT_EQ(ToValidUtf8("Caff\xE8 \x80 10 \x96 \x93"
                          "Bar\x94"),
              "Caffè € 10 – “Bar”");
    EXPECT_EQ(ToValidUtf8("già \xE8"), "già è");
    EXPECT_EQ(ToValidUtf8("\x81"), "\uFFFD");
    EXPECT_EQ(ToValidUtf8("però €"), "però €");
}

TEST(Pad, CountsCharactersNotBytes)
{
    EXPECT_EQ(PadRight("Forlì", 7) + "|", "Forlì  |");
    EXPECT_EQ(PadLeft("1 €", 5), "  1 €");
    EXPECT_EQ(PadRight("Forlì-Cesena", 5), "Forlì");
    EXPECT_EQ(PadLeft("Forlì-Cesena", 0), "");
}

TEST(ToUpper, KnowsAccents)
{
    EXPECT_EQ(ToUpper("società perché öß ÷ ñ çÿ œ š 12€"), "SOCIETÀ PERCHÉ Öß ÷ Ñ ÇŸ Œ Š 12€");
    EXPECT_EQ(ToUpper("ĀāŁłŃńŹźŽžĲĳ"), "ĀĀŁŁŃŃŹŹŽŽĲĲ");
    EXPECT_EQ(ToUpper("caff\xE8 x"), "CAFF\xE8 X");
}

TEST(EqualsIgnoreCase, MindsLettersOnly)
{
    EXPECT_TRUE(EqualsIgnoreCase("TD01.xMl", "td01.XmL"));
    EXPECT_FALSE(EqualsIgnoreCase("abc", "abcd"));
    EXPECT_FALSE(EqualsIgnoreCase("@[", "`{")); // 32 apart as well, but no letters
}

TEST(OnOneLine, LetsNothingSteerTheTerminal)
{
    EXPECT_EQ(OnOneLine("\n Uno\r\n\n due  tre\t"), "Uno due tre");
    EXPECT_EQ(OnOneLine("Rossi\x1b[2J\x07"s + "\0srl"s), "Rossi [2J srl");
    EXPECT_EQ(OnOneLine("a\u009B31mb\u202Ecod"), "a 31mb cod");
    EXPECT_EQ(OnOneLine("a\x9B"
                        "31m"),
              "a›31m"); // a single byte is the old code page, not a control
}

TEST(FieldText, HoldsCharactersAndTruncates)
{
    Text<4> field = "perché";
    EXPECT_EQ(field, "perc");
    field = "àèìòù";
    EXPECT_EQ(field.str(), "àèìò");
    Text<2> shorter;
    shorter = field;
    EXPECT_EQ(shorter, "àè");
    shorter.clear();
    EXPECT_TRUE(shorter.empty());
}

} // namespace
