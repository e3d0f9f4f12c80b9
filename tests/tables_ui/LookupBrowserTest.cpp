#include "tables/ui/ClientiNew.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <gmock/gmock.h>

namespace {

struct SearchCase {
    const char *table;
    const char *typed;
    std::vector<std::string> codes; ///< of the rows listed, in their order
};

void PrintTo(const SearchCase &search, std::ostream *out)
{
    *out << search.table << " «" << search.typed << "»";
}

std::vector<std::string> Listed(const CLookupBrowser &browser)
{
    const auto *grid = browser.findChild<CSpreadSheet *>();
    std::vector<std::string> codes;
    for (long row = 1; row <= grid->RowCount(); ++row) codes.push_back(grid->Text(row, 1));
    return codes;
}

class LookupBrowserTest : public TablesWindowTest {};

TEST_P(LookupBrowserTest, SearchKnowsCodesWordsAndAccents)
{
    const SearchCase cases[] = {
        {"clienti", "4", {"4", "40"}}, // the beginning of the code, not any digit in it
        {"clienti", "parma edil", {"1"}}, {"clienti", "NICOLO", {"29"}},
        {"clienti", "scannavò", {"32"}},  {"clienti", "tavoliere d'oro", {"24"}},
        {"clienti", "0940613", {"1"}},    {"clienti", "zzz", {}},
        {"nazioni", "ital", {"IT"}},      {"clienti", "ferriere", {}},
        {"province", "carbonia", {}},
    };
    for (const SearchCase &search : cases) {
        SCOPED_TRACE(testing::PrintToString(search));
        CLookupBrowser browser(nullptr, *FindBrowse(search.table));
        browser.m_search = search.typed;
        keys::Open(&browser);
        EXPECT_THAT(Listed(browser), testing::UnorderedElementsAreArray(search.codes));
    }
}

TEST_P(LookupBrowserTest, ArrowsMoveInTheListWhileTheFocusStaysInTheSearch)
{
    CPagamentiBr browser;
    keys::Open(&browser);
    QLineEdit *search = Field(browser, "Cerca");
    const auto *grid = browser.findChild<CSpreadSheet *>();
    EXPECT_EQ(QApplication::focusWidget(), search);
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Up);
    EXPECT_EQ(grid->ActiveRow(), 2);
    keys::Press(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(grid->ActiveRow(), grid->RowCount());
    keys::Press(Qt::Key_Home, Qt::ControlModifier);
    keys::Press(Qt::Key_Down);
    EXPECT_EQ(QApplication::focusWidget(), search);
    const long second = std::stol(grid->Text(2, 1));
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(browser.m_codice, second);
}

TEST_P(LookupBrowserTest, StandsOnTheGivenRecordEvenIfCeasedAndF5ShowsTheOthers)
{
    CClientiBr browser;
    browser.m_codice = 26; // ceased in 2024
    keys::Open(&browser);
    const auto *grid = browser.findChild<CSpreadSheet *>();
    EXPECT_EQ(grid->Text(grid->ActiveRow(), 1), "26");
    EXPECT_EQ(grid->RowCount(), 40);

    CFornitoriBr others;
    keys::Open(&others);
    EXPECT_TRUE(Shows(others, "24 di 25, un'altra con F5"));
    keys::Press(Qt::Key_F5);
    EXPECT_TRUE(Shows(others, "25 righe"));
    keys::Press(Qt::Key_F5);
    EXPECT_TRUE(Shows(others, "24 di 25, un'altra con F5"));
}

TEST_P(LookupBrowserTest, NewRecordMadeFromTheListIsTheChosenOne)
{
    CClientiBr browser;
    keys::Open(&browser);
    keys::WhenNextWindowOpens([&](QWidget *editor) {
        EnterTo("Ragione sociale");
        keys::Type("Nata dall'elenco");
        EnterTo("Partita IVA");
        keys::Type("01234567897");
        keys::Press(Qt::Key_F2);
        EXPECT_FALSE(editor->isVisible());
    });
    keys::Press(Qt::Key_F3);
    EXPECT_FALSE(browser.isVisible());
    EXPECT_EQ(browser.m_codice, 41);
}

TEST_P(LookupBrowserTest, WhatWasTypedGoesOnToTheNewRecord)
{
    struct Typed {
        const char *typed, *code, *name;
    };
    const Typed cases[] = {{"nata dall'elenco", "41", "nata dall'elenco"},
                           {"77", "77", ""},
                           {"4", "41", ""}, // taken
                           {"0521/77", "41", ""},
                           {"01234567897", "41", ""}};
    for (const Typed &typed : cases) {
        SCOPED_TRACE(typed.typed);
        CClientiBr browser;
        keys::Open(&browser);
        keys::Type(typed.typed);
        keys::WhenNextWindowOpens([&](QWidget *editor) {
            EXPECT_EQ(editor->windowTitle().toStdString(), "Clienti");
            EXPECT_EQ(TextOf(*editor, "Codice"), typed.code);
            EXPECT_EQ(TextOf(*editor, "Ragione sociale"), typed.name);
            keys::Press(Qt::Key_Escape);
        });
        keys::Press(Qt::Key_F3);
        EXPECT_TRUE(browser.isVisible());
        EXPECT_EQ(TextOf(browser, "Cerca"), typed.typed) << "left without a record, the list is as it was";
    }
}

TEST_P(LookupBrowserTest, NewRecordOfAnotherMasterIsNotTakenForOneOfTheList)
{
    CContiBr accounts;
    accounts.m_mas = 310;
    keys::Open(&accounts);
    keys::WhenNextWindowOpens([&](QWidget *editor) {
        BackTo("Mastro");
        keys::Type("300");
        EnterTo("Conto");
        keys::Type("88");
        EnterTo("Descrizione");
        keys::Type("Di un altro mastro");
        keys::Press(Qt::Key_F2);
        EXPECT_FALSE(editor->isVisible());
    });
    keys::Press(Qt::Key_F3);
    EXPECT_EQ(Value("SELECT con_desc FROM admin.conti WHERE con_mas = 300 AND con_codice = 88"), "Di un altro mastro");
    EXPECT_TRUE(accounts.isVisible());
    EXPECT_TRUE(Shows(accounts, "Registrato 300.88, che non è di questo elenco"));
    EXPECT_EQ(accounts.m_con, 0);
}

TEST_P(LookupBrowserTest, EditedRecordStaysSelectedUnderItsNewName)
{
    CClientiBr browser;
    browser.m_search = "edilnova";
    keys::Open(&browser);
    keys::WhenNextWindowOpens([&](QWidget *) {
        EnterTo("Ragione sociale");
        keys::Type("Edilnova Due S.r.l.");
        keys::Press(Qt::Key_F2);
    });
    keys::Press(Qt::Key_F4);
    const auto *grid = browser.findChild<CSpreadSheet *>();
    EXPECT_EQ(grid->Text(grid->ActiveRow(), 2), "Edilnova Due S.r.l.");
    ComeBack(&browser);
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(browser.m_codice, 1);
}

TEST_P(LookupBrowserTest, AccountsAreLimitedToTheirMaster)
{
    CContiBr accounts;
    accounts.m_mas = 310;
    keys::Open(&accounts);
    EXPECT_TRUE(Shows(accounts, "5 righe"));
    keys::Type("4");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(accounts.m_con, 4);

    CSottoconBr all;
    keys::Open(&all);
    keys::Type("310.1.3");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(all.m_mas, 310);
    EXPECT_EQ(all.m_con, 1);
    EXPECT_EQ(all.m_sot, 3);
}

INSTANTIATE_TEST_SUITE_P(Engines, LookupBrowserTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
