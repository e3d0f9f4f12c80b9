#include "sqlapi/SAException.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/QtUserInterface.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/TarvoTabsDialog.h"
#include "tests/support/WindowKeys.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QTabWidget>
#include <QTest>
#include <gtest/gtest.h>

namespace {

constexpr const char *kLoseChanges = "Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?";

/// Three fields and two commands. The second field takes no word that begins with an x.
class SampleDialog : public CTarvoDialog {
  public:
    SampleDialog()
    {
        AddCommand({"F2 - &Salva", {}, {}, [this] { saved.push_back(second_text()); }, update_save, {}});
        FormBuilder form(this);
        first = form.Text("&Primo", first_value);
        second = form.Text("S&econdo", second_value);
        third = form.Text("&Terzo", third_value);
        note = form.Note("Note", note_value);
        OnLostFocusEvent(second, [this] {
            handled.push_back(second->Value());
            if (on_second) on_second();
            return !second->Value().starts_with("x");
        });
        leave = AddCommand({"F8 - Esci", {}, {}, [this] { ++left; }, {}, "Ctrl+E", false});
        AddCommand({"F9 - Mai", {}, {}, [this] { ++forbidden; }, [](CCmdUI *now) { now->Enable(false); }, {}});
    }
    bool OnInitDialog() override
    {
        ShowFields();
        return may_open;
    }
    std::string second_text() { return second->Value(); }
    using CTarvoDialog::ReadFields;

    Text<20> first_value{"uno"}, second_value{"due"}, third_value{"tre"};
    Text<200> note_value;
    CTextField *first, *second, *third;
    CNoteField *note;
    QAbstractButton *leave;
    std::function<void()> on_second;
    std::function<void(CCmdUI *)> update_save;
    std::vector<std::string> handled, saved;
    int left = 0, forbidden = 0;
    bool may_open = true;
};

class DialogTest : public testing::Test {
  protected:
    DialogTest() { before_ = SetUserInterface(&ui); }
    ~DialogTest() override { SetUserInterface(before_); }
    void Open()
    {
        keys::Open(&dialog);
        dialog.second->setFocus(Qt::TabFocusReason);
        keys::Settle();
    }

    ScriptedUserInterface ui;
    SampleDialog dialog;

  private:
    UserInterface *before_;
};

TEST_F(DialogTest, RefusedFieldBeepsAndKeepsFocusAndText)
{
    Open();
    keys::Type("xyz");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(dialog.focusWidget(), dialog.second);
    EXPECT_EQ(dialog.second->text(), "xyz");
    EXPECT_EQ(dialog.second->selectedText(), "xyz");

    keys::Press(Qt::Key_Tab); // untouched, and still as bad as before
    EXPECT_EQ(ui.beeps, 2);
    EXPECT_EQ(dialog.focusWidget(), dialog.second);

    keys::Type("buono");
    keys::Press(Qt::Key_Tab);
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    keys::Press(Qt::Key_Tab); // not modified again
    EXPECT_EQ(dialog.focusWidget(), dialog.third);
    EXPECT_EQ(ui.beeps, 2);
    EXPECT_EQ(dialog.handled, (std::vector<std::string>{"xyz", "xyz", "buono"}));
}

TEST_F(DialogTest, TwoFieldsThatRefuseEachOtherBeepOncePerKey)
{
    dialog.OnLostFocusEvent(dialog.first, [this] {
        dialog.RefuseField(dialog.second);
        return false;
    });
    Open();
    dialog.first->setFocus(Qt::TabFocusReason);
    keys::Type("x");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(dialog.focusWidget(), dialog.second);
    keys::Type("x");
    keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(ui.beeps, 2);
    EXPECT_EQ(dialog.focusWidget(), dialog.second);
}

TEST_F(DialogTest, HandlerThatAsksIsAskedOnce)
{
    ui.Expect("Sicuro ?", IDYES);
    dialog.on_second = [] { AfxMessageBox("Sicuro ?", MB_YESNO); };
    Open();
    keys::Type("y");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(dialog.saved.size(), 1u);
    EXPECT_EQ(dialog.handled.size(), 1u);
    EXPECT_EQ(ui.Faults(), "");
}

TEST_F(DialogTest, RealMessageBoxInHandlerCausesNoSecondCheck)
{
    QtUserInterface windows;
    SetUserInterface(&windows);
    dialog.on_second = [] { AfxMessageBox("Sicuro ?", MB_YESNO); };
    Open();
    keys::Type("y");
    int boxes = 0;
    keys::WhenNextWindowOpens([&](QWidget *box) {
        ++boxes;
        EXPECT_EQ(static_cast<QMessageBox *>(box)->text(), "Sicuro ?");
        keys::Press(Qt::Key_Return);
    });
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(dialog.handled.size(), 1u);
    EXPECT_EQ(dialog.focusWidget(), dialog.third);
}

TEST_F(DialogTest, StatusLineSaysWhyAFieldIsRefusedUntilItIsGood)
{
    const auto status = [this] {
        for (const QLabel *label : dialog.findChildren<QLabel *>())
            if (label->textFormat() == Qt::PlainText && label->isVisible() && !label->buddy()) return label->text();
        return QString();
    };
    long day = 0;
    FormBuilder form(&dialog);
    CDateField *date = form.Date("Data", day);
    dialog.SetStatus("3 righe");
    Open();
    date->setFocus(Qt::TabFocusReason);
    keys::Type("3202");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(status(), "Data non valida");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(status(), "Data non valida");
    EXPECT_EQ(ui.beeps, 2);
    keys::Type("15/3/2026");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(status(), "3 righe") << "what stood there comes back";
}

TEST_F(DialogTest, ExceptionInHandlerIsShownAndRefusesTheField)
{
    ui.Expect("Il collegamento con l'archivio si è interrotto.\n\nserver closed the connection");
    ui.Expect("file guasto");
    dialog.on_second = [] {
        throw SAException(SA_DBMS_API_Error, 7, "server closed the connection", SAFault::ConnectionLost);
    };
    Open();
    keys::Type("y");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(dialog.focusWidget(), dialog.second);
    dialog.on_second = [] { throw std::runtime_error("file guasto"); };
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(dialog.focusWidget(), dialog.second);
    dialog.on_second = nullptr;
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(dialog.focusWidget(), dialog.third);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(ui.Faults(), "");
}

struct KeyCase {
    const char *name;
    const char *typed;
    int key;
    Qt::KeyboardModifiers modifiers;
    std::size_t saved;
    int left, beeps;
};
void PrintTo(const KeyCase &c, std::ostream *out)
{
    *out << c.name;
}

class CommandKeyTest : public DialogTest, public testing::WithParamInterface<KeyCase> {};

TEST_P(CommandKeyTest, RunsItsCommandOnAGoodFieldOnly)
{
    Open();
    keys::Type(GetParam().typed);
    keys::Press(GetParam().key, GetParam().modifiers);
    EXPECT_EQ(dialog.saved.size(), GetParam().saved);
    EXPECT_EQ(dialog.left, GetParam().left);
    EXPECT_EQ(dialog.forbidden, 0);
    EXPECT_EQ(ui.beeps, GetParam().beeps);
}

INSTANTIATE_TEST_SUITE_P(Cases, CommandKeyTest,
                         testing::Values( // name, typed, key, saved, left, beeps
                             KeyCase{"KeyOfCaption", "bene", Qt::Key_F2, Qt::NoModifier, 1, 0, 0},
                             KeyCase{"Mnemonic", "bene", Qt::Key_S, Qt::AltModifier, 1, 0, 0},
                             KeyCase{"BadFieldFirst", "xy", Qt::Key_F2, Qt::NoModifier, 0, 0, 1},
                             KeyCase{"LeavingDoesNotAsk", "xy", Qt::Key_F8, Qt::NoModifier, 0, 1, 0},
                             KeyCase{"Shortcut", "xy", Qt::Key_E, Qt::ControlModifier, 0, 1, 0},
                             KeyCase{"NotWithOtherModifiers", "bene", Qt::Key_F2, Qt::ControlModifier, 0, 0, 0},
                             KeyCase{"Disabled", "bene", Qt::Key_F9, Qt::NoModifier, 0, 0, 1}),
                         [](const auto &p) { return std::string(p.param.name); });

TEST_F(DialogTest, ClickOnACommandLeavesTheFocusAndAsksTheFieldWhenTheCommandSaysSo)
{
    Open();
    keys::Type("xy");
    QTest::mouseClick(dialog.leave, Qt::LeftButton);
    EXPECT_EQ(dialog.left, 1);
    EXPECT_EQ(ui.beeps, 0);
    EXPECT_EQ(dialog.focusWidget(), dialog.second);
    for (QAbstractButton *button : dialog.findChildren<QAbstractButton *>())
        if (button->text() == "F2 - &Salva") QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_TRUE(dialog.saved.empty());
    EXPECT_EQ(ui.beeps, 1);
}

TEST_F(DialogTest, ClickIntoAnotherFieldComesBackToTheRefusedOne)
{
    Open();
    keys::Type("xy");
    QTest::mouseClick(dialog.first, Qt::LeftButton);
    keys::Settle();
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(dialog.focusWidget(), dialog.second);
}

TEST_F(DialogTest, EnterAndArrowsWalkTheFormDownToTheButtons)
{
    Open();
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(dialog.focusWidget(), dialog.third);
    EXPECT_EQ(dialog.third->selectedText(), "tre");
    keys::Press(Qt::Key_Up);
    keys::Press(Qt::Key_Up);
    EXPECT_EQ(dialog.focusWidget(), dialog.first);
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Enter, Qt::KeypadModifier);
    keys::Press(Qt::Key_Return);
    ASSERT_EQ(dialog.focusWidget(), dialog.note);
    keys::Type("a");
    keys::Press(Qt::Key_Return); // a line of its own
    keys::Type("b");
    EXPECT_EQ(dialog.note->Value(), "a\nb");
    keys::Press(Qt::Key_Tab);
    auto *save = qobject_cast<QAbstractButton *>(dialog.focusWidget()); // made before the fields, reached after them
    ASSERT_TRUE(save);
    EXPECT_EQ(save->text(), "F2 - &Salva");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(dialog.saved.size(), 1u);
}

TEST_F(DialogTest, MnemonicOfALabelEntersItsField)
{
    Open();
    keys::Press(Qt::Key_T, Qt::AltModifier);
    EXPECT_EQ(dialog.focusWidget(), dialog.third);
    EXPECT_EQ(dialog.third->accessibleName(), "Terzo");
}

TEST_F(DialogTest, F4AndDoubleClickOpenTheLookupOfTheField)
{
    int opened = 0;
    dialog.second->on_dbl_click = [&] {
        ++opened;
        throw std::runtime_error("nessun elenco");
    };
    ui.Expect("nessun elenco");
    ui.Expect("nessun elenco");
    Open();
    keys::Press(Qt::Key_F4);
    QTest::mouseDClick(dialog.second, Qt::LeftButton);
    EXPECT_EQ(opened, 2);
    dialog.second->Protect(true);
    QTest::mouseDClick(dialog.second, Qt::LeftButton);
    EXPECT_EQ(opened, 2);
    EXPECT_EQ(ui.Faults(), "");
}

TEST_F(DialogTest, EscAsksOnlyWhenSomethingWasChanged)
{
    Open();
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(ui.shown.empty());
}

TEST_F(DialogTest, EscWithChangesStaysOnNoAndLeavesOnYes)
{
    ui.Expect(kLoseChanges, IDNO);
    ui.Expect(kLoseChanges, IDNO);
    ui.Expect(kLoseChanges, IDYES);
    Open();
    keys::Type("bene");
    keys::Press(Qt::Key_Tab); // the field's own mark is gone with the check; the change remains
    keys::Press(Qt::Key_Escape);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(DefaultAnswer(ui.flags.front()), IDNO);
    dialog.close();
    EXPECT_TRUE(dialog.isVisible());
    dialog.second->setFocus();
    keys::Type("x"); // a bad value is no reason to stay
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(ui.beeps, 0);
    EXPECT_EQ(ui.Faults(), "");
}

TEST_F(DialogTest, WhatTheProgramSetsIsNoChange)
{
    Open();
    dialog.second->SetValue("altro");
    EXPECT_FALSE(dialog.IsChanged());
    dialog.SetChanged(true);
    EXPECT_TRUE(dialog.IsChanged());
    dialog.SetChanged(false);
    EXPECT_FALSE(dialog.IsChanged());
}

TEST_F(DialogTest, RefusedInitialisationDoesNotOpen)
{
    dialog.may_open = false;
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(DialogTest, HelpNamesTheKeysOfTheCommands)
{
    Open();
    QStringList texts;
    keys::WhenNextWindowOpens([&](QWidget *window) {
        for (const QLabel *label : window->findChildren<QLabel *>()) texts << label->text();
        keys::Press(Qt::Key_Escape);
    });
    keys::Press(Qt::Key_F1);
    EXPECT_TRUE(texts.contains("F2, Alt+S"));
    EXPECT_TRUE(texts.contains("F8, Ctrl+E"));
    EXPECT_TRUE(texts.contains("Esci"));
}

TEST(KeyOfCaptionTest, ReadsTheKeyAtTheHead)
{
    EXPECT_EQ(KeyOfCaption("F2 - &Salva"), Qt::Key_F2);
    EXPECT_EQ(KeyOfCaption("F12 - Altro"), Qt::Key_F12);
    for (const char *caption : {"Stampa", "F13 - No", "F1 - No", "F - No", "Fatture - elenco", "F2"})
        EXPECT_EQ(KeyOfCaption(caption), 0) << caption;
}

// Pages.

class SamplePage : public CTarvoTabsPage {
  public:
    SamplePage(CTarvoDialog *dialog, Text<20> *value) : CTarvoTabsPage(dialog)
    {
        FormBuilder form(dialog, this);
        field = form.Text("Campo", *value);
    }
    bool OnInitPage() override { return ++initialised == 1; }
    bool OnSetActive() override { return ++activated > 0; }
    bool OnKillActive() override { return may_leave; }
    bool PreTranslateMessage(QKeyEvent *key) override { return key->key() == Qt::Key_F7 && ++own_keys > 0; }

    CTextField *field;
    bool may_leave = true;
    int initialised = 0, activated = 0, own_keys = 0;
};

class TabsDialogTest : public testing::Test {
  protected:
    TabsDialogTest() : before_(SetUserInterface(&ui))
    {
        left = new SamplePage(&dialog, &values[0]);
        right = new SamplePage(&dialog, &values[1]);
        dialog.AddPage(left, "Sinistra");
        dialog.AddPage(right, "Destra");
        dialog.AddCommand({"F7 - Comune", {}, {}, [this] { ++common; }, {}, {}});
        dialog.OnLostFocusEvent(left->field, [this] { return left->field->Value() != "no"; });
        keys::Open(&dialog);
    }
    ~TabsDialogTest() override { SetUserInterface(before_); }

    ScriptedUserInterface ui;
    Text<20> values[2];
    CTarvoTabsDialog dialog;
    SamplePage *left, *right;
    int common = 0;

  private:
    UserInterface *before_;
};

TEST_F(TabsDialogTest, KeysChangeThePageWhenItMayBeLeft)
{
    EXPECT_EQ(left->initialised, 1);
    EXPECT_EQ(left->activated, 1);
    EXPECT_EQ(right->activated, 0);
    keys::Press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(dialog.ActivePage(), right);
    EXPECT_EQ(dialog.focusWidget(), right->field);
    keys::Press(Qt::Key_1, Qt::AltModifier);
    EXPECT_EQ(dialog.ActivePage(), left);
    EXPECT_EQ(left->activated, 2);
    left->may_leave = false;
    keys::Press(Qt::Key_2, Qt::AltModifier);
    EXPECT_EQ(dialog.ActivePage(), left);
    EXPECT_EQ(right->activated, 1);
}

TEST_F(TabsDialogTest, PageHasItsKeysBeforeTheDialog)
{
    left->field->setFocus();
    keys::Press(Qt::Key_F7);
    EXPECT_EQ(left->own_keys, 1);
    EXPECT_EQ(common, 0);
}

TEST_F(TabsDialogTest, BadFieldHoldsItsPageInFront)
{
    left->field->setFocus();
    keys::Type("no");
    keys::Press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(dialog.ActivePage(), left);
    EXPECT_EQ(ui.beeps, 1);
    auto *tabs = dialog.findChild<QTabWidget *>();
    QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, {}, tabs->tabBar()->tabRect(1).center());
    keys::Settle();
    EXPECT_EQ(dialog.ActivePage(), left);
    EXPECT_EQ(ui.beeps, 2);
    keys::Type("si");
    QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, {}, tabs->tabBar()->tabRect(1).center());
    EXPECT_EQ(dialog.ActivePage(), right);
    dialog.RefuseField(left->field); // a check of the whole finds the fault on the other page
    keys::Settle();
    EXPECT_EQ(dialog.ActivePage(), left);
    EXPECT_EQ(dialog.focusWidget(), left->field);
}

/// A field of its own above pages that tell about it, as a list with its details.
class SampleWithPages : public CTarvoDialog {
  public:
    SampleWithPages()
    {
        FormBuilder form(this);
        above = form.Text("Sopra", values[0]);
        tabs = new CTarvoTabs(this, this);
        left = new SamplePage(this, &values[1]);
        right = new SamplePage(this, &values[2]);
        tabs->AddPage(left, "&Sinistra");
        tabs->AddPage(right, "&Destra");
        form.Fill(tabs);
        AddCommand({"F7 - Comune", {}, {}, [this] { ++common; }, {}, {}});
        OnLostFocusEvent(above, [this] { return above->Value() != "no"; });
    }
    bool OnInitDialog() override { return tabs->Init(); }
    bool PreTranslateMessage(QKeyEvent *message) override
    {
        return tabs->PreTranslateMessage(message) || CTarvoDialog::PreTranslateMessage(message);
    }

    Text<20> values[3];
    CTextField *above;
    CTarvoTabs *tabs;
    SamplePage *left, *right;
    int common = 0;
};

TEST(TabsTest, PagesInsideAnotherDialogHaveTheSameKeys)
{
    ScriptedUserInterface ui;
    UserInterface *before = SetUserInterface(&ui);
    {
        SampleWithPages dialog;
        keys::Open(&dialog);
        EXPECT_EQ(dialog.focusWidget(), dialog.above);
        EXPECT_EQ(dialog.left->activated, 1);
        keys::Type("no");
        keys::Press(Qt::Key_2, Qt::AltModifier); // the bad field is none of the pages', and holds them all the same
        EXPECT_EQ(dialog.tabs->ActivePage(), dialog.left);
        EXPECT_EQ(ui.beeps, 1);
        keys::Type("si");
        keys::Press(Qt::Key_2, Qt::AltModifier);
        EXPECT_EQ(dialog.tabs->ActivePage(), dialog.right);
        EXPECT_EQ(dialog.focusWidget(), dialog.right->field);
        keys::Press(Qt::Key_F7);
        EXPECT_EQ(dialog.right->own_keys, 1);
        EXPECT_EQ(dialog.common, 0);
        dialog.right->may_leave = false;
        keys::Press(Qt::Key_PageUp, Qt::ControlModifier);
        EXPECT_EQ(dialog.tabs->ActivePage(), dialog.right);
        EXPECT_EQ(dialog.left->activated, 1);
        dialog.right->may_leave = true;
        keys::Press(Qt::Key_S, Qt::AltModifier);
        EXPECT_EQ(dialog.tabs->ActivePage(), dialog.left);
        EXPECT_EQ(dialog.left->activated, 2);
    }
    SetUserInterface(before);
}

TEST(TabsTest, WhoWalksDownAListStaysInItWhenThePageChanges)
{
    Text<20> values[2];
    CTarvoDialog dialog;
    FormBuilder form(&dialog);
    auto *list = new CSpreadSheet(&dialog);
    list->SetColumns({{.title = "Numero", .locked = true}});
    list->SetRowCount(3);
    auto *tabs = new CTarvoTabs(&dialog, &dialog);
    auto *left = new SamplePage(&dialog, &values[0]), *right = new SamplePage(&dialog, &values[1]);
    tabs->AddPage(left, "Sinistra");
    tabs->AddPage(right, "Destra");
    form.Fill(list);
    form.Fill(tabs);
    keys::Open(&dialog);
    ASSERT_TRUE(tabs->Init());
    list->setFocus();
    list->SetActiveCell(1, 1);

    const auto press = [&](int key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::AltModifier);
        EXPECT_TRUE(tabs->PreTranslateMessage(&event));
    };
    press(Qt::Key_2);
    EXPECT_EQ(tabs->ActivePage(), right);
    EXPECT_EQ(dialog.focusWidget(), list);
    keys::Press(Qt::Key_Down);
    EXPECT_EQ(list->ActiveRow(), 2);
    press(Qt::Key_2); // again: into the page
    EXPECT_EQ(dialog.focusWidget(), right->field);
    press(Qt::Key_1);
    EXPECT_EQ(dialog.focusWidget(), left->field);
}

} // namespace
