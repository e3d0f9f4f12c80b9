#include "desk/Waiting.h"

#include "einvoice/InvoiceSummary.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <fmt/format.h>

namespace {

/// How many files are read at most that were filed before their summaries were kept: a start page is not to read an
/// archive. The list of invoices reads them all.
constexpr long kFilesRead = 60;

void ReadInvoices(SACommand *cmd, Waiting *waiting)
{
    InvoiceFilter filter;
    filter.state = InvoiceState::ToRegister;
    StreamInvoices(cmd, filter, [&](const InvoiceRow &row) {
        ++waiting->invoices;
        if (waiting->oldest_invoices.size() < kWaitingListed) waiting->oldest_invoices.push_back(row);
        return true;
    });
}

WaitingInstalments ReadInstalments(SACommand *cmd, long side, long first_day, long last_day)
{
    const bool customers = side == kCustomer;
    constexpr const char *kCondition = " FROM admin.scadenze WHERE sca_relaz = :lato AND sca_pagato = 0"
                                       " AND sca_data >= :d_start AND sca_data <= :d_stop";
    const auto bind = [&](SACommand &query) {
        query.Param("lato").setAsLong(side);
        query.Param("d_start").setAsDateTime(ToSqlDate(first_day));
        query.Param("d_stop").setAsDateTime(ToSqlDate(last_day));
    };
    WaitingInstalments found;
    SACommand totals(cmd->Connection(),
                     fmt::format("SELECT COUNT(*) AS quante, SUM(sca_importo) AS importo{}", kCondition));
    bind(totals);
    totals.Execute();
    totals.FetchNext();
    found.count = totals.Field("quante").asLong();
    found.cents = ToCents(totals.Field("importo").asDouble());
    if (found.count == 0) return found;

    SACommand query(cmd->Connection(),
                    fmt::format("SELECT sca_num, sca_data, sca_importo, sca_fattura, {} AS nome"
                                " FROM (SELECT sca_num, sca_data, sca_importo, sca_fattura, sca_cli_for{}"
                                " ORDER BY sca_data, sca_num LIMIT :quante) AS prime"
                                " LEFT JOIN {} = sca_cli_for ORDER BY sca_data, sca_num",
                                customers ? "cli_desc" : "for_desc", kCondition,
                                customers ? "admin.clienti1 ON cli_codice" : "admin.fornito1 ON for_codice"));
    bind(query);
    query.Param("quante").setAsLong(static_cast<long>(kWaitingListed));
    query.Execute();
    while (query.FetchNext())
        found.first.push_back({query.Field("sca_num").asLong(), FromSqlDate(query.Field("sca_data").asDateTime()),
                               ToCents(query.Field("sca_importo").asDouble()), query.Field("nome").asString(),
                               query.Field("sca_fattura").asString()});
    return found;
}

void ReadUnbalanced(SACommand *cmd, Waiting *waiting)
{
    // The index on the date bounds what is looked at; closed years are the archive check's.
    constexpr const char *kCondition =
        " FROM admin.pnota1 WHERE pno_data >= :d_start AND ABS(pno_dare - pno_avere) >= 0.005";
    const SADateTime start = ToSqlDate(DateToJulian(1, 1, static_cast<int>(lumera_db_impo.dit_anno)));
    SACommand count(cmd->Connection(), fmt::format("SELECT COUNT(*) AS quanti{}", kCondition));
    count.Param("d_start").setAsDateTime(start);
    count.Execute();
    count.FetchNext();
    waiting->unbalanced = count.Field("quanti").asLong();
    if (waiting->unbalanced == 0) return;

    SACommand query(cmd->Connection(),
                    fmt::format("SELECT pno_codice, pno_data, pno_desc, pno_des_cau, pno_dare, pno_avere{}"
                                " ORDER BY pno_data, pno_codice LIMIT :quanti",
                                kCondition));
    query.Param("d_start").setAsDateTime(start);
    query.Param("quanti").setAsLong(static_cast<long>(kWaitingListed));
    query.Execute();
    while (query.FetchNext()) {
        const std::string text = query.Field("pno_desc").asString();
        waiting->unbalanced_entries.push_back(
            {query.Field("pno_codice").asLong(), FromSqlDate(query.Field("pno_data").asDateTime()),
             text.empty() ? query.Field("pno_des_cau").asString() : text, ToCents(query.Field("pno_dare").asDouble()),
             ToCents(query.Field("pno_avere").asDouble())});
    }
}

} // namespace

bool Waiting::IsNothing() const
{
    return invoices == 0 && unbalanced == 0 && overdue[0].count + overdue[1].count == 0 &&
           due_soon[0].count + due_soon[1].count == 0;
}

Waiting WaitingReader::Read(SACommand *cmd, long today)
{
    const long unread = SummariseOlderInvoices(cmd, kFilesRead); // a file stands for one invoice
    Waiting waiting;
    SATransaction one_picture(cmd, SATransactionKind::Read);
    ReadInvoices(cmd, &waiting);
    waiting.invoices += unread;
    waiting.are_invoices_at_least = unread > 0;
    constexpr long kFirstDay = 2'299'161; // no date lies before the calendar
    for (const long side : {kCustomer, kSupplier}) {
        waiting.overdue[side] = ReadInstalments(cmd, side, kFirstDay, today - 1);
        waiting.due_soon[side] = ReadInstalments(cmd, side, today, today + kDueSoonDays - 1);
    }
    ReadUnbalanced(cmd, &waiting);
    return waiting;
}
