#include "demo/DemoPlan.h"
#include "demo/DemoModels.h"
#include "tarvodlg/base/Dates.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace {

const long kNewYear = DateToJulian(1, 1, 2026), kYearEnd = DateToJulian(31, 12, 2026);

long CountOf(const std::vector<PlannedEntry> &plan, DemoJob job)
{
    return std::ranges::count_if(plan, [&](const PlannedEntry &entry) { return entry.model->job == job; });
}

TEST(DemoRandomTest, GivesTheSameNumbersEverywhere)
{
    // The engine is defined by the language; these are our own mapping of its numbers.
    DemoRandom random(5489);
    EXPECT_EQ(random.Between(1, 6), 5);
    EXPECT_EQ(random.Between(7, 7), 7);
    for (int i = 0; i < 1000; ++i) {
        const double amount = random.Amount(10, 20);
        EXPECT_TRUE(amount >= 10 && amount < 21) << amount;
    }
}

TEST(DemoPlanTest, SharesAddUpToTheWhole)
{
    long sum = 0;
    for (const DemoModel &model : DemoModels()) sum += model.share;
    EXPECT_EQ(sum, 1000);
}

struct RangeCase {
    const char *name;
    long entries, first_day, last_day;
};

void PrintTo(const RangeCase &range, std::ostream *out)
{
    *out << range.name;
}

class DemoPlanRangeTest : public testing::TestWithParam<RangeCase> {};

TEST_P(DemoPlanRangeTest, StaysInTheRangeInDateOrder)
{
    DemoRandom random(3);
    const auto plan = PlanEntries(GetParam().entries, GetParam().first_day, GetParam().last_day, &random);
    EXPECT_EQ(static_cast<long>(plan.size()), GetParam().entries);
    EXPECT_TRUE(std::ranges::is_sorted(plan, {}, &PlannedEntry::day));
    for (const PlannedEntry &entry : plan)
        EXPECT_TRUE(entry.day >= GetParam().first_day && entry.day <= GetParam().last_day) << FormatIsoDate(entry.day);
}

INSTANTIATE_TEST_SUITE_P(Cases, DemoPlanRangeTest,
                         testing::Values(RangeCase{"None", 0, kNewYear, kYearEnd},
                                         RangeCase{"One", 1, kNewYear, kYearEnd},
                                         RangeCase{"FewerThanModels", 17, kNewYear, kYearEnd},
                                         RangeCase{"WholeYear", 2000, kNewYear, kYearEnd},
                                         RangeCase{"HolidayOnly", 40, kNewYear, kNewYear},
                                         RangeCase{"ThreeWeeks", 300, kNewYear, kNewYear + 20}),
                         [](const auto &test) { return std::string(test.param.name); });

TEST(DemoPlanTest, KeepsTheSharesOfALargeYear)
{
    DemoRandom random(1);
    const auto plan = PlanEntries(10'000, kNewYear, kYearEnd, &random);
    EXPECT_EQ(CountOf(plan, DemoJob::Invoice), 6000);
    EXPECT_EQ(CountOf(plan, DemoJob::CreditNote), 400);
    EXPECT_EQ(CountOf(plan, DemoJob::Receipts), 800);
}

TEST(DemoPlanTest, SettlesTheVatAsLastWorkOfTheQuarter)
{
    DemoRandom random(1);
    const auto plan = PlanEntries(20'000, kNewYear, kYearEnd, &random);
    std::map<long, DemoJob> last_job;
    for (const PlannedEntry &entry : plan) last_job[entry.day] = entry.model->job;
    long quarters = 0;
    for (const auto &[day, job] : last_job) {
        if (job != DemoJob::VatSettlement) continue;
        ++quarters;
        EXPECT_EQ(Month(day) % 3, 0);
        EXPECT_EQ(day, LastDayOfMonth(day));
    }
    EXPECT_EQ(quarters, 4);
}

TEST(DemoPlanTest, WorksOnWorkingDays)
{
    DemoRandom random(1);
    for (const PlannedEntry &entry : PlanEntries(5000, kNewYear, kYearEnd, &random)) {
        if (entry.model->habit != kAnyDay) continue;
        EXPECT_LT(entry.day % 7, 5) << FormatIsoDate(entry.day); // a day number divisible by 7 is a Monday
        EXPECT_NE(entry.day, DateToJulian(15, 8, 2026));
    }
}

} // namespace
