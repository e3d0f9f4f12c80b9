#include "tables/ChartPrint.h"

#include "tarvolumera/Company.h"

#include <limits>

#include <fmt/printf.h>

bool PrintChartOfAccounts(long first, long last, const std::optional<ReportDestination> &destination)
{
    CCrystal cry;
    if (!cry.CryOpen("pianoconti.rpt", "Piano dei conti", 0, 0)) return false;
    cry.CrySetDnsLessConn(lumera_db_type, 0);
    cry.CrySetOrientation(kPortrait);
    const long highest = last == 0 ? std::numeric_limits<std::int32_t>::max() : last;
    cry.CrySelect(fmt::sprintf("{mastri.mas_codice} in %ld to %ld", first, highest), 0);
    cry.CryStringParam(0, "Ditta", CompanyLine());
    cry.CryStringParam(1, "Logo", CompanyLogo().string());
    if (destination) cry.CrySetDestination(*destination);
    const bool is_done = cry.CryEsegui();
    cry.CryClose();
    return is_done;
}
