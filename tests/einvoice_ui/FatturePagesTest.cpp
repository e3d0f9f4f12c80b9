#include "einvoice/ui/FatturePages.h"

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvolumera/fatturapa/InvoiceFileError.h"
#include "tests/einvoice/InvoiceFixture.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>
#include <chrono>
#include <filesystem>

namespace {

/// Tells what the picker was to propose.
class PickingUser : public ScriptedUserInterface {
  public:
    std::vector<std::filesystem::path> PickFiles(const FilePicking &picking) override
    {
        picked.push_back(picking);
        return ScriptedUserInterface::PickFiles(picking);
    }
    std::vector<FilePicking> picked;
};

/// A dialog with the pages, as the desk has them.
class PagesDialog : public CTarvoDialog {
  public:
    PagesDialog() : tabs(new CTarvoTabs(this, Content()))
    {
        auto *layout = new QVBoxLayout(Content());
        layout->addWidget(tabs);
        tabs->AddPage(seller = new CFattureElettronicheFor(this), "&Fornitore");
        tabs->AddPage(rows = new CFattureElettronicheRows(this), "&Dettaglio Linee");
        tabs->AddPage(vat = new CFattureElettronicheIva(this), "&Dettaglio Iva");
        tabs->AddPage(payments = new CFattureElettronichePagamenti(this), "&Pagamenti");
        tabs->AddPage(files = new CFattureElettronicheAllegati(this), "&Allegati");
        pages = {seller, rows, vat, payments, files};
    }
    bool OnInitDialog() override { return tabs->Init(); }
    bool PreTranslateMessage(QKeyEvent *message) override
    {
        return tabs->PreTranslateMessage(message) || CTarvoDialog::PreTranslateMessage(message);
    }

    CTarvoTabs *tabs;
    CFattureElettronicheFor *seller;
    CFattureElettronicheRows *rows;
    CFattureElettronicheIva *vat;
    CFattureElettronichePagamenti *payments;
    CFattureElettronicheAllegati *files;
    std::vector<CFattureElettronichePage *> pages;
};

class FatturePagesTest : public testing::Test {
  protected:
    FatturePagesTest() : before_(SetUserInterface(&user))
    {
        dialog.resize(1280, 320);
        keys::Open(&dialog);
    }
    ~FatturePagesTest() override
    {
        SetUserInterface(before_);
        EXPECT_EQ(user.Faults(), "");
    }

    /// Shows a document of a file on the page in front.
    void Show(CFattureElettronichePage *page, const std::string &bytes, std::size_t document = 0)
    {
        for (CFattureElettronichePage *each : dialog.pages) each->Refresh(nullptr, 0);
        content.Load(bytes, "prova.xml");
        dialog.tabs->SetActivePage(page);
        for (CFattureElettronichePage *each : dialog.pages) each->Refresh(&content, document);
    }
    void ShowSample(CFattureElettronichePage *page, const char *file, std::size_t document = 0)
    {
        Show(page, ReadSample(file), document);
    }

    static CSpreadSheet *Grid(const QWidget *page) { return page->findChild<CSpreadSheet *>(); }

    /// The cell of a column by its title; "(manca)" when the grid has no such column.
    static std::string Cell(const QWidget *page, long row, const char *title)
    {
        const CSpreadSheet *grid = Grid(page);
        for (long column = 1; column <= grid->ColumnCount(); ++column)
            if (grid->ColumnAt(column).title == title) return grid->Text(row, column);
        return "(manca)";
    }
    /// A value of the supplier page, by group and caption.
    std::string Value(const char *group, const char *caption) const
    {
        for (const auto *value : dialog.seller->findChildren<QLineEdit *>())
            if (value->accessibleDescription() == group && value->accessibleName() == caption)
                return value->text().toStdString();
        return "(manca)";
    }
    static std::string Notes(const QWidget *page)
    {
        std::string notes;
        for (const auto *label : page->findChildren<QLabel *>())
            if (!label->isHidden()) notes += label->text().toStdString();
        return notes;
    }

    PickingUser user;
    CFattureElettronicheDB content;
    PagesDialog dialog;

  private:
    UserInterface *before_;
};

TEST_F(FatturePagesTest, SupplierPageShowsAFirmAndAPerson)
{
    ShowSample(dialog.seller, "IT19949417158_1D0F8.xml");
    EXPECT_EQ(Value("Identificativo Fiscale", "Partita Iva"), "IT 07916437341");
    EXPECT_EQ(Value("Anagrafica", "Denominazione"), "Colorificio Pennavera S.r.l.");
    EXPECT_EQ(Value("Sede", "Comune"), "Langhirano");
    EXPECT_EQ(Value("Stabile Organizzazione", "Comune"), "");
    EXPECT_EQ(Value("Iscrizione REA", "Capitale Sociale"), "50.000,00");
    EXPECT_EQ(Value("Iscrizione REA", "Socio Unico"), "SM Più soci");
    EXPECT_EQ(Value("Iscrizione REA", "Stato Liquidazione"), "LN Non in liquidazione");
    EXPECT_EQ(Value("Contatti", "Email"), "info@pennavera.example");

    ShowSample(dialog.seller, "IT03918277199_AV042.xml");
    EXPECT_EQ(Value("Anagrafica", "Denominazione"), "");
    EXPECT_EQ(Value("Anagrafica", "Cognome"), "Tornabarbi");
    EXPECT_EQ(Value("Dati Anagrafici", "Albo Professionale"), "Ordine degli Avvocati (CR)");
    EXPECT_EQ(Value("Dati Anagrafici", "Data Iscrizione Albo"), "18/01/2001");
    EXPECT_EQ(Value("Iscrizione REA", "Capitale Sociale"), "") << "none is not 0,00";
}

TEST_F(FatturePagesTest, SupplierPageCutsALongNameAndTellsItWholeInTheTooltip)
{
    const std::string name = "Consorzio <b>interregionale</b> " + std::string(60, 'W');
    std::string escaped = Replaced(Replaced(name, "<b>", "&lt;b&gt;"), "</b>", "&lt;/b&gt;");
    Show(dialog.seller, Replaced(ReadSample("IT19949417158_1D0F8.xml"), "Colorificio Pennavera S.r.l.", escaped));
    EXPECT_EQ(Value("Anagrafica", "Denominazione"), name) << "to be copied whole";
    for (const auto *value : dialog.seller->findChildren<QLineEdit *>())
        if (value->accessibleName() == "Denominazione") {
            EXPECT_EQ(value->toolTip().toStdString(), "<qt>" + escaped + "</qt>") << "its mark-up is text";
            EXPECT_TRUE(value->isReadOnly());
        }
}

TEST_F(FatturePagesTest, LinesHaveTheColumnsAndDecimalsThatTheDocumentNeeds)
{
    ShowSample(dialog.rows, "IT19949417158_1D0F8.xml");
    EXPECT_EQ(Grid(dialog.rows)->RowCount(), 2);
    EXPECT_EQ(Cell(dialog.rows, 2, "Codice"), "FAR-3009 (CODFOR)");
    EXPECT_EQ(Cell(dialog.rows, 2, "Quantità"), "30");
    EXPECT_EQ(Cell(dialog.rows, 2, "U.M."), "LT");
    EXPECT_EQ(Cell(dialog.rows, 2, "Prezzo unitario"), "9,65");
    EXPECT_EQ(Cell(dialog.rows, 2, "Sconti/magg."), "sc. 10% + sc. 5%");
    EXPECT_EQ(Cell(dialog.rows, 2, "Importo"), "247,52");
    EXPECT_EQ(Cell(dialog.rows, 2, "Aliquota"), "22,00%");
    EXPECT_EQ(Cell(dialog.rows, 2, "Natura"), "(manca)");

    ShowSample(dialog.rows, "IT05098487365_3307V.xml"); // four decimals, and none is lost
    EXPECT_EQ(Cell(dialog.rows, 1, "Prezzo unitario"), "0,0347");
    EXPECT_EQ(Cell(dialog.rows, 2, "Importo"), "47,2500");
    EXPECT_EQ(Cell(dialog.rows, 3, "Importo"), "95,8041");
    EXPECT_EQ(Cell(dialog.rows, 1, "Sconti/magg."), "(manca)");

    ShowSample(dialog.rows, "IT06593047100_00961.xml");
    EXPECT_EQ(Cell(dialog.rows, 1, "Natura"), "N3.5 NON IMPONIBILE");

    ShowSample(dialog.rows, "IT06186527153_E4187.xml.p7m");
    EXPECT_NE(Cell(dialog.rows, 1, "Periodo"), "(manca)");

    ShowSample(dialog.rows, "IT03918277199_AV042.xml");
    EXPECT_EQ(Cell(dialog.rows, 1, "Ritenuta"), "SI");

    ShowSample(dialog.rows, "IT19949417158_1F9T3.xml"); // simplified
    EXPECT_EQ(Cell(dialog.rows, 1, "Prezzo unitario"), "(manca)");
    EXPECT_EQ(Cell(dialog.rows, 1, "Importo"), "120,00");
}

TEST_F(FatturePagesTest, TwentyThousandLinesAreShownAtOnce)
{
    std::string text = ReadSample("IT02565617350_00A24.xml");
    const std::size_t first = text.find("<DettaglioLinee>"), behind = text.find("<DatiRiepilogo>");
    std::string lines;
    for (int i = 1; i <= 20000; ++i)
        lines += "<DettaglioLinee><NumeroLinea>" + std::to_string(i) + "</NumeroLinea><Descrizione>Articolo " +
                 std::to_string(i) + "</Descrizione><Quantita>1.00</Quantita><PrezzoUnitario>0.0" +
                 std::to_string(i % 9 + 1) +
                 "</PrezzoUnitario><PrezzoTotale>0.06</PrezzoTotale><AliquotaIVA>22.00</AliquotaIVA></DettaglioLinee>";
    text.replace(first, behind - first, lines);
    Show(dialog.seller, text);
    const auto start = std::chrono::steady_clock::now();
    dialog.tabs->SetActivePage(dialog.rows);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(Cell(dialog.rows, 20000, "Descrizione"), "Articolo 20000");
    EXPECT_LT(seconds.count(), 2.0) << "a slow machine included";
}

TEST_F(FatturePagesTest, VatPageComparesTheSummaryWithTheDeclaredTotal)
{
    ShowSample(dialog.vat, "IT08102747378_00031.xml");
    EXPECT_EQ(Grid(dialog.vat)->RowCount(), 2);
    EXPECT_EQ(Cell(dialog.vat, 2, "Aliquota"), "0,00%");
    EXPECT_EQ(Cell(dialog.vat, 2, "Natura"), "N4 ESENTE");
    EXPECT_EQ(Cell(dialog.vat, 2, "Imponibile"), "1.250,00");
    EXPECT_EQ(Cell(dialog.vat, 2, "Imposta"), "0,00");
    EXPECT_EQ(Cell(dialog.vat, 1, "Natura"), "N1 ESCLUSA ART.15");
    EXPECT_NE(Cell(dialog.vat, 2, "Riferimento normativo"), "");

    ShowSample(dialog.vat, "IT02565617350_00A24.xml");
    EXPECT_EQ(Cell(dialog.vat, 1, "Natura"), "IMPONIBILE");
    EXPECT_EQ(Cell(dialog.vat, 1, "Esigibilità"), "I IMMEDIATA");
    EXPECT_THAT(Notes(dialog.vat), testing::HasSubstr("Totale documento € 1.478,64"));
    EXPECT_THAT(Notes(dialog.vat), testing::HasSubstr("Il totale dichiarato corrisponde al riepilogo IVA."));

    ShowSample(dialog.vat, "IT05098487365_3307V.xml");
    EXPECT_EQ(Cell(dialog.vat, 1, "Arrotondamento"), "0,0009");

    ShowSample(dialog.vat, "IT03918277199_AV042.xml");
    EXPECT_THAT(Notes(dialog.vat), testing::HasSubstr("Netto a pagare € 2.137,60"));
}

struct TotalCase {
    const char *name, *total; ///< element in place of the sample's 1478.64
    const char *note;
};
void PrintTo(const TotalCase &c, std::ostream *out)
{
    *out << c.name;
}
class VatNoteTest : public FatturePagesTest, public testing::WithParamInterface<TotalCase> {};

TEST_P(VatNoteTest, SaysHowTheTotalIsMadeUp)
{
    constexpr const char *kDeclared = "<ImportoTotaleDocumento>1478.64</ImportoTotaleDocumento>";
    Show(dialog.vat, Replaced(ReadSample("IT02565617350_00A24.xml"), kDeclared, GetParam().total));
    EXPECT_THAT(Notes(dialog.vat), testing::HasSubstr(GetParam().note));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, VatNoteTest,
    testing::Values(TotalCase{"NotDeclared", "",
                              "Il file non dichiara il totale del documento: vale quello del riepilogo IVA."},
                    TotalCase{"RoundedInTheDocument",
                              "<ImportoTotaleDocumento>1478.60</ImportoTotaleDocumento>"
                              "<Arrotondamento>-0.04</Arrotondamento>",
                              "Totale dichiarato, differenza dal riepilogo IVA -0,04: arrotondamento del documento"},
                    TotalCase{"OnlyTheRounding", "<Arrotondamento>-0.04</Arrotondamento>",
                              "Il file non dichiara il totale del documento; differenza dal riepilogo IVA -0,04"},
                    TotalCase{"Unexplained", "<ImportoTotaleDocumento>1480.00</ImportoTotaleDocumento>",
                              "Attenzione: differenza dal riepilogo IVA 1,36: differenza non dichiarata"}),
    [](const auto &p) { return std::string(p.param.name); });

TEST_F(FatturePagesTest, PaymentsShowInstalmentsTermsAndTheDayThatTheDaysMake)
{
    ShowSample(dialog.payments, "IT02565617350_00A24.xml");
    ASSERT_EQ(Grid(dialog.payments)->RowCount(), 2);
    EXPECT_EQ(Cell(dialog.payments, 2, "Condizioni"), "TP01 PAGAMENTO A RATE");
    EXPECT_EQ(Cell(dialog.payments, 2, "Modalità"), "MP12 RIBA");
    EXPECT_EQ(Cell(dialog.payments, 2, "Scadenza"), "31/03/2026");
    EXPECT_EQ(Cell(dialog.payments, 2, "Importo"), "739,32");
    EXPECT_EQ(Cell(dialog.payments, 2, "ABI"), "09871");
    EXPECT_EQ(Cell(dialog.payments, 2, "Termini"), "(manca)");

    Show(dialog.payments,
         Replaced(ReadSample("IT02565617350_00A24.xml"), "<DataScadenzaPagamento>2026-02-28</DataScadenzaPagamento>",
                  "<DataRiferimentoTerminiPagamento>2026-01-31</DataRiferimentoTerminiPagamento>"
                  "<GiorniTerminiPagamento>30</GiorniTerminiPagamento>"));
    EXPECT_EQ(Cell(dialog.payments, 1, "Termini"), "30 giorni dal 31/01/2026");
    EXPECT_EQ(Cell(dialog.payments, 1, "Scadenza"), "02/03/2026");
    EXPECT_EQ(Cell(dialog.payments, 2, "Termini"), "");

    ShowSample(dialog.payments, "IT03918277199_AV042.xml");
    EXPECT_THAT(Notes(dialog.payments), testing::StartsWith("Netto a pagare € 2.137,60."));

    ShowSample(dialog.payments, "IT02565617350_00A31.xml");
    EXPECT_EQ(Grid(dialog.payments)->RowCount(), 0);
    EXPECT_EQ(Notes(dialog.payments), "Il documento non contiene dati di pagamento.");
}

TEST_F(FatturePagesTest, AttachmentIsSavedWhereTheUserSays)
{
    QTemporaryDir folder;
    const std::filesystem::path file = folder.filePath("consumi.pdf").toStdString();
    ShowSample(dialog.files, "IT03175957582_27731.xml");
    EXPECT_EQ(Cell(dialog.files, 1, "Nome"), "Dettaglio_consumi_2026_3.pdf");
    EXPECT_EQ(Cell(dialog.files, 1, "Formato"), "PDF");
    user.ExpectFiles({file});
    user.ExpectFiles({});
    const std::string nowhere = folder.path().toStdString() + "/manca/x.pdf";
    user.ExpectFiles({nowhere});
    user.Expect("Impossibile salvare il file!\n\nImpossibile scrivere il file \"" + nowhere +
                "\": file o cartella inesistente");
    Grid(dialog.files)->setFocus();
    keys::Press(Qt::Key_Return);
    ASSERT_EQ(user.picked.size(), 1u);
    EXPECT_TRUE(user.picked[0].save);
    EXPECT_EQ(user.picked[0].proposed, "Dettaglio_consumi_2026_3.pdf");
    EXPECT_EQ(ReadWholeFile(file, 1 << 20), content.Documents()[0].Allegati[0].Content());

    keys::Press(Qt::Key_S, Qt::AltModifier); // given up
    EXPECT_TRUE(QTest::qWaitFor([this] { return user.picked.size() == 2; })) << "the button is seen going down first";
    dialog.files->OnSalva();
}

struct NameCase {
    const char *name, *claimed, *format, *proposed;
};
void PrintTo(const NameCase &c, std::ostream *out)
{
    *out << c.name;
}
class AttachmentNameTest : public FatturePagesTest, public testing::WithParamInterface<NameCase> {};

TEST_P(AttachmentNameTest, ProposesANameThatIsSafe)
{
    std::string text =
        Replaced(ReadSample("IT03175957582_27731.xml"), "Dettaglio_consumi_2026_3.pdf", GetParam().claimed);
    Show(dialog.files, Replaced(text, "<FormatoAttachment>PDF</FormatoAttachment>",
                                "<FormatoAttachment>" + std::string(GetParam().format) + "</FormatoAttachment>"));
    user.ExpectFiles({});
    dialog.files->OnSalva();
    ASSERT_EQ(user.picked.size(), 1u);
    EXPECT_EQ(user.picked[0].proposed, GetParam().proposed);
}

INSTANTIATE_TEST_SUITE_P(Cases, AttachmentNameTest,
                         testing::Values(NameCase{"Windows", "..\\..\\x.pdf", "PDF", "x.pdf"},
                                         NameCase{"Unix", "../../etc/passwd", "TXT", "passwd.txt"},
                                         NameCase{"Device", "CON.xml", "XML", "_CON.xml"},
                                         NameCase{"NoEnding", "Copia fattura", " Pdf ", "Copia fattura.pdf"},
                                         NameCase{"OddFormat", "Copia fattura", "application/pdf", "Copia fattura"},
                                         NameCase{"NoName", "", "PDF", "senza_nome.pdf"}),
                         [](const auto &p) { return std::string(p.param.name); });

TEST_F(FatturePagesTest, EmptyAndDamagedAttachmentsAreToldAndNothingIsWritten)
{
    const std::string text = ReadSample("IT03175957582_27731.xml");
    const std::size_t first = text.find("<Attachment>") + 12, last = text.find("</Attachment>");
    std::string damaged = text;
    damaged.replace(first, last - first, "@@@@");
    std::string empty = text;
    empty.erase(first, last - first);
    user.Expect("Impossibile salvare il file!\n\nL'allegato è vuoto: la fattura ne riporta solo il nome.");
    user.Expect("Impossibile salvare il file!\n\nIl contenuto dell'allegato è danneggiato.");
    Show(dialog.files, empty);
    EXPECT_EQ(Cell(dialog.files, 1, "Dimensione"), "vuoto");
    dialog.files->OnSalva();
    Show(dialog.files, damaged);
    dialog.files->OnSalva();
    EXPECT_TRUE(user.picked.empty());

    ShowSample(dialog.files, "IT02565617350_00A24.xml");
    EXPECT_EQ(Notes(dialog.files), "Il documento non contiene allegati.");
    EXPECT_FALSE(dialog.files->findChild<QPushButton *>()->isEnabled());
    dialog.files->OnSalva();
    EXPECT_TRUE(user.picked.empty());
}

TEST_F(FatturePagesTest, OnlyThePageInFrontIsFilled)
{
    ShowSample(dialog.vat, "IT19949417158_1D0F8.xml");
    EXPECT_EQ(Grid(dialog.vat)->RowCount(), 1);
    EXPECT_EQ(Grid(dialog.rows)->RowCount(), 0);
    keys::Press(Qt::Key_2, Qt::AltModifier);
    EXPECT_EQ(Grid(dialog.rows)->RowCount(), 2);

    for (CFattureElettronichePage *page : dialog.pages) page->Refresh(&content, 1); // the next document of the file
    EXPECT_EQ(Cell(dialog.rows, 1, "Importo"), "185,00");
    EXPECT_EQ(Cell(dialog.vat, 1, "Imponibile"), "567,20") << "behind: as it was";
    keys::Press(Qt::Key_3, Qt::AltModifier);
    EXPECT_EQ(Cell(dialog.vat, 1, "Imponibile"), "185,00");

    for (CFattureElettronichePage *page : dialog.pages) page->Refresh(&content, 2); // which it does not have
    EXPECT_EQ(Grid(dialog.vat)->RowCount(), 0);
    EXPECT_EQ(Notes(dialog.vat), "");
    dialog.files->OnSalva(); // not filled since: nothing of before may be saved
    keys::Press(Qt::Key_1, Qt::AltModifier);
    EXPECT_EQ(Value("Anagrafica", "Denominazione"), "");
}

/// The samples, and a collection of invoices of the field where there is one.
TEST_F(FatturePagesTest, EveryPageShowsEveryFileThatCanBeRead)
{
    const char *named = std::getenv("LUMERA_TEST_FATTURE");
    const std::filesystem::path beside = std::filesystem::path(LUMERA_SOURCE_DIR) / "../shared/reference/invoices";
    long files = 0, documents = 0;
    for (const std::filesystem::path &folder :
         {SampleFolder("fatture").parent_path(), named ? std::filesystem::path(named) : beside}) {
        if (!std::filesystem::is_directory(folder)) continue;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (!entry.is_regular_file()) continue;
            CFattureElettronicheDB file;
            try {
                file.Load(entry.path().string().c_str());
            } catch (const InvoiceFileError &) {
                continue; // refused before the desk shows it
            }
            ++files;
            for (std::size_t document = 0; document < file.Count(); ++document, ++documents)
                for (CFattureElettronichePage *page : dialog.pages) {
                    dialog.tabs->SetActivePage(page);
                    EXPECT_NO_THROW(page->Refresh(&file, document)) << entry.path();
                    ASSERT_EQ(dialog.tabs->ActivePage(), page);
                }
            EXPECT_EQ(Grid(dialog.vat)->RowCount(),
                      static_cast<long>(file.Documents().back().DatiBeniServizi.DatiRiepilogo.size()));
            for (CFattureElettronichePage *page : dialog.pages) page->Refresh(nullptr, 0);
        }
    }
    EXPECT_GE(files, 17);
    RecordProperty("documents", static_cast<int>(documents));
    EXPECT_TRUE(user.shown.empty());
}

} // namespace
