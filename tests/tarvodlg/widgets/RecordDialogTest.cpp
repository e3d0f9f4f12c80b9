#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/TarvoRecordDialog.h"
#include "tests/support/WindowKeys.h"

#include <QAction>
#include <QEventLoop>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <gtest/gtest.h>

namespace {

constexpr const char *kLoseChanges = "Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?";

class SampleRecord : public CTarvoRecordDialog {
  public:
    SampleRecord()
    {
        UseCommands({RecordCommand::Nuovo, RecordCommand::Apri, RecordCommand::Salva, RecordCommand::Elimina,
                     RecordCommand::Annulla, RecordCommand::Cerca, RecordCommand::Prec, RecordCommand::Succ,
                     RecordCommand::Stampa});
        attachments = AddToolbarCommand({"F7 - &Allegati", {}, "allegati", [this] { log += "A"; }, {}, {}});
        FormBuilder form(this);
        name = form.Text("&Nome", record);
        notes = form.Note("Note", record_notes);
        OnLostFocusEvent(name, [this] { return !name->Value().empty(); });
    }
    bool OnInitDialog() override
    {
        SetField();
        return true;
    }
    bool IsRecordLoaded() const override { return is_loaded; }
    void OnKickIdle() override
    {
        ++idle_updates;
        CTarvoRecordDialog::OnKickIdle();
    }
    void OnRecordNuovo() override
    {
        if (!ConfirmDiscard()) return;
        log += "N";
        record = "";
        SetField();
    }
    void OnRecordSalva() override
    {
        log += "S";
        if (!saves) return;
        GetField();
        SetChanged(false);
    }
    void OnRecordElimina() override { log += "E"; }
    void OnRecordAnnulla() override
    {
        log += "R";
        SetField();
    }
    void OnRecordCerca() override { log += "C"; }
    void OnRecordPrec() override { log += "<"; }
    void OnRecordSucc() override { log += ">"; }
    void OnRecordStampa() override { log += "P"; }
    void OnRecordApri() override { log += "O"; }
    using CTarvoRecordDialog::SetCommandCaption;

    Text<20> record{"Rossi"};
    Text<200> record_notes;
    CTextField *name;
    CNoteField *notes;
    QAbstractButton *attachments;
    bool is_loaded = true, saves = true;
    int idle_updates = 0;
    std::string log;
};

class RecordDialogTest : public testing::Test {
  protected:
    RecordDialogTest() : before_(SetUserInterface(&ui)) {}
    ~RecordDialogTest() override { SetUserInterface(before_); }

    QAction *Action(const QString &text)
    {
        for (QAction *action : dialog.findChild<QToolBar *>()->actions())
            if (action->iconText() == text) return action;
        return nullptr;
    }

    ScriptedUserInterface ui;
    SampleRecord dialog;

  private:
    UserInterface *before_;
};

TEST_F(RecordDialogTest, EveryCommandHasItsKey)
{
    keys::Open(&dialog);
    for (const auto &[key, modifiers] :
         std::vector<std::pair<Qt::Key, Qt::KeyboardModifier>>{{Qt::Key_F3, Qt::NoModifier},
                                                               {Qt::Key_O, Qt::ControlModifier},
                                                               {Qt::Key_F6, Qt::NoModifier},
                                                               {Qt::Key_F5, Qt::NoModifier},
                                                               {Qt::Key_PageUp, Qt::NoModifier},
                                                               {Qt::Key_PageDown, Qt::NoModifier},
                                                               {Qt::Key_P, Qt::ControlModifier},
                                                               {Qt::Key_F7, Qt::NoModifier},
                                                               {Qt::Key_A, Qt::AltModifier}})
        keys::Press(key, modifiers);
    EXPECT_EQ(dialog.log, "NOEC<>PAA");
    keys::Type("Bianchi");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(dialog.record, "Bianchi");
    EXPECT_EQ(dialog.focusWidget(), dialog.name); // the toolbar never has the focus
    EXPECT_EQ(ui.Faults(), "");
    EXPECT_EQ(ui.beeps, 0);
}

TEST_F(RecordDialogTest, UpdateHandlersDecideWhatRuns)
{
    dialog.is_loaded = false;
    keys::Open(&dialog);
    keys::Press(Qt::Key_F6);
    keys::Press(Qt::Key_P, Qt::ControlModifier);
    keys::Press(Qt::Key_R, Qt::ControlModifier); // nothing was changed
    EXPECT_EQ(dialog.log, "");
    EXPECT_EQ(ui.beeps, 3);
    EXPECT_FALSE(Action("F6 - Elimina")->isEnabled());
    EXPECT_TRUE(Action("F2 - Salva")->isEnabled());

    keys::Type("x");
    dialog.is_loaded = true;
    dialog.OnKickIdle();
    EXPECT_TRUE(Action("F6 - Elimina")->isEnabled());
    EXPECT_TRUE(Action("Annulla")->isEnabled());
    keys::Press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_EQ(dialog.log, "R");
    EXPECT_EQ(dialog.name->text(), "Rossi");
    EXPECT_FALSE(dialog.IsChanged());
}

TEST_F(RecordDialogTest, IdleMomentBringsTheToolbarUpToDate)
{
    keys::Open(&dialog);
    EXPECT_FALSE(Action("Annulla")->isEnabled());
    keys::Type("x");
    EXPECT_FALSE(Action("Annulla")->isEnabled());
    dialog.idle_updates = 0;
    QEventLoop at_rest;
    QTimer::singleShot(300, &at_rest, &QEventLoop::quit);
    at_rest.exec();
    EXPECT_TRUE(Action("Annulla")->isEnabled());
    EXPECT_LE(dialog.idle_updates, 4); // and then the program sleeps
}

TEST_F(RecordDialogTest, BadFieldHoldsSavingNotDiscarding)
{
    ui.Expect(kLoseChanges, IDNO);
    ui.Expect(kLoseChanges, IDYES);
    keys::Open(&dialog);
    keys::Press(Qt::Key_Delete);
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(dialog.log, "");
    EXPECT_EQ(ui.beeps, 1);
    keys::Press(Qt::Key_F3);
    EXPECT_EQ(dialog.log, "");
    keys::Press(Qt::Key_F3);
    EXPECT_EQ(dialog.log, "N");
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(ui.Faults(), "");
}

TEST_F(RecordDialogTest, EnterOnTheLastFieldLeadsToSave)
{
    keys::Open(&dialog);
    for (const Qt::Key saves : {Qt::Key_Return, Qt::Key_Space}) {
        dialog.log.clear();
        keys::Type("Verdi");
        keys::Press(Qt::Key_Return);
        EXPECT_EQ(dialog.focusWidget(), dialog.notes);
        keys::Press(Qt::Key_Tab); // Enter makes a line there
        auto *save = qobject_cast<QToolButton *>(dialog.focusWidget());
        ASSERT_TRUE(save);
        EXPECT_EQ(save->text(), "F2 - Salva");
        keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
        EXPECT_EQ(dialog.focusWidget(), dialog.notes);
        keys::Press(Qt::Key_Tab);
        EXPECT_EQ(dialog.log, "");
        keys::Press(saves);
        EXPECT_EQ(dialog.log, "S");
        EXPECT_EQ(dialog.focusWidget(), dialog.name) << "ready for the next one";
    }
    EXPECT_EQ(ui.beeps, 0);
}

TEST_F(RecordDialogTest, SaveThatDoesNotSaveKeepsTheFocus)
{
    dialog.saves = false;
    keys::Open(&dialog);
    keys::Type("Verdi");
    keys::Press(Qt::Key_Return);
    keys::Press(Qt::Key_Tab);
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(dialog.log, "S");
    EXPECT_TRUE(qobject_cast<QToolButton *>(dialog.focusWidget()));
}

TEST_F(RecordDialogTest, PageKeysMoveTheTextWhereItHasLines)
{
    keys::Open(&dialog);
    dialog.notes->setFocus();
    keys::Press(Qt::Key_PageDown);
    EXPECT_EQ(dialog.log, "");
}

TEST_F(RecordDialogTest, KeyFollowsTheCaption)
{
    dialog.SetCommandCaption(RecordCommand::Salva, "F9 - &Registra");
    keys::Open(&dialog);
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(dialog.log, "");
    keys::Press(Qt::Key_F9);
    EXPECT_EQ(dialog.log, "S");
    EXPECT_TRUE(Action("F9 - Registra"));
}

TEST_F(RecordDialogTest, ToolbarFitsASmallScreen)
{
    keys::Open(&dialog);
    EXPECT_LT(dialog.findChild<QToolBar *>()->sizeHint().width(), 1280);
    dialog.resize(300, dialog.height());
    keys::Settle();
    EXPECT_TRUE(dialog.findChild<QToolButton *>("qt_toolbar_ext_button")->isVisible());
}

class SampleTabs : public CTarvoTabbedRecordDialog {
  public:
    SampleTabs()
    {
        UseCommands({RecordCommand::Salva, RecordCommand::Prec, RecordCommand::Succ});
        FormBuilder left(this, AddTab("Generale"));
        one = left.Text("Uno", values[0]);
        FormBuilder right(this, AddTab("Altro"));
        two = right.Text("Due", values[1]);
    }
    void OnRecordSalva() override { RefuseField(one); }
    using CTarvoTabbedRecordDialog::Tabs;

    Text<20> values[2];
    CTextField *one, *two;
};

TEST(TabbedRecordDialogTest, KeysChangeTheTabAndARefusedFieldBringsItsOwn)
{
    ScriptedUserInterface ui;
    UserInterface *before = SetUserInterface(&ui);
    SampleTabs dialog;
    keys::Open(&dialog);
    keys::Press(Qt::Key_2, Qt::AltModifier);
    EXPECT_EQ(dialog.Tabs()->currentIndex(), 1);
    EXPECT_EQ(dialog.focusWidget(), dialog.two);
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(dialog.Tabs()->currentIndex(), 0);
    EXPECT_EQ(dialog.focusWidget(), dialog.one);
    keys::Press(Qt::Key_PageUp, Qt::ControlModifier); // round the end
    EXPECT_EQ(dialog.Tabs()->currentIndex(), 1);
    SetUserInterface(before);
}

TEST(TabbedRecordDialogTest, EnterTypesThroughTheTabsDownToSave)
{
    ScriptedUserInterface ui;
    UserInterface *before = SetUserInterface(&ui);
    SampleTabs dialog;
    dialog.OnLostFocusEvent(dialog.one, [&] { return dialog.one->Value() != "no"; });
    keys::Open(&dialog);
    keys::Type("no");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(dialog.Tabs()->currentIndex(), 0) << "a bad field holds its tab";
    EXPECT_EQ(dialog.focusWidget(), dialog.one);
    EXPECT_EQ(ui.beeps, 1);
    keys::Type("si");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(dialog.Tabs()->currentIndex(), 1);
    EXPECT_EQ(dialog.focusWidget(), dialog.two);
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(dialog.focusWidget(), dialog.one);
    dialog.Tabs()->setTabEnabled(1, false);
    keys::Press(Qt::Key_Down);
    EXPECT_TRUE(qobject_cast<QToolButton *>(dialog.focusWidget())) << "past a tab that is off";
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(dialog.focusWidget(), dialog.one);
    dialog.Tabs()->setTabEnabled(1, true);
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Down);
    EXPECT_TRUE(qobject_cast<QToolButton *>(dialog.focusWidget()));
    EXPECT_EQ(dialog.Tabs()->currentIndex(), 1);
    EXPECT_EQ(ui.beeps, 1);
    SetUserInterface(before);
}

class SampleList : public CTarvoRecordBrowseDialog {
  public:
    SampleList()
    {
        setWindowTitle("Elenco/prova");
        UseCommands({RecordCommand::Nuovo, RecordCommand::Apri});
        CSpreadSheet::Column code{"Codice", CSpreadSheet::Type::Code};
        CSpreadSheet::Column name{"Nome"};
        CSpreadSheet::Column amount{"Importo", CSpreadSheet::Type::Amount};
        CSpreadSheet::Column day{"Data", CSpreadSheet::Type::Date};
        code.locked = name.locked = amount.locked = day.locked = true;
        Spread()->SetColumns({code, name, amount, day});
    }
    bool OnInitDialog() override
    {
        LoadTable(nullptr, false);
        return true;
    }
    void LoadTable(SACommand *, bool) override
    {
        Spread()->SetRowCount(2);
        Spread()->SetLong(1, 1, 7);
        Spread()->SetText(1, 2, "=Rossi; \"figli\"");
        Spread()->SetNumber(1, 3, -1234.5);
        Spread()->SetLong(1, 4, DateToJulian(31, 12, 2026));
        Spread()->SetActiveCell(1, 1);
    }
    void OnRecordNuovo() override { log += "N"; }
    void OnRecordApri() override { log += "O" + std::to_string(Spread()->ActiveRow()); }
    using CTarvoRecordBrowseDialog::FilterArea;
    using CTarvoRecordBrowseDialog::OnExport;
    using CTarvoRecordBrowseDialog::Spread;
    std::string log;
};

class BrowseDialogTest : public testing::Test {
  protected:
    BrowseDialogTest() : before_(SetUserInterface(&ui)) { QSettings().clear(); }
    ~BrowseDialogTest() override { SetUserInterface(before_); }
    ScriptedUserInterface ui;
    QTemporaryDir folder;

  private:
    UserInterface *before_;
};

TEST_F(BrowseDialogTest, EnterOpensTheSelectedRowAndInsMakesANewOne)
{
    SampleList list;
    keys::Open(&list);
    EXPECT_FALSE(list.FilterArea()->isVisible());
    list.Spread()->setFocus();
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Return);
    keys::Press(Qt::Key_Insert);
    EXPECT_EQ(list.log, "O2N");
    EXPECT_TRUE(list.isVisible());
}

TEST_F(BrowseDialogTest, RemembersItsSize)
{
    {
        SampleList list;
        keys::Open(&list);
        list.resize(700, 410);
        keys::Press(Qt::Key_Escape);
    }
    SampleList again;
    keys::Open(&again);
    EXPECT_EQ(again.size(), QSize(700, 410));
}

TEST_F(BrowseDialogTest, ExportsTrueNumbersAndDates)
{
    const std::filesystem::path file = FromQt(folder.filePath("elenco.csv"));
    ui.ExpectFiles({file});
    ui.Expect("Esportazione conclusa con 2 righe!");
    SampleList list;
    keys::Open(&list);
    list.OnExport();
    EXPECT_EQ(ui.Faults(), "");
    EXPECT_EQ(ReadWholeFile(file, 1000), "\xEF\xBB\xBF"
                                         "Codice;Nome;Importo;Data\r\n"
                                         "7;\"'=Rossi; \"\"figli\"\"\";-1234,50;31/12/2026\r\n"
                                         ";;;\r\n");
}

TEST_F(BrowseDialogTest, ExportThatFailsIsTold)
{
    const std::filesystem::path file = FromQt(folder.filePath("manca/elenco.csv"));
    ui.ExpectFiles({file});
    SampleList list;
    keys::Open(&list);
    list.OnExport();
    ASSERT_EQ(ui.shown.size(), 1u);
    EXPECT_EQ(ui.flags[0], MB_OK | MB_ICONERROR);
    EXPECT_NE(ui.shown[0].find("elenco.csv"), std::string::npos) << ui.shown[0];
}

} // namespace
