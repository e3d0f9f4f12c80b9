#include "schedule/AccountStatement.h"

#include "tarvodlg/base/Numbers.h"
#include "tests/schedule/PrintedPages.h"
#include "tests/schedule/RandomInstalments.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class AccountStatementTest : public ArchiveTest {
  protected:
    /// "state open overdue balance late" of each line, amounts in cents.
    std::vector<std::string> Lines(const StatementFilter &filter)
    {
        std::vector<std::string> lines;
        ForEachStatementLine(Cmd(), filter, [&](const StatementLine &line) {
            lines.push_back(fmt::format("{} {} {} {} {}", StatementStateName(line.state, filter.side),
                                        ToCents(line.open), ToCents(line.overdue), ToCents(line.balance),
                                        line.days_late));
        });
        return lines;
    }
    /// Customer 1: paid in time, paid late, paid but held in a slip, overdue, a credit note, due today, due tomorrow.
    void AddCustomer()
    {
        known_.Add({.due_day = today_ - 40, .cents = 10000, .is_paid = true, .paid_day = today_ - 45});
        known_.Add({.due_day = today_ - 30, .cents = 20000, .is_paid = true, .paid_day = today_ - 27});
        known_.Add(
            {.due_day = today_ - 20, .cents = 30000, .is_paid = true, .is_parked = true, .paid_day = today_ - 1});
        known_.Add({.due_day = today_ - 366, .cents = 40010});
        known_.Add({.due_day = today_ - 10, .cents = -5005});
        known_.Add({.due_day = today_, .cents = 600});
        known_.Add({.due_day = today_ + 1, .cents = 7});
    }

    const long today_ = DateToJulian(1, 3, 2028); // a leap year begins to count
    KnownInstalments known_{[this](const std::string &sql) { Run(sql); }};
};

TEST_P(AccountStatementTest, BalanceAddsWhatIsOpenAndNetsCreditNotes)
{
    AddCustomer();
    StatementFilter filter;
    filter.first_code = filter.last_code = 1;
    filter.reference_day = today_;
    EXPECT_THAT(Lines(filter),
                ElementsAre("scaduta 40010 40010 40010 366", "in distinta 30000 30000 70010 20",
                            "scaduta -5005 -5005 65005 10", "aperta 600 0 65605 0", "aperta 7 0 65612 0"));
    filter.open_only = false;
    EXPECT_THAT(Lines(filter),
                ElementsAre("scaduta 40010 40010 40010 366", "incassata 0 0 40010 0", "incassata 0 0 40010 3",
                            "in distinta 30000 30000 70010 20", "scaduta -5005 -5005 65005 10", "aperta 600 0 65605 0",
                            "aperta 7 0 65612 0"));
    const StatementTotals totals = ReadStatementTotals(Cmd(), filter);
    EXPECT_EQ(totals.count, 7);
    EXPECT_EQ(totals.amount, 95612);
    EXPECT_EQ(totals.open, 65612);
    EXPECT_EQ(totals.overdue, 65005);
    filter.d_start = today_ - 30;
    filter.d_stop = today_ - 10;
    EXPECT_THAT(Lines(filter),
                ElementsAre("incassata 0 0 0 3", "in distinta 30000 30000 30000 20", "scaduta -5005 -5005 24995 10"));
}

TEST_P(AccountStatementTest, LetterSaysWhatTheListSays)
{
    AddCustomer();
    Run("UPDATE admin.clienti1 SET cli_indirizzo = 'Via dei Mille, 7', cli_cap = '20121', cli_citta = 'Milano',"
        " cli_prov = 'MI', cli_desc = 'Officine Però S.r.l.' WHERE cli_codice = 1");
    StatementFilter filter;
    filter.first_code = filter.last_code = 1;
    filter.open_only = false;
    filter.reference_day = today_;
    PrintedPages printed;
    ASSERT_TRUE(PrintStatements(filter, PrintedPages::Destination()));
    ASSERT_EQ(printed.pages.size(), 1u);
    EXPECT_THAT(printed.pages[0], testing::IsSupersetOf({"Officine Però S.r.l.", "Via dei Mille, 7",
                                                         "20121 Milano (MI)", "Scadenze al 01/03/2028"}));
    EXPECT_THAT(printed.LinesWith("F1|").at(0), HasSubstr("2/3|21/01/2028|100,00|16/01/2028|400,10")) << "in time";
    EXPECT_THAT(printed.LinesWith("F1|").at(0), testing::StartsWith("F1|")) << "whose it is stands in the head";
    EXPECT_THAT(printed.LinesWith("F2|").at(0), HasSubstr("|3|200,00|03/02/2028|400,10"));
    EXPECT_THAT(printed.LinesWith("F3|").at(0), HasSubstr("|20|300,00|in distinta|700,10"));
    EXPECT_THAT(printed.LinesWith("F4|").at(0), HasSubstr("|01/03/2027|366|400,10|400,10"));
    EXPECT_THAT(printed.LinesWith("F5|").at(0), HasSubstr("|10|-50,05|650,05"));
    EXPECT_THAT(printed.LinesWith("F6|").at(0), HasSubstr("|01/03/2028|6,00|656,05"));
    EXPECT_THAT(printed.LinesWith("Totale|"), ElementsAre("Totale|7|scadenze|956,12"));
    EXPECT_THAT(printed.LinesWith("Totale aperto"), ElementsAre("Totale aperto|656,12"));
    EXPECT_THAT(printed.LinesWith("di cui scaduto"), ElementsAre("di cui scaduto|650,05"));
}

TEST_P(AccountStatementTest, EachOfARangeHasPagesOfItsOwnWithItsBruteForceSums)
{
    known_.AddRandom(500, 99, 5);
    StatementFilter filter;
    filter.side = 1;
    filter.first_code = 2;
    filter.last_code = 4;
    filter.reference_day = DateToJulian(20, 7, 2026);
    std::map<long, std::pair<long long, long long>> expected; // open, overdue
    for (const KnownInstalment &one : known_.All()) {
        if (one.side != 1 || one.code < 2 || one.code > 4 || !one.IsOpen()) continue;
        expected[one.code].first += one.cents;
        if (one.due_day < filter.reference_day) expected[one.code].second += one.cents;
    }
    ASSERT_EQ(expected.size(), 3u);
    std::map<long, long long> balances;
    ForEachStatementLine(Cmd(), filter,
                         [&](const StatementLine &line) { balances[line.code] = ToCents(line.balance); });
    PrintedPages printed;
    ASSERT_TRUE(PrintStatements(filter, PrintedPages::Destination()));
    std::vector<std::string> open, overdue;
    long long sum_open = 0, sum_overdue = 0;
    for (const auto &[code, sums] : expected) {
        EXPECT_EQ(balances[code], sums.first) << code;
        open.push_back("Totale aperto|" + FormatAmount(FromCents(sums.first)));
        overdue.push_back("di cui scaduto|" + FormatAmount(FromCents(sums.second)));
        sum_open += sums.first;
        sum_overdue += sums.second;
    }
    EXPECT_EQ(printed.LinesWith("Totale aperto"), open);
    EXPECT_EQ(printed.LinesWith("di cui scaduto"), overdue);
    for (const auto &page : printed.pages) // the head of a letter on each
        EXPECT_EQ(std::count_if(page.begin(), page.end(),
                                [](const std::string &line) { return line.find("Codice fornitore|") == 0; }),
                  1);
    const StatementTotals totals = ReadStatementTotals(Cmd(), filter);
    EXPECT_EQ(totals.open, sum_open);
    EXPECT_EQ(totals.overdue, sum_overdue);
}

INSTANTIATE_TEST_SUITE_P(Engines, AccountStatementTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
