#include "schedule/ui/CruscottoScadenze.h"

#include "schedule/ui/ScheduleChart.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/widgets/Fields.h"
#include "tests/support/TestArchive.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QLabel>
#include <fmt/format.h>
#include <fstream>

namespace {

using Side = CScheduleChart::Side;

class CruscottoScadenzeTest : public ArchiveTest {
  protected:
    void SetUp() override
    {
        ArchiveTest::SetUp();
        user_.today = DateToJulian(15, 11, 2026);
    }

    void Instalment(long side, const char *day, double amount, bool is_paid = false)
    {
        Run(fmt::format("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo,"
                        " sca_pagato) VALUES ({}, {}, 2026, 1, '{}', {}, {})",
                        side, ++number_, day, amount, is_paid ? 1 : 0));
    }
    void FillSchedule()
    {
        Instalment(0, "2026-10-01", 300);
        Instalment(0, "2026-11-20", 1000);
        Instalment(0, "2026-11-02", 50, true);
        Instalment(1, "2026-11-25", 400);
        Instalment(0, "2026-12-10", -200); // a credit note
    }

    static CScheduleChart *Chart(const QWidget &window)
    {
        for (QWidget *child : window.findChildren<QWidget *>())
            if (auto *chart = dynamic_cast<CScheduleChart *>(child)) return chart;
        return nullptr;
    }
    static CSpreadSheet *Months(const QWidget &window)
    {
        for (QTableView *table : window.findChildren<QTableView *>())
            if (auto *grid = dynamic_cast<CSpreadSheet *>(table); grid && grid->ColumnAt(1).title == "Mese")
                return grid;
        return nullptr;
    }
    static bool Shows(const QWidget &window, const QString &text)
    {
        for (const auto *label : window.findChildren<QLabel *>())
            if (label->isVisible() && label->text().contains(text)) return true;
        return false;
    }

    long number_ = 0;
};

TEST_P(CruscottoScadenzeTest, KeysMoveThroughTheMonthsAndReadThemOut)
{
    FillSchedule();
    CCruscottoScadenze window;
    keys::Open(&window);
    ASSERT_EQ(QApplication::focusWidget(), Chart(window));
    EXPECT_TRUE(Shows(window, "Prima di novembre 2026: da incassare 300,00 (1) di cui scadute 300,00"));
    keys::Press(Qt::Key_Right);
    EXPECT_EQ(Months(window)->ActiveRow(), 2);
    EXPECT_TRUE(Shows(window, "Novembre 2026: da incassare 1.000,00 (1), incassati 50,00; da pagare 400,00 (1);"
                              " saldo 600,00, progressivo 900,00"));
    keys::Press(Qt::Key_End);
    EXPECT_EQ(Months(window)->ActiveRow(), 7);
    keys::Press(Qt::Key_Right);
    EXPECT_EQ(Chart(window)->Selected(), 6) << "there is nothing behind the last month";
    keys::Press(Qt::Key_Home);
    EXPECT_EQ(Months(window)->ActiveRow(), 1);

    Months(window)->setFocus();
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Down);
    EXPECT_EQ(Chart(window)->Selected(), 2) << "the chart follows the figures";
    EXPECT_TRUE(Shows(window, "Dicembre 2026: da incassare -200,00 (1)"));
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_P(CruscottoScadenzeTest, EnterOpensTheInstalmentsOfTheMonth)
{
    FillSchedule();
    CCruscottoScadenze window;
    keys::Open(&window);
    const auto press_and_read = [&](int key) {
        std::string due;
        keys::WhenNextWindowOpens([&due](QWidget *list) {
            EXPECT_EQ(list->windowTitle(), "Scadenzario");
            for (QTableView *table : list->findChildren<QTableView *>()) {
                auto *grid = dynamic_cast<CSpreadSheet *>(table);
                if (!grid || grid->ColumnAt(1).title == "Periodo") continue;
                for (long row = 1; row <= grid->RowCount(); ++row) due += grid->Text(row, 1) + " ";
            }
            keys::Press(Qt::Key_Escape);
        });
        keys::Press(key);
        QApplication::setActiveWindow(&window); // as a window manager does
        keys::Settle();
        return due;
    };
    EXPECT_EQ(press_and_read(Qt::Key_F2), "01/10/2026 ");
    keys::Press(Qt::Key_Right);
    EXPECT_EQ(press_and_read(Qt::Key_Return), "20/11/2026 25/11/2026 ");
    keys::Press(Qt::Key_Right);
    Months(window)->setFocus();
    EXPECT_EQ(press_and_read(Qt::Key_Return), "10/12/2026 ");
}

TEST_P(CruscottoScadenzeTest, BarsStandOnTheZeroLineAndCreditNotesHangBelowIt)
{
    FillSchedule();
    CCruscottoScadenze window;
    keys::Open(&window);
    const CScheduleChart *chart = Chart(window);
    const QRectF november = chart->BarOf(1, Side::Collect), paid_out = chart->BarOf(1, Side::Pay),
                 december = chart->BarOf(2, Side::Collect);
    EXPECT_NEAR(november.height(), 2.5 * paid_out.height(), 0.5);
    EXPECT_NEAR(november.bottom(), paid_out.bottom(), 0.01);
    EXPECT_NEAR(december.top(), november.bottom(), 0.01);
    EXPECT_LT(november.right(), paid_out.left());
    EXPECT_TRUE(chart->BarOf(2, Side::Pay).isEmpty());
    EXPECT_TRUE(QRectF(chart->rect()).contains(november));

    EXPECT_EQ(chart->TipAt(november.center()),
              "Novembre 2026\nDa incassare 1.000,00 in 1 scadenza\nGià incassati 50,00");
    EXPECT_EQ(chart->TipAt(chart->BarOf(0, Side::Collect).center()),
              "Prima di novembre 2026\nDa incassare 300,00 in 1 scadenza\nScadute 300,00");
    EXPECT_EQ(chart->TipAt(QPointF(november.center().x(), 1)), "Novembre 2026\nSaldo 600,00, progressivo 900,00");
    EXPECT_EQ(chart->TipAt({1, 1}), "");
}

TEST_P(CruscottoScadenzeTest, MonthsAndCashAreReadWhenTheyAreLeft)
{
    FillSchedule();
    CCruscottoScadenze window;
    keys::Open(&window);
    std::vector<CAmountField *> fields;
    for (QWidget *child : window.findChildren<QWidget *>())
        if (auto *field = dynamic_cast<CAmountField *>(child)) fields.push_back(field);
    ASSERT_EQ(fields.size(), 2u);
    CTarvoDialog &dialog = window;
    dialog.SetFocusTo(fields[0]);
    keys::Type("2");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(Months(window)->RowCount(), 3);
    keys::Type("1000,50");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(Months(window)->Text(1, 9), "1.300,50");
    dialog.SetFocusTo(fields[0]);
    keys::Type("37");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(Months(window)->RowCount(), 3);
    EXPECT_EQ(user_.beeps, 1);
    keys::Type("3");
    keys::Press(Qt::Key_Tab);
    EXPECT_EQ(Months(window)->RowCount(), 4);
}

TEST_P(CruscottoScadenzeTest, AnEmptyScheduleHasNothingToPrintAndAFilledOnePrints)
{
    SetDefaultDestination({ReportTarget::Csv, Folder() / "cruscotto.csv"});
    CCruscottoScadenze window;
    keys::Open(&window);
    EXPECT_TRUE(Shows(window, "Nessun cliente è in ritardo."));
    EXPECT_FALSE(window.grab().isNull());
    keys::Press(Qt::Key_F9);
    EXPECT_FALSE(std::filesystem::exists(Folder() / "cruscotto.csv"));

    FillSchedule();
    keys::Press(Qt::Key_F5);
    EXPECT_EQ(Months(window)->RowCount(), 7);
    EXPECT_FALSE(Shows(window, "Nessun cliente è in ritardo."));
    keys::Press(Qt::Key_F9);
    std::ifstream file(Folder() / "cruscotto.csv");
    EXPECT_NE(std::string(std::istreambuf_iterator<char>(file), {}).find("Novembre 2026;1000,00"), std::string::npos);
    SetDefaultDestination({});
}

INSTANTIATE_TEST_SUITE_P(Engines, CruscottoScadenzeTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
