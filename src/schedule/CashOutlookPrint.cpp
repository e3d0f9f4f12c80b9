#include "schedule/CashOutlook.h"

#include "schedule/OpenItems.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Company.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

long MonthIndex(long day)
{
    return Year(day) * 12 + Month(day) - 1;
}

long FirstOfMonthIndex(long index)
{
    return DateToJulian(1, static_cast<int>(index % 12) + 1, static_cast<int>(index / 12));
}

/// What is open, whenever it is due, and what was due in the months, whatever became of it.
std::string Formula(long first_day, long last_day)
{
    return fmt::format("{} or {{scadenze.sca_data}} in {} to {}", kOpenFormula, FormulaDate(first_day),
                       FormulaDate(last_day));
}

} // namespace

bool PrintCashOutlook(const OutlookFilter &filter, long today, const std::optional<ReportDestination> &destination)
{
    const long first = MonthIndex(today), last = first + std::clamp(filter.months, 1L, kOutlookMonthsMax) - 1;
    CCrystal cry;
    if (!cry.CryOpen("cruscotto.rpt", "Cruscotto scadenze", 0, 0)) return false;
    cry.CrySetDnsLessConn(lumera_db_type, 0);
    cry.CrySetOrientation(kLandscape);
    cry.CrySelect(Formula(FirstOfMonthIndex(first), FirstOfMonthIndex(last + 1) - 1), 0);
    cry.CryStringParam(0, "Ditta", CompanyLine());
    cry.CryDateParam(1, "Oggi", today);
    cry.CryLongParam(2, "Primo", first);
    cry.CryLongParam(3, "Ultimo", last);
    cry.CryDoubleParam(4, "Disponibile", Round(filter.cash, 2));
    cry.CryOpenSubReport("InRitardo");
    cry.CryDateParam(0, "Oggi", today);
    cry.CryLongParam(1, "Quanti", static_cast<long>(kLateCustomers));
    cry.CryCloseSubReport();
    if (destination) cry.CrySetDestination(*destination);
    const bool is_done = cry.CryEsegui();
    cry.CryClose();
    return is_done;
}
