#include "ledger/ui/PNotaAllegati.h"
#include "ledger/ui/PNotaCentriCosto.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include "ledger/EntryEditing.h"
#include "ledger/EntryStorage.h"
#include "ledger/VatLines.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvolumera/Attachments.h"
#include "tarvolumera/PSQLpno.h"

#include <QBuffer>
#include <QImage>
#include <fmt/format.h>

namespace {

class SubDialogsTest : public TablesWindowTest {
  protected:
    void SetUp() override
    {
        TablesWindowTest::SetUp();
        if (!database_) return;
        Run("INSERT INTO admin.centri1 (cdc_codice, cdc_desc) SELECT 901, 'Officina di prova' WHERE NOT EXISTS"
            " (SELECT 1 FROM admin.centri1 WHERE cdc_codice = 901)");
        Run("INSERT INTO admin.centri1 (cdc_codice, cdc_desc) SELECT 902, 'Negozio di prova' WHERE NOT EXISTS"
            " (SELECT 1 FROM admin.centri1 WHERE cdc_codice = 902)");
        sqlpno.Blank(Cmd(), &entry_);
        entry_.pno_data = entry_.pno_data_doc = DateToJulian(15, 3, 2026);
        entry_.pno_cli_for = 1;
        EnterCausale(Cmd(), &entry_, 21);
        EnterDocumentNumber(&entry_, "1");
        entry_.iva[0].impo = 100;
        EnterVatCode(Cmd(), &entry_, 0, 22);
        ASSERT_TRUE(StoreEntry(Cmd(), &entry_, true).stored);
        for (std::size_t i = 0; i < kEntryRows; ++i)
            if (entry_.righe[i].InUse() && entry_.righe[i].row_importo == 100) row_ = static_cast<long>(i) + 1;
        ASSERT_NE(row_, 0);
    }

    static CSpreadSheet *Grid(const QWidget &window) { return window.findChild<CSpreadSheet *>(); }

    static void TypeCells(const std::vector<std::string> &cells)
    {
        for (const std::string &cell : cells) {
            keys::Type(ToQt(cell));
            keys::Press(Qt::Key_Return);
        }
    }

    std::filesystem::path Written(const std::string &name, const std::string &bytes) const
    {
        WriteFileWhole(Folder() / name, bytes);
        return Folder() / name;
    }

    std::string Files() { return Value("SELECT COUNT(*) FROM admin.pnotaall"); }

    PNOTA entry_;
    long row_ = 0;
};

// --- cost centres
// ------------------------------------------------------------------------------------------------------

TEST_P(SubDialogsTest, SplitIsTypedAndAnEmptyAmountTakesTheRest)
{
    CPNotaCentriCosto dialog(&entry_, row_, nullptr);
    keys::Open(&dialog);
    EXPECT_TRUE(Shows(dialog, "100,00"));
    TypeCells({"901", "60"});
    EXPECT_TRUE(Shows(dialog, "40,00")) << "what is left is always in sight";
    EXPECT_EQ(Grid(dialog)->Text(1, 2), "Officina di prova");
    TypeCells({"902", ""});
    EXPECT_TRUE(Shows(dialog, "0,00 - importo ripartito per intero"));
    keys::Press(Qt::Key_F2);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(dialog.m_changed);
    ASSERT_EQ(entry_.centri.size(), 2u);
    EXPECT_EQ(entry_.centri[1].pcc_riga, row_);
    EXPECT_DOUBLE_EQ(entry_.centri[1].pcc_importo, 40);
    EXPECT_TRUE(StoreEntry(Cmd(), &entry_, false).stored);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotacdc"), "2");

    CPNotaCentriCosto again(&entry_, row_, nullptr);
    keys::Open(&again);
    EXPECT_EQ(Grid(again)->ActiveRow(), 3) << "behind the lines that are there";
    keys::Press(Qt::Key_F2);
    EXPECT_FALSE(again.m_changed) << "nothing was typed";
}

TEST_P(SubDialogsTest, HalfASplitIsAskedForAndThenStopsTheEntry)
{
    CPNotaCentriCosto dialog(&entry_, row_, nullptr);
    keys::Open(&dialog);
    TypeCells({"999"});
    EXPECT_EQ(user_.beeps, 1) << "no such centre";
    EXPECT_EQ(Grid(dialog)->ActiveColumn(), 1);
    TypeCells({"901", "60"});
    const char *question = "Resta da ripartire l'importo di 40,00.\n\nVuoi Continuare?";
    user_.Expect(question, IDNO);
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(entry_.centri.empty());
    user_.Expect(question, IDYES);
    keys::Press(Qt::Key_F2);
    ASSERT_EQ(entry_.centri.size(), 1u);
    user_.Expect(fmt::format("Problema su contabilità analitica alla riga n. {}", row_));
    EXPECT_FALSE(StoreEntry(Cmd(), &entry_, false).stored);
}

TEST_P(SubDialogsTest, RemovingASplitLeavesThoseOfOtherRows)
{
    entry_.centri = {{.pcc_riga = row_, .pcc_cdc = 901, .pcc_importo = 100},
                     {.pcc_riga = row_ + 1, .pcc_cdc = 902, .pcc_importo = 5}};
    CPNotaCentriCosto dialog(&entry_, row_, nullptr);
    keys::Open(&dialog);
    EXPECT_EQ(Grid(dialog)->RowCount(), static_cast<long>(kCostCentreLinesMax) - 1) << "one is another row's";
    user_.Expect("Vuoi eliminare la ripartizione della riga?", IDYES);
    keys::Press(Qt::Key_F6);
    EXPECT_TRUE(dialog.m_changed);
    ASSERT_EQ(entry_.centri.size(), 1u);
    EXPECT_EQ(entry_.centri[0].pcc_cdc, 902);
}

// --- attachments
// -------------------------------------------------------------------------------------------------------

TEST_P(SubDialogsTest, FilesAreAttachedOpenedSavedAndDeleted)
{
    CPNotaAllegati dialog(entry_.pno_codice, nullptr);
    std::vector<std::string> opened;
    dialog.m_open = [&](const QUrl &url) {
        opened.push_back(url.toLocalFile().toStdString());
        return true;
    };
    keys::Open(&dialog);
    user_.ExpectFiles({Written("fattura.pdf", "%PDF"), Written("foto.png", std::string(1'572'864, 'x'))});
    keys::Press(Qt::Key_F3);
    ASSERT_EQ(Grid(dialog)->RowCount(), 2);
    EXPECT_EQ(Grid(dialog)->Text(1, 2), "fattura.pdf");
    EXPECT_EQ(Grid(dialog)->Text(1, 4), "1 KB");
    EXPECT_EQ(Grid(dialog)->Text(2, 4), "1,5 MB");

    Grid(dialog)->setFocus();
    Grid(dialog)->SetActiveCell(1, 2);
    keys::Press(Qt::Key_Return);
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(ReadWholeFile(opened[0], 100), "%PDF");
    EXPECT_TRUE(opened[0].starts_with(CompanyFolder("tmp").string()));
    keys::Press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(opened.size(), 2u);

    user_.ExpectFiles({Folder() / "copia.pdf"});
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(ReadWholeFile(Folder() / "copia.pdf", 100), "%PDF");

    user_.Expect("Vuoi eliminare l'allegato fattura.pdf?", IDNO);
    keys::Press(Qt::Key_F6);
    user_.Expect("Vuoi eliminare l'allegato fattura.pdf?", IDYES);
    keys::Press(Qt::Key_F6);
    EXPECT_EQ(Files(), "1");
    EXPECT_EQ(Grid(dialog)->RowCount(), 1);
}

TEST_P(SubDialogsTest, EmptyAndHugeFilesAreRefusedWithTheWholeChoice)
{
    CPNotaAllegati dialog(entry_.pno_codice, nullptr);
    keys::Open(&dialog);
    const std::filesystem::path good = Written("buona.txt", "x");
    user_.ExpectFiles({good, Written("vuota.txt", "")});
    user_.Expect("Il file vuota.txt è vuoto: non c'è nulla da allegare.");
    keys::Press(Qt::Key_F3);
    const std::filesystem::path huge = Written("grande.bin", "x");
    std::filesystem::resize_file(huge, 200 * 1024 * 1024);
    user_.ExpectFiles({good, huge});
    user_.Expect("Il file grande.bin è di 200,0 MB: un allegato può avere al massimo 100,0 MB.");
    keys::Press(Qt::Key_F3);
    EXPECT_EQ(Files(), "0");
}

TEST_P(SubDialogsTest, NameFromAnotherSystemStaysInItsFolder)
{
    PNOTA_ALLEGATO file;
    file.pat_pno = entry_.pno_codice;
    file.pat_fname = "..\\..\\C:\\conti\n/../fuori.txt";
    file.pat_data = ToBytes("x");
    sqlpat.Store(Cmd(), &file);
    CPNotaAllegati dialog(entry_.pno_codice, nullptr);
    std::string opened;
    dialog.m_open = [&](const QUrl &url) {
        opened = url.toLocalFile().toStdString();
        return false;
    };
    keys::Open(&dialog);
    user_.Expect("Nessun programma apre il file " + OnOneLine(file.pat_fname) + ".");
    Grid(dialog)->setFocus();
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(std::filesystem::path(opened).parent_path().parent_path(), CompanyFolder("tmp"));
    EXPECT_EQ(std::filesystem::path(opened).filename(), "fuori.txt");
}

TEST_P(SubDialogsTest, FileNamedAsAPathOfAnotherSystemIsAttachedUnderItsLastName)
{
    CPNotaAllegati dialog(entry_.pno_codice, nullptr);
    keys::Open(&dialog);
    user_.ExpectFiles({Written("..\\..\\C:\\x.txt", "x")});
    keys::Press(Qt::Key_F3);
    EXPECT_EQ(Value("SELECT pat_fname FROM admin.pnotaall"), "x.txt");
    EXPECT_EQ(Grid(dialog)->Text(1, 2), "x.txt");
}

TEST_P(SubDialogsTest, NothingIsFiledUnderAnEntryDeletedByAnotherStation)
{
    CPNotaAllegati files(entry_.pno_codice, nullptr);
    CPrimaNotaImg image(entry_.pno_codice, nullptr);
    CCointestatari holders(entry_.pno_codice, nullptr);
    ASSERT_TRUE(DeleteEntry(Cmd(), &entry_));
    QImage picture(2, 2, QImage::Format_RGB32);
    picture.fill(Qt::gray);
    const std::string scan = (Folder() / "scansione.png").string();
    ASSERT_TRUE(picture.save(ToQt(scan)));
    const auto told = [this] {
        EXPECT_EQ(user_.shown.size(), 1u);
        EXPECT_TRUE(!user_.shown.empty() && user_.shown[0].starts_with("L'operazione lascerebbe un collegamento"));
        user_ = ScriptedUserInterface(); // what follows is worded by the engines each their own way
    };
    keys::Open(&files);
    user_.ExpectFiles({Written("a.txt", "x")});
    keys::Press(Qt::Key_F3);
    told();
    keys::Open(&image);
    user_.ExpectFiles({scan});
    keys::Press(Qt::Key_F3);
    told();
    keys::Open(&holders);
    TypeCells({"c", "1"});
    keys::Press(Qt::Key_F2);
    told();
    EXPECT_TRUE(holders.isVisible()) << "what was typed is still there";
    holders.SetChanged(false);
    EXPECT_EQ(Files(), "0");
}

TEST_P(SubDialogsTest, AttachmentDeletedByAnotherStationIsTold)
{
    PNOTA_ALLEGATO file;
    file.pat_pno = entry_.pno_codice;
    file.pat_fname = "a.txt";
    file.pat_data = ToBytes("x");
    sqlpat.Store(Cmd(), &file);
    CPNotaAllegati dialog(entry_.pno_codice, nullptr);
    keys::Open(&dialog);
    Run("DELETE FROM admin.pnotaall");
    user_.Expect("L'allegato è stato eliminato da un'altra stazione.");
    Grid(dialog)->setFocus();
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Grid(dialog)->RowCount(), 0);
}

struct SizeCase {
    const char *name;
    long long bytes;
    const char *text;
};

class FileSizeTest : public testing::TestWithParam<SizeCase> {};

TEST_P(FileSizeTest, IsReadable)
{
    EXPECT_EQ(FileSizeText(GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Cases, FileSizeTest,
                         testing::Values(SizeCase{"Nothing", 0, "0 KB"}, SizeCase{"OneByte", 1, "1 KB"},
                                         SizeCase{"JustOver", 1025, "2 KB"},
                                         SizeCase{"BelowMega", 1'048'575, "1.024 KB"},
                                         SizeCase{"Mega", 1'048'576, "1,0 MB"},
                                         SizeCase{"Large", 2'147'483'647, "2.048,0 MB"}),
                         [](const auto &test) { return std::string(test.param.name); });

// --- the image
// ---------------------------------------------------------------------------------------------------------

TEST_P(SubDialogsTest, ImageIsTakenZoomedAndReplaced)
{
    QImage picture(3000, 2000, QImage::Format_RGB32);
    picture.fill(Qt::gray);
    const std::string file = (Folder() / "scansione.png").string();
    ASSERT_TRUE(picture.save(ToQt(file)));
    CPrimaNotaImg dialog(entry_.pno_codice, nullptr);
    keys::Open(&dialog);
    EXPECT_TRUE(Shows(dialog, "Nessuna immagine: F3 ne inserisce una"));
    user_.ExpectFiles({Written("testo.png", "no picture")});
    user_.Expect("testo.png: non è un'immagine che si possa mostrare.");
    keys::Press(Qt::Key_F3);
    user_.ExpectFiles({file});
    keys::Press(Qt::Key_F3);
    EXPECT_EQ(Value("SELECT pni_formato FROM admin.pnotaim1"), "PNG");
    const double whole = dialog.Zoom();
    EXPECT_LT(whole, 1) << "the page is seen whole";
    keys::Type("+");
    EXPECT_GT(dialog.Zoom(), whole);
    keys::Type("1");
    EXPECT_EQ(dialog.Zoom(), 1);
    for (int presses = 0; presses < 30; ++presses) keys::Type("+");
    EXPECT_EQ(dialog.Zoom(), 8);
    keys::Type("0");
    EXPECT_EQ(dialog.Zoom(), whole);

    user_.ExpectFiles({file});
    user_.Expect("Il movimento ha già un'immagine.\n\nVuoi sostituirla?", IDYES);
    keys::Press(Qt::Key_F3);
    user_.Expect("Vuoi eliminare l'immagine del movimento?", IDYES);
    keys::Press(Qt::Key_F6);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaim1"), "0");
}

// --- co-holders
// --------------------------------------------------------------------------------------------------------

TEST_P(SubDialogsTest, CoHoldersAreTypedChangedAndRemoved)
{
    {
        CCointestatari dialog(entry_.pno_codice, nullptr);
        keys::Open(&dialog);
        TypeCells({"f", "1", "15", "50", "c", "99999"});
        EXPECT_EQ(user_.beeps, 1) << "no such customer";
        TypeCells({"1", "", "50"});
        EXPECT_FALSE(Grid(dialog)->Text(2, 3).empty());
        keys::Press(Qt::Key_F2);
        EXPECT_FALSE(dialog.isVisible());
    }
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotacoi WHERE coi_cli_for = 1 AND coi_importo = 50"), "2");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotacoi WHERE coi_rel = 1 AND coi_data IS NOT NULL"), "1");

    CCointestatari dialog(entry_.pno_codice, nullptr);
    keys::Open(&dialog);
    keys::Press(Qt::Key_Delete, Qt::ControlModifier);
    Grid(dialog)->SetActiveCell(2, 5);
    TypeCells({"70"});
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotacoi"), "1");
    EXPECT_EQ(Value("SELECT coi_importo FROM admin.pnotacoi WHERE coi_rel = 0"), "70");
}

INSTANTIATE_TEST_SUITE_P(Engines, SubDialogsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
