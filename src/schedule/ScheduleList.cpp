#include "schedule/ScheduleList.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Numbers.h"

#include <fmt/format.h>

namespace {

SACommand &Bound(SACommand &query, const ScheduleFilter &filter)
{
    if (filter.relaz != kBothSides) query.Param("rel").setAsLong(filter.relaz);
    if (filter.d_start != 0) query.Param("d_start").setAsDateTime(ToSqlDate(filter.d_start));
    if (filter.d_stop != 0) query.Param("d_stop").setAsDateTime(ToSqlDate(filter.d_stop));
    if (filter.codsez != 0) query.Param("codsez").setAsLong(filter.codsez);
    if (filter.codclf != 0) query.Param("codclf").setAsLong(filter.codclf);
    if (filter.coddst != 0) query.Param("coddst").setAsLong(filter.coddst);
    if (filter.codage != 0) query.Param("codage").setAsLong(filter.codage);
    return query;
}

long CountBehind(SACommand *cmd, const ScheduleFilter &filter, const std::string &condition, long number)
{
    SACommand query(cmd->Connection(), "SELECT COUNT(*) AS numrec FROM admin.scadenze" + condition);
    Bound(query, filter);
    if (number != 0) query.Param("num").setAsLong(number);
    query.Execute();
    return query.FetchNext() ? query.Field("numrec").asLong() : 0;
}

} // namespace

bool IsOverdue(const SCADENZE &instalment, long today)
{
    return instalment.sca_pagato == 0 && instalment.sca_data < today;
}

std::string InstalmentOfInvoice(const SCADENZE &instalment)
{
    return InstalmentOfInvoice(instalment.sca_rata, instalment.sca_rate);
}

std::string InstalmentOfInvoice(long rata, long rate)
{
    return rate == 0 ? std::string() : fmt::format("{}/{}", rata, rate);
}

void ScheduleSums::Add(const SCADENZE &instalment, long today)
{
    const long long cents = ToCents(instalment.sca_importo);
    ++count;
    total += cents;
    (instalment.sca_pagato == 0 ? open : paid) += cents;
    if (IsOverdue(instalment, today)) overdue += cents;
}

const char *StateWords(long relaz, long state)
{
    if (state == kOpenInstalments) return relaz == kCustomer ? "DA INCASSARE" : "NON PAGATE";
    if (state == kPaidInstalments) return relaz == kCustomer ? "INCASSATE" : "PAGATE";
    return "TUTTE";
}

const char *SideWords(long relaz)
{
    return relaz == kCustomer ? "Clienti" : relaz == kSupplier ? "Fornitori" : "Clienti e fornitori";
}

std::string ScheduleCondition(const ScheduleFilter &filter)
{
    std::string condition = filter.relaz == kBothSides ? " WHERE sca_relaz IN (0, 1)" : " WHERE sca_relaz = :rel";
    if (filter.d_start != 0) condition += " AND sca_data >= :d_start";
    if (filter.d_stop != 0) condition += " AND sca_data <= :d_stop";
    if (filter.codsez != 0) condition += " AND sca_sez = :codsez";
    if (filter.codclf != 0) condition += " AND sca_cli_for = :codclf";
    if (filter.coddst != 0) condition += " AND sca_dst = :coddst";
    if (filter.codage != 0) condition += " AND sca_age = :codage";
    if (filter.state == kOpenInstalments) condition += " AND sca_pagato = 0";
    if (filter.state == kPaidInstalments) condition += " AND sca_pagato <> 0";
    return condition;
}

long CountSchedule(SACommand *cmd, const ScheduleFilter &filter)
{
    return CountBehind(cmd, filter, ScheduleCondition(filter), 0);
}

void ForEachScheduleLine(SACommand *cmd, const ScheduleFilter &filter,
                         const std::function<void(const ScheduleLine &)> &each)
{
    const char *order =
        filter.relaz == kBothSides ? "\nORDER BY sca_data, sca_relaz, sca_num" : "\nORDER BY sca_data, sca_num";
    SACommand query(cmd->Connection(), ScheduleLineQuery() + ScheduleCondition(filter) + order);
    Bound(query, filter).Execute();
    ScheduleLine line;
    while (query.FetchNext()) {
        ReadScheduleLine(&query, &line);
        each(line);
    }
}

bool PassesFilter(SACommand *cmd, const ScheduleFilter &filter, long number)
{
    return number != 0 && CountBehind(cmd, filter, ScheduleCondition(filter) + " AND sca_num = :num", number) != 0;
}

const std::string &ScheduleLineQuery()
{
    // A destination's code is its customer's or supplier's own. The generated columns are null on the other side, so
    // that one join each fits both.
    static const std::string text = "SELECT " + sqlsca.ColumnList() +
                                    ", COALESCE(cli_desc, for_desc) AS nome, dst_desc, age_desc, pag_tipo"
                                    " FROM admin.scadenze"
                                    " LEFT JOIN admin.clienti1 ON cli_codice = sca_cliente"
                                    " LEFT JOIN admin.fornito1 ON for_codice = sca_fornitore"
                                    " LEFT JOIN admin.destina1 ON dst_rel = sca_relaz AND dst_cli_for = sca_cli_for"
                                    " AND dst_codice = sca_dst"
                                    " LEFT JOIN admin.agenti1 ON age_codice = sca_age"
                                    " LEFT JOIN admin.pagament ON pag_codice = sca_pag";
    return text;
}

void ReadScheduleLine(SACommand *query, ScheduleLine *line)
{
    sqlsca.ReadFields(query, &line->scadenza);
    // By place, behind the instalment's own columns: a long list would look up millions of names.
    int column = query->FieldCount() - 4;
    for (std::string *text : {&line->name, &line->dst_desc, &line->age_desc, &line->terms})
        *text = query->Field(++column).asStringView();
}
