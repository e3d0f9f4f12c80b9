#include "schedule/Aging.h"

#include "schedule/OpenItems.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/Counterparts.h"

#include <fmt/format.h>

bool PrintAging(const AgingFilter &filter, const std::optional<ReportDestination> &destination)
{
    CCrystal cry;
    if (!cry.CryOpen("anzianita.rpt", "Anzianità dei saldi", 0, 0)) return false;
    cry.CrySetDnsLessConn(lumera_db_type, 0);
    cry.CrySetOrientation(kLandscape);
    std::string formula = fmt::format("{{scadenze.sca_relaz}} = {} and {}", filter.side, kOpenFormula);
    if (filter.code != 0) formula += fmt::format(" and {{scadenze.sca_cli_for}} = {}", filter.code);
    cry.CrySelect(formula, 0);
    cry.CryStringParam(0, "Ditta", CompanyLine());
    cry.CryStringParam(1, "Cosa",
                       fmt::format("{}, scadenze aperte, situazione al {}",
                                   filter.side == kCustomer ? "Clienti" : "Fornitori",
                                   FormatDate(filter.reference_day)));
    cry.CryLongParam(2, "PerScaduto", filter.order == AgingOrder::Overdue ? 1 : 0);
    cry.CryDateParam(3, "Al", filter.reference_day);
    cry.CryDateParam(4, "Al30", filter.reference_day - 30);
    cry.CryDateParam(5, "Al60", filter.reference_day - 60);
    cry.CryDateParam(6, "Al90", filter.reference_day - 90);
    cry.CryDateParam(7, "Al120", filter.reference_day - 120);
    if (destination) cry.CrySetDestination(*destination);
    const bool is_done = cry.CryEsegui();
    cry.CryClose();
    return is_done;
}
