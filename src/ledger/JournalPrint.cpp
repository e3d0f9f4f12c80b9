#include "ledger/JournalPrint.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvolumera/Causali.h"
#include "tarvolumera/Lookups.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <algorithm>
#include <fmt/printf.h>

namespace {

/// Puts the bounds of the journal in the place of those that are missing; an empty journal has those of its year.
void CompleteBounds(SACommand *cmd, JournalPrintFilter *filter)
{
    SACommand query(cmd->Connection(), "SELECT MAX(pno_codice) AS ultimo, MIN(pno_data) AS dal, MAX(pno_data) AS al"
                                       " FROM admin.pnota1");
    query.Execute();
    query.FetchNext();
    const auto day = [&](const char *column, long otherwise) {
        const SADateTime date = query.Field(column).asDateTime();
        return date.IsNull() ? otherwise : DateToJulian(date.GetDay(), date.GetMonth(), date.GetYear());
    };
    const int year = static_cast<int>(lumera_db_impo.dit_anno);
    if (filter->d_start == 0) filter->d_start = day("dal", DateToJulian(1, 1, year));
    // What begins behind the last entry is empty, but has no end before its beginning.
    if (filter->n_stop == 0) filter->n_stop = std::max(filter->n_start, query.Field("ultimo").asLong());
    if (filter->d_stop == 0) filter->d_stop = std::max(filter->d_start, day("al", DateToJulian(31, 12, year)));
}

std::string FormulaOf(const JournalPrintFilter &filter)
{
    std::string formula =
        fmt::sprintf("{pnota.pno_codice} in %ld to %ld AND {pnota.pno_data} in Date(%d,%d,%d) to Date(%d,%d,%d)",
                     filter.n_start, filter.n_stop, Year(filter.d_start), Month(filter.d_start), Day(filter.d_start),
                     Year(filter.d_stop), Month(filter.d_stop), Day(filter.d_stop));
    if (filter.codsez != 0) formula += fmt::sprintf(" AND {pnota.pno_sez} = %ld", filter.codsez);
    if (filter.codcac != 0) formula += fmt::sprintf(" AND {pnota.pno_cau} = %ld", filter.codcac);
    return formula;
}

std::string SectionLine(SACommand *cmd, long code)
{
    if (code == 0) return "Sezione : TUTTE";
    SEZIONI section;
    sqlsez.Search(cmd, code, &section);
    return fmt::sprintf("Sezione : %ld %-s", code, section.sez_desc.str());
}

std::string CausaleLine(SACommand *cmd, long code)
{
    if (code == 0) return "Causale : TUTTE";
    CAUCONT causale;
    sqlcac.Search(cmd, code, &causale);
    return fmt::sprintf("Causale : %ld %-s", code, causale.cac_desc.str());
}

} // namespace

bool PrintJournalList(const JournalPrintFilter &filter, const std::optional<ReportDestination> &destination)
{
    JournalPrintFilter bounds = filter;
    std::string section, causale;
    const bool is_read = RunUnit(LUMERA_TAG, [&](SACommand *cmd) {
        CompleteBounds(cmd, &bounds);
        section = SectionLine(cmd, bounds.codsez);
        causale = CausaleLine(cmd, bounds.codcac);
    });
    if (!is_read) return false;

    CCrystal cry;
    if (!cry.CryOpen("pnotagest.rpt", "Movimenti Prima Nota", 0, 0)) return false;
    cry.CrySetDnsLessConn(lumera_db_type, 0);
    cry.CrySetOrientation(kLandscape);
    cry.CrySelect(FormulaOf(bounds), 0);
    cry.CryStringParam(0, "Ditta",
                       fmt::sprintf("Ditta : %ld %-s", lumera_db_impo.dit_codice, lumera_db_impo.dit_desc.str()));
    cry.CryStringParam(1, "Sezione", section);
    cry.CryStringParam(2, "Causale", causale);
    cry.CryDateParam(3, "Start", bounds.d_start);
    cry.CryDateParam(4, "Stop", bounds.d_stop);
    if (destination) cry.CrySetDestination(*destination);
    const bool is_done = cry.CryEsegui();
    cry.CryClose();
    return is_done;
}
