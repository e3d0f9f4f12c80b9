#include "tarvodlg/print/Printer.h"

#include "tarvodlg/base/Files.h"
#include "tarvolumera/Company.h"
#include "tests/support/TestDatabase.h"
#include "tests/tarvodlg/print/PdfText.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/resource.h>

namespace {

using testing::HasSubstr;

class PrinterTest : public testing::Test {
  protected:
    std::filesystem::path File(const char *name) const { return folder_.Path() / name; }
    std::size_t FilesLeft() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}));
    }

    TestFolder folder_;
};

TEST_F(PrinterTest, WritesPagesWithFormFeeds)
{
    CPrinter print;
    print.Open("Registro", 20, 4, {ReportTarget::Text, File("registro.txt")});
    print.Print(1, 1, "Città");
    print.PrintRight(1, 20, "1.234,56");
    print.Print(3, 3, "uno");
    print.Print(3, 1, "a"); // before what stands there already
    print.NewPage();
    print.Print(2, 18, "tagliato");
    print.Print(9, 1, "sotto la pagina");
    print.Print(4, 1, "riga\ndopo\tx");
    EXPECT_EQ(print.Pages(), 2);
    EXPECT_FALSE(std::filesystem::exists(File("registro.txt"))) << "before Close";
    print.Close();
    EXPECT_EQ(ReadWholeFile(File("registro.txt"), 1000),
              "Città       1.234,56\n\na uno\n\f\n                 tag\n\nriga dopo x\n");
    EXPECT_EQ(FilesLeft(), 1u);
}

TEST_F(PrinterTest, LeavesNothingWithoutClose)
{
    for (const ReportTarget target : {ReportTarget::Text, ReportTarget::Pdf}) {
        CPrinter print;
        print.Open("Registro", 80, 66, {target, File("resta")});
        print.Print(1, 1, "x");
        print.NewPage();
    }
    EXPECT_EQ(FilesLeft(), 0u);
}

TEST_F(PrinterTest, DrawsTheColumnsOnPaper)
{
    CPrinter print;
    print.Open("Registro", 132, 66, {ReportTarget::Pdf, File("registro.pdf")});
    print.Print(1, 1, "PRIMA");
    print.PrintRight(1, 132, "ULTIMA");
    print.Print(66, 1, "IN FONDO");
    print.NewPage();
    print.Print(1, 60, "SECONDA perché");
    print.Close();
    const std::vector<std::string> pages = PdfPages(File("registro.pdf"));
    ASSERT_EQ(pages.size(), 2u);
    EXPECT_THAT(pages[0], testing::AllOf(HasSubstr("PRIMA"), HasSubstr("ULTIMA"), HasSubstr("IN FONDO")));
    EXPECT_THAT(pages[1], HasSubstr("SECONDA perché"));
    EXPECT_THAT(PdfInfo(File("registro.pdf")), HasSubstr("(A4)"));
}

TEST_F(PrinterTest, RefusesWhatItCannotDo)
{
    const auto refusal = [&](ReportDestination destination) -> std::string {
        try {
            CPrinter().Open("Registro", 80, 66, std::move(destination));
        } catch (const std::exception &error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(refusal({ReportTarget::Csv, File("x.csv")}),
              "Registro: questa stampa è fatta di pagine; scegliere testo o PDF");
    EXPECT_EQ(refusal({ReportTarget::Preview, {}}),
              "Anteprima e stampante ci sono solo nel programma a finestre: indicare un file.");
    EXPECT_THAT(refusal({ReportTarget::Text, File("manca") / "x.txt"}), HasSubstr("file o cartella inesistente"));
}

// A file that may not grow any more: the print stops there instead of going on for nothing, and says why.
TEST_F(PrinterTest, StopsWhenTheFileCannotGrow)
{
    std::filesystem::create_directory(File("pieno"));
    struct rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = before;
    small.rlim_cur = 200'000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    long pages = 0;
    std::string message;
    try {
        CPrinter print;
        print.Open("Registro", 132, 66, {ReportTarget::Pdf, File("pieno") / "registro.pdf"});
        for (; pages < 5000; ++pages) {
            for (int line = 1; line <= 66; ++line) print.Print(line, 1 + line, std::to_string(pages * 7919 + line));
            print.NewPage();
        }
    } catch (const FileError &error) {
        message = error.what();
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, old_handler);
    EXPECT_THAT(message, HasSubstr("registro.pdf\": file troppo grande per il disco"));
    EXPECT_LT(pages, 1000);
    EXPECT_TRUE(std::filesystem::is_empty(File("pieno")));
}

} // namespace
