#include "tarvodlg/print/RowWriter.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tests/support/TestDatabase.h"

#include <pugixml.hpp>
#include <zip.h>

#include <csignal>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using Row = std::vector<ReportValue>;

const std::vector<RowColumn> kColumns = {
    {"N.", ColumnFormat::Code}, {"Descrizione"}, {"Data", ColumnFormat::Date}, {"Dare; Avere", ColumnFormat::Amount}};

ReportDate On(int day, int month, int year)
{
    return {DateToJulian(day, month, year)};
}

class RowWriterTest : public testing::Test {
  protected:
    fs::path File(const char *name) const { return folder_.Path() / name; }
    std::string Bytes(const char *name) const { return ReadWholeFile(File(name), 1 << 30); }
    std::vector<std::string> Listing() const
    {
        std::vector<std::string> names;
        for (const auto &entry : fs::directory_iterator(folder_.Path())) names.push_back(entry.path().filename());
        return names;
    }
    static void WriteAll(RowWriter &writer, const std::vector<Row> &rows)
    {
        for (const Row &row : rows) writer.Add(row);
        writer.Finish();
    }

    TestFolder folder_;
};

// --- CSV

const std::vector<Row> kRows = {
    {1LL, "Città d'Ippòcrate", On(31, 12, 2026), -1234.5},
    {2LL, "dice \"no\"; poi", On(1, 1, 1900), 1.005},
    {99999LL, "prima\nseconda", ReportDate{}, 1'000'000LL},
    {-3LL, "=HYPERLINK(\"x\")", {}, {}},
    {0.25, "+39 0521", "testo", "-5"},
    {1e21, "@SUM(A1)", {}, -0.001},
    {{}, "\t=1", {}, std::numeric_limits<double>::quiet_NaN()},
    {{}, "a,b", {}, 2.675},
};

TEST_F(RowWriterTest, CsvForPeople)
{
    WriteAll(*OpenCsv(File("a.csv"), kColumns), kRows);
    EXPECT_EQ(Bytes("a.csv"), "\xEF\xBB\xBF"
                              "N.;Descrizione;Data;\"Dare; Avere\"\r\n"
                              "1;Città d'Ippòcrate;31/12/2026;-1234,50\r\n"
                              "2;\"dice \"\"no\"\"; poi\";01/01/1900;1,01\r\n"
                              "99999;\"prima\nseconda\";;1000000,00\r\n"
                              "-3;\"'=HYPERLINK(\"\"x\"\")\";;\r\n"
                              "0,25;'+39 0521;testo;'-5\r\n"
                              "1000000000000000000000;'@SUM(A1);;0,00\r\n"
                              ";'\t=1;;\r\n"
                              ";a,b;;2,68\r\n");
}

TEST_F(RowWriterTest, CsvForPrograms)
{
    WriteAll(*OpenMachineCsv(File("a.csv"), kColumns), kRows);
    EXPECT_EQ(Bytes("a.csv"), "N.,Descrizione,Data,Dare; Avere\n"
                              "1,Città d'Ippòcrate,2026-12-31,-1234.50\n"
                              "2,\"dice \"\"no\"\"; poi\",1900-01-01,1.01\n"
                              "99999,\"prima\nseconda\",,1000000.00\n"
                              "-3,\"=HYPERLINK(\"\"x\"\")\",,\n"
                              "0.25,+39 0521,testo,-5\n"
                              "1000000000000000000000,@SUM(A1),,0.00\n"
                              ",\t=1,,\n"
                              ",\"a,b\",,2.68\n");
}

// --- XLSX

/// The parts of a spreadsheet file.
class Workbook {
  public:
    explicit Workbook(const fs::path &file) : zip_(zip_open(file.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, nullptr)) {}
    ~Workbook()
    {
        if (zip_ != nullptr) zip_discard(zip_);
    }
    bool IsOpen() const { return zip_ != nullptr; }

    std::string Text(const char *path) const
    {
        zip_stat_t about;
        if (zip_stat(zip_, path, 0, &about) != 0) return "(manca)";
        std::string text(about.size, '\0');
        zip_file_t *part = zip_fopen(zip_, path, 0);
        const zip_int64_t got = zip_fread(part, text.data(), text.size());
        zip_fclose(part);
        return got == static_cast<zip_int64_t>(text.size()) ? text : "(rotto)";
    }

    /// "A1 s1 'N.' | B1 ..." for every row of the sheet: place, style and what is in the cell.
    std::vector<std::string> Rows(const char *path) const
    {
        std::vector<std::string> rows;
        pugi::xml_document sheet;
        if (!sheet.load_string(Text(path).c_str(), pugi::parse_default | pugi::parse_ws_pcdata_single))
            return {"(rotto)"};
        for (const pugi::xml_node row : sheet.child("worksheet").child("sheetData").children("row")) {
            std::string line;
            for (const pugi::xml_node cell : row.children("c")) {
                const bool is_text = std::string_view(cell.attribute("t").value()) == "inlineStr";
                line += fmt::format(fmt::runtime(is_text ? "{} s{} '{}' | " : "{} s{} {} | "),
                                    cell.attribute("r").value(), cell.attribute("s").value(),
                                    (is_text ? cell.child("is").child("t") : cell.child("v")).text().get());
            }
            rows.push_back(line);
        }
        return rows;
    }

  private:
    zip_t *zip_;
};

constexpr const char *kFirstSheet = "xl/worksheets/sheet1.xml";

TEST_F(RowWriterTest, XlsxHasTrueNumbersAndDates)
{
    WriteAll(*OpenXlsx(File("a.xlsx"), "Prima Nota", kColumns),
             {{1LL, "Città", On(31, 12, 2026), -1234.5},
              {2LL, "=1+1", On(1, 3, 1900), 1.005},
              {2.5, "", On(28, 2, 1900), 3LL},
              {1234567890123456789LL, {}, ReportDate{}, std::numeric_limits<double>::infinity()},
              {7LL, 8LL, "2026", "-5"}});
    const Workbook book(File("a.xlsx"));
    ASSERT_TRUE(book.IsOpen());
    EXPECT_THAT(book.Rows(kFirstSheet),
                testing::ElementsAre("A1 s1 'N.' | B1 s1 'Descrizione' | C1 s1 'Data' | D1 s1 'Dare; Avere' | ",
                                     "A2 s4 1 | B2 s5 'Città' | C2 s3 46387 | D2 s2 -1234.5 | ",
                                     "A3 s4 2 | B3 s5 '=1+1' | C3 s3 61 | D3 s2 1.01 | ",
                                     "A4 s0 2.5 | C4 s5 '28/02/1900' | D4 s2 3 | ", "A5 s5 '1234567890123456789' | ",
                                     "A6 s4 7 | B6 s0 8 | C6 s5 '2026' | D6 s5 '-5' | "));

    pugi::xml_document sheet, styles, workbook;
    ASSERT_TRUE(sheet.load_string(book.Text(kFirstSheet).c_str()));
    const pugi::xml_node pane = sheet.child("worksheet").child("sheetViews").first_child().child("pane");
    EXPECT_STREQ(pane.attribute("ySplit").value(), "1");
    EXPECT_STREQ(pane.attribute("state").value(), "frozen");
    const pugi::xml_node widths = sheet.child("worksheet").child("cols");
    EXPECT_EQ(std::distance(widths.begin(), widths.end()), 4);
    EXPECT_EQ(widths.first_child().attribute("width").as_double(), 21.71) << "the long code decides";

    ASSERT_TRUE(styles.load_string(book.Text("xl/styles.xml").c_str()));
    const pugi::xml_node formats = styles.child("styleSheet").child("cellXfs");
    std::string numbers;
    for (const pugi::xml_node format : formats) numbers += format.attribute("numFmtId").value() + std::string(" ");
    EXPECT_EQ(numbers, "0 0 4 164 1 49 ");
    ASSERT_TRUE(workbook.load_string(book.Text("xl/workbook.xml").c_str()));
    EXPECT_STREQ(workbook.child("workbook").child("sheets").first_child().attribute("name").value(), "Prima Nota");
}

TEST_F(RowWriterTest, XlsxCarriesEveryText)
{
    const std::string longest(40'000, 'x');
    WriteAll(*OpenXlsx(File("a.xlsx"), "Rossi & Figli: [prova] <molto> lunga/*?\\ davvero", {{"<a&b>"}}),
             {{"a<b>&\"c'"},
              {"  due  \n righe\r\nCR\rfine"},
              {std::string("nul\0 bel\x07 esc\x1B", 13)},
              {"_x000D_ _x_ _xZZZZ_"},
              {"old \xE0 \xEF\xBF\xBE"},
              {"\xF0\x9F\x98\x80"},
              {longest}});
    const Workbook book(File("a.xlsx"));
    ASSERT_TRUE(book.IsOpen());
    EXPECT_THAT(book.Rows(kFirstSheet),
                testing::ElementsAre("A1 s1 '<a&b>' | ", "A2 s5 'a<b>&\"c'' | ", "A3 s5 '  due  \n righe\nCR\nfine' | ",
                                     "A4 s5 'nul bel esc' | ", "A5 s5 '_x005F_x000D_ _x_ _xZZZZ_' | ",
                                     "A6 s5 'old à ' | ", "A7 s5 '\xF0\x9F\x98\x80' | ",
                                     "A8 s5 '" + longest.substr(0, 32'767) + "' | "));
    pugi::xml_document workbook;
    ASSERT_TRUE(workbook.load_string(book.Text("xl/workbook.xml").c_str()));
    EXPECT_STREQ(workbook.child("workbook").child("sheets").first_child().attribute("name").value(),
                 "Rossi & Figli prova <molto> lun");
}

TEST_F(RowWriterTest, XlsxGoesOnInAFurtherSheet)
{
    const std::unique_ptr<RowWriter> writer = OpenXlsx(File("a.xlsx"), "Righe", {{"N.", ColumnFormat::Code}});
    constexpr long long kFirstOfSecond = 1'048'575;
    for (long long i = 0; i <= kFirstOfSecond; ++i) writer->Add(Row{i});
    writer->Finish();
    const Workbook book(File("a.xlsx"));
    ASSERT_TRUE(book.IsOpen());
    EXPECT_THAT(book.Text(kFirstSheet),
                testing::EndsWith("<row r=\"1048576\"><c r=\"A1048576\" s=\"4\"><v>1048574</v></c>"
                                  "</row>\n</sheetData></worksheet>\n"));
    EXPECT_THAT(book.Rows("xl/worksheets/sheet2.xml"), testing::ElementsAre("A1 s1 'N.' | ", "A2 s4 1048575 | "));
    EXPECT_THAT(book.Text("xl/workbook.xml"),
                testing::HasSubstr("<sheet name=\"Righe (2)\" sheetId=\"2\" r:id=\"rId2\"/>"));
    EXPECT_EQ(Listing().size(), 1u);
}

// --- failures

struct WriterCase {
    const char *name;
    const char *file;
};
class RowWriterFailureTest : public RowWriterTest, public testing::WithParamInterface<WriterCase> {
  protected:
    static std::string MessageOf(const std::function<void()> &act)
    {
        try {
            act();
        } catch (const FileError &error) {
            return error.what();
        }
        return "accepted";
    }
};
INSTANTIATE_TEST_SUITE_P(Formats, RowWriterFailureTest,
                         testing::Values(WriterCase{"Csv", "a.csv"}, WriterCase{"Xlsx", "a.XLSX"}),
                         [](const auto &p) { return std::string(p.param.name); });

TEST_P(RowWriterFailureTest, WithoutFinishTheOldFileStays)
{
    WriteFileWhole(File(GetParam().file), "vecchio");
    {
        const std::unique_ptr<RowWriter> writer = OpenRows(File(GetParam().file), "x", {{"Testo"}});
        for (int i = 0; i < 10'000; ++i) writer->Add(Row{"riga di testo"});
    }
    EXPECT_EQ(Bytes(GetParam().file), "vecchio");
    EXPECT_EQ(Listing(), std::vector<std::string>{GetParam().file});
}

TEST_P(RowWriterFailureTest, FullDiskLeavesTheOldFile)
{
    WriteFileWhole(File(GetParam().file), "vecchio");
    // A limit of the file's size stops the writing where a full disk would.
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto signal_before = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t bytes : {1000u, 100'000u}) { // at the end, and while rows are added
        rlimit small = before;
        small.rlim_cur = bytes;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        const std::string message = MessageOf([&] {
            const std::unique_ptr<RowWriter> writer = OpenRows(File(GetParam().file), "x", {{"Testo"}});
            for (rlim_t i = 0; i < bytes / 10; ++i) writer->Add(Row{"riga di testo"});
            writer->Finish();
        });
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(message, fmt::format("Impossibile scrivere il file \"{}\": file troppo grande per il disco",
                                       File(GetParam().file).string()));
    }
    std::signal(SIGXFSZ, signal_before);
    EXPECT_EQ(Bytes(GetParam().file), "vecchio");
    EXPECT_EQ(Listing(), std::vector<std::string>{GetParam().file});
}

TEST_P(RowWriterFailureTest, PlacesThatCannotBeWritten)
{
    EXPECT_THAT(MessageOf([&] { OpenRows(File("nessuna") / GetParam().file, "x", kColumns); }),
                testing::EndsWith("file o cartella inesistente"));
    fs::create_directory(File(GetParam().file));
    EXPECT_THAT(MessageOf([&] { OpenRows(File(GetParam().file), "x", kColumns); }),
                testing::EndsWith("è una cartella"));
    EXPECT_THAT(MessageOf([&] { OpenRows(File("a.ods"), "x", kColumns); }),
                testing::EndsWith("sono ammessi file .xlsx e .csv"));
    EXPECT_EQ(Listing().size(), 1u);
}

// A rename would put a file in the place of /dev/full, or of the link to a folder that everybody reads.
TEST_P(RowWriterFailureTest, WritesOnlyInThePlaceOfFiles)
{
    ASSERT_EQ(::mkfifo(File(GetParam().file).c_str(), 0600), 0);
    EXPECT_THAT(MessageOf([&] { OpenRows(File(GetParam().file), "x", kColumns); }),
                testing::EndsWith("non è un file di dati"));
    EXPECT_TRUE(fs::is_fifo(File(GetParam().file)));
    fs::remove(File(GetParam().file));

    WriteFileWhole(File("vero"), "vecchio");
    fs::create_symlink("vero", File(GetParam().file));
    WriteAll(*OpenRows(File(GetParam().file), "x", {{"Testo"}}), {{"riga"}});
    EXPECT_TRUE(fs::is_symlink(File(GetParam().file)));
    EXPECT_NE(Bytes("vero"), "vecchio");
    EXPECT_EQ(Listing().size(), 2u);
}

/// What the packing itself could not write.
TEST_F(RowWriterTest, XlsxFailsWhilePacking)
{
    const std::unique_ptr<RowWriter> writer = OpenXlsx(File("a.xlsx"), "x", {{"Testo"}});
    for (int i = 0; i < 20'000; ++i) writer->Add(Row{fmt::format("riga {:x}", i * 2654435761u)});
    std::vector<fs::path> sheets;
    for (const auto &entry : fs::directory_iterator(folder_.Path())) sheets.push_back(entry.path());
    ASSERT_EQ(sheets.size(), 1u);
    fs::remove(sheets[0]);
    EXPECT_THROW(writer->Finish(), FileError);
    EXPECT_EQ(Listing(), std::vector<std::string>{});
}

} // namespace
