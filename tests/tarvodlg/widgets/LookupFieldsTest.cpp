#include "sqlapi/SAException.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/TarvoDialog.h"
#include "tarvolumera/SaExceptionDisplay.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QTest>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <gtest/gtest.h>
#include <map>

namespace {

const SAException kBroken(SA_DBMS_API_Error, 1, "disco rotto");

class FakeLookup : public CodeLookup {
  public:
    std::optional<std::string> Describe(const std::string &code) override
    {
        if (is_broken) throw kBroken;
        EXPECT_TRUE(!code.empty() && code != "0") << "never to be asked";
        const auto row = rows.find(code);
        return row == rows.end() ? std::nullopt : std::optional(row->second);
    }

    std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) override
    {
        if (is_broken) throw kBroken;
        if (is_faulty) throw std::runtime_error("file guasto");
        std::vector<LookupMatch> matches;
        for (const auto &[code, description] : rows)
            if (matches.size() < max &&
                (code.starts_with(typed) || ToUpper(description).find(ToUpper(typed)) != std::string::npos))
                matches.push_back({code, description});
        return matches;
    }

    std::optional<std::string> Browse(CWnd *, const std::string &code_or_text) override
    {
        browsed.push_back(code_or_text);
        return chosen;
    }

    std::map<std::string, std::string> rows = {{"12", "Rossi S.r.l."},
                                               {"120", "Bianchi & Figli"},
                                               {"121", "Rossini Fioreria"},
                                               {"7", "Verdi Trasporti"},
                                               {"4500", "Neri"}};
    std::vector<std::string> browsed;
    std::optional<std::string> chosen;
    bool is_broken = false, is_faulty = false;
};

class LookupFieldTest : public testing::Test {
  protected:
    LookupFieldTest() : before_(SetUserInterface(&ui))
    {
        auto *layout = new QVBoxLayout(&form);
        for (QWidget *widget : {static_cast<QWidget *>(code), static_cast<QWidget *>(description),
                                static_cast<QWidget *>(text), static_cast<QWidget *>(neighbour)})
            layout->addWidget(widget);
        code->SetLookup(lookup, description);
        keys::Open(&form);
        code->setFocus();
    }
    ~LookupFieldTest() override
    {
        SetUserInterface(before_);
        EXPECT_EQ(ui.Faults(), "");
    }

    /// The codes in the open list; empty when none is open.
    std::string Offered()
    {
        std::string codes;
        for (QTreeWidget *list : form.findChildren<QTreeWidget *>())
            for (int i = 0; list->isVisible() && i < list->topLevelItemCount(); ++i)
                codes += (codes.empty() ? "" : " ") + FromQt(list->topLevelItem(i)->text(0));
        return codes;
    }

    void Replace(const char *typed)
    {
        code->selectAll();
        keys::Type(typed);
    }

    ScriptedUserInterface ui;
    std::shared_ptr<FakeLookup> lookup = std::make_shared<FakeLookup>();
    QWidget form;
    CCodeField *code = new CCodeField;
    QLabel *description = new QLabel;
    CTextField *text = new CTextField(10);
    QLineEdit *neighbour = new QLineEdit;

  private:
    UserInterface *before_;
};

TEST_F(LookupFieldTest, PartOfTheNameThatOneRowHasIsItsCode)
{
    keys::Type("traspor");
    EXPECT_EQ(Offered(), "7");
    EXPECT_TRUE(code->Complete());
    EXPECT_EQ(code->Value(), 7);
    EXPECT_EQ(FromQt(description->text()), "Verdi Trasporti");
    EXPECT_EQ(Offered(), "") << "the list closes with the answer";
    EXPECT_TRUE(code->IsModified());
}

TEST_F(LookupFieldTest, PartOfSeveralNamesIsRefused)
{
    code->SetValue(7);
    Replace("rossi");
    EXPECT_EQ(Offered(), "12 121");
    EXPECT_FALSE(code->Complete());
    EXPECT_EQ(FromQt(code->text()), "rossi");
    EXPECT_EQ(FromQt(description->text()), "");
}

TEST_F(LookupFieldTest, SaysWhyACodeIsRefused)
{
    for (const auto &[typed, reason] :
         {std::pair("999", "Codice sconosciuto"), std::pair("zz", "Codice sconosciuto"),
          std::pair("99999999999", "Codice sconosciuto"), // more than a code can have
          std::pair("rossi", "Più voci corrispondono: F4 per scegliere"), std::pair("12", "")}) {
        Replace(typed);
        EXPECT_EQ(code->Complete(), *reason == '\0');
        EXPECT_EQ(code->Reason(), reason) << typed;
    }
    ui.Expect(DescribeError(kBroken));
    Replace("7");
    lookup->is_broken = true;
    EXPECT_FALSE(code->Complete());
    EXPECT_EQ(code->Reason(), "") << "nobody knows whether there is one; the error was shown";
}

TEST_F(LookupFieldTest, FaultWhileTypingIsShownAndTypingGoesOn)
{
    lookup->is_faulty = true;
    ui.Expect("file guasto");
    keys::Type("v");
    EXPECT_EQ(Offered(), "");
    lookup->is_faulty = false;
    keys::Type("e");
    EXPECT_EQ(Offered(), "7");
}

TEST_F(LookupFieldTest, ArrowsChooseAndTabTakes)
{
    keys::Type("rossi");
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Down);
    EXPECT_TRUE(code->hasFocus());
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(code->Value(), 121);
    EXPECT_EQ(FromQt(description->text()), "Rossini Fioreria");
    EXPECT_EQ(Offered(), "");
    EXPECT_TRUE(code->IsModified());
    EXPECT_FALSE(code->hasFocus()) << "Tab goes on as ever";
}

TEST_F(LookupFieldTest, EnterAndAClickTake)
{
    keys::Type("rossi");
    keys::Press(Qt::Key_Up); // from nowhere up is the last row
    keys::Press(Qt::Key_PageUp);
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(code->Value(), 12);

    Replace("bian");
    auto *list = form.findChild<QTreeWidget *>();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->topLevelItem(0)).center());
    EXPECT_EQ(code->Value(), 120);
    EXPECT_EQ(Offered(), "");
    EXPECT_TRUE(code->hasFocus());
}

TEST_F(LookupFieldTest, HighlightedRowCountsWhenACommandLeavesTheField)
{
    keys::Type("1");
    EXPECT_EQ(Offered(), "12 120 121");
    keys::Press(Qt::Key_Down);
    EXPECT_TRUE(code->Complete());
    EXPECT_EQ(code->Value(), 12);
}

TEST_F(LookupFieldTest, DigitsAreTheCodeItselfHoweverTheListLooks)
{
    keys::Type("0012");
    EXPECT_TRUE(code->Complete());
    EXPECT_EQ(FromQt(code->text()), "12");
    EXPECT_EQ(FromQt(description->text()), "Rossi S.r.l.");
    for (const char *unknown : {"70", "45", "99999999999"}) {
        Replace(unknown);
        EXPECT_FALSE(code->Complete()) << unknown;
        EXPECT_EQ(FromQt(description->text()), "") << unknown;
    }
    Replace("0");
    EXPECT_TRUE(code->Complete()) << "no code is no mistake";
    EXPECT_EQ(FromQt(code->text()), "");
}

TEST_F(LookupFieldTest, EscClosesTheListAndNothingElse)
{
    keys::Type("rossi");
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Escape);
    EXPECT_EQ(Offered(), "");
    EXPECT_EQ(FromQt(code->text()), "rossi");
    EXPECT_FALSE(code->Complete()) << "the highlight is gone with the list";
}

TEST_F(LookupFieldTest, InADialogTheListHasItsKeysFirst)
{
    CTarvoDialog dialog;
    dialog.layout()->addWidget(code);
    dialog.layout()->addWidget(neighbour);
    keys::Open(&dialog);
    code->setFocus();
    keys::Type("rossi");
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Down);
    EXPECT_TRUE(code->hasFocus()) << "elsewhere Down goes on to the next field";
    keys::Press(Qt::Key_Escape);
    EXPECT_TRUE(dialog.isVisible()) << "elsewhere Esc closes";
    Replace("rossi");
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(code->Value(), 12);
    EXPECT_TRUE(neighbour->hasFocus());
    EXPECT_EQ(ui.beeps, 0);
}

TEST_F(LookupFieldTest, ListClosesWhenTheFocusGoes)
{
    keys::Type("rossi");
    neighbour->setFocus();
    EXPECT_EQ(Offered(), "");
}

TEST_F(LookupFieldTest, FourthKeyOpensTheBrowserOnWhatIsTyped)
{
    keys::Type("ro");
    lookup->chosen = "121";
    keys::Press(Qt::Key_F4);
    EXPECT_EQ(lookup->browsed, std::vector<std::string>{"ro"});
    EXPECT_EQ(code->Value(), 121);
    EXPECT_EQ(FromQt(description->text()), "Rossini Fioreria");
    EXPECT_TRUE(code->IsModified()) << "chosen counts as typed";

    code->SetModified(false);
    lookup->chosen.reset();
    QTest::mouseDClick(code, Qt::LeftButton);
    EXPECT_EQ(lookup->browsed.back(), "121");
    EXPECT_FALSE(code->IsModified()) << "cancelled";

    code->Protect(true);
    QTest::mouseDClick(code, Qt::LeftButton);
    EXPECT_EQ(lookup->browsed.size(), 2U);
}

TEST_F(LookupFieldTest, DialogMayOpenSomethingElse)
{
    int opened = 0;
    code->on_dbl_click = [&] {
        ++opened;
        throw kBroken;
    };
    code->SetLookup(lookup, description);
    ui.Expect(DescribeError(kBroken));
    keys::Press(Qt::Key_F4);
    EXPECT_EQ(opened, 1);
    EXPECT_TRUE(lookup->browsed.empty());
}

TEST_F(LookupFieldTest, DatabaseErrorIsShownAndCountsAsUnknown)
{
    lookup->is_broken = true;
    ui.Expect(DescribeError(kBroken));
    keys::Type("7");
    ui.Expect(DescribeError(kBroken));
    EXPECT_FALSE(code->Complete());
    ui.Expect(DescribeError(kBroken));
    code->SetValue(12);
    EXPECT_EQ(FromQt(description->text()), "");
    EXPECT_EQ(code->Value(), 12);
}

TEST_F(LookupFieldTest, DescriptionFollowsTheProgram)
{
    code->SetValue(7);
    EXPECT_EQ(FromQt(description->text()), "Verdi Trasporti");
    EXPECT_FALSE(code->IsModified());
    EXPECT_EQ(Offered(), "") << "nobody typed";
    lookup->rows["7"] = "Verdi Logistica";
    code->RefreshDescription();
    EXPECT_EQ(FromQt(description->text()), "Verdi Logistica");
    code->SetValue(0);
    EXPECT_EQ(FromQt(description->text()), "");
}

TEST_F(LookupFieldTest, WithoutALookupACodeIsDigits)
{
    CCodeField plain(&form);
    plain.show();
    plain.setFocus();
    keys::Type("1a2");
    EXPECT_EQ(plain.Value(), 12);
    EXPECT_TRUE(plain.Complete());
}

TEST_F(LookupFieldTest, TextCodesAreFoundTheSameWay)
{
    lookup->rows = {{"RM", "Roma"}, {"MI", "Milano"}, {"MO", "Modena"}};
    text->SetUpperCase(true);
    text->SetLookup(lookup, description);
    text->setFocus();
    keys::Type("mi");
    EXPECT_TRUE(text->Complete());
    EXPECT_EQ(text->Value(), "MI");
    EXPECT_EQ(FromQt(description->text()), "Milano");
    text->selectAll();
    keys::Type("mod");
    EXPECT_TRUE(text->Complete());
    EXPECT_EQ(text->Value(), "MO");
    text->selectAll();
    keys::Type("xx");
    EXPECT_FALSE(text->Complete());
}

TEST_F(LookupFieldTest, FieldMayGoWhileItsListIsOpen)
{
    keys::Type("rossi");
    ASSERT_NE(Offered(), "");
    delete code;
    neighbour->setFocus();
    keys::Press(Qt::Key_Down); // reaches nothing that is gone
    EXPECT_TRUE(neighbour->hasFocus());
}

} // namespace
