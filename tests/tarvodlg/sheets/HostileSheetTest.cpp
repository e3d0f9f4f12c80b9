#include "tarvodlg/base/Files.h"
#include "tests/support/TestDatabase.h"
#include "tests/tarvodlg/sheets/SheetText.h"

#include <fmt/format.h>

#include <fstream>
#include <random>

namespace {

constexpr const char *kDamaged = "Il foglio è danneggiato o incompleto.";
constexpr const char *kTooLarge = "Il foglio è troppo grande.";

// --- files that are something else -----------------------------------------------------------------------------------

struct StrangerCase {
    const char *name;
    std::string bytes;
    std::string refusal; ///< part of it
};

void PrintTo(const StrangerCase &test, std::ostream *out)
{
    *out << test.name;
}

class StrangerTest : public testing::TestWithParam<StrangerCase> {};

TEST_P(StrangerTest, IsRefusedWithWhatItIs)
{
    const TestFolder folder;
    const std::filesystem::path file = folder.Path() / "saldi.xls";
    std::ofstream(file, std::ios::binary) << GetParam().bytes;
    EXPECT_THAT(ShownOrRefused(file), testing::HasSubstr(GetParam().refusal));
}

INSTANTIATE_TEST_SUITE_P(
    Files, StrangerTest,
    testing::Values(StrangerCase{"Empty", "", "vuoto"}, StrangerCase{"Csv", "REL;SALDO\r\nCLIENTE;10\r\n", "CSV"},
                    StrangerCase{"WebPage", "\xEF\xBB\xBF \r\n<html><table>", "pagina web"},
                    StrangerCase{"Excel4", std::string("\x09\x04\x06\x00\x00\x04\x10\x00", 8), "anteriore alla 5"},
                    StrangerCase{"Binary",
                                 std::string("\x7F"
                                             "ELF\0\0\1",
                                             7),
                                 "non è un foglio Excel"},
                    StrangerCase{"SignatureAlone", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", kDamaged},
                    StrangerCase{"ArchiveHeadAlone", "PK\x03\x04zzzz", kDamaged}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(StrangerFileTest, WhatCannotBeReadIsNamed)
{
    const TestFolder folder;
    EXPECT_THAT(ShownOrRefused(folder.Path() / "manca.xls"), testing::HasSubstr("manca.xls"));
    EXPECT_THAT(ShownOrRefused(folder.Path()), testing::Not(testing::IsEmpty()));
}

// --- packages --------------------------------------------------------------------------------------------------------

using Parts = std::map<std::string, std::string>;

constexpr const char *kLink = R"(<Relationship Id="{}" Type="http://x/relationships/{}" Target="{}"{}/>)";

/// A workbook of one sheet whose cells are given as XML.
Parts Package(const std::string &rows)
{
    const auto links = [](const std::string &list) { return "<Relationships>" + list + "</Relationships>"; };
    return {{"_rels/.rels", links(fmt::format(fmt::runtime(kLink), "a", "officeDocument", "xl/workbook.xml", ""))},
            {"xl/workbook.xml", R"(<workbook><sheets><sheet name="S" r:id="a"/></sheets></workbook>)"},
            {"xl/_rels/workbook.xml.rels",
             links(fmt::format(fmt::runtime(kLink), "a", "worksheet", "worksheets/sheet1.xml", "") +
                   fmt::format(fmt::runtime(kLink), "b", "styles", "/xl/styles.xml", "") +
                   fmt::format(fmt::runtime(kLink), "c", "sharedStrings", "sharedStrings.xml", ""))},
            {"xl/styles.xml", R"(<styleSheet><cellXfs><xf numFmtId="0"/><xf numFmtId="14"/></cellXfs></styleSheet>)"},
            {"xl/sharedStrings.xml",
             "<sst><si><t>uno</t></si><si><r><t>du</t></r><r><t>e</t></r><rPh><t>no</t></rPh></si></sst>"},
            {"xl/worksheets/sheet1.xml", "<worksheet><sheetData>" + rows + "</sheetData></worksheet>"}};
}

std::string ReadPackage(const Parts &parts)
{
    const TestFolder folder;
    WriteZip(folder.Path() / "saldi.xlsx", parts);
    return ShownOrRefused(folder.Path() / "saldi.xlsx");
}

struct CellCase {
    const char *name;
    std::string rows, expected;
};

void PrintTo(const CellCase &test, std::ostream *out)
{
    *out << test.name;
}

class CellTest : public testing::TestWithParam<CellCase> {};

TEST_P(CellTest, IsReadOrRefusedWithItsPlace)
{
    EXPECT_EQ(ReadPackage(Package(GetParam().rows)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Sheets, CellTest,
    testing::Values(
        CellCase{"SharedTexts", R"(<row r="1"><c t="s"><v>0</v></c><c t="s"><v>1</v></c></row>)", "1: uno | due\n"},
        CellCase{"SharedTextMissing", R"(<row r="4"><c r="B4" t="s"><v>2</v></c></row>)",
                 "Riga 4, colonna 2: il testo della cella manca nel file."},
        CellCase{"SharedTextNegative", R"(<row><c t="s"><v>-1</v></c></row>)",
                 "Riga 1, colonna 1: il testo della cella manca nel file."},
        CellCase{"InlineTextOfRuns",
                 R"(<row><c t="inlineStr"><is><r><t>a &amp; </t></r><r><t>b</t></r></is></c></row>)", "1: a & b\n"},
        CellCase{"TruthErrorAndText",
                 R"(<row><c t="b"><v>1</v></c><c t="e"><v>#N/A</v></c><c t="str"><f>A1</f><v>x</v></c></row>)",
                 "1: VERO | #N/A | x\n"},
        CellCase{"DateAsText", R"(<row><c t="d"><v>2025-12-31T00:00:00</v></c></row>)", "1: 31/12/2025\n"},
        CellCase{"DateAsTextImpossible", R"(<row><c t="d"><v>2025-02-31</v></c></row>)",
                 "Riga 1, colonna 1: la data della cella non è valida."},
        CellCase{"DateByStyle", R"(<row><c s="1"><v>46022</v></c><c s="99"><v>46022</v></c></row>)",
                 "1: 31/12/2025 | 46022\n"},
        CellCase{"NoNumber", R"(<row><c><v>12,50</v></c></row>)",
                 "Riga 1, colonna 1: il numero della cella non è valido."},
        CellCase{"NumberWithoutEnd", R"(<row><c><v>1e999</v></c></row>)",
                 "Riga 1, colonna 1: il numero della cella non è valido."},
        CellCase{"Gaps", R"(<row r="3"><c r="C3"><v>7</v></c></row><row r="90000"><c r="A90000"><v>8</v></c></row>)",
                 "3:  |  | 7\n90000: 8\n"},
        CellCase{"EmptyCellsMakeNoRow", R"(<row r="1"><c r="A1" s="1"/></row><row r="2"/>)", ""},
        CellCase{"FarRightIsLeftOut", R"(<row><c r="A1"><v>1</v></c><c r="XFD1"><v>2</v></c></row>)", "1: 1\n"},
        CellCase{"BeyondTheLastColumn", R"(<row><c r="XFE1"><v>2</v></c></row>)", kDamaged},
        CellCase{"ColumnWithoutEnd", R"(<row><c r="AAAAAAAAAAAAAAAA1"><v>2</v></c></row>)", kDamaged},
        CellCase{"RowNought", R"(<row r="0"><c><v>2</v></c></row>)", kDamaged},
        CellCase{"RowWithoutEnd", R"(<row r="99999999999999999999"><c><v>2</v></c></row>)", kDamaged},
        CellCase{"CellOfAnotherRow", R"(<row r="1"><c r="A2"><v>2</v></c></row>)", kDamaged},
        CellCase{"BrokenXml", "<row><c>", kDamaged}),
    [](const auto &test) { return std::string(test.param.name); });

struct PackageCase {
    const char *name, *part;
    std::optional<std::string> content; ///< nothing: the part is missing
    std::string expected;               ///< part of it
};

void PrintTo(const PackageCase &test, std::ostream *out)
{
    *out << test.name;
}

class PackageTest : public testing::TestWithParam<PackageCase> {};

TEST_P(PackageTest, OnePartThatIsNotAsItShouldBe)
{
    Parts parts = Package(R"(<row><c t="s"><v>0</v></c></row>)");
    ASSERT_EQ(ReadPackage(parts), "1: uno\n");
    if (GetParam().content)
        parts[GetParam().part] = *GetParam().content;
    else
        parts.erase(GetParam().part);
    EXPECT_THAT(ReadPackage(parts), testing::HasSubstr(GetParam().expected));
}

std::string LinkTo(const char *target, const char *mode)
{
    return "<Relationships>" + fmt::format(fmt::runtime(kLink), "a", "worksheet", target, mode) + "</Relationships>";
}

INSTANTIATE_TEST_SUITE_P(
    Parts, PackageTest,
    testing::Values(
        PackageCase{"NoWorkbook", "_rels/.rels", std::nullopt, "non un foglio Excel"},
        PackageCase{"WorkbookPartMissing", "xl/workbook.xml", std::nullopt, kDamaged},
        PackageCase{"SheetPartMissing", "xl/worksheets/sheet1.xml", std::nullopt, kDamaged},
        PackageCase{"TextsMissing", "xl/sharedStrings.xml", std::nullopt, kDamaged},
        PackageCase{"NoSheet", "xl/workbook.xml", "<workbook><sheets/></workbook>", "non contiene fogli"},
        PackageCase{"Document", "xl/workbook.xml", "<document/>", "non è un foglio"},
        PackageCase{"SheetElsewhere", "xl/_rels/workbook.xml.rels",
                    LinkTo("file:///etc/passwd", R"( TargetMode="External")"), "non contiene fogli"},
        PackageCase{"SheetOutside", "xl/_rels/workbook.xml.rels", LinkTo("../../../../etc/passwd", ""), kDamaged},
        PackageCase{"Entities", "xl/sharedStrings.xml",
                    R"(<!DOCTYPE sst [<!ENTITY a "aaaa"><!ENTITY b "&a;&a;">]><sst><si><t>&b;</t></si></sst>)",
                    "DOCTYPE"},
        PackageCase{"Prefixes", "xl/worksheets/sheet1.xml",
                    R"(<x:worksheet xmlns:x="y"><x:sheetData><x:row r="2"><x:c r="B2"><x:v>5</x:v></x:c></x:row>)"
                    "</x:sheetData></x:worksheet>",
                    "2:  | 5\n"},
        PackageCase{"TooManyCells", "xl/worksheets/sheet1.xml",
                    [] {
                        std::string xml = "<worksheet><sheetData>";
                        for (int i = 0; i < 2000; ++i) {
                            xml += "<row>";
                            for (int j = 0; j < 256; ++j) xml += "<c><v>1</v></c>";
                            xml += "</row>";
                        }
                        return xml + "</sheetData></worksheet>";
                    }(),
                    kTooLarge},
        PackageCase{"MoreMarkupThanMemory", "xl/worksheets/sheet1.xml",
                    [] {
                        std::string xml = "<worksheet>";
                        for (int i = 0; i < 4'000'000; ++i) xml += "<a/>";
                        return xml + "</worksheet>";
                    }(),
                    kTooLarge},
        PackageCase{"UnfoldsWithoutEnd", "xl/worksheets/sheet1.xml", std::string(70'000'000, ' '), kTooLarge}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(OtherArchiveTest, SaysWhatItIs)
{
    EXPECT_THAT(ReadPackage({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"}}),
                testing::HasSubstr("OpenDocument"));
    EXPECT_THAT(ReadPackage({{"xl/workbook.bin", "x"}}), testing::HasSubstr(".xlsb"));
    EXPECT_THAT(ReadPackage({{"fattura.xml", "<x/>"}}), testing::HasSubstr("non un foglio Excel"));
}

// --- damage ----------------------------------------------------------------------------------------------------------

/// Reads what is left; it is a table or a refusal, and nothing else happens.
bool IsRead(const std::filesystem::path &folder, const std::string &bytes)
{
    const std::filesystem::path file = folder / "danno.xls";
    std::ofstream(file, std::ios::binary) << bytes;
    const std::string text = ShownOrRefused(file);
    return text.empty() || text.starts_with("1:") || text.find(": ") < 8;
}

TEST(DamagedSheetTest, CutAnywhereItIsRefused)
{
    const TestFolder folder;
    for (const char *name : {"celle.xls", "celle-95.xls", "celle.xlsx"}) {
        const std::string whole = ReadWholeFile(DataFile(name), 1'000'000);
        // The last sectors of the older files hold properties and padding; the workbook comes before them.
        for (std::size_t length = 0; length < whole.size() / 3; length += 61)
            EXPECT_FALSE(IsRead(folder.Path(), whole.substr(0, length))) << name << " cut at " << length;
    }
}

TEST(DamagedSheetTest, SectorsInACircleEnd)
{
    const TestFolder folder;
    std::string bytes = ReadWholeFile(DataFile("celle.xls"), 1'000'000);
    const auto number = [&](std::size_t at) {
        return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at])) |
               static_cast<std::size_t>(static_cast<unsigned char>(bytes[at + 1])) << 8;
    };
    const std::size_t table = (number(0x4C) + 1) * 512;
    for (std::size_t sector = 0; sector < 12; ++sector) { // each leads to itself
        bytes[table + sector * 4] = static_cast<char>(sector);
        bytes[table + sector * 4 + 1] = bytes[table + sector * 4 + 2] = bytes[table + sector * 4 + 3] = 0;
    }
    EXPECT_FALSE(IsRead(folder.Path(), bytes));
}

TEST(DamagedSheetTest, ThousandsOfDamagesEndInATableOrARefusal)
{
    const TestFolder folder;
    std::mt19937 random(20251231); // NOLINT: the same damages every time
    for (const char *name : {"celle.xls", "celle-95.xls", "testi.xls"}) {
        const std::string whole = ReadWholeFile(DataFile(name), 1'000'000);
        long read = 0, refused = 0;
        for (int i = 0; i < 400; ++i) {
            std::string bytes = whole;
            for (int j = 0; j < 4; ++j)
                bytes[random() % (j < 2 ? 2048 : bytes.size())] =
                    static_cast<char>(random() % 3 == 0 ? 0xFF : random() % 256);
            ++(IsRead(folder.Path(), bytes) ? read : refused);
        }
        EXPECT_GT(read, 0) << name;
        EXPECT_GT(refused, 0) << name;
    }
}

} // namespace
