#include "tarvodlg/sheets/NumberFormats.h"

#include "tarvodlg/base/Dates.h"
#include "tests/support/TestDatabase.h"
#include "tests/tarvodlg/sheets/SheetText.h"

#include <fmt/format.h>

namespace {

/// What three programs wrote into three formats. The row of 1900 stands on the far side of the day that never was.
constexpr const char *kCells = "1: perché € | 1234.5 | 0.1\n"
                               "2: 31/12/2025 | 31/12/2025 | 31/12/2025 | 0.5 | 31/12/2025\n"
                               "3: 2469 | perché €! | #DIV/0! | VERO | 01/01/2026\n"
                               "4: VERO | FALSO\n"
                               "7:  |  | dopo un vuoto |  |  |  |  | -3\n"
                               "9: 45.5 | 1500\n"
                               "10: 01/03/1900\n";

TEST(SheetTest, ReadsWhatOtherProgramsWrote)
{
    for (const char *name : {"celle.xlsx", "celle.xls", "celle-95.xls"})
        EXPECT_EQ(ShownOrRefused(DataFile(name)), kCells) << name;
}

TEST(SheetTest, ReadsAgainFromTheStart)
{
    for (const char *name : {"celle.xlsx", "celle.xls"}) {
        SheetReader reader(DataFile(name));
        for (int time = 0; time < 2; ++time) {
            long rows = 0;
            reader.ForEachRow([&](long, const std::vector<SheetCell> &) { ++rows; });
            EXPECT_EQ(rows, 7) << name;
        }
    }
}

TEST(SheetTest, ContentCountsAndNotTheName)
{
    const TestFolder folder;
    const std::filesystem::path wrong_old = folder.Path() / "a.xls", wrong_new = folder.Path() / "b.xlsx",
                                none = folder.Path() / "c";
    std::filesystem::copy_file(DataFile("celle.xlsx"), wrong_old);
    std::filesystem::copy_file(DataFile("celle.xls"), wrong_new);
    std::filesystem::copy_file(DataFile("celle-95.xls"), none);
    for (const auto &file : {wrong_old, wrong_new, none}) EXPECT_EQ(ShownOrRefused(file), kCells) << file;
}

TEST(SheetTest, AFormulaThatNobodyComputedSaysSo)
{
    const std::string formula = "(formula senza valore)";
    EXPECT_THAT(ShownOrRefused(DataFile("celle-openpyxl.xlsx")),
                testing::HasSubstr("\n3: " + formula + " | " + formula + " | " + formula));
}

TEST(SheetTest, DatesMayBeCountedFrom1904)
{
    EXPECT_EQ(ShownOrRefused(DataFile("base-1904.xlsx")), "1: 31/12/2025\n");
    EXPECT_EQ(ShownOrRefused(DataFile("base-1904.xls")), "1: 31/12/2025\n");
}

TEST(SheetTest, ATableOfTextsGoesOnOverRecords)
{
    const auto repeated = [](const std::string &text, int times) {
        std::string all;
        for (int i = 0; i < times; ++i) all += text;
        return all;
    };
    std::string expected;
    for (int row = 0; row < 400; ++row)
        expected += fmt::format("{}: Società n. {} {} | Łódź {} {}\n", row + 1, row, repeated("x", row % 97), row,
                                repeated("€", row % 89));
    EXPECT_EQ(ShownOrRefused(DataFile("testi.xls")), expected);
}

TEST(SheetTest, APasswordIsNamed)
{
    for (const char *name : {"protetto.xlsx", "protetto.xls"})
        EXPECT_EQ(ShownOrRefused(DataFile(name)),
                  "Il foglio è protetto da una password: toglierla e salvarlo di nuovo.");
}

struct FormatCase {
    const char *code;
    bool is_date;
};

void PrintTo(const FormatCase &test, std::ostream *out)
{
    *out << test.code;
}

class DateFormatTest : public testing::TestWithParam<FormatCase> {};

TEST_P(DateFormatTest, TellsDaysFromNumbersAndHours)
{
    EXPECT_EQ(IsDateFormatCode(GetParam().code), GetParam().is_date);
}

INSTANTIATE_TEST_SUITE_P(Codes, DateFormatTest,
                         testing::Values(FormatCase{"dd/mm/yyyy", true}, FormatCase{"DD/MM/YY", true},
                                         FormatCase{"[$-410]d\\ mmmm\\ yyyy;@", true}, FormatCase{"mmm\\-yy", true},
                                         FormatCase{"mmmm", true}, FormatCase{"dd/mm/yyyy hh:mm:ss.000", true},
                                         FormatCase{"General", false}, FormatCase{"Standard", false},
                                         FormatCase{"#,##0.00", false}, FormatCase{"0.00E+00", false},
                                         FormatCase{"#,##0.00 \"dd\"", false}, FormatCase{"[Red]-0.00", false},
                                         FormatCase{"[$€-410] #,##0.00", false}, FormatCase{"0\\d", false},
                                         FormatCase{"hh:mm", false}, FormatCase{"[h]:mm:ss", false},
                                         FormatCase{"mm:ss.0", false}, FormatCase{"@", false}, FormatCase{"", false},
                                         FormatCase{"\"aperto", false}, FormatCase{"\\", false}));

TEST(DayOfSerialTest, KnowsTheEndsOfTheCalendar)
{
    const auto shown = [](double serial, DateBase base = DateBase::From1900) {
        return FormatIsoDate(DayOfSerial(serial, base));
    };
    EXPECT_EQ(shown(1), "1900-01-01");
    EXPECT_EQ(shown(59), "1900-02-28");
    EXPECT_EQ(shown(61), "1900-03-01");
    EXPECT_EQ(shown(46022.99), "2025-12-31");
    EXPECT_EQ(shown(2958465), "9999-12-31");
    EXPECT_EQ(shown(0, DateBase::From1904), "1904-01-01");
    for (const double outside : {0.5, -1.0, 2958466.0, 1e300}) EXPECT_EQ(DayOfSerial(outside, DateBase::From1900), 0);
}

} // namespace
