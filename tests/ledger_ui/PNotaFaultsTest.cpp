// The entry editor when something goes wrong: the database, another station, what is pasted.
#include "tests/ledger_ui/PNotaWindowTest.h"

#include "tarvolumera/PSQLrow.h"

#include <QClipboard>

namespace {

class PNotaFaultsTest : public PNotaWindowTest {
  protected:
    /// A column that the archive does not have for a while.
    void Break(const std::string &table, const std::string &column) { Rename(table, column, column + "_via"); }
    void Mend(const std::string &table, const std::string &column) { Rename(table, column + "_via", column); }

    static void Paste(const QString &text)
    {
        QApplication::clipboard()->setText(text);
        keys::Press(Qt::Key_V, Qt::ControlModifier);
    }

  private:
    void Rename(const std::string &table, const std::string &from, const std::string &to)
    {
        Run("ALTER TABLE admin." + table + " RENAME COLUMN " + from + " TO " + to);
    }
};

TEST_P(PNotaFaultsTest, FailedFieldEventLeavesTheEntryAsItWasAndCanBeTriedAgain)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Break("sotcon", "sot_desc1"); // read last, when the causale has changed nearly everything
    Enter("21");
    EXPECT_EQ(editor.m_pnota.pno_cau, 0);
    EXPECT_EQ(editor.m_pnota.pno_reg, 0);
    EXPECT_FALSE(editor.m_pnota.righe[0].InUse());
    EXPECT_EQ(Focused(), "Causale");
    EXPECT_EQ(TextOf(editor, "Causale"), "21") << "as typed";
    TakeShown();
    Mend("sotcon", "sot_desc1");
    Enter();
    EXPECT_EQ(editor.m_pnota.pno_cau, 21);

    Break("pagament", "pag_desc");
    Enter("1");
    EXPECT_EQ(editor.m_pnota.pno_cli_for, 0);
    EXPECT_EQ(editor.m_pnota.righe[0].row_sot, 0);
    EXPECT_EQ(Focused(), "Fornitore");
    TakeShown();
    Mend("pagament", "pag_desc");
    Enter();
    EXPECT_EQ(editor.m_pnota.pno_cli_for, 1);
    editor.SetChanged(false);
}

TEST_P(PNotaFaultsTest, FailedCellLeavesTheEntryAsItWasAndCanBeTriedAgain)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("45", "122");
    Break("codiva", "iva_inded");
    Enter("22");
    EXPECT_EQ(Cell(editor), "Righe IVA 1,1");
    EXPECT_EQ(editor.m_pnota.iva[0].iva, 0);
    EXPECT_EQ(editor.m_pnota.iva[0].impo, 0);
    TakeShown();
    Mend("codiva", "iva_inded");
    Enter();
    EXPECT_EQ(VatLine(editor, 1), "22 100,00 22,00");

    while (Cell(editor) != "Righe 3,1") Press(Qt::Key_Tab);
    Break("sotcon", "sot_desc1");
    Enter("170");
    EXPECT_EQ(Cell(editor), "Righe 3,1");
    EXPECT_EQ(editor.m_pnota.righe[2].row_con, 1) << "still the account's";
    TakeShown();
    Mend("sotcon", "sot_desc1");
    Press(Qt::Key_Escape);
    EXPECT_EQ(Rows(editor), "250.1.1 A 122,00; 260.1.1 D 22,00; 300.1.1 D 100,00");
    editor.SetChanged(false);
}

TEST_P(PNotaFaultsTest, FailedStoreLeavesTheNewEntryOnScreen)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    TypePurchase("45", "122");
    Enter("22");
    Break("pnotaro2", "row_descac");
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "0");
    EXPECT_FALSE(editor.IsRecordLoaded());
    EXPECT_FALSE(editor.m_saved);
    EXPECT_EQ(TextOf(editor, "Documento n."), "45");
    TakeShown();
    Mend("pnotaro2", "row_descac");
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "1");
}

TEST_P(PNotaFaultsTest, EntryDeletedByAnotherStationIsToldWhateverIsDoneWithIt)
{
    for (const char *number : {"1", "2", "3"}) StorePurchase(number);
    CPNota editor(nullptr, nullptr);
    OpenOn(&editor, 2);
    Run("DELETE FROM admin.scadenze WHERE sca_pno = 2");
    Run("DELETE FROM admin.pnota1 WHERE pno_codice = 2");
    const std::string changed = "Il movimento n. 2 è stato modificato o eliminato da un'altra stazione.\n\n"
                                "Rileggerlo prima di salvare.";
    Enter("46");
    user_.Expect(changed);
    Press(Qt::Key_F2);
    user_.Expect("Vuoi veramente eliminare il movimento n. 2 del 15/03/2026?", IDYES);
    user_.Expect(changed);
    Press(Qt::Key_F6);
    EXPECT_EQ(TextOf(editor, "Documento n."), "46") << "still there to be copied by hand";
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDYES);
    Press(Qt::Key_PageDown);
    EXPECT_EQ(TextOf(editor, "Movimento"), "3") << "browsing goes on from where it stood";
}

struct PasteCase {
    const char *pasted, *total;
};

TEST_P(PNotaFaultsTest, PastedTextIsAnAmountOrNothing)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Enter("21");
    Enter("1");
    Enter("45");
    Enter("10");
    ASSERT_EQ(Focused(), "Totale documento");
    for (const PasteCase &c : {PasteCase{"centoventidue", ""}, PasteCase{"12; DROP TABLE", ""}, PasteCase{"1e9", ""},
                               PasteCase{"1.234,56 €\n", "1.234,56"}, PasteCase{" 1,234.56 ", "1.234,56"}}) {
        SCOPED_TRACE(c.pasted);
        Paste(c.pasted);
        Press(Qt::Key_Tab);
        EXPECT_EQ(TextOf(editor, "Totale documento"), c.total);
        while (Focused() != "Totale documento") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    }
    Press(Qt::Key_Return);
    Enter("22");
    EXPECT_EQ(VatLine(editor, 1), "22 1.011,93 222,62");
    Press(Qt::Key_Backtab, Qt::ShiftModifier);
    while (Cell(editor) != "Righe IVA 1,2") Press(Qt::Key_Tab);
    Paste("mille");
    Press(Qt::Key_Tab);
    EXPECT_EQ(VatLine(editor, 1), "22 1.011,93 222,62");
    while (Cell(editor) != "Righe IVA 1,2") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Paste(QStringLiteral("1.000,00\u00A0€"));
    Press(Qt::Key_Tab);
    EXPECT_EQ(VatLine(editor, 1), "22 1.000,00 220,00");
    editor.SetChanged(false);
}

INSTANTIATE_TEST_SUITE_P(Engines, PNotaFaultsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
