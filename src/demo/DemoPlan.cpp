#include "demo/DemoPlan.h"

#include "demo/DemoModels.h"
#include "tarvodlg/base/Dates.h"

#include <algorithm>
#include <numeric>

namespace {

/// Holidays with a fixed date, as month * 100 + day; the demo company does not know Easter.
constexpr int kHolidays[] = {101, 106, 425, 501, 602, 815, 1101, 1208, 1225, 1226};

bool IsWorkingDay(long day)
{
    const long weekday = day % 7; // 0 = Monday
    return weekday < 5 && std::ranges::find(kHolidays, Month(day) * 100 + Day(day)) == std::end(kHolidays);
}

std::vector<long> WorkingDays(long first_day, long last_day)
{
    std::vector<long> all(static_cast<std::size_t>(last_day - first_day + 1)), working;
    std::iota(all.begin(), all.end(), first_day);
    std::ranges::copy_if(all, std::back_inserter(working), IsWorkingDay);
    return working.empty() ? all : working;
}

/// The day on which work of that habit is done in the month or quarter of a day.
long HabitualDay(long day, int habit)
{
    const int month = Month(day), year = Year(day);
    switch (habit) {
    case kAnyDay:
        return day;
    case kMonthEnd:
        return LastDayOfMonth(day);
    case kQuarterEnd:
        return LastDayOfMonth(DateToJulian(1, (month + 2) / 3 * 3, year));
    default:
        return DateToJulian(habit, month, year);
    }
}

/// As many of each model as its share says. What rounding leaves goes to the models that lost most by it.
std::vector<const DemoModel *> ModelsByShare(long entries)
{
    struct Remainder {
        long lost;
        const DemoModel *model;
    };
    std::vector<const DemoModel *> chosen;
    std::vector<Remainder> remainders;
    chosen.reserve(static_cast<std::size_t>(entries));
    for (const DemoModel &model : DemoModels()) {
        chosen.insert(chosen.end(), static_cast<std::size_t>(entries * model.share / 1000), &model);
        remainders.push_back({entries * model.share % 1000, &model});
    }
    std::ranges::stable_sort(remainders, std::greater<>(), &Remainder::lost);
    for (std::size_t i = 0; static_cast<long>(chosen.size()) < entries; ++i)
        chosen.push_back(remainders[i % remainders.size()].model);
    return chosen;
}

const DemoModel &FirstOf(DemoJob job, long causale)
{
    return *std::ranges::find_if(DemoModels(),
                                 [&](const DemoModel &model) { return model.job == job && model.causale == causale; });
}

} // namespace

const DemoModel &UsualPurchase()
{
    return FirstOf(DemoJob::Invoice, 21);
}

const DemoModel &UsualSale()
{
    return FirstOf(DemoJob::Invoice, 1);
}

const DemoModel &UsualBankCharges()
{
    return FirstOf(DemoJob::BankCharges, 69);
}

std::vector<PlannedEntry> PlanEntries(long entries, long first_day, long last_day, DemoRandom *random)
{
    const std::vector<long> days = WorkingDays(first_day, last_day);
    std::vector<PlannedEntry> plan;
    plan.reserve(static_cast<std::size_t>(entries));
    for (const DemoModel *model : ModelsByShare(entries)) {
        const long drawn = random->Pick(days), habitual = HabitualDay(drawn, model->habit);
        const bool in_range = habitual >= first_day && habitual <= last_day;
        if (in_range)
            plan.push_back({habitual, model});
        else
            plan.push_back({drawn, &UsualBankCharges()});
    }
    for (std::size_t i = plan.size(); i > 1; --i)
        std::swap(plan[i - 1], plan[static_cast<std::size_t>(random->Between(0, static_cast<long>(i) - 1))]);
    // The settlement takes up all VAT of the quarter, so it is the last work of its day.
    std::ranges::stable_sort(plan, {}, [](const PlannedEntry &entry) {
        return entry.day * 2 + (entry.model->job == DemoJob::VatSettlement ? 1 : 0);
    });
    return plan;
}
