#include "tests/schedule/RandomTerms.h"

#include "tarvodlg/base/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>

// What holds for all terms, totals and dates.

namespace {

void ExpectGoodDays(const PAGAMENTI &terms, const std::vector<long> &days)
{
    const std::array<int, 3> excluded = ExcludedMonths(terms);
    long before = 0;
    bool is_any_missing = false;
    for (const long day : days) {
        if (day == 0) is_any_missing = true;
        if (day == 0) continue;
        EXPECT_FALSE(is_any_missing) << "a date behind one that was not found";
        EXPECT_NE(Year(day), 0);
        EXPECT_EQ(std::count(excluded.begin(), excluded.end(), Month(day)), 0) << FormatIsoDate(day);
        EXPECT_GE(day, before) << "goes back to " << FormatIsoDate(day);
        EXPECT_EQ(AdaptData(&terms, day), day) << "not on its fixed day";
        before = day;
    }
}

TEST(InstalmentRules, HoldForAllTerms)
{
    RandomTerms random;
    long whole = 0;
    for (int round = 0; round < 20'000 && !testing::Test::HasFailure(); ++round) {
        const PAGAMENTI terms = random.Next();
        const long long cents =
            random.OneOf({1, 2, 10'000, random.Between(1, 100'000), random.Between(1, 9'999'999'999)});
        const double total = FromCents(cents),
                     vat = FromCents(random.OneOf({0, cents * 22 / 122, random.Between(0, cents)}));
        const long document = random.Day();
        SCOPED_TRACE(
            fmt::format("{}, {:.2f} ({:.2f}) of {}", random.Describe(terms), total, vat, FormatIsoDate(document)));

        const std::vector<double> amounts = SplitTotal(terms, total, vat);
        const long count = terms.pag_num_rate + terms.pag_iva_separata;
        EXPECT_EQ(std::ssize(amounts), count <= kInstalmentsMax ? count : 0);
        long long sum = 0;
        for (const double amount : amounts) sum += ToCents(amount);
        EXPECT_EQ(sum, amounts.empty() ? 0 : cents);
        std::vector<double> note = SplitTotal(terms, -total, -vat);
        for (double &amount : note) amount = -amount;
        EXPECT_EQ(note, amounts) << "a credit note mirrors its invoice";

        const long different = random.OneOf({0, random.Day()});
        const std::vector<long> days =
            DueDays(terms, StartDay(terms, {document + 1, document, different}), static_cast<std::size_t>(count));
        ExpectGoodDays(terms, days);
        const bool is_found = std::count(days.begin(), days.end(), 0) == 0;
        EXPECT_TRUE(is_found || !LeavesExcludedMonths(terms));
        whole += is_found;
    }
    EXPECT_GT(whole, 15'000) << "nearly all terms are good ones";
}

TEST(InstalmentRules, EndWhateverTheFigures)
{
    RandomTerms random;
    for (int round = 0; round < 20'000 && !testing::Test::HasFailure(); ++round) {
        const PAGAMENTI terms = random.NextHostile();
        const long start =
            random.OneOf({random.Day(), 0, -1, 30, 5'373'484, 2'147'483'647, random.Between(1, 6'000'000)});
        SCOPED_TRACE(fmt::format("{}, from day {}", random.Describe(terms), start));
        EXPECT_LE(std::ssize(SplitTotal(terms, 1220, 220)), kInstalmentsMax);
        ExpectGoodDays(terms, DueDays(terms, StartDay(terms, {0, start, 0}), 61));
        ExpectGoodDays(terms, DueDays(terms, start, 61));
    }
}

struct LeaveCase {
    const char *name;
    TermsSpec terms;
    bool leaves;
};
void PrintTo(const LeaveCase &c, std::ostream *out)
{
    *out << c.name;
}

class LeavesExcludedMonthsTest : public testing::TestWithParam<LeaveCase> {};

TEST_P(LeavesExcludedMonthsTest, IsTold)
{
    EXPECT_EQ(LeavesExcludedMonths(Terms(GetParam().terms)), GetParam().leaves);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LeavesExcludedMonthsTest,
    testing::Values(
        LeaveCase{"NoneExcluded", {.interval = 365, .fixed_1 = 15}, true},
        LeaveCase{"UsualOnes", {.fixed_1 = 10, .excluded = {"AGOSTO", "DICEMBRE"}}, true},
        LeaveCase{"NoInterval", {.interval = 0, .excluded = {"AGOSTO"}}, true},
        LeaveCase{"DayByDay", {.interval = 1, .fixed_1 = 31, .excluded = {"FEBBRAIO", "MARZO"}}, true},
        LeaveCase{"QuarterInARow", {.fixed_1 = 31, .excluded = {"DICEMBRE", "GENNAIO", "FEBBRAIO"}}, true},
        LeaveCase{"YearlyOnAFixedDay", {.interval = 365, .fixed_1 = 15, .excluded = {"AGOSTO"}}, false},
        LeaveCase{"YearlyDriftsForAge", {.interval = 365, .excluded = {"AGOSTO"}}, false},
        LeaveCase{"HalfYearly", {.interval = 180, .fixed_1 = 15, .excluded = {"FEBBRAIO", "AGOSTO"}}, false},
        LeaveCase{
            "EveryFourMonths", {.interval = 120, .fixed_1 = 31, .excluded = {"APRILE", "AGOSTO", "DICEMBRE"}}, false},
        LeaveCase{"HalfYearlyWithAWayOut", {.interval = 180, .fixed_1 = 15, .excluded = {"AGOSTO"}}, true},
        LeaveCase{"MisspeltExcludesNothing", {.interval = 365, .fixed_1 = 15, .excluded = {"Agosto"}}, true}),
    [](const auto &p) { return std::string(p.param.name); });

} // namespace
