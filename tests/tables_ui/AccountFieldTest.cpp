#include "tables/ui/AccountField.h"
#include "tests/tables_ui/TablesWindowTest.h"

namespace {

class AccountDialog : public CTarvoDialog {
  public:
    AccountDialog()
    {
        FormBuilder form(this);
        account = AddAccount(form, this, "Conto", m_mas, m_con, m_sot);
        form.Text("Nota", m_note);
    }
    bool OnInitDialog() override
    {
        ShowFields();
        return true;
    }
    AccountKey Read()
    {
        ReadFields();
        return {m_mas, m_con, m_sot};
    }

    long m_mas = 0, m_con = 0, m_sot = 0;
    Text<10> m_note;
    AccountFields account;
};

struct TypedAccount {
    const char *typed;
    AccountKey account; ///< none: refused
    const char *description;
};

class AccountFieldTest : public TablesWindowTest {};

TEST_P(AccountFieldTest, WholeAccountTypedInTheFirstFieldFillsAllThree)
{
    const TypedAccount cases[] = {
        {"310.1.3", {310, 1, 3}, "Telefonia fissa e internet"},
        {"310 1 3", {310, 1, 3}, "Telefonia fissa e internet"},
        {"310/1/3", {310, 1, 3}, "Telefonia fissa e internet"},
        {"310.2", {310, 2, 0}, "Servizi commerciali"},
        {"310", {310, 0, 0}, "Servizi"},
        {"energia elettrica", {310, 1, 1}, "Energia elettrica"},
        {"150.1.4", {150, 1, 4}, "Caseificio Prato Lungo Soc. coop. agricola"},
        {"250.1.3", {250, 1, 3}, "Bulloneria Tresilva S.r.l."},
        {"310.1.99", {}, ""},
        {"310.1.3.4", {}, ""},
        {"999", {}, ""},
        {"150.1.4000", {}, ""},
    };
    for (const TypedAccount &typed : cases) {
        SCOPED_TRACE(typed.typed);
        AccountDialog dialog;
        keys::Open(&dialog);
        user_.beeps = 0;
        keys::Type(typed.typed);
        keys::Press(Qt::Key_Return);
        if (typed.account.mas == 0) {
            EXPECT_EQ(user_.beeps, 1);
            EXPECT_EQ(QApplication::focusWidget(), dialog.account.mas);
        } else {
            EXPECT_EQ(user_.beeps, 0);
            EXPECT_EQ(AccountText(dialog.Read()), AccountText(typed.account));
            EXPECT_TRUE(Shows(dialog, typed.description));
        }
    }
}

TEST_P(AccountFieldTest, PartsDependOnEachOther)
{
    AccountDialog dialog;
    dialog.m_mas = 310;
    dialog.m_con = 5;
    dialog.m_sot = 2;
    keys::Open(&dialog);
    EXPECT_TRUE(Shows(dialog, "Spese su incassi e insoluti"));

    keys::Type("170"); // has no account 5
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(AccountText(dialog.Read()), "170");
    keys::Type("5");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(QApplication::focusWidget(), dialog.account.con);
    keys::Type("2");
    keys::Press(Qt::Key_Return);
    keys::Type("fatture");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(AccountText(dialog.Read()), "170.2.2");
    EXPECT_TRUE(Shows(dialog, "Banca c/anticipi su fatture"));
}

TEST_P(AccountFieldTest, LookupOfTheSubAccountBringsItsMasterAlongOrTheCounterparts)
{
    AccountDialog dialog;
    keys::Open(&dialog);
    keys::Press(Qt::Key_Return);
    keys::Press(Qt::Key_Return);
    keys::WhenNextWindowOpens([&](QWidget *browser) {
        EXPECT_EQ(browser->windowTitle().toStdString(), "Sottoconti");
        keys::Type("telefonia mob");
        keys::Press(Qt::Key_Return);
    });
    keys::Press(Qt::Key_F4);
    EXPECT_EQ(AccountText(dialog.Read()), "310.1.4");
    ComeBack(&dialog);

    dialog.account.group->SetValue({250, 0, 0});
    keys::WhenNextWindowOpens([&](QWidget *browser) {
        EXPECT_EQ(browser->windowTitle().toStdString(), "Fornitori");
        keys::Type("tresilva");
        keys::Press(Qt::Key_Return);
    });
    keys::Press(Qt::Key_F4);
    EXPECT_EQ(AccountText(dialog.Read()), "250.1.3");
    EXPECT_TRUE(Shows(dialog, "Bulloneria Tresilva S.r.l."));
}

INSTANTIATE_TEST_SUITE_P(Engines, AccountFieldTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
