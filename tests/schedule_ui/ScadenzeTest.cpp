#include "schedule/ui/Scadenze.h"

#include "tarvodlg/print/Crystal.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tests/schedule/EditingFixture.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <QAction>
#include <QToolBar>
#include <set>

namespace {

/// The instalment editor over the demo company, driven by keys.
class ScadenzeTest : public InstalmentFixture<TablesWindowTest> {
  protected:
    void SetUp() override
    {
        TablesWindowTest::SetUp();
        CDateField::SetFiscalYear(2026);
        CDateField::SetWorkingDate(DateToJulian(15, 3, 2026));
    }
    void TearDown() override
    {
        ScheduleHooks() = {};
        CDateField::SetFiscalYear(0);
        TablesWindowTest::TearDown();
    }

    static void Open(CScadenze &editor, short side, long number)
    {
        editor.m_relaz = side;
        editor.m_num = number;
        keys::Open(&editor);
    }
    static void Enter(const QString &text = {})
    {
        keys::Type(text);
        keys::Press(Qt::Key_Return);
    }
    static std::string Title(const CScadenze &editor) { return editor.windowTitle().toStdString(); }

    /// The toolbar's command whose caption begins so.
    static const QAction *Command(const CScadenze &editor, const QString &caption)
    {
        for (const auto *bar : editor.findChildren<QToolBar *>())
            for (const QAction *action : bar->actions())
                if (action->text().startsWith(caption)) return action;
        ADD_FAILURE() << "no command " << caption.toStdString();
        return nullptr;
    }
    void Pay(long side, long number)
    {
        Run(fmt::format("UPDATE admin.scadenze SET sca_pagato = 1, sca_data_pag = '2026-03-12'"
                        " WHERE sca_relaz = {} AND sca_num = {}",
                        side, number));
    }
};

TEST_P(ScadenzeTest, NewInstalmentIsTypedAndStored)
{
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 0);
    EXPECT_EQ(Title(editor), "Inserimento Scadenze Clienti");
    EXPECT_EQ(Focused(), "Cliente");
    Enter("1");
    EXPECT_EQ(TextOf(editor, "Pagamento"), "45") << "the customer's terms";
    EXPECT_EQ(TextOf(editor, "Banca"), "1");
    EXPECT_EQ(Focused(), "Scadenza");
    Enter("3006");
    Enter("1220,05");
    Enter("ACCONTO");
    Enter("12/B");
    Enter("05022026");
    EnterTo("Destinazione");
    Enter("Paradigna");
    EXPECT_EQ(TextOf(editor, "Destinazione"), "1") << "of this customer's places the one with the word";
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_EQ(editor.m_num, 1);
    EXPECT_TRUE(Shows(editor, "Registrata la scadenza n. 1"));
    EXPECT_EQ(TextOf(editor, "Numero"), "2") << "blank for the next one";
    EXPECT_EQ(TextOf(editor, "Importo"), "");
    EXPECT_EQ(Focused(), "Cliente");
    EXPECT_EQ(Value("SELECT sca_fattura FROM admin.scadenze WHERE sca_relaz = 0 AND sca_data = '2026-06-30'"
                    " AND sca_data_fattura = '2026-02-05' AND sca_importo = 1220.05 AND sca_dst = 1"
                    " AND sca_tipo_pag = 2 AND sca_desc = 'ACCONTO' AND sca_pno IS NULL"),
              "12/B");
}

TEST_P(ScadenzeTest, TitlesSaySideAndPurpose)
{
    Stored(kCustomer);
    Stored(kSupplier);
    const struct {
        short side;
        long number;
        const char *title, *pay, *tooltip;
    } cases[] = {
        {kCustomer, 0, "Inserimento Scadenze Clienti", "F7 - Incassa", "Registra l' incasso della scadenza"},
        {kCustomer, 1, "Modifica Scadenze Clienti", "F7 - Incassa", "Registra l' incasso della scadenza"},
        {kSupplier, 0, "Inserimento Scadenze Fornitori", "F7 - Paga", "Registra il pagamento della scadenza"},
        {kSupplier, 1, "Modifica Scadenze Fornitori", "F7 - Paga", "Registra il pagamento della scadenza"},
    };
    for (const auto &c : cases) {
        CScadenze editor(nullptr);
        Open(editor, c.side, c.number);
        EXPECT_EQ(Title(editor), c.title);
        EXPECT_TRUE(Command(editor, c.pay)->toolTip().contains(c.tooltip));
        for (const char *caption : {"F6 - &Elimina", "&Ricarica", "F8 - Bollettino"}) Command(editor, caption);
    }
}

TEST_P(ScadenzeTest, PaymentWaitsForItsModule)
{
    Stored(kSupplier);
    CScadenze editor(nullptr);
    Open(editor, kSupplier, 1);
    EXPECT_FALSE(Command(editor, "F7 - Paga")->isEnabled()) << "nobody can register it";
    keys::Press(Qt::Key_F7);
    EXPECT_EQ(user_.beeps, 1);

    ScheduleHooks().pay = [this](CWnd *, const SCADENZE &instalment) {
        Pay(instalment.sca_relaz, instalment.sca_num);
        return true;
    };
    keys::Press(Qt::Key_F7);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_TRUE(Shows(editor, "P A G A T A"));
    EXPECT_FALSE(Command(editor, "F7 - Paga")->isEnabled()) << "paid once";
}

TEST_P(ScadenzeTest, PaidInstalmentIsStampedAndProtected)
{
    Stored(kCustomer);
    Stored(kCustomer);
    Pay(kCustomer, 1);
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 1);
    EXPECT_TRUE(Shows(editor, "I N C A S S  A T A"));
    EXPECT_TRUE(Shows(editor, "Incassata il 12/03/2026"));
    EXPECT_EQ(Focused(), "Descrizione") << "the first field that is free";
    Enter("RETTIFICATA");
    EXPECT_EQ(Focused(), "Destinazione");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT sca_desc FROM admin.scadenze WHERE sca_num = 1"), "RETTIFICATA");

    user_.Expect("La scadenza n. 1 è già incassata e non si può eliminare.\n\nAnnullare prima l'incasso.");
    keys::Press(Qt::Key_F6);
    keys::Press(Qt::Key_PageDown);
    EXPECT_FALSE(Shows(editor, "I N C A S S  A T A")) << "the next one is open";
    EXPECT_TRUE(Shows(editor, "Aperta"));
}

TEST_P(ScadenzeTest, CeasedCustomerIsAskedAbout)
{
    Run("UPDATE admin.clienti1 SET cli_data_cessazione = '2026-01-31' WHERE cli_codice = 2");
    const char *question = "Il cliente selezionato risulta cessato !\n\nVuoi Continuare ?";
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 0);
    Enter("1");
    BackTo("Cliente");
    user_.Expect(question, IDNO);
    Enter("2");
    EXPECT_EQ(Focused(), "Cliente");
    EXPECT_EQ(TextOf(editor, "Cliente"), "1") << "as it was";
    user_.Expect(question, IDYES);
    Enter("2");
    EXPECT_EQ(Focused(), "Scadenza");
    EXPECT_EQ(editor.m_scadenza.sca_cli_for, 2);
    editor.SetChanged(false);
}

TEST_P(ScadenzeTest, InstalmentOfAnEntryShowsWhereItComesFrom)
{
    const SCADENZE made = Generated().back();
    long opened = 0;
    ScheduleHooks().open_entry = [&](long entry) { opened = entry; };
    CScadenze editor(nullptr);
    Open(editor, kSupplier, 2);
    EXPECT_EQ(TextOf(editor, "Rata") + "/" + TextOf(editor, "Rate"), "2/2");
    EXPECT_TRUE(Field(editor, "Rata")->isReadOnly() || !Field(editor, "Rata")->isEnabled());
    EXPECT_TRUE(Shows(editor, "<a href=\"movimento\">Movimento n. 1</a>"));
    keys::Press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_EQ(opened, made.sca_pno);

    EXPECT_EQ(Focused(), "Scadenza") << "the counterpart is the entry's";
    Enter();
    Enter("60");
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(Shows(editor, "Registrata la scadenza n. 2. Le scadenze del movimento n. 1 sommano 121,00, il documento"
                              " è di 122,00."));
}

TEST_P(ScadenzeTest, BrowsesAndFindsByNumber)
{
    for (int i = 0; i < 3; ++i) Stored(kCustomer);
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 2);
    keys::Press(Qt::Key_PageDown);
    EXPECT_EQ(TextOf(editor, "Numero"), "3");
    keys::Press(Qt::Key_PageDown);
    EXPECT_TRUE(Shows(editor, "Non c'è una scadenza successiva"));
    EXPECT_EQ(TextOf(editor, "Numero"), "3");
    BackTo("Numero");
    Enter("1");
    EXPECT_EQ(editor.m_scadenza.sca_num, 1);
    BackTo("Numero");
    Enter("77");
    EXPECT_EQ(TextOf(editor, "Numero"), "1") << "there is none of that number";
    EXPECT_EQ(user_.beeps, 2);

    keys::Press(Qt::Key_F3);
    EXPECT_EQ(Title(editor), "Inserimento Scadenze Clienti");
    keys::Press(Qt::Key_PageUp);
    EXPECT_EQ(TextOf(editor, "Numero"), "3") << "back from a new one to the last";
    BackTo("Importo");
    keys::Type("5");
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDNO);
    keys::Press(Qt::Key_PageUp);
    EXPECT_EQ(TextOf(editor, "Numero"), "3");
    editor.SetChanged(false);
}

TEST_P(ScadenzeTest, SearchListsThoseOfTheSectionAndBringsTheChosenOne)
{
    Stored(kCustomer, [](SCADENZE &r) { r.sca_sez = 1; });
    Stored(kCustomer, [](SCADENZE &r) { r.sca_sez = 9; });
    Stored(kCustomer, [](SCADENZE &r) { r.sca_sez = 1; });
    CScadenze editor(nullptr);
    editor.m_sez = 1;
    Open(editor, kCustomer, 1);
    const auto choose = [&editor] {
        keys::WhenNextWindowOpens([](QWidget *search) {
            auto *grid = search->findChild<CSpreadSheet *>();
            ASSERT_NE(grid, nullptr);
            grid->setFocus();
            EXPECT_EQ(grid->RowCount(), 2) << "that of the other section is not listed";
            grid->SetActiveCell(2, 1);
            keys::Press(Qt::Key_Return);
        });
        keys::Press(Qt::Key_F5);
        keys::Open(&editor);
    };
    choose();
    EXPECT_EQ(editor.m_scadenza.sca_num, 3);
    BackTo("Importo");
    keys::Type("5");
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDNO);
    choose();
    EXPECT_EQ(TextOf(editor, "Importo"), "5");
    editor.SetChanged(false);
}

TEST_P(ScadenzeTest, DeletesAndGoesOn)
{
    for (int i = 0; i < 2; ++i) Stored(kCustomer);
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 1);
    user_.Expect("Vuoi veramente eliminare la scadenza n. 1 del 30/06/2026 di 100,00?", IDNO);
    keys::Press(Qt::Key_F6);
    EXPECT_FALSE(editor.m_saved);
    user_.Expect("Vuoi veramente eliminare la scadenza n. 1 del 30/06/2026 di 100,00?", IDYES);
    keys::Press(Qt::Key_F6);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_TRUE(Shows(editor, "Eliminata la scadenza n. 1"));
    EXPECT_EQ(TextOf(editor, "Numero"), "2");
    user_.Expect("Vuoi veramente eliminare la scadenza n. 2 del 30/06/2026 di 100,00?", IDYES);
    keys::Press(Qt::Key_F6);
    EXPECT_EQ(Title(editor), "Inserimento Scadenze Clienti");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
}

TEST_P(ScadenzeTest, ReloadsWhatAnotherStationDid)
{
    Stored(kCustomer);
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 1);
    Run("UPDATE admin.scadenze SET sca_importo = 90");
    EnterTo("Importo");
    Enter("80");
    user_.Expect("La scadenza n. 1 è stata cambiata nel frattempo da un'altra stazione.\n\n"
                 "Ricaricarla e ripetere l'operazione.");
    keys::Press(Qt::Key_F2);
    EXPECT_FALSE(editor.m_saved);
    EXPECT_EQ(TextOf(editor, "Importo"), "80,00") << "what was typed stays on screen";
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDYES);
    keys::Press(Qt::Key_R, Qt::AltModifier);
    EXPECT_EQ(TextOf(editor, "Importo"), "90,00");
    EXPECT_FALSE(editor.IsChanged());
}

TEST_P(ScadenzeTest, RefusalLeadsToItsField)
{
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 0);
    Enter("1");
    user_.Expect("Importo mancante.");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Focused(), "Importo");
    EXPECT_FALSE(editor.m_saved);
    editor.SetChanged(false);
}

TEST_P(ScadenzeTest, SplitsInTwo)
{
    Stored(kCustomer);
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 1);
    keys::WhenNextWindowOpens([&](QWidget *window) {
        EXPECT_EQ(Focused(), "Importo da staccare");
        Enter("40");
        EXPECT_TRUE(Shows(*window, "60,00 il 30/06/2026"));
        Enter("3107");
        keys::Press(Qt::Key_F2);
    });
    keys::Press(Qt::Key_F9);
    ComeBack(&editor);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_EQ(TextOf(editor, "Importo"), "60,00");
    EXPECT_EQ(TextOf(editor, "Rata") + "/" + TextOf(editor, "Rate"), "1/2");
    EXPECT_TRUE(Shows(editor, "Divisa: la scadenza n. 2 è di 40,00 il 31/07/2026"));
}

TEST_P(ScadenzeTest, PrintsTheSlip)
{
    Stored(kCustomer);
    const std::filesystem::path file = Folder() / "bollettino.pdf";
    SetDefaultDestination({ReportTarget::Pdf, file});
    CScadenze editor(nullptr);
    Open(editor, kCustomer, 1);
    keys::Press(Qt::Key_F8);
    SetDefaultDestination({});
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_FALSE(editor.m_saved);
}

TEST_P(ScadenzeTest, EditScadenzaOpensOne)
{
    Stored(kSupplier);
    std::string title;
    keys::WhenNextWindowOpens([&](QWidget *window) {
        title = window->windowTitle().toStdString();
        EXPECT_EQ(TextOf(*window, "Numero"), "1");
        keys::Press(Qt::Key_Escape);
    });
    EditScadenza(kSupplier, 1);
    EXPECT_EQ(title, "Modifica Scadenze Fornitori");
    EditScadenza(kCustomer, 1); // nothing happens: there is none
}

TEST_P(ScadenzeTest, NoLetterMeansTwoThings)
{
    for (const short side : {kCustomer, kSupplier}) {
        CScadenze editor(nullptr);
        Open(editor, side, 0);
        std::set<QString> letters;
        const auto take = [&](const QString &caption) {
            const QString key = QKeySequence::mnemonic(caption).toString();
            EXPECT_TRUE(key.isEmpty() || letters.insert(key).second) << caption.toStdString();
        };
        for (const auto *bar : editor.findChildren<QToolBar *>())
            for (const QAction *action : bar->actions()) take(action->text());
        for (const auto *label : editor.findChildren<QLabel *>())
            if (label->buddy()) take(label->text());
        EXPECT_GE(letters.size(), 15U);
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, ScadenzeTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
