#include "schedule/ScheduleSearch.h"

#include "sqlapi/SACommand.h"

namespace {

/// The text with the characters that LIKE reads as patterns standing for themselves.
std::string Literal(std::string_view text)
{
    std::string literal;
    for (const char c : text) {
        if (c == '%' || c == '_' || c == '\\') literal += '\\';
        literal += c;
    }
    return literal;
}

std::string ConditionOf(const ScheduleSearchValue &value)
{
    std::string where = " WHERE sca_relaz = :rel";
    if (value.codsez != 0) where += " AND sca_sez = :codsez";
    const std::string from = value.data != 0 ? " AND sca_data >= :data" : "";
    switch (value.key) {
    case kByInstalment:
        return where + " AND sca_num >= :num ORDER BY sca_num";
    case kByDueDate:
        return where + from + " ORDER BY sca_data, sca_num";
    case kByInvoice:
        return where + " AND UPPER(sca_fattura) LIKE UPPER(:fattura) ESCAPE '\\'"
                       " ORDER BY sca_fattura, sca_data, sca_num";
    case kByCounterpartOfInstalment:
        break;
    }
    return where + " AND sca_cli_for = :codclf" + from + " ORDER BY sca_data, sca_num";
}

} // namespace

std::vector<ScheduleLine> SearchSchedule(SACommand *cmd, const ScheduleSearchValue &value, std::size_t most)
{
    SACommand query(cmd->Connection(), ScheduleLineQuery() + ConditionOf(value) + " LIMIT :quante");
    query.Param("rel").setAsLong(value.relaz);
    query.Param("quante").setAsLong(static_cast<long>(most));
    if (value.codsez != 0) query.Param("codsez").setAsLong(value.codsez);
    if (value.key == kByInstalment) query.Param("num").setAsLong(value.codice);
    if (value.key == kByInvoice) query.Param("fattura").setAsString(Literal(value.fattura) + "%");
    if (value.key == kByCounterpartOfInstalment) query.Param("codclf").setAsLong(value.codice);
    if (value.data != 0 && (value.key == kByDueDate || value.key == kByCounterpartOfInstalment))
        query.Param("data").setAsDateTime(ToSqlDate(value.data));
    query.Execute();
    std::vector<ScheduleLine> lines;
    while (query.FetchNext()) {
        lines.emplace_back();
        ReadScheduleLine(&query, &lines.back());
    }
    return lines;
}
