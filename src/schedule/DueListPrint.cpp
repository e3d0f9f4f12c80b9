#include "schedule/DueList.h"

#include "schedule/OpenItems.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <fmt/format.h>

namespace {

/// Width of a period's title in the parameter that carries them all; the layout cuts it there.
constexpr std::size_t kTitleWidth = 64;

std::string TitleOf(const DuePeriods &periods, long number)
{
    const DuePeriods::Range range = periods.RangeOf(number);
    std::string title = periods.NameOf(number);
    if (number != 0) title += fmt::format(", dal {} al {}", FormatDate(range.first_day), FormatDate(range.last_day));
    title.resize(kTitleWidth, ' '); // plain ASCII, so a byte is a character
    return title;
}

std::string Titles(const DuePeriods &periods)
{
    std::string titles;
    for (long number = 0; number <= periods.Count(); ++number) titles += TitleOf(periods, number);
    return titles;
}

std::string FormulaOf(const DueListFilter &filter)
{
    std::string formula = kOpenFormula;
    if (!filter.suppliers) formula += " and {scadenze.sca_relaz} = 0";
    if (!filter.customers) formula += filter.suppliers ? " and {scadenze.sca_relaz} = 1" : " and 1 = 0";
    if (filter.d_stop != 0) formula += " and {scadenze.sca_data} <= " + FormulaDate(filter.d_stop);
    return formula;
}

std::string WhatLine(const DueListFilter &filter, const DuePeriods &periods)
{
    const char *side = filter.customers == filter.suppliers ? "Clienti e fornitori"
                       : filter.customers                   ? "Clienti"
                                                            : "Fornitori";
    return fmt::format("{}, scadenze aperte dal {} al {} per {}{}", side, FormatDate(periods.FirstDay()),
                       FormatDate(periods.LastDay()), filter.length == DueLength::Week ? "settimana" : "mese",
                       filter.d_start != 0 ? ", precedute da quelle scadute prima" : "");
}

} // namespace

bool PrintDueList(const DueListFilter &filter, const std::optional<ReportDestination> &destination)
{
    std::optional<DuePeriods> periods;
    if (!RunUnit(LUMERA_TAG, [&](SACommand *cmd) { periods = PeriodsOf(cmd, filter); })) return false;

    CCrystal cry;
    if (!cry.CryOpen("scadenzario.rpt", "Scadenzario", 0, 0)) return false;
    cry.CrySetDnsLessConn(lumera_db_type, 0);
    cry.CrySetOrientation(kLandscape);
    cry.CrySelect(FormulaOf(filter), 0);
    cry.CryStringParam(0, "Ditta", CompanyLine());
    cry.CryStringParam(1, "Cosa", WhatLine(filter, *periods));
    cry.CryLongParam(2, "Settimane", filter.length == DueLength::Week ? 1 : 0);
    cry.CryDateParam(3, "Inizio", periods->FirstDay());
    cry.CryLongParam(4, "Primo", DuePeriods::IndexOf(filter.length, periods->FirstDay()));
    cry.CryLongParam(5, "Ultimo", periods->Count());
    cry.CryStringParam(6, "Titoli", Titles(*periods));
    if (destination) cry.CrySetDestination(*destination);
    const bool is_done = cry.CryEsegui();
    cry.CryClose();
    return is_done;
}
