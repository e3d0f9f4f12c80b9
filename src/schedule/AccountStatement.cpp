#include "schedule/AccountStatement.h"

#include "schedule/OpenItems.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Counterparts.h"
#include "tarvolumera/TableDescription.h"

#include <algorithm>

namespace {

std::string Condition(const StatementFilter &filter)
{
    std::string text = " WHERE sca_relaz = :rel";
    if (filter.first_code != 0) text += " AND sca_cli_for >= :primo";
    if (filter.last_code != 0) text += " AND sca_cli_for <= :ultimo";
    if (filter.d_start != 0) text += " AND sca_data >= :d_start";
    if (filter.d_stop != 0) text += " AND sca_data <= :d_stop";
    if (filter.open_only) text += std::string(" AND ") + kOpenCondition;
    return text;
}

SACommand &Bound(SACommand &query, const StatementFilter &filter)
{
    query.Param("rel").setAsShort(filter.side);
    if (filter.first_code != 0) query.Param("primo").setAsLong(filter.first_code);
    if (filter.last_code != 0) query.Param("ultimo").setAsLong(filter.last_code);
    if (filter.d_start != 0) query.Param("d_start").setAsDateTime(ToSqlDate(filter.d_start));
    if (filter.d_stop != 0) query.Param("d_stop").setAsDateTime(ToSqlDate(filter.d_stop));
    return query;
}

StatementState StateOf(bool is_paid, bool is_parked, long due_day, long reference_day)
{
    if (is_paid) return is_parked ? StatementState::Parked : StatementState::Settled;
    return due_day < reference_day ? StatementState::Overdue : StatementState::Open;
}

StatementLine ReadLine(SACommand *query, long reference_day)
{
    StatementLine line;
    line.code = query->Field("sca_cli_for").asLong();
    line.name = query->Field("nome").asStringView();
    line.num = query->Field("sca_num").asLong();
    line.fattura = query->Field("sca_fattura").asStringView();
    line.data_fattura = FromSqlDate(query->Field("sca_data_fattura").asDateTime());
    line.desc = query->Field("sca_desc").asStringView();
    line.rata = query->Field("sca_rata").asLong();
    line.rate = query->Field("sca_rate").asLong();
    line.data = FromSqlDate(query->Field("sca_data").asDateTime());
    line.importo = query->Field("sca_importo").asDouble();
    line.state = StateOf(query->Field("sca_pagato").asLong() != 0, query->Field("sca_parked").asLong() != 0, line.data,
                         reference_day);
    if (line.state == StatementState::Settled) {
        line.data_pag = FromSqlDate(query->Field("sca_data_pag").asDateTime());
        line.days_late = line.data_pag == 0 ? 0 : std::max(line.data_pag - line.data, 0L);
        return line;
    }
    line.open = line.importo;
    line.overdue = line.data < reference_day ? line.importo : 0;
    line.days_late = std::max(reference_day - line.data, 0L);
    return line;
}

} // namespace

void ForEachStatementLine(SACommand *cmd, const StatementFilter &filter,
                          const std::function<void(StatementLine &&)> &each)
{
    SACommand query(cmd->Connection(),
                    std::string("SELECT sca_cli_for, ") + kNameText +
                        " AS nome, sca_num, sca_fattura, sca_data_fattura, sca_desc, sca_rata, sca_rate, sca_data,"
                        " sca_importo, sca_pagato, sca_parked, sca_data_pag FROM admin.scadenze" +
                        kNameJoins + Condition(filter) + " ORDER BY sca_cli_for, sca_data, sca_num");
    Bound(query, filter).Execute();
    long code = 0;
    long long balance = 0;
    while (query.FetchNext()) {
        StatementLine line = ReadLine(&query, filter.reference_day);
        if (line.code != code) balance = 0;
        code = line.code;
        balance += ToCents(line.open);
        line.balance = FromCents(balance);
        each(std::move(line));
    }
}

StatementTotals ReadStatementTotals(SACommand *cmd, const StatementFilter &filter)
{
    const std::string open = kOpenCondition;
    SACommand query(cmd->Connection(), "SELECT COUNT(*) AS numero, " + CentsText("1 = 1") + " AS importo, " +
                                           CentsText(open) + " AS aperto, " +
                                           CentsText(open + " AND sca_data < :d_al") +
                                           " AS scaduto FROM admin.scadenze" + Condition(filter));
    query.Param("d_al").setAsDateTime(ToSqlDate(filter.reference_day));
    Bound(query, filter).Execute();
    query.FetchNext();
    return {query.Field("numero").asLong(), query.Field("importo").asInt64(), query.Field("aperto").asInt64(),
            query.Field("scaduto").asInt64()};
}

const char *StatementStateName(StatementState state, short side)
{
    switch (state) {
    case StatementState::Open:
        return "aperta";
    case StatementState::Overdue:
        return "scaduta";
    case StatementState::Parked:
        return "in distinta";
    case StatementState::Settled:
        break;
    }
    return side == kCustomer ? "incassata" : "pagata";
}
