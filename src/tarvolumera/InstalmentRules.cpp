#include "tarvolumera/InstalmentRules.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <algorithm>

namespace {

constexpr std::array<std::string_view, 12> kMonths = {"GENNAIO",   "FEBBRAIO", "MARZO",    "APRILE",
                                                      "MAGGIO",    "GIUGNO",   "LUGLIO",   "AGOSTO",
                                                      "SETTEMBRE", "OTTOBRE",  "NOVEMBRE", "DICEMBRE"};

/// More than the generator's grid holds is a mistake in the terms.
constexpr long kInstalmentsMax = 60;

/// Terms without an interval would never leave an excluded month: a commercial month then serves as the step.
constexpr long kCommercialMonth = 30;

} // namespace

bool Instalment::IsComplete() const
{
    return due_day != 0 && !TestIfZero(amount);
}

long StartDay(const PAGAMENTI &terms, const StartDates &dates)
{
    const long base = dates.document_day != 0 ? dates.document_day : dates.registration_day;
    const std::string rule = ToUpper(Trimmed(terms.pag_ini));
    if (rule == "DATA FATTURA") return base + terms.pag_gg_ini;
    if (rule == "DATA DIVERSA") return (dates.different_day != 0 ? dates.different_day : base) + terms.pag_gg_ini;
    if (rule == "FINE MESE") return LastDayOfMonth(base) + terms.pag_gg_ini;
    return 0;
}

std::array<int, 3> ExcludedMonths(const PAGAMENTI &terms)
{
    std::array<int, 3> months{};
    const std::array<std::string_view, 3> names = {terms.pag_mese_esc_1, terms.pag_mese_esc_2, terms.pag_mese_esc_3};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto *found = std::find(kMonths.begin(), kMonths.end(), names[i]);
        if (found != kMonths.end()) months[i] = static_cast<int>(found - kMonths.begin()) + 1;
    }
    return months;
}

std::vector<double> SplitTotal(const PAGAMENTI &terms, double total, double vat)
{
    long count = terms.pag_num_rate;
    if (TestIfZero(total) || count <= 0 || count > kInstalmentsMax) return {};
    if (terms.pag_iva_separata != 0) ++count;

    double rate = 0, first = 0;
    if (terms.pag_rate_uguali == 1) {
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
    if (count == 1)
        amounts.back() = Round(total, 2);
    else
        amounts.back() = Round(total - first - static_cast<double>(count - 2) * rate, 2);
    return amounts;
}

std::vector<long> DueDays(const PAGAMENTI &terms, long start_day, std::size_t count)
{
    std::vector<long> days(count, 0);
    if (start_day == 0) return days;
    const std::array<int, 3> excluded = ExcludedMonths(terms);
    const long step = terms.pag_gg_int > 0 ? terms.pag_gg_int : kCommercialMonth;
    const auto is_excluded = [&](long day) {
        return std::find(excluded.begin(), excluded.end(), Month(day)) != excluded.end();
    };
    long day = start_day;
    for (long &due : days) {
        day = AdaptData(&terms, day);
        while (is_excluded(day)) {
            const long adapted = AdaptData(&terms, day + step);
            day = adapted > day ? adapted
                                : day + step; // short steps out of February would be put back to its end for ever
        }
        due = day;
        day += terms.pag_gg_int;
    }
    return days;
}

double TotalOf(std::span<const Instalment> rows)
{
    long long cents = 0;
    for (const Instalment &row : rows) cents += ToCents(row.amount);
    return FromCents(cents);
}
