// The entry editor opened for one entry alone, and with a document beside it.
#include "tests/ledger_ui/PNotaWindowTest.h"

#include "ledger/EntryEditing.h"

#include <QAbstractButton>
#include <QLabel>
#include <QSettings>
#include <fmt/format.h>

namespace {

class PNotaSingleTest : public PNotaWindowTest {
  protected:
    void SetUp() override
    {
        PNotaWindowTest::SetUp();
        QSettings().clear();
    }

    /// A purchase of 100.00 + 22.00 as a program prepares it, with a file.
    void Prepare(CPNota *editor)
    {
        PNOTA &entry = editor->m_pnota;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = entry.pno_data_doc = DateToJulian(10, 3, 2026);
        entry.pno_cli_for = 1;
        EnterCausale(Cmd(), &entry, 21);
        EnterDocumentNumber(&entry, "45");
        EnterTerms(Cmd(), &entry, 45);
        entry.iva[0] = {22, 1, 22, 100, 22, 0};
        sqlpno.RecalcPNota(Cmd(), &entry, 1);
        PNOTA_ALLEGATO file;
        file.pat_fname = "fattura.xml";
        file.pat_data.resize(3);
        entry.allegati.push_back(file);
        editor->m_single = true;
    }
    static bool HasButton(const QWidget &window, const QString &text)
    {
        for (const auto *button : window.findChildren<QAbstractButton *>())
            if (button->text() == text) return true;
        return false;
    }
};

TEST_P(PNotaSingleTest, PreparedEntryIsStoredAsItIsAndTheEditorCloses)
{
    CPNota editor(nullptr, nullptr);
    Prepare(&editor);
    editor.m_note = "Arrotondamento di 0,01.";
    keys::Open(&editor);
    EXPECT_EQ(editor.windowTitle().toStdString(), "Prima Nota");
    EXPECT_EQ(Focused(), "Documento n.");
    EXPECT_TRUE(Shows(editor, "Arrotondamento di 0,01."));
    EXPECT_TRUE(HasButton(editor, "Archivio (1)"));
    Press(Qt::Key_F2);
    EXPECT_FALSE(editor.isVisible());
    EXPECT_TRUE(editor.m_saved);
    EXPECT_EQ(editor.m_pnota.pno_prot, 1);
    EXPECT_EQ(Entries(), "1");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaall"), "1");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0") << "the opener generates them";
}

TEST_P(PNotaSingleTest, NoOtherEntryIsReachedAndLeavingAsks)
{
    StorePurchase("44");
    CPNota editor(nullptr, nullptr);
    Prepare(&editor);
    keys::Open(&editor);
    for (const int key : {Qt::Key_F3, Qt::Key_F5, Qt::Key_PageUp, Qt::Key_PageDown}) {
        user_.beeps = 0;
        Press(key);
        EXPECT_EQ(user_.beeps, 1) << key;
        EXPECT_EQ(TextOf(editor, "Documento n."), "45");
    }
    EXPECT_TRUE(Field(editor, "Movimento")->isReadOnly() || !Field(editor, "Movimento")->isEnabled());
    Enter("46");
    Press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_EQ(TextOf(editor, "Documento n."), "45") << "as it was prepared";
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDNO);
    Press(Qt::Key_Escape);
    EXPECT_TRUE(editor.isVisible());
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDYES);
    Press(Qt::Key_Escape);
    EXPECT_FALSE(editor.isVisible());
    EXPECT_FALSE(editor.m_saved);
    EXPECT_EQ(Entries(), "1");
}

TEST_P(PNotaSingleTest, FocusStandsOnWhatIsMissing)
{
    const auto focus_when = [this](const std::function<void(PNOTA &)> &change) {
        CPNota editor(nullptr, nullptr);
        Prepare(&editor);
        change(editor.m_pnota);
        keys::Open(&editor);
        const std::string cell = Cell(editor);
        editor.SetChanged(false);
        return cell;
    };
    EXPECT_EQ(focus_when([](PNOTA &entry) { entry.pno_cau = 0; }), "Causale");
    EXPECT_EQ(focus_when([](PNOTA &entry) { entry.pno_cli_for = 0; }), "Fornitore");
    EXPECT_EQ(focus_when([](PNOTA &entry) { entry.pno_doc.clear(); }), "Documento n.");
    EXPECT_EQ(focus_when([](PNOTA &entry) { entry.pno_tot_doc = 0; }), "Totale documento");
    EXPECT_EQ(focus_when([](PNOTA &entry) { entry.righe[2].row_sot = 0; }), "Righe 3,3");
}

TEST_P(PNotaSingleTest, StoredEntryIsChangedOrDeletedAndTheEditorCloses)
{
    StorePurchase("44");
    for (const bool deletes : {false, true}) {
        CPNota editor(nullptr, nullptr);
        editor.m_single = true;
        OpenOn(&editor, 1);
        if (deletes) {
            user_.Expect("Vuoi veramente eliminare il movimento n. 1 del 15/03/2026?", IDYES);
            Press(Qt::Key_F6);
        } else {
            Type("47");
            Press(Qt::Key_F2);
            EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1"), "47");
        }
        EXPECT_TRUE(editor.m_saved);
        EXPECT_FALSE(editor.isVisible());
    }
    EXPECT_EQ(Entries(), "0");
}

TEST_P(PNotaSingleTest, WhatStandsBesideIsMovedByKeysAndRememberedAsItWasLeft)
{
    std::string moved;
    for (const bool was_hidden : {false, true}) {
        CPNota editor(nullptr, nullptr);
        Prepare(&editor);
        auto *page = new QLabel("pagina");
        editor.ShowBeside({.widget = page,
                           .caption = "Fattura",
                           .name = "la fattura",
                           .scroll = [&](int steps) { moved += fmt::format("{} ", steps); },
                           .zoom = [&](double factor) { moved += fmt::format("x{:.2f} ", factor); }});
        editor.resize(3000, 700); // room for both
        keys::Open(&editor);
        EXPECT_EQ(page->isVisible(), !was_hidden);
        if (was_hidden) {
            Press(Qt::Key_PageDown, Qt::AltModifier);
            EXPECT_EQ(user_.beeps, 1) << "there is nothing to move";
        } else {
            EXPECT_LT(page->mapTo(&editor, QPoint()).x(), Grid(editor, "Righe")->mapTo(&editor, QPoint()).x());
            Press(Qt::Key_PageDown, Qt::AltModifier);
            Press(Qt::Key_PageUp, Qt::AltModifier);
            Press(Qt::Key_Plus, Qt::AltModifier | Qt::ShiftModifier); // a keyboard on which it needs Shift
            Press(Qt::Key_Minus, Qt::AltModifier);
            Press(Qt::Key_0, Qt::AltModifier);
            EXPECT_EQ(moved, "1 -1 x1.20 x0.83 x1.00 ");
            Press(Qt::Key_F12);
            EXPECT_FALSE(page->isVisible());
        }
        EXPECT_EQ(Focused(), "Documento n.");
        editor.SetChanged(false);
        Press(Qt::Key_Escape);
    }
}

// The screen of the tests is a small one.
TEST_P(PNotaSingleTest, WithoutRoomForBothTheEditorScrollsWithTheFocus)
{
    CPNota editor(nullptr, nullptr);
    Prepare(&editor);
    editor.m_note = "Da controllare.";
    auto *page = new QLabel("pagina");
    editor.ShowBeside({.widget = page, .caption = "Fattura", .name = "la fattura", .scroll = {}, .zoom = {}});
    editor.resize(1240, 690);
    keys::Open(&editor);
    EXPECT_FALSE(page->isVisible());
    EXPECT_TRUE(Shows(editor, "Da controllare.\nF12 mostra la fattura"));
    Press(Qt::Key_F12);
    EXPECT_TRUE(Shows(editor, "Da controllare."));
    EXPECT_GT(page->width(), editor.fontMetrics().averageCharWidth() * 50);
    const auto is_in_view = [&](const QRect &place, const QWidget *of) {
        const QRect on_screen(of->mapToGlobal(place.topLeft()), place.size());
        const int left = page->mapToGlobal(QPoint(page->width(), 0)).x();
        return on_screen.left() >= left && on_screen.right() <= editor.mapToGlobal(QPoint(editor.width(), 0)).x();
    };
    for (const char *name : {"Data registrazione", "Causale", "Descrizione", "Totale documento"}) {
        for (int presses = 0; presses < 400 && Focused() != name; ++presses) Press(Qt::Key_Backtab, Qt::ShiftModifier);
        editor.OnKickIdle();
        const QWidget *focus = QApplication::focusWidget();
        EXPECT_TRUE(is_in_view(focus->rect(), focus)) << name;
    }
    CSpreadSheet *rows = Grid(editor, "Righe");
    rows->setFocus();
    for (const long column : {7L, 1L}) { // amount, master
        rows->SetActiveCell(1, column);
        editor.OnKickIdle();
        EXPECT_TRUE(is_in_view(rows->visualRect(rows->currentIndex()), rows->viewport())) << column;
    }
    editor.SetChanged(false);
}

INSTANTIATE_TEST_SUITE_P(Engines, PNotaSingleTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
