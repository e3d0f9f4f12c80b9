#include "demo/DemoJournal.h"
#include "desk/Companies.h"
#include "desk/ui/DeskSettings.h"
#include "desk/ui/DeskWindow.h"
#include "desk/ui/FunctionList.h"
#include "desk/ui/Opening.h"
#include "desk/ui/StartPage.h"
#include "desk/ui/WelcomePage.h"
#include "einvoice/InvoiceInbox.h"
#include "tarvodlg/widgets/Field.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tests/support/TestArchive.h"
#include "tests/support/WindowKeys.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <cstdlib>
#include <gmock/gmock.h>
#include <set>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A desk with functions that only note that they ran.
class DeskTest : public ArchiveTest {
  protected:
    void SetUp() override
    {
        ArchiveTest::SetUp();
        if (!database_) return;
        setenv("XDG_CONFIG_HOME", (Folder() / "config").c_str(), 1);
        setenv("XDG_DATA_HOME", (Folder() / "data").c_str(), 1);
        Make();
    }
    void TearDown() override
    {
        desk_.reset();
        ApplyTheme(Theme::Light);
        ArchiveTest::TearDown();
    }
    void Make()
    {
        const auto note = [this](const char *name) {
            return [this, name](QWidget *parent) {
                EXPECT_EQ(parent, desk_.get());
                ran_.emplace_back(name);
            };
        };
        desk_ = std::make_unique<CDesk>(
            std::vector<DeskFunction>{
                {"Tabelle", "Clienti", "clienti", "Ctrl+Shift+C", note("clienti"), "Anagrafica e condizioni"},
                {"Tabelle", "Fornitori", "fornitori", "Ctrl+Shift+F", note("fornitori"), "Anagrafica e causale"},
                {"Contabilità", "Stampa prima nota", "stampa", "Ctrl+P", note("stampa"), "Attività del mese"},
                {"Archivio", "Apri azienda...", "azienda", "Ctrl+O", note("apri"), "", false}},
            nullptr);
        keys::Open(desk_.get());
    }
    template <class Page>
    Page *Shown() const
    {
        for (Page *page : desk_->findChildren<Page *>())
            if (page->isVisible()) return page;
        return nullptr;
    }
    std::vector<std::string> Rows(const char *list) const
    {
        std::vector<std::string> captions;
        for (const CFunctionList *each : desk_->findChildren<CFunctionList *>()) {
            if (!each->isVisible() || each->accessibleName() != list) continue;
            for (const FunctionRow &row : each->Rows()) captions.push_back(FromQt(row.caption));
        }
        return captions;
    }
    void CloseCompany()
    {
        desk_.reset();
        lumera_db_target.clear();
        Make();
    }
    QAction *Action(const QString &caption) const
    {
        for (QAction *action : desk_->findChildren<QAction *>())
            if (action->text().remove(QLatin1Char('&')) == caption) return action;
        return nullptr;
    }
    std::string StartText() const
    {
        QString text;
        for (const QLabel *label : Shown<CStartPage>()->findChildren<QLabel *>())
            text += label->accessibleName().isEmpty() ? label->text() : label->accessibleName() + QLatin1Char('\n');
        return FromQt(text);
    }

    std::unique_ptr<CDesk> desk_;
    std::vector<std::string> ran_;
};

INSTANTIATE_TEST_SUITE_P(Engines, DeskTest, testing::Values(SAEngine::SQLite), TestEngineName);

TEST_P(DeskTest, AreasWithoutFunctionsDoNotAppear)
{
    EXPECT_THAT(Rows("Aree"), ElementsAre("Inizio", "Contabilità", "Tabelle", "Archivio"));
    EXPECT_NE(Shown<CStartPage>(), nullptr);
    EXPECT_EQ(FromQt(desk_->windowTitle()), CompanyTitle() + " - Lumera Contabilità");
}

TEST_P(DeskTest, AShortcutRunsItsFunctionFromAnywhere)
{
    keys::Press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    keys::Press(Qt::Key_K, Qt::ControlModifier);
    keys::Press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_THAT(ran_, ElementsAre("clienti", "stampa"));
}

TEST_P(DeskTest, AreasAndFunctionsAreReachedByKeys)
{
    keys::Press(Qt::Key_7, Qt::ControlModifier);
    EXPECT_THAT(Rows("Funzioni"), ElementsAre("Clienti", "Fornitori"));
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(ran_, ElementsAre("fornitori"));
    keys::Press(Qt::Key_2, Qt::ControlModifier); // an area that is not there
    EXPECT_THAT(Rows("Funzioni"), ElementsAre("Clienti", "Fornitori"));
    keys::Press(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_NE(Shown<CStartPage>(), nullptr);
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Return);
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(ran_, ElementsAre("fornitori", "stampa"));
}

TEST_P(DeskTest, TheFilterFindsByAnyPartWhateverCaseAndAccents)
{
    const auto found = [this](const char *typed) {
        keys::Press(Qt::Key_K, Qt::ControlModifier);
        keys::Type(typed);
        return Rows("Funzioni");
    };
    EXPECT_THAT(found("NITO"), ElementsAre("Fornitori"));
    EXPECT_THAT(found("attivita"), ElementsAre("Stampa prima nota"));
    EXPECT_THAT(found("anagr tab"), ElementsAre("Clienti", "Fornitori"));
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(ran_, ElementsAre("fornitori"));
    EXPECT_THAT(found("zzz"), IsEmpty());
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(ran_.size(), 1U);
    keys::Press(Qt::Key_Escape);
    EXPECT_NE(Shown<CStartPage>(), nullptr);
}

TEST_P(DeskTest, TheThemeChangesAtOnceAndIsRemembered)
{
    Action("Tema scuro")->trigger();
    keys::Settle();
    EXPECT_TRUE(IsDark());
    EXPECT_EQ(StoredTheme(), Theme::Dark);
    Action("Tema chiaro")->trigger();
    keys::Settle();
    EXPECT_FALSE(IsDark());
    EXPECT_EQ(StoredTheme(), Theme::Light);
}

TEST_P(DeskTest, TheStartPageFollowsTheArchive)
{
    EXPECT_THAT(StartText(), testing::HasSubstr("Nessuna scadenza aperta"));
    Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo)"
        " VALUES (1, 1, 2026, 1, '2026-06-03', 1234.5)");
    keys::Press(Qt::Key_F5);
    EXPECT_THAT(StartText(), testing::HasSubstr("1 scadenza entro sette giorni"));
    EXPECT_THAT(StartText(), testing::HasSubstr("€ 1.234,50"));
}

TEST_P(DeskTest, AnUnbalancedEntryOpensFromTheStartPageAndLeavesItWhenMended)
{
    FillDemoJournal(Cmd(), 20, 7);
    Run("UPDATE admin.pnota1 SET pno_dare = pno_avere + 5 WHERE pno_codice = 7");
    keys::Press(Qt::Key_F5);
    EXPECT_THAT(StartText(), testing::HasSubstr("differenza 5,00"));
    QString title;
    keys::WhenNextWindowOpens([&](QWidget *window) {
        title = window->windowTitle();
        Run("UPDATE admin.pnota1 SET pno_dare = pno_avere WHERE pno_codice = 7");
        keys::Press(Qt::Key_Escape);
    });
    Shown<CStartPage>()->setFocus();
    const auto is_there = [] { return QApplication::focusWidget()->accessibleName().startsWith("7  "); };
    for (int stops = 0; stops < 60 && !is_there(); ++stops) keys::Press(Qt::Key_Tab);
    ASSERT_TRUE(is_there());
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(FromQt(title), "Modifica Prima Nota");
    EXPECT_THAT(StartText(), testing::Not(testing::HasSubstr("differenza")));
    EXPECT_EQ(desk_->focusWidget(), Shown<CStartPage>());
}

TEST_P(DeskTest, WhatIsDueLeadsToTheInstalmentAndToTheListOfItsSide)
{
    Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo, sca_fattura)"
        " VALUES (1, 3, 2026, 1, '2026-06-03', 1234.5, '7/A')");
    keys::Press(Qt::Key_F5);
    const auto title_behind = [&](const std::string &words) {
        const auto is_there = [&] { return FromQt(QApplication::focusWidget()->accessibleName()).starts_with(words); };
        QString title;
        keys::WhenNextWindowOpens([&](QWidget *window) {
            title = window->windowTitle();
            Run("UPDATE admin.scadenze SET sca_importo = sca_importo + 1");
            keys::Press(Qt::Key_Escape);
        });
        keys::Open(desk_.get()); // without a window manager nobody gives it the focus back
        Shown<CStartPage>()->setFocus();
        for (int stops = 0; stops < 60 && !is_there(); ++stops) keys::Press(Qt::Key_Tab);
        EXPECT_TRUE(is_there()) << words;
        keys::Press(Qt::Key_Return);
        return FromQt(title);
    };
    EXPECT_EQ(title_behind(Value("SELECT for_desc FROM admin.fornito1 WHERE for_codice = 1")),
              "Modifica Scadenze Fornitori");
    EXPECT_THAT(StartText(), testing::HasSubstr("€ 1.235,50"));
    EXPECT_EQ(title_behind("1 scadenza entro sette giorni"), "Gestione Scadenze Fornitori");
    EXPECT_THAT(StartText(), testing::HasSubstr("€ 1.236,50"));
}

TEST_P(DeskTest, AWaitingInvoiceLeadsToItsPlaceInTheList)
{
    const std::filesystem::path samples = std::filesystem::path(LUMERA_SOURCE_DIR) / "samples" / "fatture";
    ImportInvoices(Cmd(), {samples / "IT02565617350_00A24.xml", samples / "IT19949417158_1C7Q2.xml"});
    keys::Press(Qt::Key_F5);
    const auto row_behind = [&](const char *words) {
        const auto is_there = [&] { return QApplication::focusWidget()->accessibleName().startsWith(words); };
        QString title, chosen;
        keys::WhenNextWindowOpens([&](QWidget *window) {
            title = window->windowTitle();
            const auto *list = window->findChild<CSpreadSheet *>();
            EXPECT_TRUE(QTest::qWaitFor([list] { return list->RowCount() == 2; }));
            chosen = ToQt(list->Text(list->ActiveRow(), 5));
            keys::Press(Qt::Key_Escape);
        });
        keys::Open(desk_.get()); // without a window manager nobody gives it the focus back
        Shown<CStartPage>()->setFocus();
        for (int stops = 0; stops < 60 && !is_there(); ++stops) keys::Press(Qt::Key_Tab);
        EXPECT_TRUE(is_there()) << words;
        keys::Press(Qt::Key_Return);
        EXPECT_EQ(FromQt(title), "Fatture Elettroniche Passive  [01/06/2026  -  01/06/2026]");
        return FromQt(chosen);
    };
    EXPECT_EQ(row_behind("Ristoro Padano"), "88");
    EXPECT_EQ(row_behind("Fatture ricevute da registrare"), "24/2026");
    EXPECT_EQ(desk_->focusWidget(), Shown<CStartPage>());
}

TEST_P(DeskTest, AFaultOfTheArchiveIsToldOnThePage)
{
    Run("DROP TABLE admin.scadenze");
    keys::Press(Qt::Key_F5);
    EXPECT_THAT(StartText(), testing::HasSubstr("Nell'archivio manca una tabella."));
    EXPECT_THAT(user_.shown, IsEmpty());
}

TEST_P(DeskTest, WithoutACompanyOnlyWhatNeedsNoneRuns)
{
    CloseCompany();
    EXPECT_THAT(Rows("Aziende"), ElementsAre("Nuova azienda...", "Apri azienda...", "Azienda dimostrativa"));
    keys::Press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    keys::Press(Qt::Key_7, Qt::ControlModifier);
    keys::Press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_THAT(ran_, ElementsAre("apri"));
}

TEST_P(DeskTest, AKnownCompanyOpensWithEnter)
{
    Companies().Remember(Archive(), "Brenzola", "2026-05-31 08:00");
    CloseCompany();
    keys::Press(Qt::Key_Return);
    EXPECT_NE(Shown<CStartPage>(), nullptr);
    EXPECT_EQ(FromQt(desk_->windowTitle()), CompanyTitle() + " - Lumera Contabilità");
    EXPECT_EQ(Companies().List().front().opened, "2026-06-01 00:00");
}

TEST_P(DeskTest, ACompanyThatIsGoneLeadsToTheChoiceWithTheReason)
{
    const std::string gone = (Folder() / "sparita").string();
    Companies().Remember(gone, "Sparita", "");
    CloseCompany();
    EXPECT_FALSE(desk_->Open(gone));
    QString reason;
    for (const QLabel *label : Shown<CWelcomePage>()->findChildren<QLabel *>())
        if (label->isVisible()) reason += label->text();
    EXPECT_THAT(FromQt(reason), testing::HasSubstr("Impossibile aprire l'archivio."));
    EXPECT_TRUE(Companies().List().front().is_missing);
}

TEST_P(DeskTest, EveryWindowOfTheProgramOpensByItsKeyAndLeavesWithEsc)
{
    desk_ = std::make_unique<CDesk>();
    keys::Open(desk_.get());
    const std::set<QString> no_windows = {"Verifica", "Copia di sicurezza...", "Stampa piano dei conti",
                                          "Importa saldi iniziali da Excel..."};
    for (const DeskFunction &function : DeskFunctions()) {
        if (no_windows.contains(function.caption)) continue;
        QString title;
        keys::WhenNextWindowOpens([&](QWidget *window) {
            title = window->windowTitle();
            keys::Press(Qt::Key_Escape);
        });
        keys::Open(desk_.get()); // without a window manager nobody gives it the focus back
        const auto key = QKeySequence(function.shortcut)[0];
        keys::Press(key.key(), key.keyboardModifiers());
        EXPECT_FALSE(title.isEmpty()) << FromQt(function.caption);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << FromQt(function.caption);
    }
    EXPECT_THAT(user_.shown, IsEmpty());
}

TEST_P(DeskTest, ANewCompanyIsTypedInWithItsVatNumberCheckedOnTheWay)
{
    bool was_refused = false;
    keys::WhenNextWindowOpens([&](QWidget *) {
        keys::Type("Rossi S.r.l.");
        keys::Press(Qt::Key_Return);
        keys::Type("01234567890");
        keys::Press(Qt::Key_Return);
        const auto *field = dynamic_cast<QLineEdit *>(QApplication::focusWidget());
        was_refused = user_.beeps == 1 && field != nullptr && field->text() == "01234567890";
        keys::Type("01234567897"); // in its place: the refused value is selected
        keys::Press(Qt::Key_F2);
    });
    EXPECT_TRUE(MakeNewCompany(desk_.get()));
    EXPECT_TRUE(was_refused);
    EXPECT_EQ(CompanyLine(), "Ditta : 00001 Rossi S.r.l.  P.IVA 01234567897");
    EXPECT_EQ(lumera_db_impo.dit_anno, 2026);
    EXPECT_EQ(lumera_db_folder, Folder() / "data" / "lumera" / "Rossi S.r.l");
    EXPECT_EQ(Companies().List().front().name, "Rossi S.r.l.");
}

TEST_P(DeskTest, AWindowLeftOnAScreenThatIsGoneComesBackInSight)
{
    desk_->setGeometry(90'000, 90'000, 640, 400);
    StoreWindow(desk_.get());
    QWidget again;
    RestoreWindow(&again);
    EXPECT_NE(QGuiApplication::screenAt(again.geometry().center()), nullptr);
    desk_->setGeometry(30, 40, 640, 400);
    StoreWindow(desk_.get());
    RestoreWindow(&again);
    EXPECT_EQ(again.geometry(), QRect(30, 40, 640, 400));
}

TEST(DeskFunctionsTest, EachHasItsPlaceItsIconAndAKeyOfItsOwn)
{
    std::set<QString> keys = {"Ctrl+K", "Ctrl+Home", "F5", "F1", "Ctrl+Q"}, captions, areas;
    for (const DeskArea &area : DeskAreas()) {
        areas.insert(area.name);
        EXPECT_FALSE(TarvoIcon(area.icon).isNull()) << FromQt(area.icon);
    }
    for (const DeskFunction &function : DeskFunctions()) {
        EXPECT_TRUE(areas.contains(function.area)) << FromQt(function.area);
        EXPECT_TRUE(captions.insert(function.caption).second) << FromQt(function.caption);
        EXPECT_TRUE(keys.insert(function.shortcut).second) << FromQt(function.shortcut);
        EXPECT_FALSE(QKeySequence(function.shortcut).toString().isEmpty()) << FromQt(function.caption);
        EXPECT_FALSE(TarvoIcon(function.icon).isNull()) << FromQt(function.icon);
        EXPECT_FALSE(function.hint.isEmpty());
    }
}

} // namespace
