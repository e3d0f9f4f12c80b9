#include "schedule/SchedulePrint.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvolumera/Lookups.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <fmt/printf.h>

namespace {

std::string FormulaOf(const ScheduleFilter &filter)
{
    std::string formula = fmt::sprintf("{scadenze.sca_relaz} = %ld", filter.relaz);
    const auto add_date = [&](const char *comparison, long day) {
        if (day != 0)
            formula += fmt::sprintf(" AND {scadenze.sca_data} %-s Date(%d,%d,%d)", comparison, Year(day), Month(day),
                                    Day(day));
    };
    const auto add_code = [&](const char *column, long code) {
        if (code != 0) formula += fmt::sprintf(" AND {scadenze.%-s} = %ld", column, code);
    };
    add_date(">=", filter.d_start);
    add_date("<=", filter.d_stop);
    add_code("sca_sez", filter.codsez);
    add_code("sca_cli_for", filter.codclf);
    add_code("sca_dst", filter.coddst);
    add_code("sca_age", filter.codage);
    if (filter.state == kOpenInstalments) formula += " AND {scadenze.sca_pagato} = 0";
    if (filter.state == kPaidInstalments) formula += " AND {scadenze.sca_pagato} <> 0";
    return formula;
}

/// "Agente : 3 Rossi", "Agente : TUTTI".
std::string Restriction(const char *label, long code, const std::string &words, const char *all)
{
    return code == 0 ? fmt::sprintf("%-s : %-s", label, all) : fmt::sprintf("%-s : %ld %-s", label, code, words);
}

std::string PeriodWords(const ScheduleFilter &filter)
{
    if (filter.d_start == 0 && filter.d_stop == 0) return "Scadenza : TUTTE";
    std::string words = "Scadenza :";
    if (filter.d_start != 0) words += " dal " + FormatDate(filter.d_start);
    if (filter.d_stop != 0) words += " al " + FormatDate(filter.d_stop);
    return words;
}

std::string FilterLine(SACommand *cmd, const ScheduleFilter &filter)
{
    SEZIONI section;
    if (filter.codsez != 0) sqlsez.Search(cmd, filter.codsez, &section);
    AGENTI agent;
    if (filter.codage != 0) sqlage.Search(cmd, filter.codage, &agent);
    return fmt::sprintf("Stato : %-s   %-s   %-s   %-s", StateWords(filter.relaz, filter.state), PeriodWords(filter),
                        Restriction("Sezione", filter.codsez, section.sez_desc.str(), "TUTTE"),
                        Restriction("Agente", filter.codage, agent.age_desc.str(), "TUTTI"));
}

std::string CounterpartLine(SACommand *cmd, const ScheduleFilter &filter)
{
    const bool customers = filter.relaz == kCustomer;
    std::string name;
    if (filter.codclf != 0 && customers) {
        CLIENTI customer;
        sqlcli.Search(cmd, filter.codclf, &customer);
        name = customer.cli_desc.str();
    } else if (filter.codclf != 0) {
        FORNITORI supplier;
        sqlfor.Search(cmd, filter.codclf, &supplier);
        name = supplier.for_desc.str();
    }
    const std::string line = Restriction(customers ? "Cliente" : "Fornitore", filter.codclf, name, "TUTTI");
    if (filter.coddst == 0) return line;
    DESTINAZIONI destination;
    sqldst.Search(cmd, filter.relaz, filter.codclf, filter.coddst, &destination);
    return line + "   " + Restriction("Destinazione", filter.coddst, destination.dst_desc.str(), "TUTTE");
}

} // namespace

bool PrintSchedule(const ScheduleFilter &filter, const std::optional<ReportDestination> &destination)
{
    std::string restrictions, counterpart;
    const bool is_read = RunUnit(LUMERA_TAG, [&](SACommand *cmd) {
        restrictions = FilterLine(cmd, filter);
        counterpart = CounterpartLine(cmd, filter);
    });
    if (!is_read) return false;

    const std::string title = fmt::sprintf("Scadenze %-s", SideWords(filter.relaz));
    CCrystal cry;
    if (!cry.CryOpen("scadenze.rpt", title, 0, 0)) return false;
    cry.CrySetDnsLessConn(lumera_db_type, 0);
    cry.CrySetOrientation(kLandscape);
    cry.CrySelect(FormulaOf(filter), 0);
    cry.CryStringParam(0, "Ditta", CompanyLine());
    cry.CryStringParam(1, "Titolo", title);
    cry.CryStringParam(2, "Filtro", restrictions);
    cry.CryStringParam(3, "Intestatario", counterpart);
    cry.CryDateParam(4, "Oggi", CurrentUserInterface().Today());
    if (destination) cry.CrySetDestination(*destination);
    const bool is_done = cry.CryEsegui();
    cry.CryClose();
    return is_done;
}
