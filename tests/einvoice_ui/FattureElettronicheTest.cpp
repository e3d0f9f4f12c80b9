#include "einvoice/ui/FattureElettronicheList.h"

#include "ledger/ui/PNota.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/widgets/Field.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/PSQLpno.h"
#include "tests/einvoice/InvoiceFixture.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <QComboBox>
#include <QMenu>
#include <QTest>
#include <chrono>
#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr std::size_t kMaxBytes = 10'000'000;

class FattureElettronicheTest : public TablesWindowTest {
  protected:
    static CSpreadSheet *Grid(const QWidget &window)
    {
        for (auto *grid : window.findChildren<CSpreadSheet *>())
            if (grid->accessibleName() == "Fatture ricevute") return grid;
        return nullptr;
    }
    static std::vector<std::string> Cells(const QWidget &window, long column)
    {
        std::vector<std::string> cells;
        for (long row = 1; row <= Grid(window)->RowCount(); ++row) cells.push_back(Grid(window)->Text(row, column));
        return cells;
    }
    /// Shows the window on the year 2026 and waits for its list.
    static void OpenOn2026(CFattureElettroniche *window)
    {
        if (window->m_first == 0) window->m_first = DateToJulian(1, 1, 2026);
        if (window->m_last == 0) window->m_last = DateToJulian(31, 12, 2026);
        keys::Open(window);
        EXPECT_TRUE(QTest::qWaitFor(
            [window] { return Grid(*window)->RowCount() > 0 || HasStatus(*window, "Nessuna fattura"); }));
    }
    static bool HasStatus(const QWidget &window, const std::string &beginning)
    {
        for (const auto *label : window.findChildren<QLabel *>())
            if (label->text().toStdString().starts_with(beginning)) return true;
        return false;
    }
    /// F2 with these samples.
    void Load(CFattureElettroniche *window, const std::vector<std::string> &samples)
    {
        std::vector<std::filesystem::path> files;
        for (const std::string &sample : samples) files.push_back(SampleFile(sample));
        user_.ExpectFiles(files);
        keys::Press(Qt::Key_F2);
        ComeBack(window);
    }
    void Import(const std::string &sample)
    {
        ASSERT_EQ(ImportInvoices(Cmd(), {SampleFile(sample)}).at(0).outcome, ImportOutcome::Loaded);
    }
    static void GoTo(const QWidget &window, const std::string &number)
    {
        for (long row = 1; row <= Grid(window)->RowCount(); ++row)
            if (Grid(window)->Text(row, kNumber) == number) return Grid(window)->SetActiveCell(row, kNumber);
        ADD_FAILURE() << "not listed: " << number;
    }
    /// Takes an entry of the menu that Shift+F7 opens, counted from 1, with the arrow keys.
    static void TakeExport(int entry)
    {
        keys::Press(Qt::Key_F7, Qt::ShiftModifier);
        ASSERT_NE(QApplication::activePopupWidget(), nullptr);
        for (int i = 0; i < entry; ++i) keys::Press(Qt::Key_Down);
        keys::Press(Qt::Key_Return);
    }
    static std::vector<std::string> FilesIn(const std::filesystem::path &folder)
    {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        return names;
    }
    /// An entry of the journal that registers the first document of a file.
    long Registered(const std::string &file)
    {
        PNOTA entry;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = DateToJulian(1, 6, 2026);
        entry.pno_cau = 21;
        entry.pno_reg = kPurchases;
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
        Run(fmt::format(
            "UPDATE admin.pnota1 SET pno_prot = 77, pno_all_doc = 1, pno_all = (SELECT all_codice FROM admin.allegati"
            " WHERE all_fname = '{}') WHERE pno_codice = {}",
            file, entry.pno_codice));
        return entry.pno_codice;
    }
};

TEST_P(FattureElettronicheTest, LoadsFilesWithARowForEachDocument)
{
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    EXPECT_TRUE(Shows(window, "Nessuna fattura nel periodo: F2 carica i file ricevuti, Filtra cambia il periodo"));
    EXPECT_EQ(FromQt(window.windowTitle()), "Fatture Elettroniche Passive  [01/01/2026  -  31/12/2026]");
    keys::Press(Qt::Key_F6); // nothing to delete
    EXPECT_EQ(user_.beeps, 1);

    Load(&window, {"IT19949417158_1D0F8.xml", "IT03918277199_AV042.xml", "IT06186527153_E4187.xml.p7m"});
    EXPECT_TRUE(Shows(window, "4 fatture caricate"));
    EXPECT_THAT(Cells(window, kNumber), ElementsAre("210", "211", "42", "2026E0041877"));
    EXPECT_THAT(Cells(window, kSupplierName),
                ElementsAre("Colorificio Pennavera S.r.l.", "Colorificio Pennavera S.r.l.", "*** SCONOSCIUTO ***",
                            "Energia Valdoro S.p.A."));
    EXPECT_EQ(Cells(window, kSellerName)[2], "Tornabarbi Leonida");
    EXPECT_THAT(Cells(window, kTotal), ElementsAre("691,98", "225,70", "2.537,60", "1.132,79"));
    EXPECT_THAT(Cells(window, kSigned), ElementsAre("NO", "NO", "NO", "SI"));
    EXPECT_THAT(Cells(window, kRegistered), ElementsAre("NO", "NO", "NO", "NO"));
    EXPECT_EQ(Cells(window, kType)[2], "PARCELLA");
    EXPECT_EQ(Grid(window)->ActiveRow(), 1);
    keys::Press(Qt::Key_Down);
    EXPECT_TRUE(Shows(window, "4 fatture, 4 da registrare"));
}

TEST_P(FattureElettronicheTest, TellsWhatWasNotLoadedAndWhy)
{
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    Load(&window, {"IT02565617350_00A24.xml"});
    EXPECT_TRUE(Shows(window, "1 fattura caricata"));

    std::vector<std::string> outcomes;
    keys::WhenNextWindowOpens([&](QWidget *results) {
        EXPECT_EQ(FromQt(results->windowTitle()), "Esito del caricamento");
        const auto *grid = results->findChild<CSpreadSheet *>();
        for (long row = 1; row <= grid->RowCount(); ++row)
            outcomes.push_back(grid->Text(row, 1) + ": " + grid->Text(row, 2));
        keys::Press(Qt::Key_Escape);
    });
    Load(&window, {"IT02565617350_00A24.xml", "IT02565617350_00B01.xml", "IT08235227348_00017_RC_001.xml",
                   "IT02565617350_00A31.xml"});
    EXPECT_THAT(outcomes, ElementsAre("IT02565617350_00A24.xml: già presente", "IT02565617350_00B01.xml: rifiutata",
                                      "IT08235227348_00017_RC_001.xml: ignorata", "IT02565617350_00A31.xml: caricata"));
    EXPECT_TRUE(Shows(window, "1 fattura caricata, 1 file già presente, 1 file rifiutato, 1 file ignorato"));
    EXPECT_EQ(Grid(window)->Text(Grid(window)->ActiveRow(), kNumber), "3/NC");

    lumera_db_impo.dit_codfis = "";
    user_.Expect("Impostare codice fiscale sulla ditta!");
    keys::Press(Qt::Key_F2);
    user_.Expect("Impostare codice fiscale sulla ditta!");
    keys::Press(Qt::Key_F3);
}

TEST_P(FattureElettronicheTest, TakesUpTheFolderOfReceivedFiles)
{
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    const std::filesystem::path folder = Folder() / "ricevute";
    std::filesystem::create_directories(folder);
    lumera_db_flag.flg_sdi_cartella = folder.string();
    keys::Press(Qt::Key_F3);
    EXPECT_TRUE(Shows(window, "Nessun file nuovo"));
    for (const char *sample : {"IT02565617350_00A24.xml", "IT07916437341_00B77.xml"}) {
        std::filesystem::copy_file(SampleFile(sample), folder / sample);
        std::filesystem::last_write_time(folder / sample,
                                         std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    }
    std::string refused;
    keys::WhenNextWindowOpens([&](QWidget *results) {
        EXPECT_EQ(FromQt(results->windowTitle()), "Esito della sincronizzazione");
        refused = results->findChild<CSpreadSheet *>()->Text(2, 1);
        keys::Press(Qt::Key_Escape);
    });
    keys::Press(Qt::Key_F3);
    EXPECT_EQ(refused, "IT07916437341_00B77.xml");
    EXPECT_TRUE(Shows(window, "1 file di fatture caricato, 1 rifiutato"));
    EXPECT_THAT(Cells(window, kNumber), ElementsAre("24/2026"));
}

TEST_P(FattureElettronicheTest, TheLastDayOfThePeriodCountsToItsEnd)
{
    Import("IT02565617350_00A24.xml");
    Import("IT19949417158_1C7Q2.xml");
    Run("UPDATE admin.fatture SET fat_acquisita = '2026-03-31 23:59:59' WHERE fat_numero = '88'");
    Run("UPDATE admin.fatture SET fat_acquisita = '2026-04-01 00:00:00' WHERE fat_numero = '24/2026'");
    CFattureElettroniche window(nullptr);
    window.m_last = DateToJulian(31, 3, 2026);
    OpenOn2026(&window);
    EXPECT_THAT(Cells(window, kNumber), ElementsAre("88"));
    EXPECT_EQ(Grid(window)->Text(1, kAcquired) + " " + Grid(window)->Text(1, kTime), "31/03/2026 23:59");

    std::string title;
    keys::WhenNextWindowOpens([&](QWidget *period) {
        title = FromQt(period->windowTitle());
        keys::Press(Qt::Key_Return); // the first day stays
        keys::Type("01042026");
        keys::Press(Qt::Key_Return);
    });
    keys::Press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(title, "Seleziona Periodo Acquisizione");
    EXPECT_THAT(Cells(window, kNumber), ElementsAre("88", "24/2026"));
    EXPECT_EQ(FromQt(window.windowTitle()), "Fatture Elettroniche Passive  [01/01/2026  -  01/04/2026]");

    ComeBack(&window);
    Load(&window, {"IT03175957582_27731.xml"}); // on 1 June
    EXPECT_TRUE(Shows(window, "1 fattura caricata. Il periodo ora comprende oggi"));
    EXPECT_EQ(FromQt(window.windowTitle()), "Fatture Elettroniche Passive  [01/01/2026  -  01/06/2026]");
}

TEST_P(FattureElettronicheTest, AsksForThePeriodAndDoesNotOpenWithoutOne)
{
    user_.today = DateToJulian(3, 2, 2027);
    std::string asked;
    keys::WhenNextWindowOpens([&](QWidget *period) {
        for (const auto *field : period->findChildren<QLineEdit *>()) asked += FromQt(field->text()) + " ";
        keys::Press(Qt::Key_Escape);
    });
    EXPECT_EQ(CFattureElettroniche(nullptr).DoModal(), IDCANCEL);
    EXPECT_EQ(asked, "01/01/2026 03/02/2027 ") << "the working year, and on to today";
}

TEST_P(FattureElettronicheTest, FiltersTakeEffectWhenLeft)
{
    Import("IT02565617350_00A24.xml");
    Import("IT02565617350_00A31.xml");
    Import("IT05027697332_0147C.xml");
    const long entry = Registered("IT02565617350_00A24.xml");
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    EXPECT_THAT(Cells(window, kRegistered), ElementsAre("SI", "NO", "NO"));
    EXPECT_EQ(Grid(window)->Long(1, kEntry), entry);
    EXPECT_EQ(Grid(window)->Long(1, kProtocol), 77);

    Field(window, "Cedente o fornitore")->setFocus();
    keys::Type("MARZAVOLA");
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(Cells(window, kNumber), ElementsAre("24/2026", "3/NC"));
    keys::Type("nc");
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(Cells(window, kNumber), ElementsAre("3/NC"));
    keys::Press(Qt::Key_Down); // the state: to be registered, then registered
    keys::Press(Qt::Key_Down);
    EXPECT_THAT(Cells(window, kNumber), IsEmpty());
    EXPECT_TRUE(Shows(window, "Nessuna fattura del periodo con questi filtri"));
    Load(&window, {"IT19949417158_1C7Q2.xml"});
    EXPECT_TRUE(Shows(window, "1 fattura caricata. I filtri sono stati tolti"));
    EXPECT_EQ(Grid(window)->RowCount(), 4);

    CFattureElettroniche open(nullptr);
    open.m_only_open = true;
    open.m_select = std::stol(Value("SELECT all_codice FROM admin.allegati WHERE all_fname LIKE '%0147C%'"));
    OpenOn2026(&open);
    EXPECT_THAT(Cells(open, kNumber), ElementsAre("3/NC", "147/C", "88"));
    EXPECT_EQ(Grid(open)->ActiveRow(), 2);
}

TEST_P(FattureElettronicheTest, ExportsTheMarkedFiles)
{
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    Load(&window, {"IT02565617350_00A24.xml", "IT06186527153_E4187.xml.p7m", "IT19949417158_1D0F8.xml"});
    std::vector<std::string> texts;
    for (const QAction *action : window.findChild<QMenu *>()->actions()) texts.push_back(FromQt(action->text()));
    EXPECT_THAT(texts, ElementsAre("&File Selezionato in formato XML", "&Tutti i Files Selezionati in formato XML",
                                   "&Tutti i Files in formato XML", "T&utti i Files Selezionati in formato XML/P7M",
                                   "T&utti i Files in formato XML/P7M"));

    keys::Press(Qt::Key_Space);
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Space);
    EXPECT_THAT(Cells(window, kMark), ElementsAre("X", "X", "", ""));
    EXPECT_TRUE(Shows(window, "4 fatture, 4 da registrare, 2 selezionate"));
    user_.ExpectFolder(Folder() / "xml");
    TakeExport(2);
    EXPECT_THAT(FilesIn(Folder() / "xml"), UnorderedElementsAre("IT02565617350_00A24.xml", "IT06186527153_E4187.xml"));
    EXPECT_TRUE(Shows(window, "2 file esportati"));

    keys::Press(Qt::Key_A, Qt::ControlModifier);
    user_.ExpectFolder(Folder() / "ricevuti");
    TakeExport(4);
    EXPECT_THAT(
        FilesIn(Folder() / "ricevuti"),
        UnorderedElementsAre("IT02565617350_00A24.xml", "IT06186527153_E4187.xml.p7m", "IT19949417158_1D0F8.xml"))
        << "two marked documents of a file are one file";
    keys::Press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_THAT(Cells(window, kMark), ElementsAre("", "", "", ""));
    user_.ExpectFolder(Folder() / "una");
    TakeExport(4);
    EXPECT_THAT(FilesIn(Folder() / "una"), ElementsAre("IT06186527153_E4187.xml.p7m")) << "the row with the cursor";
    user_.ExpectFolder(Folder() / "tutte");
    TakeExport(3);
    EXPECT_EQ(FilesIn(Folder() / "tutte").size(), 3U);
}

TEST_P(FattureElettronicheTest, ExportsTheChosenFileInThreeForms)
{
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    Load(&window, {"IT02565617350_00A24.xml", "IT06186527153_E4187.xml.p7m"});
    user_.Expect("Impossibile esportare il file!\n\nFormato file non corretto.");
    keys::Press(Qt::Key_F8);

    GoTo(window, "2026E0041877");
    const std::filesystem::path p7m = Folder() / "a.p7m", xml = Folder() / "a.xml", pdf = Folder() / "a.pdf";
    user_.ExpectFiles({p7m});
    keys::Press(Qt::Key_F8);
    EXPECT_EQ(ReadWholeFile(p7m, kMaxBytes), ReadSample("IT06186527153_E4187.xml.p7m"));
    user_.ExpectFiles({xml});
    keys::Press(Qt::Key_F7);
    EXPECT_TRUE(Shows(window, "Scritto " + xml.string()));
    CFattureElettronicheDB content;
    content.Load(ReadWholeFile(xml, kMaxBytes), "a.xml");
    EXPECT_FALSE(content.Envelope().is_signed);

    keys::Press(Qt::Key_F9, Qt::ShiftModifier);
    EXPECT_EQ(user_.beeps, 1) << "no PDF stored yet";
    user_.ExpectFiles({pdf});
    QTest::qWait(200); // the file is read a moment after its row was chosen
    keys::Press(Qt::Key_F9);
    EXPECT_THAT(ReadWholeFile(pdf, kMaxBytes), testing::StartsWith("%PDF"));
    const auto stored = [this] { return Value("SELECT COUNT(*) FROM admin.allegati WHERE all_tab_tipo = 23"); };
    EXPECT_EQ(stored(), "1");
    user_.Expect("Vuoi veramente eliminare il PDF acquisito?", IDYES);
    keys::Press(Qt::Key_F9, Qt::ShiftModifier);
    EXPECT_EQ(stored(), "0");
    keys::Press(Qt::Key_F9, Qt::ShiftModifier);
    EXPECT_EQ(user_.beeps, 2);
}

TEST_P(FattureElettronicheTest, DeletesAFileWithAllItsDocuments)
{
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    Load(&window, {"IT19949417158_1D0F8.xml", "IT02565617350_00A24.xml"});
    const long entry = Registered("IT19949417158_1D0F8.xml");
    const std::string question =
        fmt::format("Vuoi veramente eliminare il file IT19949417158_1D0F8.xml?\n\n"
                    "Contiene 2 documenti, che saranno eliminati tutti:\n"
                    "n. 210 del 30/04/2026 di Colorificio Pennavera S.r.l. (registrato con il movimento {})\n"
                    "n. 211 del 30/04/2026 di Colorificio Pennavera S.r.l.\n\n"
                    "I movimenti già registrati restano, con la loro copia del file.",
                    entry);
    user_.Expect(question, IDNO);
    keys::Press(Qt::Key_F6);
    EXPECT_EQ(Grid(window)->RowCount(), 3);
    GoTo(window, "211"); // either of the two
    user_.Expect(question, IDYES);
    keys::Press(Qt::Key_F6);
    EXPECT_THAT(Cells(window, kNumber), ElementsAre("24/2026"));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.fatture"), "1");
    user_.Expect("Vuoi veramente eliminare il file IT02565617350_00A24.xml?\n\nContiene il documento:\n"
                 "n. 24/2026 del 19/01/2026 di Utensileria Marzavola S.r.l.",
                 IDYES);
    keys::Press(Qt::Key_F6);
    EXPECT_EQ(Grid(window)->RowCount(), 0);
    EXPECT_TRUE(Shows(window, "Il file IT02565617350_00A24.xml è eliminato"));
    keys::Press(Qt::Key_F6);
    EXPECT_EQ(user_.beeps, 1);
}

TEST_P(FattureElettronicheTest, AnUnreadableFileIsListedWithItsFault)
{
    Import("IT02565617350_00A24.xml");
    Import("IT02565617350_00A31.xml");
    SACommand damage(Cmd()->Connection(), "UPDATE admin.allegati SET all_data = :data WHERE all_fname LIKE '%A24%'");
    damage.Param("data").setAsBytes(ToBytes("<Fattura"));
    damage.Execute();
    Run("DELETE FROM admin.fatture"); // as a version left it that kept nothing
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    EXPECT_THAT(Cells(window, kType), UnorderedElementsAre("ILLEGGIBILE", "NOTA DI CREDITO"));
    Grid(window)->SetActiveCell(Grid(window)->FindText(1, kType, "ILLEGGIBILE"), kType);
    EXPECT_TRUE(HasStatus(window, "File illeggibile: "));
    QTest::qWait(200);
    EXPECT_TRUE(HasStatus(window, "File illeggibile: ")) << "and so when its pages had their turn";
    for (const int key : {Qt::Key_F4, Qt::Key_F5, Qt::Key_Return}) keys::Press(key);
    EXPECT_EQ(user_.beeps, 3);
    user_.Expect("File in PDF del documento non trovato in archivio!");
    keys::Press(Qt::Key_F9);
}

// Nobody asks and nothing is opened for a file that is no longer there, whatever the user was about to do with it.
TEST_P(FattureElettronicheTest, WhatAnotherStationDeletedLeavesTheList)
{
    for (const char *name : {"IT02565617350_00A24.xml", "IT03175957582_27731.xml", "IT19949417158_1D0F8.xml"})
        Import(name);
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    const auto deleted_elsewhere = [&](const std::string &name) {
        Run("DELETE FROM admin.allegati WHERE all_fname = '" + name + "'");
    };
    deleted_elsewhere("IT02565617350_00A24.xml");
    GoTo(window, "24/2026");
    keys::Press(Qt::Key_F6);
    EXPECT_THAT(Cells(window, kNumber), UnorderedElementsAre("8N00127731", "210", "211"));
    EXPECT_TRUE(HasStatus(window, "Il file è stato eliminato da un'altra stazione"));

    deleted_elsewhere("IT19949417158_1D0F8.xml");
    GoTo(window, "211");
    EXPECT_TRUE(QTest::qWaitFor([&] { return Grid(window)->RowCount() == 1; })) << "both documents of it";
    EXPECT_THAT(Cells(window, kNumber), ElementsAre("8N00127731"));
}

TEST_P(FattureElettronicheTest, ThePagesFollowTheRow)
{
    Import("IT02565617350_00A24.xml");
    Import("IT03175957582_27731.xml");
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    const auto shown = [&](const char *name) {
        for (const auto *field : window.findChildren<QLineEdit *>())
            if (field->isReadOnly() && field->isVisible() && field->text().startsWith(name)) return true;
        return false;
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown("Utensileria Marzavola"); }));
    keys::Press(Qt::Key_Down);
    EXPECT_TRUE(shown("Utensileria Marzavola")) << "a moment later, not with every step";
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown("Nexalia"); }));

    keys::Press(Qt::Key_Up);
    keys::Press(Qt::Key_2, Qt::AltModifier);
    keys::Press(Qt::Key_1, Qt::AltModifier);
    EXPECT_TRUE(shown("Utensileria Marzavola")) << "at once for who goes to a page";

    std::string title;
    keys::WhenNextWindowOpens([&](QWidget *pages) {
        title = FromQt(pages->windowTitle());
        keys::Press(Qt::Key_Escape);
    });
    Grid(window)->setFocus();
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(title, "FATTURA n. 24/2026 del 19/01/2026 - Utensileria Marzavola S.r.l.");
}

TEST_P(FattureElettronicheTest, GoesOnToTheNextThatIsNotRegistered)
{
    for (const char *sample : {"IT02565617350_00A24.xml", "IT03175957582_27731.xml", "IT02565617350_00A31.xml"})
        Import(sample);
    const long first = Registered("IT03175957582_27731.xml");
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    const auto register_it = [&](int key) {
        keys::WhenNextWindowOpens([key](QWidget *editor) {
            if (key == Qt::Key_F2)
                keys::WhenNextWindowOpens([](QWidget *) { keys::Press(Qt::Key_Escape); }); // no instalments now
            EXPECT_NE(dynamic_cast<CPNota *>(editor), nullptr);
            keys::Press(key);
        });
        keys::Press(Qt::Key_F4);
        ComeBack(&window);
    };
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDYES);
    register_it(Qt::Key_Escape);
    EXPECT_EQ(Grid(window)->ActiveRow(), 1);
    EXPECT_THAT(Cells(window, kRegistered), ElementsAre("NO", "SI", "NO"));
    register_it(Qt::Key_F2);
    EXPECT_THAT(Cells(window, kRegistered), ElementsAre("SI", "SI", "NO"));
    EXPECT_EQ(Grid(window)->Long(1, kEntry), first + 1);
    EXPECT_EQ(Grid(window)->ActiveRow(), 3);
    EXPECT_TRUE(Shows(window, fmt::format("La fattura n. 24/2026 è registrata con il movimento {}", first + 1)));
    keys::Press(Qt::Key_M, Qt::ControlModifier);
    EXPECT_EQ(user_.beeps, 1) << "there is no entry to open";
}

TEST_P(FattureElettronicheTest, FindsByAnyColumnAndGoesOn)
{
    for (const char *sample : {"IT02565617350_00A24.xml", "IT03175957582_27731.xml", "IT02565617350_00A31.xml"})
        Import(sample);
    CFattureElettroniche window(nullptr);
    OpenOn2026(&window);
    const auto find = [&](const char *text) {
        keys::WhenNextWindowOpens([text](QWidget *) {
            keys::Type(text);
            keys::Press(Qt::Key_Return);
        });
        keys::Press(Qt::Key_F, Qt::ControlModifier);
        ComeBack(&window);
        return Grid(window)->Text(Grid(window)->ActiveRow(), kNumber);
    };
    EXPECT_EQ(find("nexalia"), "8N00127731");
    EXPECT_EQ(find("02565617350"), "3/NC");
    EXPECT_EQ(find("02565617350"), "24/2026") << "on from the top";
    EXPECT_EQ(find("zzz"), "24/2026");
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_TRUE(Shows(window, "Nessuna fattura elencata contiene \"zzz\""));

    Run("UPDATE admin.fatture SET fat_sdi = '990017' WHERE fat_numero = '3/NC'");
    window.LoadTable(nullptr, true);
    EXPECT_EQ(find("990017"), "3/NC");
    EXPECT_TRUE(Shows(window, "Identificativo SdI 990017"));
}

INSTANTIATE_TEST_SUITE_P(Engines, FattureElettronicheTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
