#include "tables/TermsExample.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/InstalmentRules.h"

#include <fmt/format.h>

namespace {

constexpr double kTotal = 1220, kVat = 220;

/// As many as a reader takes in; the last one is always told, it shows how long one waits.
constexpr std::size_t kShownMax = 6;

std::string InstalmentText(double amount, long day)
{
    return FormatAmount(amount) + (day == 0 ? " in data da scrivere" : " il " + FormatDate(day));
}

} // namespace

std::string ExampleOfTerms(const PAGAMENTI &terms, long day)
{
    const std::string invoice = fmt::format("fattura di {} del {}: ", FormatAmount(kTotal), FormatDate(day));
    if (!GeneratesInstalments(terms) || terms.pag_num_rate < 1) return invoice + "nessuna scadenza";
    const std::vector<double> amounts = SplitTotal(terms, kTotal, kVat);
    if (amounts.empty()) return invoice + fmt::format("{} rate, più di {}", InstalmentCount(terms), kInstalmentsMax);
    const std::vector<long> days = DueDays(terms, StartDay(terms, {day, day, day}), amounts.size());

    std::string text = invoice;
    for (std::size_t i = 0; i < amounts.size(); ++i) {
        const bool is_last = i + 1 == amounts.size();
        if (!is_last && amounts.size() > kShownMax && i + 1 >= kShownMax) continue;
        if (is_last && amounts.size() > kShownMax)
            text += fmt::format(" ... fino alla {}ª di ", amounts.size());
        else if (i > 0)
            text += ", ";
        text += InstalmentText(amounts[i], days[i]);
    }
    return text;
}
