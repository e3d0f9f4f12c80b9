// A bookkeeper's way through received invoices, from the files to books and exports, with nothing but keys.
#include "einvoice/ui/FattureElettronicheList.h"

#include "einvoice/InvoiceDocuments.h"
#include "einvoice/ui/RegistraFatture.h"
#include "schedule/ui/GenScadenze.h"
#include "tables/ui/Fornitori.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/Pickers.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/archive/ArchiveCheck.h"
#include "tests/einvoice/InvoiceFixture.h"
#include "tests/einvoice_ui/InvoiceWindowTest.h"

#include <QPdfDocument>
#include <QPdfSelection>
#include <QPdfView>
#include <QTest>
#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

constexpr const char *kPlain = "IT02565617350_00A24.xml", *kCreditNote = "IT02565617350_00A31.xml",
                     *kSigned = "IT06186527153_E4187.xml.p7m", *kTwoDocuments = "IT19949417158_1D0F8.xml",
                     *kEightRates = "IT19949417158_1B0V8.xml", *kCutOff = "IT02565617350_00B01.xml",
                     *kLawyer = "IT03918277199_AV042.xml"; // from nobody whom the archive knows
constexpr const char *kAlreadyThere =
    "Attenzione!\n\nE' già stato registrato un documento con lo stesso numero il {}.\n\nVuoi Continuare?";
constexpr std::size_t kMaxBytes = 10'000'000;

class JourneyTest : public InvoiceWindowTest {
  protected:
    /// Opens the desk on the period that it proposes, does the work there and closes it with Esc.
    void AtTheDesk(const std::function<void()> &work)
    {
        CFattureElettroniche desk(nullptr);
        Await({[](QWidget *period) {
                   EXPECT_EQ(FromQt(period->windowTitle()), "Seleziona Periodo Acquisizione");
                   for (int i = 0; i < 3 && period->isVisible(); ++i) keys::Press(Qt::Key_Return);
               },
               [&](QWidget *) {
                   desk_ = &desk;
                   EXPECT_TRUE(QTest::qWaitFor([this] {
                       return Says("Nessuna fattura nel periodo: F2 carica i file ricevuti, Filtra cambia il periodo");
                   }));
                   keys::Settle();
                   work();
                   keys::Press(Qt::Key_Escape);
               }});
        EXPECT_EQ(desk.DoModal(), IDCANCEL);
        desk_ = nullptr;
    }

    CSpreadSheet *Grid(const char *name = "Fatture ricevute") const { return GridOf(*desk_, name); }
    static CSpreadSheet *GridOf(const QWidget &window, const char *name)
    {
        for (auto *grid : window.findChildren<CSpreadSheet *>())
            if (grid->accessibleName() == name) return grid;
        throw std::runtime_error(fmt::format("no grid {}", name));
    }
    static std::string LineOf(const CSpreadSheet *grid, long row)
    {
        std::string line;
        for (long column = 1; column <= grid->ColumnCount(); ++column) line += grid->Text(row, column) + "|";
        return line;
    }
    bool Says(const std::string &text) const { return Shows(*desk_, text); }
    std::string Chosen() const { return Grid()->Text(Grid()->ActiveRow(), kNumber); }
    /// "42 *** SCONOSCIUTO *** NO" for each invoice of the list.
    std::vector<std::string> List() const
    {
        std::vector<std::string> lines;
        for (long row = 1; row <= Grid()->RowCount(); ++row)
            lines.push_back(Grid()->Text(row, kNumber) + " " + Grid()->Text(row, kSupplierName) + " " +
                            Grid()->Text(row, kRegistered));
        return lines;
    }

    /// Presses a key on the desk, meets the windows that it opens, and is back at the desk.
    void Presses(int key, std::vector<Step> windows = {}, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        Await(std::move(windows));
        keys::Press(key, modifiers);
        ComeBack(desk_);
    }
    void Loads(std::vector<std::filesystem::path> files, std::vector<Step> windows = {})
    {
        user_.ExpectFiles(std::move(files));
        Presses(Qt::Key_F2, std::move(windows));
    }
    void Registers(std::vector<Step> windows) { Presses(Qt::Key_F4, std::move(windows)); }
    /// With the arrows, as far as the list goes.
    void WalksTo(const std::string &number)
    {
        for (long step = 1; step < Grid()->RowCount() && Chosen() != number; ++step) keys::Press(Qt::Key_Up);
        for (long step = 1; step < Grid()->RowCount() && Chosen() != number; ++step) keys::Press(Qt::Key_Down);
        EXPECT_EQ(Chosen(), number);
    }
    /// A key that asks for a file name, answered with this one. @return what was written
    std::string Exports(int key, const std::string &name)
    {
        const std::filesystem::path file = Folder() / name;
        user_.ExpectFiles({file});
        Presses(key);
        EXPECT_TRUE(Says("Scritto " + file.string()));
        return ReadWholeFile(file, kMaxBytes);
    }

    /// In the supplier editor: payment terms, and stored.
    static void GivesTerms(QWidget *window)
    {
        ASSERT_NE(dynamic_cast<CFornitori *>(window), nullptr);
        keys::Press(Qt::Key_2, Qt::AltModifier);
        EnterTo("Pagamento");
        keys::Type("45");
        keys::Press(Qt::Key_F2);
    }
    static void TakesTheCompanysCausale(QWidget *window)
    {
        auto *browser = dynamic_cast<CCaucontBr *>(window);
        ASSERT_NE(browser, nullptr);
        EXPECT_EQ(browser->m_codice, lumera_db_flag.flg_cau_fatture);
        keys::Press(Qt::Key_Return);
    }

    /// Another invoice of the lawyer.
    std::filesystem::path SecondOfTheLawyer()
    {
        const std::filesystem::path file = Folder() / "IT03918277199_AV043.xml";
        WriteFileWhole(
            file, Replaced(Replaced(ReadSample(kLawyer), "<Numero>42<", "<Numero>43<"), "2026-09-15", "2026-09-16"));
        return file;
    }
    long CodeOf(const char *file)
    {
        return std::stol(Value(fmt::format("SELECT all_codice FROM admin.allegati WHERE all_fname = '{}'", file)));
    }
    /// "42 2537.60 2537.60 2537.60" for each entry: document, total, Dare and Avere.
    std::vector<std::string> Journal()
    {
        std::vector<std::string> lines;
        for (long number = 1; number <= std::stol(Count("pnota1")); ++number) {
            PNOTA entry;
            EXPECT_TRUE(sqlpno.Search(Cmd(), number, &entry)) << number;
            double dare = 0, avere = 0;
            for (const PNOTA_RIGA &row : entry.righe) (row.row_tipo == "D" ? dare : avere) += row.row_importo;
            lines.push_back(
                fmt::format("{} {:.2f} {:.2f} {:.2f}", entry.pno_doc.str(), entry.pno_tot_doc, dare, avere));
        }
        return lines;
    }
    std::string ArchiveFaults()
    {
        std::string text;
        for (const ArchiveFault &fault : CheckArchive(Cmd()).faults)
            text += fmt::format("{} {}: {}\n", fault.kind, fault.where, fault.text);
        return text;
    }

    CFattureElettroniche *desk_ = nullptr;
};

std::string TextOfPdf(const std::filesystem::path &file)
{
    QPdfDocument document;
    EXPECT_EQ(document.load(QString::fromStdString(file.string())), QPdfDocument::Error::None);
    QString text;
    for (int page = 0; page < document.pageCount(); ++page) text += document.getAllText(page).text() + "\n";
    return text.toStdString();
}

TEST_P(JourneyTest, FromReceivedFilesToBooksAndExports)
{
    AtTheDesk([this] {
        Loads({SampleFile(kPlain), SampleFile(kSigned), SampleFile(kTwoDocuments), SampleFile(kCutOff),
               SampleFile(kLawyer), SecondOfTheLawyer(), SampleFile(kCreditNote), SampleFile(kEightRates)},
              {[](QWidget *results) {
                  const CSpreadSheet *grid = results->findChild<CSpreadSheet *>();
                  ASSERT_EQ(grid->RowCount(), 8);
                  EXPECT_THAT(LineOf(grid, 4), HasSubstr(fmt::format("{}|rifiutata|", kCutOff)));
                  EXPECT_THAT(LineOf(grid, 4), HasSubstr("troncato"));
                  keys::Press(Qt::Key_Escape);
              }});
        EXPECT_TRUE(Says("8 fatture caricate, 1 file rifiutato"));
        EXPECT_THAT(List(), ElementsAre("24/2026 Utensileria Marzavola S.r.l. NO",
                                        "2026E0041877 Energia Valdoro S.p.A. NO", "210 Colorificio Pennavera S.r.l. NO",
                                        "211 Colorificio Pennavera S.r.l. NO", "42 *** SCONOSCIUTO *** NO",
                                        "43 *** SCONOSCIUTO *** NO", "3/NC Utensileria Marzavola S.r.l. NO",
                                        "505 Ristoro Padano di Zambrasi Fratelli S.n.c. NO"));

        WalksTo("42");
        keys::Press(Qt::Key_2, Qt::AltModifier);
        EXPECT_THAT(LineOf(Grid("Linee del documento"), 1), HasSubstr("Onorario per assistenza stragiudiziale"));
        keys::Press(Qt::Key_3, Qt::AltModifier);
        EXPECT_THAT(LineOf(Grid("Riepilogo IVA"), 1), HasSubstr("2.080,00|457,60|"));

        user_.Expect(kNotFound, IDNO);
        Registers({[](QWidget *window) {
                       EXPECT_EQ(TextOf(*window, "Nominativo"), "Tornabarbi, Leonida");
                       EXPECT_EQ(TextOf(*window, "Indirizzo"), "Corso Campi, 60");
                       EXPECT_EQ(TextOf(*window, "Città"), "Cremona");
                       EXPECT_EQ(TextOf(*window, "Partita IVA"), "03918277199");
                       EXPECT_EQ(TextOf(*window, "Codice fiscale"), "TRNLND72P11D150N");
                       GivesTerms(window);
                   },
                   TakesTheCompanysCausale,
                   [](QWidget *window) {
                       CPNota &editor = Editor(window);
                       EXPECT_EQ(TextOf(editor, "Totale documento"), "2.537,60");
                       EXPECT_THAT(LineOf(GridOf(editor, "Righe IVA"), 1), HasSubstr("2.080,00"));
                       EXPECT_THAT(editor.m_note, HasSubstr("Ritenuta d'acconto di 400,00"));
                       const auto *pages = editor.findChild<QPdfView *>();
                       ASSERT_NE(pages, nullptr);
                       if (!pages->isVisible()) keys::Press(Qt::Key_F12); // on a small screen
                       EXPECT_TRUE(pages->isVisible());
                       EXPECT_THAT(pages->document()->getAllText(0).text().toStdString(), HasSubstr("Tornabarbi"));
                       keys::Press(Qt::Key_F2);
                   },
                   Key<CGenScadenze>(Qt::Key_Return)});
        EXPECT_TRUE(Says("La fattura n. 42 è registrata con il movimento 1"));
        EXPECT_EQ(List()[4], "42 Tornabarbi, Leonida SI");
        EXPECT_EQ(Grid()->Long(5, kEntry), 1);
        EXPECT_EQ(Grid()->Long(5, kProtocol), 1);
        EXPECT_EQ(Chosen(), "43") << "the next one is at hand";
        EXPECT_EQ(List()[5], "43 Tornabarbi, Leonida NO");
        EXPECT_EQ(Value("SELECT SUM(sca_importo) FROM admin.scadenze"), "2537.6");

        keys::Press(Qt::Key_Up);
        EXPECT_THAT(Exports(Qt::Key_F9, "42.pdf"), testing::StartsWith("%PDF"));
        EXPECT_THAT(TextOfPdf(Folder() / "42.pdf"),
                    testing::AllOf(HasSubstr("n. 42 del 15/09/2026"), HasSubstr("2.537,60")));

        Presses(Qt::Key_R, {[](QWidget *window) {
                    auto *all = dynamic_cast<CRegistraFatture *>(window);
                    ASSERT_NE(all, nullptr);
                    const CSpreadSheet *grid = GridOf(*all, "Fatture da registrare");
                    EXPECT_TRUE(QTest::qWaitFor([&] { return Shows(*all, "5 pronte, 2 da completare"); }));
                    keys::Settle();
                    keys::Press(Qt::Key_F2);
                    EXPECT_EQ(all->m_registered, 5);
                    EXPECT_TRUE(Shows(*all, "5 registrate, 2 da completare"));
                    EXPECT_THAT(LineOf(grid, 2), HasSubstr("3/NC|Utensileria Marzavola S.r.l.|21 Fattura acquisto "
                                                           "merci|22|-313,30|2|Registrata: movimento 3, protocollo 3"));
                    EXPECT_THAT(LineOf(grid, 6), HasSubstr("Non è possibile gestire più di 7 aliquote iva!"));
                    EXPECT_THAT(LineOf(grid, 7), HasSubstr("Il fornitore non ha una causale contabile preimpostata."));
                    keys::Press(Qt::Key_Escape);
                }},
                Qt::ControlModifier);
        EXPECT_TRUE(Says("5 fatture registrate"));
        std::string registered;
        for (long row = 1; row <= Grid()->RowCount(); ++row) registered += Grid()->Text(row, kRegistered) + " ";
        EXPECT_EQ(registered, "SI SI SI SI SI NO SI NO ");

        WalksTo("2026E0041877");
        EXPECT_EQ(Exports(Qt::Key_F8, "luce.xml.p7m"), ReadSample(kSigned));
        const std::string xml = Exports(Qt::Key_F7, "luce.xml");
        EXPECT_THAT(xml, testing::AllOf(testing::StartsWith("<?xml"), testing::EndsWith("FatturaElettronica>\n")));
        EXPECT_THAT(ReadSample(kSigned), HasSubstr(xml)) << "a DER envelope has the document in one piece";

        WalksTo("505");
        user_.Expect("Vuoi veramente eliminare il file IT19949417158_1B0V8.xml?\n\nContiene il documento:\nn. 505 del "
                     "29/06/2026 di Ristoro Padano di Zambrasi Fratelli S.n.c.",
                     IDYES);
        Presses(Qt::Key_F6);
        EXPECT_TRUE(Says(fmt::format("Il file {} è eliminato", kEightRates)));
        EXPECT_EQ(Grid()->RowCount(), 7);
    });
    EXPECT_EQ(user_.beeps, 0);
    EXPECT_THAT(Journal(), UnorderedElementsAre("42 2537.60 2537.60 2537.60", "24/2026 1478.64 1478.64 1478.64",
                                                "3/NC -313.30 313.30 313.30", "210 691.98 691.98 691.98",
                                                "211 225.70 225.70 225.70", "2026E0041877 1132.79 1132.79 1132.79"));
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(JourneyTest, InvoiceRegisteredAtAnotherStationIsAskedAbout)
{
    AtTheDesk([&] {
        Loads({SampleFile(kPlain), SampleFile(kSigned), SampleFile(kCreditNote), SampleFile(kTwoDocuments)});
        ASSERT_TRUE(RegisterInvoice(Cmd(), CodeOf(kPlain), 0, 0, {}).registered);
        std::string books = Books();
        EXPECT_EQ(List()[0], "24/2026 Utensileria Marzavola S.r.l. NO") << "nobody told the list";
        user_.Expect(fmt::format(kAlreadyThere, "19/01/2026"), IDNO);
        Registers({});
        EXPECT_EQ(Books(), books);
        EXPECT_EQ(List()[0], "24/2026 Utensileria Marzavola S.r.l. SI");
        EXPECT_EQ(Grid()->Long(1, kEntry), 1);

        WalksTo("3/NC");
        Registers({[&](QWidget *) {
            ASSERT_TRUE(RegisterInvoice(Cmd(), CodeOf(kCreditNote), 0, 0, {}).registered);
            books = Books();
            user_.Expect(fmt::format(kAlreadyThere, "10/02/2026"), IDNO);
            keys::Press(Qt::Key_F2);
            EXPECT_EQ(Books(), books);
            user_.Expect(kLosesChanges, IDYES);
            keys::Press(Qt::Key_Escape);
        }});
        EXPECT_EQ(Books(), books);
        EXPECT_EQ(List()[2], "3/NC Utensileria Marzavola S.r.l. SI");
    });
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(JourneyTest, SupplierMadeAtAnotherStationIsFoundWithoutAQuestion)
{
    AtTheDesk([this] {
        Loads({SampleFile(kLawyer), SecondOfTheLawyer()});
        CFattureElettronicheDB content;
        LoadInvoice(Cmd(), CodeOf(kLawyer), &content);
        FORNITORI supplier = SupplierFromSeller(Cmd(), content.Header().CedentePrestatore);
        sqlfor.SqlTransaction(Cmd(), kInsert, &supplier);
        Registers({Key<CCaucontBr>(Qt::Key_Escape)});
        EXPECT_THAT(List(), ElementsAre("42 Tornabarbi, Leonida NO", "43 Tornabarbi, Leonida NO"));
    });
}

TEST_P(JourneyTest, FileDeletedAtAnotherStationLeavesTheListOrIsStoredWithItsOwnCopy)
{
    AtTheDesk([this] {
        Loads({SampleFile(kSigned), SampleFile(kPlain)});
        DeleteInvoice(Cmd(), CodeOf(kSigned));
        Registers({});
        EXPECT_THAT(List(), ElementsAre("24/2026 Utensileria Marzavola S.r.l. NO"));
        EXPECT_EQ(Books(), "0 0 0 0 25");

        Registers({[this](QWidget *editor) {
                       Editor(editor);
                       DeleteInvoice(Cmd(), CodeOf(kPlain));
                       keys::Press(Qt::Key_F2);
                   },
                   Key<CGenScadenze>(Qt::Key_Return)});
        EXPECT_EQ(Books(), "1 3 2 2 25");
        EXPECT_THAT(List(), ElementsAre());
    });
    EXPECT_EQ(Value(fmt::format("SELECT COUNT(*) FROM admin.pnotaall WHERE pat_fname = '{}'", kPlain)), "1");
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(JourneyTest, WhoGivesUpFindsTheBooksAsTheyWere)
{
    AtTheDesk([this] {
        Loads({SampleFile(kLawyer)});
        const std::string untouched = Books();
        EXPECT_EQ(untouched, "0 0 0 0 25");
        user_.Expect(kNotFound, IDCANCEL);
        Registers({});
        user_.Expect(kNotFound, IDNO);
        Registers({Key<CFornitori>(Qt::Key_Escape)});
        user_.Expect(kNotFound, IDYES);
        Registers({Key<CFornitoriBr>(Qt::Key_Escape)});
        EXPECT_EQ(Books(), untouched);
        EXPECT_EQ(List()[0], "42 *** SCONOSCIUTO *** NO");
        EXPECT_EQ(Count("allegati"), "1");

        user_.Expect(kNotFound, IDNO);
        Registers({GivesTerms, Key<CCaucontBr>(Qt::Key_Escape)});
        EXPECT_EQ(Books(), "0 0 0 0 26") << "the user stored the supplier himself";
        EXPECT_EQ(List()[0], "42 Tornabarbi, Leonida NO");
        EXPECT_EQ(Count("allegati"), "1");

        Registers({TakesTheCompanysCausale, [this](QWidget *editor) {
                       user_.Expect(kLosesChanges, IDNO);
                       keys::Press(Qt::Key_Escape);
                       EXPECT_TRUE(editor->isVisible());
                       user_.Expect(kLosesChanges, IDYES);
                       keys::Press(Qt::Key_Escape);
                   }});
        EXPECT_EQ(Books(), "0 0 0 0 26");
        EXPECT_EQ(Count("allegati"), "2") << "with the readable document, which F9 has now";

        Registers({TakesTheCompanysCausale, Key<CPNota>(Qt::Key_F2), Key<CGenScadenze>(Qt::Key_Escape)});
        EXPECT_EQ(Books(), "1 3 2 0 26");
        EXPECT_EQ(List()[0], "42 Tornabarbi, Leonida SI");
        EXPECT_TRUE(Says("La fattura n. 42 è registrata con il movimento 1"));
    });
    EXPECT_EQ(ArchiveFaults(), "");
}

INSTANTIATE_TEST_SUITE_P(Engines, JourneyTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
