#include "schedule/ui/EstrattiContoScadenze.h"
#include "schedule/ui/ScadenzeSt.h"
#include "schedule/ui/ScadenzeTotali.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/print/Crystal.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvolumera/SaExceptionDisplay.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Takes the place of the preview and keeps what was printed.
class PrintWatch : public ReportPresenter {
  public:
    PrintWatch() : before_(SetReportPresenter(this)) {}
    ~PrintWatch() override { SetReportPresenter(before_); }
    PrintWatch(const PrintWatch &) = delete;
    PrintWatch &operator=(const PrintWatch &) = delete;
    void Preview(const ReportRequest &request, const std::filesystem::path &) override
    {
        printed = request.layout.file + " " + request.selection;
    }
    bool Print(const std::string &, const std::filesystem::path &, bool) override { return false; }

    std::string printed;

  private:
    ReportPresenter *before_;
};

/// The views on 1 June 2026, a Monday, over instalments of customers 1 and 2 and of supplier 1.
class ScheduleViewsTest : public TablesWindowTest {
  protected:
    void SetUp() override
    {
        TablesWindowTest::SetUp();
        if (!database_) return;
        QApplication::setKeyboardInputInterval(0); // a letter chooses at once, without the one before
        CDateField::SetWorkingDate(user_.Today());
        Run("UPDATE admin.clienti1 SET cli_desc = CASE cli_codice WHEN 1 THEN 'Zeta' WHEN 2 THEN 'Alfa' ELSE 'M' END");
        Store("0, 1, 1, '2026-05-31', 100.10, 0, '7/A'"); // overdue since yesterday
        Store("0, 2, 1, '2026-06-03', 200.20, 0, '8/A'");
        Store("0, 3, 1, '2026-06-30', -50.05, 0, '9/A'");
        Store("0, 4, 2, '2025-12-31', 5, 0, '1/B'");
        Store("0, 5, 1, '2026-05-15', 70, 1, '6/A'"); // collected
        Store("1, 1, 1, '2026-06-04', 1000, 0, '77'");
    }
    void TearDown() override
    {
        CDateField::SetWorkingDate(0);
        TablesWindowTest::TearDown();
    }

    /// Side, number, counterpart, due date, amount, paid, invoice.
    void Store(const std::string &values)
    {
        Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_cli_for, sca_data, sca_importo, sca_pagato,"
            " sca_fattura, sca_anno) VALUES (" +
            values + ", 2026)");
    }

    /// The grid with a column of the title.
    static CSpreadSheet *GridWith(const QWidget &window, const char *title)
    {
        for (auto *grid : window.findChildren<CSpreadSheet *>())
            for (long column = 1; column <= grid->ColumnCount(); ++column)
                if (grid->ColumnAt(column).title == title) return grid;
        ADD_FAILURE() << "no grid with " << title;
        return nullptr;
    }
    /// The cells of a column, by its title.
    static std::vector<std::string> Cells(const QWidget &window, const char *grid_of, const char *title)
    {
        std::vector<std::string> cells;
        CSpreadSheet *grid = GridWith(window, grid_of);
        for (long column = 1; column <= grid->ColumnCount(); ++column)
            if (grid->ColumnAt(column).title == title)
                for (long row = 1; row <= grid->RowCount(); ++row) cells.push_back(grid->Text(row, column));
        return cells;
    }
    /// Goes to the field by Tab, types, and leaves it with Enter.
    static void TypeInto(const char *name, const QString &text)
    {
        for (int presses = 0; presses < 40 && Focused() != name; ++presses) keys::Press(Qt::Key_Tab);
        ASSERT_EQ(Focused(), name);
        text.isEmpty() ? keys::Press(Qt::Key_Delete) : keys::Type(text);
        keys::Press(Qt::Key_Return);
    }
    /// Runs the steps in the window that the key opens, and comes back.
    static void InWindowOf(QWidget *window, int key, const std::function<void(QWidget *)> &steps)
    {
        bool was_open = false;
        keys::WhenNextWindowOpens([&](QWidget *opened) {
            was_open = true;
            steps(opened);
        });
        keys::Press(key);
        EXPECT_TRUE(was_open);
        ComeBack(window);
    }
};

TEST_P(ScheduleViewsTest, DueListShowsPeriodsAndTheInstalmentsOfTheSelectedOne)
{
    CScadenzeSt list(nullptr);
    keys::Open(&list);
    EXPECT_TRUE(Shows(list, "5 scadenze in 3 periodi"));
    EXPECT_THAT(Cells(list, "Periodo", "Periodo"),
                ElementsAre("Scadute prima del 01/06/2026", "Settimana 23 del 2026", "Settimana 27 del 2026"));
    EXPECT_THAT(Cells(list, "Periodo", "Saldo progressivo"), ElementsAre("105,10", "-694,70", "-744,75"));
    EXPECT_THAT(Cells(list, "Fattura", "Fattura"), ElementsAre("1/B", "7/A")) << "the overdue ones, which come first";
    keys::Press(Qt::Key_Down);
    EXPECT_THAT(Cells(list, "Fattura", "Fattura"), ElementsAre("8/A", "77"));
    EXPECT_THAT(Cells(list, "Fattura", "Da pagare"), ElementsAre("", "1.000,00"));

    TypeInto("Scadenze di", "F"); // suppliers
    EXPECT_THAT(Cells(list, "Periodo", "Da pagare"), ElementsAre("1.000,00"));
    TypeInto("Scadenze di", "C"); // both
    TypeInto("per", "M");
    TypeInto("Dal giorno", "");
    EXPECT_THAT(Cells(list, "Periodo", "Periodo"), ElementsAre("Dicembre 2025", "Maggio 2026", "Giugno 2026"));
    TypeInto("al giorno", "010125");
    EXPECT_TRUE(Shows(list, "Nessuna scadenza aperta"));
    EXPECT_THAT(Cells(list, "Fattura", "Fattura"), ElementsAre());
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(list.isVisible());
}

TEST_P(ScheduleViewsTest, DueListRefusesAPeriodTheWrongWayRound)
{
    CScadenzeSt list(nullptr);
    keys::Open(&list);
    TypeInto("al giorno", "310526");
    EXPECT_EQ(Focused(), "al giorno");
    EXPECT_TRUE(Shows(list, "La seconda data è prima della prima."));
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_THAT(Cells(list, "Periodo", "Periodo"), testing::SizeIs(3)) << "the list stays";
}

TEST_P(ScheduleViewsTest, InstalmentIsOpenedFromTheDueList)
{
    CScadenzeSt list(nullptr);
    keys::Open(&list);
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Return); // into the instalments
    keys::Press(Qt::Key_Down);   // the supplier's
    std::string title;
    InWindowOf(&list, Qt::Key_F2, [&](QWidget *editor) {
        title = editor->windowTitle().toStdString();
        Run("UPDATE admin.scadenze SET sca_importo = 999 WHERE sca_relaz = 1");
        keys::Press(Qt::Key_Escape);
    });
    EXPECT_THAT(title, HasSubstr("ornitor"));
    EXPECT_THAT(Cells(list, "Periodo", "Da pagare"), ElementsAre("", "999,00", "")) << "read again";
    EXPECT_THAT(Cells(list, "Fattura", "Fattura"), ElementsAre("8/A", "77"));
    EXPECT_EQ(GridWith(list, "Fattura")->ActiveRow(), 2);
}

TEST_P(ScheduleViewsTest, DueListIsPrintedAndExportedWhole)
{
    CScadenzeSt list(nullptr);
    keys::Open(&list);
    PrintWatch watch;
    keys::Press(Qt::Key_F9);
    EXPECT_THAT(watch.printed, testing::StartsWith("scadenzario.rpt "));
    EXPECT_THAT(watch.printed, HasSubstr("Date(2026,7,31)"));
    const std::filesystem::path file = Folder() / "tutte.csv";
    user_.ExpectFiles({file});
    user_.Expect("Esportazione conclusa con 5 righe!");
    keys::Press(Qt::Key_E, Qt::ControlModifier);
    EXPECT_THAT(ReadWholeFile(file, 100'000),
                testing::AllOf(HasSubstr(";1/B;"), HasSubstr(";9/A;"), HasSubstr(";77;")));
}

TEST_P(ScheduleViewsTest, AgingLeadsToTheStatement)
{
    CScadenzeTotali aging(nullptr);
    keys::Open(&aging);
    EXPECT_THAT(Cells(aging, "Nome", "Nome"), ElementsAre("Alfa", "Zeta"));
    EXPECT_THAT(Cells(aging, "Nome", "1-30 gg"), ElementsAre("", "100,10"));
    EXPECT_THAT(Cells(aging, "Nome", "Oltre 120 gg"), ElementsAre("5,00", ""));
    EXPECT_THAT(Cells(aging, "Nome", "A scadere"), ElementsAre("", "150,15"));
    TypeInto("Ordine", "Per i"); // by what is overdue
    EXPECT_THAT(Cells(aging, "Nome", "Nome"), ElementsAre("Zeta", "Alfa"));
    TypeInto("situazione al", "310526");
    EXPECT_THAT(Cells(aging, "Nome", "Totale"), ElementsAre("5,00", "250,25")) << "due that very day, not overdue";
    aging.findChild<CSpreadSheet *>()->setFocus();
    keys::Press(Qt::Key_End, Qt::ControlModifier); // the last row: Zeta
    InWindowOf(&aging, Qt::Key_F2, [&](QWidget *statement) {
        EXPECT_EQ(statement->windowTitle(), "Estratti conto scadenze");
        EXPECT_THAT(Cells(*statement, "Fattura", "Fattura"), ElementsAre("7/A", "8/A", "9/A"));
        EXPECT_THAT(Cells(*statement, "Fattura", "Scaduto"), ElementsAre("", "", "")) << "on the day of the aging";
        keys::Press(Qt::Key_Escape);
    });
    PrintWatch watch;
    keys::Press(Qt::Key_F9);
    EXPECT_THAT(watch.printed, HasSubstr("anzianita.rpt {scadenze.sca_relaz} = 0"));
    TypeInto("Saldi di", "F");
    EXPECT_THAT(Cells(aging, "Nome", "Totale"), ElementsAre("1.000,00"));
}

TEST_P(ScheduleViewsTest, StatementIsOfOneCounterpartUntilARangeIsMade)
{
    CEstrattiContoScadenze statement(nullptr);
    keys::Open(&statement);
    EXPECT_TRUE(Shows(statement, "4 scadenze, aperte 255,25, scadute 105,10"));
    TypeInto("dal codice", "1");
    EXPECT_EQ(TextOf(statement, "al codice"), "1");
    EXPECT_THAT(Cells(statement, "Fattura", "Saldo"), ElementsAre("100,10", "300,30", "250,25"));
    TypeInto("al codice", "2");
    EXPECT_THAT(Cells(statement, "Fattura", "Saldo"), ElementsAre("100,10", "300,30", "250,25", "5,00"));
    TypeInto("Scadenze", "T"); // the collected one too
    EXPECT_THAT(Cells(statement, "Fattura", "Stato"),
                ElementsAre("incassata", "scaduta", "aperta", "aperta", "scaduta"));
    TypeInto("dovute dal", "010626");
    EXPECT_THAT(Cells(statement, "Fattura", "Fattura"), ElementsAre("8/A", "9/A"));
    PrintWatch watch;
    keys::Press(Qt::Key_F9);
    EXPECT_EQ(watch.printed, "estrattoconto.rpt {scadenze.sca_relaz} = 0 and {scadenze.sca_cli_for} >= 1 and "
                             "{scadenze.sca_cli_for} <= 2 and {scadenze.sca_data} >= Date(2026,6,1)");
    TypeInto("Conti di", "F"); // the codes were customers'
    EXPECT_EQ(TextOf(statement, "dal codice"), "");
    EXPECT_THAT(Cells(statement, "Fattura", "Fattura"), ElementsAre("77"));
}

TEST_P(ScheduleViewsTest, ListThatCannotBeReadStandsEmpty)
{
    CEstrattiContoScadenze statement(nullptr);
    keys::Open(&statement);
    Run("ALTER TABLE admin.clienti1 RENAME COLUMN cli_desc TO cli_nome");
    try {
        ForEachStatementLine(Cmd(), {.open_only = false, .reference_day = user_.Today()}, [](StatementLine &&) {});
    } catch (const SAException &fault) {
        user_.Expect(DescribeError(fault));
    }
    TypeInto("Scadenze", "T");
    EXPECT_THAT(Cells(statement, "Fattura", "Fattura"), ElementsAre());
}

INSTANTIATE_TEST_SUITE_P(Engines, ScheduleViewsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
