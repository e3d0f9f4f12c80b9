#include "schedule/CashOutlook.h"

#include "tarvodlg/base/Dates.h"
#include "tests/support/TestArchive.h"

#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

class CashOutlookTest : public ArchiveTest {
  protected:
    const long today_ = DateToJulian(15, 11, 2026);

    /// @param state  'a' open, 'p' paid, 't' paid but held in a slip
    void Instalment(long side, const char *day, double amount, char state = 'a', long counterpart = 1)
    {
        ++number_;
        Run(fmt::format("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo,"
                        " sca_pagato, sca_parked) VALUES ({}, {}, 2026, {}, '{}', {}, {}, {})",
                        side, number_, counterpart, day, amount, state == 'a' ? 0 : 1, state == 't' ? 1 : 0));
    }

    CashOutlook Read(long months, double cash = 0) { return ReadCashOutlook(Cmd(), {months, cash}, today_); }

    /// "name collect(overdue)/paid pay(overdue)/paid balance" of every period, amounts in cents.
    static std::vector<std::string> Lines(const CashOutlook &outlook)
    {
        std::vector<std::string> lines;
        const auto side = [](const CashSums &sums) {
            return fmt::format("{}x{}({})/{}", sums.count, sums.Open(), sums.overdue, sums.paid);
        };
        for (const CashPeriod &period : outlook.periods)
            lines.push_back(
                fmt::format("{} {} {} = {}", period.name, side(period.collect), side(period.pay), period.balance));
        return lines;
    }

    long number_ = 0;
};

TEST_P(CashOutlookTest, AnEmptyScheduleShowsItsMonths)
{
    const CashOutlook outlook = Read(3, 50);
    EXPECT_TRUE(outlook.IsEmpty());
    EXPECT_THAT(Lines(outlook),
                ElementsAre("Novembre 2026 0x0(0)/0 0x0(0)/0 = 5000", "Dicembre 2026 0x0(0)/0 0x0(0)/0 = 5000",
                            "Gennaio 2027 0x0(0)/0 0x0(0)/0 = 5000"));
    EXPECT_TRUE(outlook.late.empty());
}

TEST_P(CashOutlookTest, EveryInstalmentIsInOneMonthAndOverdueOnlyUntilYesterday)
{
    Instalment(0, "2024-02-29", 0.10);
    Instalment(0, "2026-10-31", 0.20);
    Instalment(0, "2026-10-31", 1000, 'p'); // settled before the months: nobody asks for it any more
    Instalment(0, "2026-11-01", 100);       // overdue in the running month
    Instalment(0, "2026-11-14", 10);
    Instalment(0, "2026-11-15", 1); // today is not overdue
    Instalment(0, "2026-11-30", 2, 't');
    Instalment(0, "2026-11-02", 500, 'p');
    Instalment(1, "2026-12-01", 40);
    Instalment(1, "2026-12-31", -15); // a credit note
    Instalment(1, "2026-12-31", 7, 'p');
    Instalment(1, "2027-01-01", 90000);
    const CashOutlook outlook = Read(2, 1000);
    EXPECT_THAT(Lines(outlook), ElementsAre("Prima di novembre 2026 2x30(30)/0 0x0(0)/0 = 100030",
                                            "Novembre 2026 4x11300(11000)/50000 0x0(0)/0 = 111330",
                                            "Dicembre 2026 0x0(0)/0 2x2500(0)/700 = 108830",
                                            "Dopo dicembre 2026 0x0(0)/0 1x9000000(0)/0 = -8891170"));
    EXPECT_EQ(outlook.collect.Open(), 11330);
    EXPECT_EQ(outlook.collect.Due(), 61330);
    EXPECT_EQ(outlook.pay.Open(), 9002500);
    EXPECT_EQ(DescribePeriod(outlook.periods[1]),
              "Novembre 2026: da incassare 113,00 (4) di cui scadute 110,00, incassati 500,00; da pagare 0,00 (0); "
              "saldo 113,00, progressivo 1.113,30");
}

TEST_P(CashOutlookTest, CentsOfManyAmountsDoNotDrift)
{
    Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo)"
        " WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < 10000)"
        " SELECT 0, n, 2026, 1, '2026-11-20', 9007199254.33 FROM numbers");
    EXPECT_EQ(Read(1).collect.expected, 900719925433LL * 10000);
}

TEST_P(CashOutlookTest, WhoOwesMostIsNamedFirstAndTenAtMost)
{
    for (long customer = 1; customer <= 12; ++customer) {
        Instalment(0, "2026-11-10", static_cast<double>(customer) * 10, 'a', customer);
        Instalment(0, "2026-09-30", 5, customer == 4 ? 't' : 'a', customer);
    }
    Instalment(0, "2026-08-01", -1000, 'a', 12); // his credit notes outweigh what is late
    Instalment(0, "2026-11-15", 9999, 'a', 1);   // due today
    Instalment(0, "2026-01-01", 9999, 'p', 2);
    Instalment(1, "2026-01-01", 9999, 'a', 3);
    const std::vector<LateCustomer> late = Read(1).late;
    ASSERT_EQ(late.size(), kLateCustomers);
    EXPECT_EQ(late.front().code, 11);
    EXPECT_EQ(late.front().cents, 11500);
    EXPECT_EQ(late.front().count, 2);
    EXPECT_EQ(FormatIsoDate(late.front().oldest_day), "2026-09-30");
    EXPECT_EQ(late.front().name, Value("SELECT cli_desc FROM admin.clienti1 WHERE cli_codice = 11"));
    EXPECT_EQ(late[7].code, 4);
    EXPECT_EQ(late[7].cents, 4500) << "what is held in a slip is not settled yet";
    EXPECT_EQ(late.back().code, 2);
}

TEST_P(CashOutlookTest, MonthsOutOfRangeBecomeTheNearestThatIsNot)
{
    EXPECT_EQ(Read(0).periods.size(), 1u);
    EXPECT_EQ(Read(-5).periods.size(), 1u);
    EXPECT_EQ(Read(1'000'000).periods.size(), static_cast<std::size_t>(kOutlookMonthsMax));
}

TEST_P(CashOutlookTest, PrintsWhatTheWindowShows)
{
    Instalment(0, "2026-10-31", 1234.5);
    Instalment(0, "2026-11-20", 10, 'a', 2);
    Instalment(0, "2026-11-20", 7, 't', 2);
    Instalment(0, "2026-11-05", 30, 'p', 2);
    Instalment(1, "2026-12-10", 99.99);
    Instalment(1, "2027-03-10", 0.01);
    const std::filesystem::path file = Folder() / "cruscotto.csv";
    ASSERT_TRUE(PrintCashOutlook({3, 500}, today_, ReportDestination{ReportTarget::Csv, file}));
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line.substr(0, line.find('\r')));
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[1], "Scadute nei mesi precedenti;1234,50;1234,50;0,00;0,00;0,00;0,00;1234,50;1734,50");
    EXPECT_EQ(lines[2], "Novembre 2026;17,00;0,00;30,00;0,00;0,00;0,00;17,00;1751,50");
    EXPECT_EQ(lines[3], "Dicembre 2026;0,00;0,00;0,00;99,99;0,00;0,00;-99,99;1651,51");
    EXPECT_EQ(lines[4], "Gennaio 2027;0,00;0,00;0,00;0,00;0,00;0,00;0,00;1651,51");
    EXPECT_EQ(lines[5], "Mesi successivi;0,00;0,00;0,00;0,01;0,00;0,00;-0,01;1651,50");
}

INSTANTIATE_TEST_SUITE_P(Engines, CashOutlookTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
