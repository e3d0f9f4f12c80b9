#include "schedule/Aging.h"

#include "schedule/OpenItems.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/Counterparts.h"
#include "tarvolumera/TableDescription.h"

#include <fmt/format.h>

namespace {

/// The sums of an aging, to stand between SELECT and FROM. :d_30 is 30 days before the reference day :d_al, and so on:
/// an instalment due on it is exactly 30 days overdue.
std::string Sums()
{
    return "COUNT(*) AS numero, " + CentsText("sca_data >= :d_al") + " AS sca_scadere, " +
           CentsText("sca_data < :d_al AND sca_data >= :d_30") + " AS sca_30, " +
           CentsText("sca_data < :d_30 AND sca_data >= :d_60") + " AS sca_60, " +
           CentsText("sca_data < :d_60 AND sca_data >= :d_90") + " AS sca_90, " +
           CentsText("sca_data < :d_90 AND sca_data >= :d_120") + " AS sca_120, " + CentsText("sca_data < :d_120") +
           " AS sca_oltre, " + CentsText("sca_data < :d_al") + " AS sca_scaduto";
}

std::string Condition(const AgingFilter &filter)
{
    std::string text = std::string(" WHERE sca_relaz = :rel AND ") + kOpenCondition;
    if (filter.code != 0) text += " AND sca_cli_for = :codclf";
    return text;
}

SACommand &Bound(SACommand &query, const AgingFilter &filter)
{
    query.Param("rel").setAsShort(filter.side);
    if (filter.code != 0) query.Param("codclf").setAsLong(filter.code);
    query.Param("d_al").setAsDateTime(ToSqlDate(filter.reference_day));
    for (const long days : {30, 60, 90, 120})
        query.Param(fmt::format("d_{}", days)).setAsDateTime(ToSqlDate(filter.reference_day - days));
    return query;
}

AgingLine ReadSums(SACommand *query)
{
    AgingLine line;
    line.count = query->Field("numero").asLong();
    line.not_due = query->Field("sca_scadere").asInt64();
    line.sca_30 = query->Field("sca_30").asInt64();
    line.sca_60 = query->Field("sca_60").asInt64();
    line.sca_90 = query->Field("sca_90").asInt64();
    line.sca_120 = query->Field("sca_120").asInt64();
    line.sca_oltre = query->Field("sca_oltre").asInt64();
    return line;
}

} // namespace

void ForEachAging(SACommand *cmd, const AgingFilter &filter, const std::function<void(AgingLine &&)> &each)
{
    // The sums first, the names for what is left of them: a join of a million instalments costs more than their sum.
    const char *names = filter.side == kCustomer ? "admin.clienti1 ON cli_codice = sca_cli_for"
                                                 : "admin.fornito1 ON for_codice = sca_cli_for";
    const std::string name = filter.side == kCustomer ? "cli_desc" : "for_desc";
    SACommand query(cmd->Connection(), "SELECT saldi.*, " + name + " AS nome FROM (SELECT sca_cli_for, " + Sums() +
                                           " FROM admin.scadenze" + Condition(filter) +
                                           " GROUP BY sca_cli_for) AS saldi LEFT JOIN " + names + " ORDER BY " +
                                           (filter.order == AgingOrder::Overdue ? "sca_scaduto DESC, " : "") +
                                           "UPPER(" + name + "), sca_cli_for");
    Bound(query, filter).Execute();
    while (query.FetchNext()) {
        AgingLine line = ReadSums(&query);
        line.code = query.Field("sca_cli_for").asLong();
        line.name = query.Field("nome").asStringView();
        each(std::move(line));
    }
}

AgingLine ReadAgingTotal(SACommand *cmd, const AgingFilter &filter)
{
    SACommand query(cmd->Connection(), "SELECT " + Sums() + " FROM admin.scadenze" + Condition(filter));
    Bound(query, filter).Execute();
    query.FetchNext();
    return ReadSums(&query);
}
