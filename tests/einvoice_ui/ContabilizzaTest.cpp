// Registering received invoices through the entry editor: the windows one after the other, by keys.
#include "einvoice/ui/Contabilizza.h"

#include "einvoice/InvoiceDocuments.h"
#include "einvoice/InvoicePdf.h"
#include "einvoice/ui/InvoicePane.h"
#include "schedule/ui/GenScadenze.h"
#include "tables/ui/Fornitori.h"
#include "tables/ui/Lookups.h"
#include "tests/einvoice/InvoiceFixture.h"
#include "tests/einvoice_ui/InvoiceWindowTest.h"

#include <QAbstractButton>
#include <QPdfView>
#include <QScrollBar>

namespace {

class ContabilizzaTest : public InvoiceWindowTest {
  protected:
    long Filed(const InvoiceSpec &spec) { return FiledBytes(InvoiceText(spec), "prova.xml"); }
    long FiledBytes(const std::string &bytes, const std::string &name)
    {
        const ImportResult result = ImportInvoice(Cmd(), name, name, bytes);
        EXPECT_EQ(result.outcome, ImportOutcome::Loaded) << result.text;
        return result.code;
    }

    /// Registers with these windows in this order.
    long Register(long code, std::vector<Step> steps, std::size_t document = 0)
    {
        Await(std::move(steps));
        return ContabilizzaFattura(nullptr, code, document);
    }
};

InvoiceSpec FromUnknownSeller()
{
    InvoiceSpec spec;
    spec.seller_vat = spec.seller_fiscal_code = "01251347207";
    spec.seller_name = "<Denominazione>Ghirlandozzi Macchine S.r.l.</Denominazione>";
    return spec;
}

TEST_P(ContabilizzaTest, UnknownSupplierIsCreatedAndItsInvoiceStoredWithFilesAndInstalments)
{
    const long code = FiledBytes(InvoiceText(FromUnknownSeller()), "IT01251347207_1.xml");
    user_.Expect(kNotFound, IDNO);
    const long entry = Register(code, {[&](QWidget *window) {
                                           ASSERT_NE(dynamic_cast<CFornitori *>(window), nullptr);
                                           EXPECT_EQ(TextOf(*window, "Partita IVA"), "01251347207");
                                           keys::Press(Qt::Key_2, Qt::AltModifier);
                                           EnterTo("Pagamento");
                                           keys::Type("45");
                                           keys::Press(Qt::Key_F2);
                                           EXPECT_EQ(Count("fornito1"), "26");
                                       },
                                       [&](QWidget *window) {
                                           auto *causali = dynamic_cast<CCaucontBr *>(window);
                                           ASSERT_NE(causali, nullptr);
                                           EXPECT_EQ(causali->m_codice, lumera_db_flag.flg_cau_fatture)
                                               << "on the company's default";
                                           keys::Press(Qt::Key_Return);
                                       },
                                       [&](QWidget *window) {
                                           CPNota &editor = Editor(window);
                                           EXPECT_EQ(Count("pnota1"), "0");
                                           EXPECT_EQ(TextOf(editor, "Documento n."), "7/P");
                                           EXPECT_EQ(Focused(), "Documento n.");
                                           EXPECT_TRUE(editor.findChild<QPdfView *>()) << "the invoice is beside it";
                                           keys::Press(Qt::Key_F2);
                                       },
                                       Key<CGenScadenze>(Qt::Key_Return)});
    ASSERT_NE(entry, 0);
    EXPECT_EQ(Value("SELECT pno_cli_for FROM admin.pnota1"), "26");
    EXPECT_EQ(Value("SELECT pno_all FROM admin.pnota1"), std::to_string(code));
    EXPECT_EQ(Count("scadenze"), "2");
    EXPECT_EQ(Value("SELECT pat_fname FROM admin.pnotaall ORDER BY pat_codice"), "IT01251347207_1.xml");
    EXPECT_EQ(Value("SELECT pat_fname FROM admin.pnotaall ORDER BY pat_codice DESC"), "IT01251347207_1.XML.PDF");
}

TEST_P(ContabilizzaTest, NothingIsStoredWhenTheUserGivesUp)
{
    const long unknown = Filed(FromUnknownSeller()), known = Filed(InvoiceSpec{});
    const std::string before = Books();
    const std::string files = Count("allegati");
    user_.Expect(kNotFound, IDCANCEL);
    EXPECT_EQ(Register(unknown, {}), 0);
    user_.Expect(kNotFound, IDYES);
    EXPECT_EQ(Register(unknown, {Key<CFornitoriBr>(Qt::Key_Escape)}), 0);
    user_.Expect(kNotFound, IDNO);
    user_.Expect(kLosesChanges, IDYES);
    EXPECT_EQ(Register(unknown, {[](QWidget *) {
                           EnterTo("Partita IVA");
                           keys::Type("1");
                           keys::Press(Qt::Key_Escape);
                       }}),
              0);
    EXPECT_EQ(Count("allegati"), files);
    user_.Expect(kLosesChanges, IDYES); // though nothing was typed
    EXPECT_EQ(Register(known, {Key<CPNota>(Qt::Key_Escape)}), 0);
    EXPECT_EQ(Books(), before);
}

TEST_P(ContabilizzaTest, SupplierConfirmedByTheUserStaysWhenTheEntryIsGivenUp)
{
    Run("UPDATE admin.fornito1 SET for_cau = 21");
    user_.Expect(kNotFound, IDNO);
    user_.Expect(kLosesChanges, IDYES);
    EXPECT_EQ(Register(Filed(FromUnknownSeller()),
                       {Key<CFornitori>(Qt::Key_F2), Key<CCaucontBr>(Qt::Key_Return), Key<CPNota>(Qt::Key_Escape)}),
              0);
    EXPECT_EQ(Count("fornito1"), "26");
    EXPECT_EQ(Count("pnota1"), "0");
}

TEST_P(ContabilizzaTest, SupplierIsSearchedByTheSellersName)
{
    InvoiceSpec spec = FromUnknownSeller();
    spec.seller_name = "<Denominazione>Utensileria Marzavola di Gino e figli</Denominazione>";
    user_.Expect(kNotFound, IDYES);
    const long entry = Register(Filed(spec), {[](QWidget *window) {
                                                  auto *browser = dynamic_cast<CFornitoriBr *>(window);
                                                  ASSERT_NE(browser, nullptr);
                                                  EXPECT_EQ(browser->m_search, "Utensileria Marzavola");
                                                  keys::Press(Qt::Key_Return);
                                              },
                                              Key<CPNota>(Qt::Key_F2), Key<CGenScadenze>(Qt::Key_Return)});
    EXPECT_NE(entry, 0);
    EXPECT_EQ(Value("SELECT pno_cli_for FROM admin.pnota1"), "1");
}

TEST_P(ContabilizzaTest, SupplierWithoutTermsIsToldUnlessTheEntryHasSome)
{
    Run("UPDATE admin.fornito1 SET for_pag = NULL WHERE for_codice = 1");
    InvoiceSpec spec;
    user_.Expect(kNoTerms);
    EXPECT_NE(Register(Filed(spec), {Key<CPNota>(Qt::Key_F2)}), 0);
    EXPECT_EQ(Count("scadenze"), "0");

    spec.number = "8/P";
    EXPECT_NE(Register(Filed(spec), {[](QWidget *) {
                                         BackTo("Pagamento");
                                         keys::Type("45");
                                         keys::Press(Qt::Key_F2);
                                     },
                                     Key<CGenScadenze>(Qt::Key_Return)}),
              0);
    EXPECT_EQ(Count("scadenze"), "2");
}

TEST_P(ContabilizzaTest, WhatDiffersFromTheInvoiceIsNamedUntilItIsCorrectedOrLeft)
{
    const std::string difference = "Il movimento registrato differisce dalla fattura:\n\nNumero registrato \"9/P\", in "
                                   "fattura \"7/P\".\n\nVuoi correggerlo?";
    const Step types_nine = [](QWidget *window) {
        EXPECT_EQ(TextOf(Editor(window), "Documento n."), "7/P");
        keys::Type("9/P");
        keys::Press(Qt::Key_F2);
    };
    const long code = Filed(InvoiceSpec{});
    user_.Expect(difference, IDYES);
    EXPECT_NE(Register(code, {types_nine,
                              [](QWidget *window) {
                                  EXPECT_TRUE(Editor(window).IsRecordLoaded());
                                  EXPECT_EQ(Focused(), "Documento n.");
                                  keys::Type("7/P");
                                  keys::Press(Qt::Key_F2);
                              },
                              Key<CGenScadenze>(Qt::Key_Return)}),
              0);
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1"), "7/P");
    EXPECT_EQ(Value("SELECT MIN(sca_fattura) FROM admin.scadenze"), "7/P") << "generated after the correction";

    InvoiceSpec other;
    other.date = "2026-03-11";
    other.number = "7/P ";
    user_.Expect("Attenzione!\n\nE' già stato registrato un documento con lo stesso numero il 10/03/2026.\n\nVuoi "
                 "Continuare?",
                 IDYES);
    user_.Expect(difference, IDNO);
    EXPECT_NE(Register(Filed(other), {types_nine, Key<CGenScadenze>(Qt::Key_Return)}), 0);
    EXPECT_EQ(user_.flags.back() & 0xF00u, MB_DEFBUTTON2);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnota1 WHERE pno_doc = '9/P'"), "1");
}

TEST_P(ContabilizzaTest, DifferenceTakenBeforeTheEditorIsNotNamedAgain)
{
    InvoiceSpec spec;
    spec.total = "1220.00";
    user_.Expect("Totale documento 1.220,00, riepilogo IVA 122,00, differenza 1.098,00 (differenza non dichiarata tra "
                 "totale del documento e riepilogo IVA).\n\nVuoi Continuare ?",
                 IDYES);
    EXPECT_NE(Register(Filed(spec), {[](QWidget *window) {
                                         EXPECT_TRUE(Shows(*window, Editor(window).m_note + "\nF12 mostra la fattura"));
                                         EXPECT_NE(Editor(window).m_note.find("Non registrata."), std::string::npos);
                                         keys::Press(Qt::Key_F2);
                                     },
                                     Key<CGenScadenze>(Qt::Key_Return)}),
              0);
}

TEST_P(ContabilizzaTest, EntryDeletedWhileItIsCorrectedIsNoEntry)
{
    user_.Expect("Il movimento registrato differisce dalla fattura:\n\nNumero registrato \"9\", in fattura "
                 "\"7/P\".\n\nVuoi correggerlo?",
                 IDYES);
    user_.Expect("Vuoi veramente eliminare il movimento n. 1 del 10/03/2026?", IDYES);
    EXPECT_EQ(Register(Filed(InvoiceSpec{}), {[](QWidget *) {
                                                  keys::Type("9");
                                                  keys::Press(Qt::Key_F2);
                                              },
                                              Key<CPNota>(Qt::Key_F6)}),
              0);
    EXPECT_EQ(Count("pnota1"), "0");
}

TEST_P(ContabilizzaTest, PaidAtOnceGoesOnWithThePayment)
{
    Run("UPDATE admin.fornito1 SET for_pag = 2 WHERE for_codice = 1");
    user_.Expect("Vuoi Inserire adesso il pagamento?", IDYES);
    EXPECT_NE(Register(Filed(InvoiceSpec{}), {Key<CPNota>(Qt::Key_F2), Key<CGenScadenze>(Qt::Key_Return),
                                              [](QWidget *window) {
                                                  EXPECT_EQ(Editor(window).m_pnota.pno_cau,
                                                            lumera_db_flag.flg_cau_pagamento);
                                                  EXPECT_EQ(Focused(), "Totale documento");
                                                  EXPECT_FALSE(window->findChild<QPdfView *>());
                                                  keys::Type("122");
                                                  keys::Press(Qt::Key_F2);
                                              }}),
              0);
    EXPECT_EQ(Count("pnota1"), "2");
}

TEST_P(ContabilizzaTest, MissingVatCodeIsChosenInItsBrowser)
{
    InvoiceSpec spec;
    spec.total = "121.00";
    spec.summary = {{"21.00", "100.00", "21.00", "", "", "", ""}};
    user_.Expect("Selezionare Aliquota IVA 21.00\n\nNatura : IMPONIBILE");
    user_.Expect("L'aliquota iva selezionata non è conforme a quanto indicato in fattura!");
    EXPECT_NE(Register(Filed(spec), {[](QWidget *window) {
                                         EXPECT_NE(dynamic_cast<CCodivaBr *>(window), nullptr);
                                         keys::Type("22");
                                         keys::Press(Qt::Key_Return);
                                     },
                                     Key<CPNota>(Qt::Key_F2), Key<CGenScadenze>(Qt::Key_Return)}),
              0);
}

TEST_P(ContabilizzaTest, OneDocumentOfAFileWithSeveralIsShownAndRegistered)
{
    const long code = FiledBytes(ReadSample("IT19949417158_1D0F8.xml"), "IT19949417158_1D0F8.xml");
    EXPECT_NE(Register(code, {Key<CPNota>(Qt::Key_F2), Key<CGenScadenze>(Qt::Key_Return)}, 1), 0);
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1"), "211");
    EXPECT_EQ(Count("pnotaall"), "1") << "no pages of the other document";
}

TEST_P(ContabilizzaTest, InvoiceThatIsGoneIsToldAndNothingOpens)
{
    EXPECT_EQ(Register(4711, {}), 0);
    EXPECT_EQ(user_.shown.size(), 1u);
    user_ = ScriptedUserInterface();
}

TEST_P(ContabilizzaTest, PagesThatCannotBeMadeDoNotStopTheRegistration)
{
    const long code = Filed(InvoiceSpec{});
    ALLEGATI pdf;
    pdf.all_anno = 2026;
    pdf.all_fname = "prova.xml.PDF";
    pdf.all_data = ToBytes("no pages");
    pdf.all_impronta = ContentDigest("no pages");
    sqlall.Store(Cmd(), &pdf);
    EXPECT_NE(Register(code, {[](QWidget *window) {
                                  EXPECT_TRUE(Shows(*window, "Le pagine della fattura non possono essere mostrate."));
                                  keys::Press(Qt::Key_F2);
                              },
                              Key<CGenScadenze>(Qt::Key_Return)}),
              0);
}

TEST_P(ContabilizzaTest, PagesMoveByKeysWhileTheFocusStaysInTheEditor)
{
    const long code = FiledBytes(ReadSample("IT19949417158_1E55K.xml.p7m"), "IT19949417158_1E55K.xml.p7m");
    const Step reads = [](QWidget *window) {
        window->resize(1600, 700);
        keys::Settle();
        auto *pages = window->findChild<QPdfView *>();
        ASSERT_NE(pages, nullptr);
        ASSERT_FALSE(pages->isVisible()) << "the screen of the tests is a small one";
        keys::Press(Qt::Key_F12);
        ASSERT_TRUE(pages->isVisible());
        const std::string focus = Focused();
        const int room = pages->verticalScrollBar()->maximum();
        EXPECT_GT(room, 0);
        keys::Press(Qt::Key_PageDown, Qt::AltModifier);
        EXPECT_GT(pages->verticalScrollBar()->value(), 0);
        keys::Press(Qt::Key_PageUp, Qt::AltModifier);
        EXPECT_EQ(pages->verticalScrollBar()->value(), 0);
        keys::Press(Qt::Key_Plus, Qt::AltModifier);
        EXPECT_GT(pages->verticalScrollBar()->maximum(), room);
        keys::Press(Qt::Key_0, Qt::AltModifier);
        EXPECT_EQ(pages->zoomMode(), QPdfView::ZoomMode::FitToWidth);
        keys::Press(Qt::Key_F12);
        EXPECT_FALSE(pages->isVisible());
        keys::Press(Qt::Key_F12);
        EXPECT_TRUE(pages->isVisible());
        EXPECT_EQ(Focused(), focus);
        for (int fields = 0; fields < 40; ++fields) {
            keys::Press(Qt::Key_Tab);
            EXPECT_FALSE(pages->parentWidget()->isAncestorOf(QApplication::focusWidget()));
        }
        keys::Press(Qt::Key_Escape);
    };
    user_.Expect(kLosesChanges, IDYES);
    EXPECT_EQ(Register(code, {reads}), 0);
}

INSTANTIATE_TEST_SUITE_P(Engines, ContabilizzaTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
