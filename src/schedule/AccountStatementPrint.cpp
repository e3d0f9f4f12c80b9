#include "schedule/AccountStatement.h"

#include "schedule/OpenItems.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Text.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/Counterparts.h"

#include <fmt/format.h>

namespace {

std::string FormulaOf(const StatementFilter &filter)
{
    std::string formula = fmt::format("{{scadenze.sca_relaz}} = {}", filter.side);
    if (filter.first_code != 0) formula += fmt::format(" and {{scadenze.sca_cli_for}} >= {}", filter.first_code);
    if (filter.last_code != 0) formula += fmt::format(" and {{scadenze.sca_cli_for}} <= {}", filter.last_code);
    if (filter.d_start != 0) formula += " and {scadenze.sca_data} >= " + FormulaDate(filter.d_start);
    if (filter.d_stop != 0) formula += " and {scadenze.sca_data} <= " + FormulaDate(filter.d_stop);
    if (filter.open_only) formula += fmt::format(" and {}", kOpenFormula);
    return formula;
}

/// "Scadenze aperte al 31/12/2026, con scadenza dal 01/01/2026 al 31/03/2026"
std::string WhatLine(const StatementFilter &filter)
{
    std::string text = filter.open_only ? "Scadenze aperte" : "Scadenze";
    text += " al " + FormatDate(filter.reference_day);
    if (filter.d_start != 0 || filter.d_stop != 0) text += ", con scadenza";
    if (filter.d_start != 0) text += " dal " + FormatDate(filter.d_start);
    if (filter.d_stop != 0) text += " fino al " + FormatDate(filter.d_stop);
    return text;
}

/// "20121 Milano (MI)"
std::string Town(const DITTE &company)
{
    const std::string province = company.dit_prov.empty() ? "" : fmt::format(" ({})", company.dit_prov.str());
    return std::string(Trimmed(fmt::format("{} {}{}", company.dit_cap.str(), company.dit_citta.str(), province)));
}

std::string TaxNumbers(const DITTE &company)
{
    std::string text;
    if (!company.dit_piva.empty()) text = fmt::format("P.IVA {}   ", company.dit_piva.str());
    if (!company.dit_codfis.empty()) text += fmt::format("Codice fiscale {}", company.dit_codfis.str());
    return std::string(Trimmed(text));
}

} // namespace

bool PrintStatements(const StatementFilter &filter, const std::optional<ReportDestination> &destination)
{
    CCrystal cry;
    if (!cry.CryOpen("estrattoconto.rpt", "Estratti conto scadenze", 0, 0)) return false;
    cry.CrySetDnsLessConn(lumera_db_type, 0);
    cry.CrySetOrientation(kPortrait);
    cry.CrySelect(FormulaOf(filter), 0);
    const DITTE &company = lumera_db_impo;
    cry.CryStringParam(0, "Logo", CompanyLogo().string());
    cry.CryStringParam(1, "Azienda", company.dit_desc.str());
    cry.CryStringParam(2, "Indirizzo", company.dit_indirizzo.str());
    cry.CryStringParam(3, "Citta", Town(company));
    cry.CryStringParam(4, "Fiscali", TaxNumbers(company));
    cry.CryStringParam(5, "Cosa", WhatLine(filter));
    cry.CryDateParam(6, "Al", filter.reference_day);
    if (destination) cry.CrySetDestination(*destination);
    const bool is_done = cry.CryEsegui();
    cry.CryClose();
    return is_done;
}
