#include "tests/ledger_ui/PNotaWindowTest.h"

#include "ledger/ui/GestionePrimaNota.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvolumera/PSQLrow.h"

namespace {

class PNotaTest : public PNotaWindowTest {};

TEST_P(PNotaTest, PurchaseWithTwoRatesFillsFromItsTotal)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    EXPECT_EQ(Focused(), "Causale");
    TypePurchase("45/A", "232");
    EXPECT_EQ(Cell(editor), "Righe IVA 1,1");
    Enter("22");
    EXPECT_EQ(VatLine(editor, 1), "22 190,16 41,84") << "the whole total, until the user knows better";
    Enter("100");
    EXPECT_EQ(VatLine(editor, 1), "22 100,00 22,00");
    EXPECT_EQ(Cell(editor), "Righe IVA 2,1");
    Enter("10");
    EXPECT_EQ(VatLine(editor, 2), "10 100,00 10,00") << "what is missing to the total";
    EXPECT_EQ(TextOf(editor, "Totale documento"), "232,00");
    EXPECT_EQ(Rows(editor), "250.1.1 A 232,00; 260.1.1 D 32,00; 300.1.1 D 200,00");
    EXPECT_TRUE(Shows(editor, "Il movimento quadra"));
    Press(Qt::Key_F2);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_TRUE(Shows(editor, "Registrato il movimento 1, protocollo 1, 2 scadenze"));
    EXPECT_EQ(TextOf(editor, "Movimento"), "2") << "blank for the next one";
    EXPECT_EQ(TextOf(editor, "Data registrazione"), "15/03/2026");
    EXPECT_EQ(Focused(), "Causale");
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1 WHERE pno_iva_1 = 10 AND pno_tot_doc = 232"), "45/A");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze WHERE sca_pno = 1"), "2");
}

TEST_P(PNotaTest, GeneratorIsOfferedForNewEntriesOnlyAndMayBeLeft)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("45/A", "122");
    Enter("22");
    keys::WhenNextWindowOpens([](QWidget *window) {
        EXPECT_EQ(window->windowTitle().toStdString(), "Generazione Scadenze");
        keys::Press(Qt::Key_Escape);
    });
    keys::Press(Qt::Key_F2);
    ComeBack(&editor);
    EXPECT_TRUE(Shows(editor, "Registrato il movimento 1, protocollo 1, senza scadenze"));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
    EXPECT_EQ(Focused(), "Causale");

    ASSERT_TRUE(sqlpno.Search(Cmd(), 1, &editor.m_pnota));
    CPNota again(nullptr, nullptr);
    again.m_pnota = editor.m_pnota;
    again.m_open = true;
    keys::Open(&again);
    Enter("46");
    keys::Press(Qt::Key_F2); // a window that opened now would wait for ever
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1"), "46");

    Run("UPDATE admin.fornito1 SET for_pag = NULL WHERE for_codice = 1");
    CPNota without(nullptr, nullptr);
    keys::Open(&without);
    TypePurchase("47", "122");
    Press(Qt::Key_F2);
    EXPECT_TRUE(Shows(without, "Registrato il movimento 2, protocollo 2"));
}

struct TotalCase {
    const char *causale, *total, *code, *line, *status;
};
const TotalCase kTotals[] = {
    {"21", "122", "22", "22 100,00 22,00", "Il movimento quadra"},
    {"21", "100,01", "22", "22 81,98 18,04", "Totale digitato 100,01, righe IVA 100,02"},
    {"35", "500", "85", "85 500,00 110,00", "Il movimento quadra"}, // the supplier is owed no tax
    {"9", "500", "22", "22 500,00 ", "Il movimento quadra"},
};

TEST_P(PNotaTest, TotalTypedOverTheVatLinesIsSaid)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("45", "122");
    Enter("22");
    EXPECT_TRUE(Shows(editor, "Il movimento quadra"));
    BackTo("Totale documento");
    Enter("230");
    EXPECT_TRUE(Shows(editor, "Totale digitato 230,00, righe IVA 122,00"));
    editor.SetChanged(false);
}

TEST_P(PNotaTest, TotalProposesTheTaxableAmountOfACode)
{
    for (const TotalCase &c : kTotals) {
        SCOPED_TRACE(c.causale);
        CPNota editor(nullptr, nullptr);
        keys::Open(&editor);
        TypePurchase("45", c.total, c.causale);
        Enter(c.code);
        EXPECT_EQ(VatLine(editor, 1), c.line);
        EXPECT_TRUE(Shows(editor, c.status));
        editor.SetChanged(false);
    }
    CPNota receipts(nullptr, nullptr);
    keys::Open(&receipts);
    for (const char *typed : {"15", "", "", "122", "22"}) Enter(typed);
    EXPECT_EQ(VatLine(receipts, 1), "22 100,00 22,00");
    receipts.SetChanged(false);
}

TEST_P(PNotaTest, OrdinaryPurchaseTakesFewKeys)
{
    StorePurchase("44");
    keys_ = 0;
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Enter("21");
    const std::string name = Value("SELECT for_desc FROM admin.fornito1 WHERE for_codice = 1");
    Enter(ToQt(name.substr(0, 5)));
    Enter("45");
    Enter("12");
    Enter("1220");
    EXPECT_EQ(VatLine(editor, 1), "22 1.000,00 220,00") << "the supplier's last VAT code";
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "2");
    EXPECT_EQ(Value("SELECT pno_tot_imp FROM admin.pnota1 WHERE pno_doc = '45' AND pno_data_doc = '2026-03-12'"),
              Value("SELECT pno_tot_iva / 0.22 FROM admin.pnota1 WHERE pno_doc = '45'"));
    EXPECT_LE(keys_, 25);
    RecordProperty("keys", keys_);
}

TEST_P(PNotaTest, ReceiptsAreTypedWithTheirTax)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Enter("15");
    EXPECT_EQ(Focused(), "Documento n.") << "receipts have no counterpart";
    Enter();
    Enter();
    Enter();
    EXPECT_EQ(Cell(editor), "Righe IVA 1,1");
    Enter("22");
    Enter("122");
    EXPECT_EQ(VatLine(editor, 1), "22 100,00 22,00");
    EXPECT_EQ(Rows(editor), "175.1.1 D 122,00; 260.1.3 A 22,00; 400.1.2 A 100,00");
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT pno_tot_doc FROM admin.pnota1 WHERE pno_reg = 4 AND pno_tot_imp = 100").substr(0, 3),
              "122");
}

TEST_P(PNotaTest, EuSaleHasNoTax)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Enter("9");
    EXPECT_EQ(Focused(), "Cliente");
    Enter("1");
    Enter("7");
    Enter("10");
    Enter();
    Enter("22");
    Enter("500");
    EXPECT_EQ(VatLine(editor, 1), "22 500,00 ");
    EXPECT_EQ(TextOf(editor, "Totale documento"), "500,00");
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnota1 WHERE pno_reg = 7 AND pno_tot_iva = 0 AND pno_tot_doc = 500"),
              "1");
}

TEST_P(PNotaTest, UnbalancedEntryIsStoredOnlyAfterYes)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("1", "122");
    Enter("22");
    Press(Qt::Key_Tab); // tax
    Press(Qt::Key_Tab); // share
    Press(Qt::Key_Tab);
    Press(Qt::Key_Return); // an empty VAT line ends them
    EXPECT_EQ(Cell(editor), "Righe 1,1");
    CSpreadSheet *rows = Grid(editor, "Righe");
    while (rows->ActiveRow() != 3 || rows->ActiveColumn() != 7) Press(Qt::Key_Tab);
    Enter("100,01");
    EXPECT_TRUE(Shows(editor, "Mancano 0,01 in Avere – arrotondamento dell'IVA?"));
    const std::string question = ApplicationMessage(20025);
    user_.Expect(question, IDNO);
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "0");
    EXPECT_EQ(rows->Number(3, 7), 100.01) << "as typed";
    user_.Expect(question, IDYES);
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnota1 WHERE pno_dare <> pno_avere"), "1");
}

TEST_P(PNotaTest, EmptyAmountTakesWhatBalances)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Enter("61"); // transfer: no counterpart, no VAT
    while (Cell(editor).rfind("Righe", 0) != 0) Press(Qt::Key_Return);
    CSpreadSheet *rows = Grid(editor, "Righe");
    for (long row = 1; row <= rows->RowCount() && rows->Long(row, 1) != 0;) Press(Qt::Key_Delete, Qt::ControlModifier);
    Enter("170");
    Enter("1");
    Enter("1");
    EXPECT_EQ(rows->Long(1, 5), 0);
    Enter();
    EXPECT_EQ(rows->Long(1, 5), 61) << "the header's causale";
    Enter();
    Enter("30");
    Type("d");
    Enter();
    Enter();
    Enter("175");
    Enter("1");
    Enter("1");
    Enter();
    Enter();
    Enter();
    EXPECT_EQ(rows->Number(2, 7), 30);
    EXPECT_EQ(rows->Text(2, 8), "") << "the side is the user's";
    user_.beeps = 0;
    Press(Qt::Key_F2);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Cell(editor), "Righe 2,8");
    Type("a");
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "1");
}

TEST_P(PNotaTest, RefusalsPutTheFocusWhereTheFaultIs)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Press(Qt::Key_F2);
    EXPECT_EQ(Focused(), "Causale");
    Enter("21");
    Press(Qt::Key_F2);
    EXPECT_EQ(Focused(), "Fornitore");
    Enter("1");
    Press(Qt::Key_F2);
    EXPECT_EQ(Cell(editor), "Righe IVA 1,1");
    Enter("4711");
    EXPECT_EQ(Cell(editor), "Righe IVA 1,1") << "an unknown code is not left";
    EXPECT_TRUE(Shows(editor, "Non c'è un codice IVA con questo numero: F4 apre l'elenco"));
    Press(Qt::Key_Escape);
    while (Focused() != "Data documento") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Enter("20");
    Press(Qt::Key_F2);
    EXPECT_EQ(Focused(), "Data registrazione") << "registered before its document";
    EXPECT_TRUE(user_.shown.empty());
}

TEST_P(PNotaTest, DuplicateDocumentIsAskedAbout)
{
    StorePurchase("45");
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("45", "61");
    const char *const question =
        "Attenzione!\n\nE' già stato registrato un documento con lo stesso numero il 15/03/2026.\n\nVuoi Continuare?";
    user_.Expect(question, IDNO);
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "1");
    EXPECT_EQ(TextOf(editor, "Documento n."), "45");
    user_.Expect(question, IDYES);
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "2");
}

TEST_P(PNotaTest, ClosedYearIsAskedAbout)
{
    PNOTA closing;
    sqlpno.Blank(Cmd(), &closing);
    closing.pno_data = DateToJulian(31, 12, 2026);
    closing.pno_cau = 91;
    closing.pno_reg = kJournalOnly;
    closing.pno_operazione = kClosing;
    sqlpno.SqlTransaction(Cmd(), 0, &closing);
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("1", "122");
    Enter("22");
    const char *const question =
        "Attenzione la data indicata ricade in un esercizio con chiusura effettuata!\n\nVuoi Continuare?";
    user_.Expect(question, IDNO);
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "1");
    user_.Expect(question, IDYES);
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "2");
}

TEST_P(PNotaTest, CostCentresThatDoNotMatchStopTheSave)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("1", "122");
    Enter("22");
    Press(Qt::Key_Return); // an empty VAT line ends them
    while (Cell(editor) != "Righe 3,1") Press(Qt::Key_Tab);
    const auto split = [&](const std::vector<QString> &cells, int answer) {
        keys::WhenNextWindowOpens([&, answer](QWidget *) {
            for (const QString &cell : cells) Enter(cell);
            if (answer != 0) user_.Expect("Resta da ripartire l'importo di 0,01.\n\nVuoi Continuare?", answer);
            Press(Qt::Key_F2);
        });
        Press(Qt::Key_F11);
        ComeBack(&editor);
    };
    split({"10", "60", "20", "39,99"}, IDYES);
    EXPECT_EQ(Grid(editor, "Righe")->Text(3, 10), "SI");
    EXPECT_EQ(Grid(editor, "Righe")->Text(2, 10), "NO");
    user_.Expect("Problema su contabilità analitica alla riga n. 3");
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "0");
    split({"20", "0,01"}, 0);
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotacdc"), "3");
}

TEST_P(PNotaTest, NewDocumentNumberGoesToTheRowsThatCarriedTheOldOne)
{
    StorePurchase("45");
    Run("UPDATE admin.pnotaro2 SET row_n_doc = 'altro' WHERE row_idx = 2");
    CPNota editor(nullptr, nullptr);
    ASSERT_TRUE(sqlpno.Search(Cmd(), 1, &editor.m_pnota));
    editor.m_open = true;
    keys::Open(&editor);
    EXPECT_EQ(editor.windowTitle().toStdString(), "Modifica Prima Nota");
    EXPECT_EQ(Focused(), "Documento n.");
    Enter("46");
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaro2 WHERE row_n_doc = '46'"), "2");
    EXPECT_EQ(Value("SELECT row_n_doc FROM admin.pnotaro2 WHERE row_idx = 2"), "altro");
    EXPECT_EQ(Entries(), "1");
    EXPECT_EQ(TextOf(editor, "Documento n."), "46") << "the changed entry stays";
}

TEST_P(PNotaTest, DeletedEntryGivesWayToTheNextOrTheLast)
{
    for (const char *number : {"1", "2", "3"}) StorePurchase(number);
    CPNota editor(nullptr, nullptr);
    ASSERT_TRUE(sqlpno.Search(Cmd(), 2, &editor.m_pnota));
    editor.m_open = true;
    keys::Open(&editor);
    const std::string ask = "Vuoi veramente eliminare il movimento n. ";
    user_.Expect(ask + "2 del 15/03/2026?", IDNO);
    Press(Qt::Key_F6);
    EXPECT_EQ(TextOf(editor, "Movimento"), "2");
    user_.Expect(ask + "2 del 15/03/2026?", IDYES);
    Press(Qt::Key_F6);
    EXPECT_EQ(TextOf(editor, "Movimento"), "3");
    EXPECT_EQ(TextOf(editor, "Documento n."), "3");
    user_.Expect(ask + "3 del 15/03/2026?", IDYES);
    Press(Qt::Key_F6);
    EXPECT_EQ(TextOf(editor, "Movimento"), "1") << "there is no next one";
    user_.Expect(ask + "1 del 15/03/2026?", IDYES);
    Press(Qt::Key_F6);
    EXPECT_FALSE(editor.IsRecordLoaded());
    EXPECT_EQ(Entries(), "0");
}

TEST_P(PNotaTest, AnotherStationsChangeIsNotOverwritten)
{
    StorePurchase("45");
    CPNota editor(nullptr, nullptr);
    ASSERT_TRUE(sqlpno.Search(Cmd(), 1, &editor.m_pnota));
    editor.m_open = true;
    keys::Open(&editor);
    PNOTA theirs = editor.m_pnota;
    theirs.pno_desc = "loro";
    sqlpno.SqlTransaction(Cmd(), 1, &theirs);
    Enter("46");
    user_.Expect("Il movimento n. 1 è stato modificato o eliminato da un'altra stazione.\n\n"
                 "Rileggerlo prima di salvare.");
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT pno_doc || ' ' || pno_desc FROM admin.pnota1"), "45 loro");
    EXPECT_EQ(TextOf(editor, "Documento n."), "46") << "as typed";
    EXPECT_TRUE(editor.IsChanged());
    Press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_EQ(TextOf(editor, "Documento n."), "45");
    EXPECT_EQ(TextOf(editor, "Descrizione"), "loro");
    EXPECT_FALSE(editor.IsChanged());

    Run("DELETE FROM admin.scadenze");
    sqlpno.SqlTransaction(Cmd(), 2, &theirs);
    while (Focused() != "Documento n.") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Enter("47");
    user_.Expect("Il movimento n. 1 è stato modificato o eliminato da un'altra stazione.\n\n"
                 "Rileggerlo prima di salvare.");
    Press(Qt::Key_F2);
    user_.Expect("Il movimento n. 1 non esiste più.");
    Press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_EQ(TextOf(editor, "Documento n."), "47") << "what was typed can still be copied";
    EXPECT_EQ(Entries(), "0");
}

TEST_P(PNotaTest, NumberBrowsingAndDiscardedChanges)
{
    for (const char *number : {"1", "2"}) StorePurchase(number);
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Press(Qt::Key_PageUp);
    EXPECT_EQ(TextOf(editor, "Movimento"), "2");
    Press(Qt::Key_PageUp);
    EXPECT_EQ(TextOf(editor, "Movimento"), "1");
    user_.beeps = 0;
    Press(Qt::Key_PageUp);
    EXPECT_EQ(user_.beeps, 1);
    while (Focused() != "Movimento") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Enter("2");
    EXPECT_EQ(TextOf(editor, "Documento n."), "2");
    EXPECT_EQ(user_.beeps, 1);
}

TEST_P(PNotaTest, SuspendedVatShowsItsBanner)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    const auto banner = [&editor] {
        for (const auto *label : editor.findChildren<QLabel *>())
            if (label->text() == ".: IVA Sospesa :.") return label->isVisible();
        return false;
    };
    EXPECT_FALSE(banner());
    Enter("5");
    EXPECT_TRUE(banner());
    Press(Qt::Key_Backtab, Qt::ShiftModifier);
}

TEST_P(PNotaTest, PaidAtOnceGoesOnWithThePayment)
{
    Run("UPDATE admin.fornito1 SET for_pag = 2 WHERE for_codice = 1");
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("45", "122");
    Enter("22");
    user_.Expect("Vuoi Inserire adesso il pagamento?", IDYES);
    Press(Qt::Key_F2);
    EXPECT_EQ(editor.m_pnota.pno_cau, lumera_db_flag.flg_cau_pagamento);
    EXPECT_FALSE(editor.IsRecordLoaded());
    EXPECT_EQ(Focused(), "Totale documento");
    Type("122");
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "2");
    EXPECT_EQ(Value("SELECT pno_dare - pno_avere FROM admin.pnota1 WHERE pno_codice = 2").substr(0, 1), "0");
}

TEST_P(PNotaTest, CodesAreBrowsedAndAttachmentsOffered)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("45", "122", "23");
    keys::WhenNextWindowOpens([](QWidget *) { keys::Press(Qt::Key_Return); });
    Press(Qt::Key_F4);
    ComeBack(&editor);
    EXPECT_EQ(VatLine(editor, 1), "4 117,31 4,69") << "the first code of the table";
    Press(Qt::Key_F8);
    EXPECT_EQ(user_.beeps, 1) << "no row has the focus";
    Press(Qt::Key_Backtab, Qt::ShiftModifier);
    while (Cell(editor) != "Righe 3,3") Press(Qt::Key_Tab);
    Enter("4711");
    EXPECT_EQ(user_.beeps, 2);
    EXPECT_EQ(Cell(editor), "Righe 3,3") << "no such account";
    Press(Qt::Key_Escape);
    user_.Expect("Vuoi inserire allegati ?", IDNO);
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "1");
}

TEST_P(PNotaTest, ListFollowsWhatIsStoredAndDeleted)
{
    StorePurchase("1");
    CGestionePrimaNota list(nullptr);
    list.LoadTable(nullptr, false);
    CPNota editor(&list, nullptr);
    keys::Open(&editor);
    TypePurchase("2", "122");
    Press(Qt::Key_F2);
    EXPECT_NE(list.RowOf(2), 0);
    Press(Qt::Key_PageUp);
    EXPECT_EQ(TextOf(editor, "Documento n."), "2");
    user_.Expect("Vuoi veramente eliminare il movimento n. 2 del 15/03/2026?", IDYES);
    Press(Qt::Key_F6);
    EXPECT_EQ(list.RowOf(2), 0);
    EXPECT_EQ(TextOf(editor, "Documento n."), "1");
}

TEST_P(PNotaTest, FilledPurchaseFitsASmallScreen)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    editor.resize(1216, 690); // as much of 1280 x 720 as a new window gets
    TypePurchase("45/A", "232");
    Enter("22");
    Enter("100");
    Enter("10");
    Enter();
    EXPECT_LE(editor.minimumSizeHint().width(), 1280);
    EXPECT_LE(editor.minimumSizeHint().height(), 690);
    const auto *hidden_commands = editor.findChild<QWidget *>("qt_toolbar_ext_button");
    EXPECT_TRUE(hidden_commands == nullptr || !hidden_commands->isVisible());
    while (Cell(editor) != "Righe 3,7") Press(Qt::Key_Tab);
    Enter("-200");
    EXPECT_EQ(Grid(editor, "Righe")->Text(3, 8), "A") << "a minus is the other side";
    EXPECT_TRUE(Shows(editor, "Mancano 400,00 in Dare – la metà è l'importo della riga 3: segno sbagliato?"));
    editor.SetChanged(false);
}

INSTANTIATE_TEST_SUITE_P(Engines, PNotaTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
