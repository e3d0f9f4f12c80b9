#include "tarvolumera/InstalmentRules.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <algorithm>

namespace {

constexpr std::array<std::string_view, 12> kMonths = {"GENNAIO",   "FEBBRAIO", "MARZO",    "APRILE",
                                                      "MAGGIO",    "GIUGNO",   "LUGLIO",   "AGOSTO",
                                                      "SETTEMBRE", "OTTOBRE",  "NOVEMBRE", "DICEMBRE"};

/// Terms without an interval would never leave an excluded month: a commercial month then serves as the step.
constexpr long kCommercialMonth = 30;

/// Nobody waits longer for an instalment; steps that lead nowhere by then lead nowhere at all.
constexpr long kSearchedDays = 3653;

bool IsDay(long day)
{
    return Year(day) != 0;
}

bool IsExcluded(const std::array<int, 3> &months, long day)
{
    return std::find(months.begin(), months.end(), Month(day)) != months.end();
}

/// The day adjusted to the terms, but never to one before `earliest`: short steps out of February would be put back to
/// its end for ever.
long AdaptedFrom(const PAGAMENTI &terms, long day, long earliest)
{
    long adapted = AdaptData(&terms, day);
    while (IsDay(adapted) && adapted < earliest) adapted = AdaptData(&terms, ++day);
    return adapted;
}

/// The adjusted day, moved on by whole steps until it is in no excluded month; 0 when there is none.
/// @param earliest  the due date of the instalment before
long Permitted(const PAGAMENTI &terms, const std::array<int, 3> &excluded, long day, long earliest)
{
    const long step = terms.pag_gg_int > 0 ? terms.pag_gg_int : kCommercialMonth;
    const long last = day + kSearchedDays;
    day = AdaptedFrom(terms, day, earliest);
    while (IsDay(day) && IsExcluded(excluded, day)) {
        if (day > last) return 0;
        day = AdaptedFrom(terms, day + step, day + 1);
    }
    return IsDay(day) ? day : 0;
}

} // namespace

bool Instalment::IsComplete() const
{
    return due_day != 0 && !TestIfZero(amount);
}

long InstalmentCount(const PAGAMENTI &terms)
{
    return terms.pag_num_rate + (terms.pag_iva_separata != 0 ? 1 : 0);
}

long StartDay(const PAGAMENTI &terms, const StartDates &dates)
{
    const long document = dates.document_day != 0 ? dates.document_day : dates.registration_day;
    const std::string rule = ToUpper(Trimmed(terms.pag_ini));
    const bool has_own_start = rule == "DATA DIVERSA" && dates.different_day != 0;
    const long base = has_own_start ? dates.different_day : document;
    if (base == 0) return 0;
    if (rule == "DATA FATTURA" || rule == "DATA DIVERSA") return base + terms.pag_gg_ini;
    if (rule == "FINE MESE") return LastDayOfMonth(base) + terms.pag_gg_ini;
    return 0;
}

int MonthOfName(std::string_view name)
{
    const auto *found = std::find(kMonths.begin(), kMonths.end(), name);
    return found == kMonths.end() ? 0 : static_cast<int>(found - kMonths.begin()) + 1;
}

std::array<int, 3> ExcludedMonths(const PAGAMENTI &terms)
{
    return {MonthOfName(terms.pag_mese_esc_1), MonthOfName(terms.pag_mese_esc_2), MonthOfName(terms.pag_mese_esc_3)};
}

std::vector<double> SplitTotal(const PAGAMENTI &terms, double total, double vat)
{
    const long count = InstalmentCount(terms);
    if (TestIfZero(total) || terms.pag_num_rate <= 0 || count > kInstalmentsMax) return {};

    double rate = 0, first = 0;
    if (terms.pag_rate_uguali != 0) {
        rate = MyCeil(total / static_cast<double>(count), 2);
        first = rate;
    } else if (terms.pag_iva_separata != 0) {
        first = vat;
        rate = MyCeil((total - vat) / static_cast<double>(count - 1), 2);
    } else {
        rate = MyCeil((total - vat) / static_cast<double>(count), 2);
        first = rate + vat;
    }
    std::vector<double> amounts(static_cast<std::size_t>(count), rate);
    amounts.front() = Round(first, 2);
    // In cents, so that the sum is the total whatever the size of it.
    const long long others = count == 1 ? 0 : ToCents(first) + (count - 2) * ToCents(rate);
    amounts.back() = FromCents(ToCents(total) - others);
    return amounts;
}

std::vector<long> DueDays(const PAGAMENTI &terms, long start_day, std::size_t count)
{
    std::vector<long> days(count, 0);
    const std::array<int, 3> excluded = ExcludedMonths(terms);
    const long interval = std::max(0L, terms.pag_gg_int); // a negative one would let the dates go back
    long day = start_day, before = 0;
    for (long &due : days) {
        if (!IsDay(day)) break;
        due = Permitted(terms, excluded, day, before);
        if (due == 0) break;
        before = due;
        day = due + interval;
    }
    return days;
}

bool LeavesExcludedMonths(const PAGAMENTI &terms)
{
    const std::array<int, 3> excluded = ExcludedMonths(terms);
    const long first = DateToJulian(1, 1, 2025), last = DateToJulian(31, 12, 2028); // every day of a leap cycle
    for (long day = first; day <= last; ++day)
        if (Permitted(terms, excluded, day, 0) == 0) return false;
    return true;
}

double TotalOf(std::span<const Instalment> rows)
{
    long long cents = 0;
    for (const Instalment &row : rows) cents += ToCents(row.amount);
    return FromCents(cents);
}
