#include "tarvodlg/print/Crystal.h"

#include "demo/DemoJournal.h"
#include "ledger/JournalPrint.h"
#include "tables/ChartPrint.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/print/Interruption.h"
#include "tarvodlg/print/PagePainter.h"
#include "tarvolumera/Company.h"
#include "tests/support/TestArchive.h"
#include "tests/tarvodlg/print/PdfText.h"

#include <QImage>
#include <csignal>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sys/stat.h>

namespace {

using testing::HasSubstr;
using testing::Not;

class ReportPdfTest : public ArchiveTest {
  protected:
    ReportDestination Pdf(const char *name) const { return {ReportTarget::Pdf, Folder() / name}; }
    std::string Amount(const std::string &column, const std::string &where)
    {
        const std::string sql = "SELECT CAST(ROUND(SUM(" + column + ") * 100) AS BIGINT) FROM admin.pnota1 WHERE ";
        return FormatAmount(FromCents(std::stoll(Value(sql + where))));
    }
    /// The line of the page on which the words stand.
    static std::string LineWith(const std::string &page, const std::string &words)
    {
        const std::size_t at = page.find(words);
        if (at == std::string::npos) return "";
        const std::size_t begin = page.rfind('\n', at) + 1;
        return page.substr(begin, page.find('\n', at) - begin);
    }
    std::size_t FilesIn(const std::filesystem::path &folder)
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, ReportPdfTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(ReportPdfTest, PrintsTheJournalWithTheTotalsOfTheArchive)
{
    FillDemoJournal(Cmd(), 250, 11);
    Run("UPDATE admin.pnota1 SET pno_desc = 'Perché l''<&>\"acconto\" {è}' WHERE pno_codice = 1");
    ASSERT_TRUE(PrintJournalList({}, Pdf("giornale.pdf")));
    const std::vector<std::string> pages = PdfPages(Folder() / "giornale.pdf");
    ASSERT_GT(pages.size(), 5u);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        EXPECT_THAT(LineWith(pages[i], "Pag."), HasSubstr(fmt::format(" {}", i + 1)));
        EXPECT_THAT(LineWith(pages[i], "Pag."), HasSubstr("Ditta : 1 "));
    }
    EXPECT_THAT(pages[0], testing::AllOf(HasSubstr("Movimenti Prima Nota"), HasSubstr("Sezione : TUTTE"),
                                         HasSubstr("Causale : TUTTE"), HasSubstr("Perché l'<&>\"acconto\" {è}"),
                                         Not(HasSubstr("Riporto")), HasSubstr("A riportare")));
    const std::string totals = LineWith(pages.back(), "Totali");
    EXPECT_THAT(totals, HasSubstr("250"));
    for (const char *column : {"pno_tot_doc", "pno_dare", "pno_avere"})
        EXPECT_THAT(totals, HasSubstr(Amount(column, "1 = 1"))) << column;
    EXPECT_THAT(pages.back(), Not(HasSubstr("A riportare")));
    // What one page carries over, the next one brings forward.
    const auto carried = [](const std::string &line) { return line.substr(line.find_last_of(' ') + 1); };
    EXPECT_EQ(carried(LineWith(pages[0], "A riportare")), carried(LineWith(pages[1], "Riporto")));
    EXPECT_EQ(user_.progress,
              (std::vector<std::string>{"Attendere...", "Creazione movimenti dimostrativi in corso...", "Attendere...",
                                        "Movimenti Prima Nota: elaborazione stampa..."}));
}

TEST_P(ReportPdfTest, PrintsOnlyWhatTheFilterAdmits)
{
    FillDemoJournal(Cmd(), 200, 12);
    Run("UPDATE admin.caucont1 SET cac_desc = 'Fatt. \"d''acquisto\" {à}' WHERE cac_codice = 21");
    JournalPrintFilter filter;
    filter.n_start = 10;
    filter.n_stop = 180;
    filter.d_start = DateToJulian(1, 2, 2026);
    filter.d_stop = DateToJulian(31, 10, 2026);
    filter.codsez = 1;
    filter.codcac = 21;
    ASSERT_TRUE(PrintJournalList(filter, Pdf("parte.pdf")));
    const std::vector<std::string> pages = PdfPages(Folder() / "parte.pdf");
    const std::string where = "pno_codice BETWEEN 10 AND 180 AND pno_data BETWEEN '2026-02-01' AND '2026-10-31' AND "
                              "pno_sez = 1 AND pno_cau = 21";
    EXPECT_THAT(pages[0], testing::AllOf(HasSubstr("Causale : 21 Fatt. \"d'acquisto\" {à}"), HasSubstr("Sezione : 1 "),
                                         HasSubstr("01/02/2026"), HasSubstr("31/10/2026")));
    const std::string totals = LineWith(pages.back(), "Totali");
    EXPECT_THAT(totals, HasSubstr(" " + Value("SELECT COUNT(*) FROM admin.pnota1 WHERE " + where) + " "));
    EXPECT_THAT(totals, HasSubstr(Amount("pno_dare", where)));
}

TEST_P(ReportPdfTest, NeverCutsAnAmount)
{
    FillDemoJournal(Cmd(), 80, 15); // three pages
    Run("UPDATE admin.pnota1 SET pno_tot_doc = -98765432109.87, pno_dare = 12345678901.23, pno_avere = 12345678901.23"
        " WHERE pno_codice = 1");
    ASSERT_TRUE(PrintJournalList({}, Pdf("grandi.pdf")));
    const std::vector<std::string> pages = PdfPages(Folder() / "grandi.pdf");
    EXPECT_THAT(pages[0], testing::AllOf(HasSubstr("-98.765.432.109,87"), HasSubstr("12.345.678.901,23")));
    for (const char *column : {"pno_tot_doc", "pno_dare", "pno_avere"})
        EXPECT_THAT(LineWith(pages.back(), "Totali"), HasSubstr(Amount(column, "1 = 1"))) << column;
    for (const std::string &page : pages)
        for (const char *words : {"Riporto", "A riportare", "Totali"})
            EXPECT_THAT(LineWith(page, words), Not(HasSubstr("…"))) << words;
}

TEST_P(ReportPdfTest, TakesNoHarmFromTheLogo)
{
    const std::filesystem::path logo = CompanyLogo();
    std::filesystem::create_directories(logo.parent_path());
    const auto size_with_it = [&] {
        EXPECT_TRUE(PrintChartOfAccounts(100, 100, Pdf("logo.pdf")));
        return std::filesystem::file_size(Folder() / "logo.pdf");
    };
    const auto without = size_with_it();
    ASSERT_EQ(::mkfifo(logo.c_str(), 0600), 0);
    EXPECT_EQ(size_with_it(), without) << "a pipe was read from";
    std::filesystem::remove(logo);
    WriteFileWhole(logo, "nessuna immagine");
    EXPECT_EQ(size_with_it(), without);
    QImage picture(3000, 2000, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) // nothing that packs well
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, static_cast<QRgb>((x * 7919 + y * 104729) * 2654435761u));
    ASSERT_TRUE(picture.save(QString::fromStdString(logo.string())));
    EXPECT_GT(size_with_it(), without + 1000);
    EXPECT_LT(size_with_it(), 2'000'000u) << "of the 18,000,000 of the picture";
}

TEST_P(ReportPdfTest, GoesOnWithLongWordsAndPrintsNoControlCharacters)
{
    constexpr const char *kBands = R"(<report title="x" paper="A5" orientation="landscape" margin="10">
        <tables><table name="ditte" from="admin.ditte"/></tables>
        <query>SELECT dit_codice FROM {ditte} WHERE {selection}</query>
        <parameters><parameter name="Nota" type="string"/></parameters>
        <detail height="5"><param name="Nota" w="20" wrap="yes"/></detail>
        <detail height="5"><param name="Nota" w="190"/></detail></report>)";
    ReportRequest request;
    request.layout = ParseLayout(kBands, "x.rpt");
    request.parameters["Nota"] = "prima\tseconda\nDonaudampfschifffahrtsgesellschaft😀";
    EXPECT_EQ(WritePdf(Cmd(), request, Folder() / "note.pdf").pages, 1);
    std::string page = PdfPages(Folder() / "note.pdf").at(0);
    EXPECT_THAT(page, HasSubstr("prima seconda Donaudampfschifffahrtsgesellschaft"));
    EXPECT_THAT(page, Not(HasSubstr("…")));
}

TEST_P(ReportPdfTest, IsInterruptedWithoutLeavings)
{
    FillDemoJournal(Cmd(), 250, 16);
    const std::size_t files = FilesIn(Folder());
    const auto print = [&] {
        const InterruptionGuard guard;
        SAConnection connection;
        connection.Connect(lumera_db_target);
        SACommand command(&connection);
        ReportRequest request;
        request.layout = LoadLayout("pnotagest.rpt");
        for (const char *name : {"Ditta", "Sezione", "Causale"}) request.parameters[name] = std::string(name);
        for (const char *name : {"Start", "Stop"}) request.parameters[name] = ReportDate{};
        try {
            WritePdf(&command, request, Folder() / "mai.pdf", [](long) { std::raise(SIGINT); });
        } catch (const ReportError &error) {
            std::fputs(error.what(), stderr);
        }
    };
    EXPECT_EXIT(print(), testing::KilledBySignal(SIGINT), "Stampa interrotta");
    EXPECT_EQ(FilesIn(Folder()), files);
    EXPECT_FALSE(std::filesystem::exists(Folder() / "mai.pdf"));
}

TEST_P(ReportPdfTest, PrintsAnEmptyJournal)
{
    ASSERT_TRUE(PrintJournalList({}, Pdf("vuoto.pdf")));
    const std::vector<std::string> pages = PdfPages(Folder() / "vuoto.pdf");
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_THAT(pages[0], testing::AllOf(HasSubstr("01/01/2026"), HasSubstr("31/12/2026"), HasSubstr("0,00")));
}

TEST_P(ReportPdfTest, PrintsTheChart)
{
    ASSERT_TRUE(PrintChartOfAccounts(0, 0, Pdf("conti.pdf"))); // no logo: its place stays empty
    const std::vector<std::string> pages = PdfPages(Folder() / "conti.pdf");
    std::string all;
    for (const std::string &page : pages) all += page;
    EXPECT_THAT(LineWith(all, "Totale sottoconti"), HasSubstr(Value("SELECT COUNT(*) FROM admin.sotcon")));
    for (const char *kind : {"Attività", "Passività", "Costi", "Ricavi", "Transitori", "Clienti", "Fornitori"})
        EXPECT_THAT(all, HasSubstr(kind));
    ASSERT_TRUE(PrintChartOfAccounts(900, 900, Pdf("conti9.pdf")));
    EXPECT_THAT(LineWith(PdfPages(Folder() / "conti9.pdf").back(), "Totale sottoconti"),
                HasSubstr(Value("SELECT COUNT(*) FROM admin.sotcon WHERE sot_mas = 900")));
}

// ------------------------------------------------------------------------------------------------------------ CCrystal

/// Opens the journal list with all of its parameters.
void OpenJournal(CCrystal *cry)
{
    ASSERT_TRUE(cry->CryOpen("pnotagest.rpt", "", 0, 0));
    cry->CrySetDnsLessConn(lumera_db_type, 0);
    for (const char *name : {"Ditta", "Sezione", "Causale"}) cry->CryStringParam(0, name, name);
    for (const char *name : {"Start", "Stop"}) cry->CryDateParam(0, name, DateToJulian(1, 1, 2026));
}

TEST_P(ReportPdfTest, GoesOnNumberingPages)
{
    FillDemoJournal(Cmd(), 60, 13);
    CCrystal cry;
    OpenJournal(&cry);
    cry.CrySetFirstPage(118);
    cry.CrySetDestination(Pdf("segue.pdf"));
    ASSERT_TRUE(cry.CryEsegui());
    EXPECT_EQ(cry.Result().rows, 60);
    const std::vector<std::string> pages = PdfPages(Folder() / "segue.pdf");
    EXPECT_EQ(static_cast<long>(pages.size()), cry.Result().pages);
    EXPECT_THAT(LineWith(pages[0], "Pag."), HasSubstr("118"));
    EXPECT_THAT(LineWith(pages[1], "Pag."), HasSubstr("119"));
}

TEST_P(ReportPdfTest, ShowsWhatItCannotPrint)
{
    const struct {
        const char *text;
        std::function<void(CCrystal *)> change;
    } cases[] = {
        {"pnotagest.rpt: la stampa non ha il parametro \"Dittta\"",
         [](CCrystal *cry) { cry->CryStringParam(0, "Dittta", "x"); }},
        {"pnotagest.rpt: il parametro \"Start\" deve essere una data",
         [](CCrystal *cry) { cry->CryLongParam(0, "Start", 5); }},
        {"Formula di selezione, carattere 1: la tabella \"pnota\" non ha la colonna \"pno_numero\"",
         [](CCrystal *cry) { cry->CrySelect("{pnota.pno_numero} = 5", 0); }},
        {"pnotagest.rpt: la stampa è per un altro tipo di archivio",
         [](CCrystal *cry) { cry->CrySetDnsLessConn(1 - lumera_db_type, 0); }},
        {"pnotagest.rpt: questa stampa non si fa come testo a colonne; scegliere PDF, CSV o XLSX",
         [](CCrystal *cry) {
             cry->CrySetDestination({ReportTarget::Text, "x.txt"});
         }},
        {"Anteprima e stampante ci sono solo nel programma a finestre: indicare un file.",
         [](CCrystal *cry) {
             cry->CrySetDestination({ReportTarget::Preview, {}});
         }},
    };
    for (const auto &one : cases) {
        CCrystal cry;
        OpenJournal(&cry);
        cry.CrySetDestination(Pdf("niente.pdf"));
        one.change(&cry);
        user_.Expect(one.text);
        EXPECT_FALSE(cry.CryEsegui()) << one.text;
        EXPECT_FALSE(std::filesystem::exists(Folder() / "niente.pdf")) << one.text;
    }
    CCrystal cry;
    user_.Expect("Report \"manca.rpt\" inesistente");
    EXPECT_FALSE(cry.CryOpen("manca.rpt", "", 0, 0));
    EXPECT_FALSE(cry.CryEsegui());
}

TEST_P(ReportPdfTest, KeepsTheFileThatWasThereWhenItFails)
{
    const std::filesystem::path file = Folder() / "vecchio.pdf";
    WriteFileWhole(file, "di prima");
    const std::size_t files = FilesIn(Folder());
    CCrystal cry;
    OpenJournal(&cry);
    cry.CrySelect("{pnota.pno_codice} = ", 0);
    cry.CrySetDestination({ReportTarget::Pdf, file});
    user_.Expect("Formula di selezione, carattere 22: atteso un valore dopo \"=\"");
    EXPECT_FALSE(cry.CryEsegui());
    EXPECT_EQ(ReadWholeFile(file, 100), "di prima");
    EXPECT_EQ(FilesIn(Folder()), files);
}

class FakePresenter : public ReportPresenter {
  public:
    FakePresenter() : previous_(SetReportPresenter(this)) {}
    ~FakePresenter() override { SetReportPresenter(previous_); }
    void Preview(const ReportRequest &request, const std::filesystem::path &pdf) override
    {
        seen = request.title + "|" + pdf.parent_path().filename().string() + "|" + std::to_string(PdfPages(pdf).size());
    }
    bool Print(const std::string &title, const std::filesystem::path &pdf, bool landscape) override
    {
        seen = title + (landscape ? "|L|" : "|P|") + std::to_string(PdfPages(pdf).size());
        return prints;
    }
    std::string seen;
    bool prints = true;

  private:
    ReportPresenter *previous_;
};

TEST_P(ReportPdfTest, ShowsPagesThatVanishAfterwards)
{
    FakePresenter presenter;
    CCrystal cry;
    OpenJournal(&cry);
    EXPECT_TRUE(cry.CryEsegui()); // the preview, when nothing else is said
    EXPECT_EQ(presenter.seen, "Movimenti Prima Nota|tmp|1");
    cry.CrySetDestination({ReportTarget::Printer, {}});
    EXPECT_TRUE(cry.CryEsegui());
    EXPECT_EQ(presenter.seen, "Movimenti Prima Nota|L|1");
    presenter.prints = false;
    EXPECT_FALSE(cry.CryEsegui()) << "cancelled in the printer's dialog";
    EXPECT_EQ(FilesIn(CompanyFolder("tmp")), 0u);
}

// -------------------------------------------------------------------------------------------------------------- memory

/// Bytes that the program held at most while it printed so many entries, above what it held before.
class PeakMeter {
  public:
    PeakMeter() : before_(Held()) {}
    void Look() { peak_ = std::max(peak_, Held()); }
    double Peak() const { return static_cast<double>(peak_) - static_cast<double>(before_); }

  private:
    static std::size_t Held()
    {
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    }
    std::size_t before_, peak_ = 0;
};

TEST_P(ReportPdfTest, NeedsNoMoreMemoryForMoreEntries)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer keeps what was given back";
#endif
    // Entries without end, in the place of the journal's own.
    FillDemoJournal(Cmd(), 50, 14);
    Run("CREATE TABLE admin.tanti AS SELECT * FROM admin.pnota1 WHERE 1 = 0");
    Run("INSERT INTO admin.tanti (pno_codice, pno_data, pno_desc, pno_doc, pno_sez, pno_cau, pno_des_cau, pno_reg,"
        " pno_tot_doc, pno_dare, pno_avere) WITH RECURSIVE serie AS (SELECT 1 AS n UNION ALL SELECT n + 1 FROM serie"
        " WHERE n < 100000) SELECT n, (SELECT MIN(pno_data) FROM admin.pnota1), 'Movimento', 'x', 1, 21, 'Fattura', 2, "
        "0.01, 1,"
        " 1 FROM serie");
    Run("CREATE INDEX tanti_data ON admin.tanti (pno_data, pno_codice)"); // as the journal has it: nothing is sorted
    const auto peak = [&](long entries, ReportResult *result) {
        ReportRequest request;
        request.layout = LoadLayout("pnotagest.rpt");
        for (const char *name : {"Ditta", "Sezione", "Causale"}) request.parameters[name] = std::string(name);
        for (const char *name : {"Start", "Stop"}) request.parameters[name] = ReportDate{};
        request.tables["pnota"] = "admin.tanti";
        request.selection = fmt::format("{{pnota.pno_codice}} <= {}", entries);
        PeakMeter meter;
        *result = WritePdf(Cmd(), request, Folder() / "tanti.pdf", [&](long) { meter.Look(); });
        return meter.Peak();
    };
    ReportResult few, many;
    peak(500, &few); // fonts, plugins and prepared statements are there now
    const double little = peak(500, &few), much = peak(100000, &many);
    EXPECT_EQ(many.rows, 100000);
    EXPECT_GT(many.pages, 150 * few.pages);
    EXPECT_LT(much, 1.5 * little + 200e3) << "of which for 500 entries: " << little;
    RecordProperty("bytes_few", std::to_string(little));
    RecordProperty("bytes_many", std::to_string(much));
}

} // namespace
