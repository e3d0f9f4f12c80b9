#include "schedule/DueList.h"

#include "tarvodlg/base/Numbers.h"
#include "tests/schedule/PrintedPages.h"
#include "tests/schedule/RandomInstalments.h"

#include <gmock/gmock.h>

#include <chrono>
#include <map>

namespace {

using testing::ElementsAre;

long DayOf(const char *iso)
{
    return *ParseDate(iso);
}

struct PeriodCase {
    const char *name;
    DueLength length;
    const char *first, *last, *day; ///< of the list, and a due date
    const char *title, *from, *to;  ///< expected
};
void PrintTo(const PeriodCase &one, std::ostream *out)
{
    *out << one.name;
}

class DuePeriodsTest : public testing::TestWithParam<PeriodCase> {};

TEST_P(DuePeriodsTest, NamesAndBoundsAPeriod)
{
    const PeriodCase &one = GetParam();
    const DuePeriods periods(one.length, DayOf(one.first), DayOf(one.last));
    const long number = periods.NumberOf(DayOf(one.day));
    EXPECT_EQ(periods.NameOf(number), one.title);
    EXPECT_EQ(FormatIsoDate(periods.RangeOf(number).first_day), one.from);
    EXPECT_EQ(FormatIsoDate(periods.RangeOf(number).last_day), one.to);
}

constexpr auto kWeek = DueLength::Week, kMonth = DueLength::Month;
INSTANTIATE_TEST_SUITE_P(Cases, DuePeriodsTest,
                         testing::Values(PeriodCase{"MondayBeginsAWeek", kWeek, "2026-01-05", "2026-12-31",
                                                    "2026-01-12", "Settimana 3 del 2026", "2026-01-12", "2026-01-18"},
                                         PeriodCase{"SundayEndsIt", kWeek, "2026-01-05", "2026-12-31", "2026-01-18",
                                                    "Settimana 3 del 2026", "2026-01-12", "2026-01-18"},
                                         PeriodCase{"FirstWeekIsCut", kWeek, "2026-01-15", "2026-12-31", "2026-01-15",
                                                    "Settimana 3 del 2026", "2026-01-15", "2026-01-18"},
                                         PeriodCase{"LastWeekIsCut", kWeek, "2026-01-01", "2026-01-14", "2026-01-13",
                                                    "Settimana 3 del 2026", "2026-01-12", "2026-01-14"},
                                         PeriodCase{"NewYearInTheLastWeek", kWeek, "2026-12-01", "2027-02-28",
                                                    "2027-01-01", "Settimana 53 del 2026", "2026-12-28", "2027-01-03"},
                                         PeriodCase{"OldYearInTheFirstWeek", kWeek, "2024-12-01", "2025-02-28",
                                                    "2024-12-30", "Settimana 1 del 2025", "2024-12-30", "2025-01-05"},
                                         PeriodCase{"OneDay", kWeek, "2026-06-03", "2026-06-03", "2026-06-03",
                                                    "Settimana 23 del 2026", "2026-06-03", "2026-06-03"},
                                         PeriodCase{"LeapFebruary", kMonth, "2024-01-10", "2024-12-31", "2024-02-29",
                                                    "Febbraio 2024", "2024-02-01", "2024-02-29"},
                                         PeriodCase{"FirstMonthIsCut", kMonth, "2026-01-10", "2026-12-31", "2026-01-31",
                                                    "Gennaio 2026", "2026-01-10", "2026-01-31"},
                                         PeriodCase{"December", kMonth, "2026-01-10", "2027-03-31", "2026-12-31",
                                                    "Dicembre 2026", "2026-12-01", "2026-12-31"},
                                         PeriodCase{"BeforeTheFirstDay", kMonth, "2026-01-10", "2026-12-31",
                                                    "2026-01-09", "Scadute prima del 10/01/2026", "", "2026-01-09"},
                                         PeriodCase{"MisspeltYear", kMonth, "2026-01-01", "2926-05-31", "2926-05-31",
                                                    "Dal 01/01/2076 in poi", "2076-01-01", "2926-05-31"}),
                         [](const auto &one) { return std::string(one.param.name); });

class DueListTest : public ArchiveTest {
  protected:
    KnownInstalments known_{[this](const std::string &sql) { Run(sql); }};
};

/// The Monday of the week or the first of the month, by the standard library's calendar.
long BeginOf(DueLength length, long day)
{
    using namespace std::chrono;
    constexpr long kEpoch = 2440588;
    const sys_days date{days{day - kEpoch}};
    if (length == DueLength::Week)
        return static_cast<long>((date - (weekday{date} - Monday)).time_since_epoch().count()) + kEpoch;
    const year_month_day parts{date};
    return static_cast<long>(sys_days{parts.year() / parts.month() / 1}.time_since_epoch().count()) + kEpoch;
}

struct Sums {
    long count = 0;
    long long collect = 0, pay = 0;
    friend bool operator==(const Sums &, const Sums &) = default;
};
void PrintTo(const Sums &sums, std::ostream *out)
{
    *out << sums.count << "x" << sums.collect << "-" << sums.pay;
}

/// By the first day of the period, 0 = due before.
std::map<long, Sums> Expected(const std::vector<KnownInstalment> &all, const DueListFilter &filter)
{
    std::map<long, Sums> expected;
    for (const KnownInstalment &one : all) {
        if (!one.IsOpen() || !(one.side == 0 ? filter.customers : filter.suppliers)) continue;
        if (filter.d_stop != 0 && one.due_day > filter.d_stop) continue;
        const long begin = one.due_day < filter.d_start ? 0 : BeginOf(filter.length, one.due_day);
        Sums &sums = expected[begin];
        ++sums.count;
        (one.side == 0 ? sums.collect : sums.pay) += one.cents;
    }
    return expected;
}

TEST_P(DueListTest, GroupsAddUpToWhatABruteForceSumGives)
{
    known_.AddRandom(1500, 20260701, 6);
    const long start = DayOf("2026-05-13"), stop = DayOf("2026-09-10"); // a Wednesday, a Thursday
    for (int trial = 0; trial < 24; ++trial) {
        DueListFilter filter;
        filter.length = trial % 2 == 0 ? DueLength::Week : DueLength::Month;
        filter.customers = trial % 3 != 1;
        filter.suppliers = trial % 3 != 2;
        if (trial % 4 > 0) filter.d_start = start + trial;
        if (trial % 5 > 0) filter.d_stop = stop - trial;
        SCOPED_TRACE(fmt::format("trial {}", trial));

        std::map<long, Sums> expected = Expected(known_.All(), filter), found;
        long long running = 0;
        for (const DueGroup &group : ReadDueGroups(Cmd(), filter)) {
            const long begin = group.range.first_day == 0 ? 0 : BeginOf(filter.length, group.range.first_day);
            found[begin] = {group.count, group.collect, group.pay};
            running += group.collect - group.pay;
            EXPECT_EQ(group.running, running);
            Sums listed;
            ForEachDue(Cmd(), filter, group.range, [&](DueLine &&line) {
                ++listed.count;
                (line.relaz == 0 ? listed.collect : listed.pay) += ToCents(line.importo);
            });
            EXPECT_EQ(listed, found[begin]) << group.name;
        }
        EXPECT_EQ(found, expected);
    }
}

TEST_P(DueListTest, CentsOfManyAmountsDoNotDrift)
{
    Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo)"
        " WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < 10000)"
        " SELECT 0, n, 2026, 1, CAST('2026-11-20' AS DATE), 9007199254.33 FROM numbers");
    EXPECT_EQ(ReadDueGroups(Cmd(), {}).at(0).collect, 900719925433LL * 10000);
}

TEST_P(DueListTest, NothingOpenMakesNoGroupAndAnEmptyPage)
{
    known_.Add({.side = 1, .due_day = DayOf("2026-06-03"), .cents = 100, .is_paid = true});
    EXPECT_TRUE(ReadDueGroups(Cmd(), {}).empty());
    PrintedPages printed;
    ASSERT_TRUE(PrintDueList({}, PrintedPages::Destination()));
    ASSERT_EQ(printed.pages.size(), 1u);
    EXPECT_EQ(printed.LinesWith("Totale").size(), 1u);
}

TEST_P(DueListTest, PrintShowsTheSumsOfEveryGroup)
{
    known_.AddRandom(400, 7, 4);
    for (const DueLength length : {DueLength::Week, DueLength::Month}) {
        DueListFilter filter;
        filter.length = length;
        filter.d_start = DayOf("2026-06-10");
        filter.d_stop = DayOf("2027-01-02"); // the week goes on in the next year
        PrintedPages printed;
        ASSERT_TRUE(PrintDueList(filter, PrintedPages::Destination()));
        std::vector<std::string> expected_titles, expected_sums;
        const auto shown = [](long long cents) { return cents == 0 ? "" : FormatAmount(FromCents(cents)); };
        for (const DueGroup &group : ReadDueGroups(Cmd(), filter)) {
            const std::string name = fmt::format("{}, dal {} al {}", group.name, FormatDate(group.range.first_day),
                                                 FormatDate(group.range.last_day));
            if (group.number != 0) expected_titles.push_back(name);
            std::string line = fmt::format("Scadenze|{}", group.count);
            for (const std::string &sum : {shown(group.collect), shown(group.pay)})
                if (!sum.empty()) line += "|" + sum;
            expected_sums.push_back(line + "|" + FormatAmount(FromCents(group.Balance())) + "|" +
                                    FormatAmount(FromCents(group.running)));
        }
        EXPECT_EQ(printed.LinesWith(", dal "), expected_titles);
        EXPECT_EQ(printed.LinesWith("Scadenze|"), expected_sums);
        EXPECT_EQ(printed.LinesWith("Scadute prima del 10/06/2026").size(), 1u);
    }
}

TEST_P(DueListTest, PrintGathersWhatIsDueInTheFarFuture)
{
    known_.Add({.due_day = DayOf("2026-01-05"), .cents = 100});
    known_.Add({.due_day = DayOf("2926-01-05"), .cents = 200});
    known_.Add({.due_day = DayOf("2926-02-05"), .cents = 300});
    PrintedPages printed;
    ASSERT_TRUE(PrintDueList({}, PrintedPages::Destination()));
    EXPECT_THAT(printed.LinesWith("in poi"), ElementsAre("Dal 06/07/2037 in poi, dal 06/07/2037 al 05/02/2926"));
    EXPECT_THAT(printed.LinesWith("Scadenze|"), ElementsAre("Scadenze|1|1,00|1,00|1,00", "Scadenze|2|5,00|5,00|6,00"));
}

INSTANTIATE_TEST_SUITE_P(Engines, DueListTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace
