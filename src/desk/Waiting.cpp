#include "desk/Waiting.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/fatturapa/InvoiceFileError.h"

#include <fmt/format.h>

namespace {

/// How many filed invoices are looked into at most: a start page is not to read an archive.
constexpr std::size_t kFilesExamined = 60;

/// Files with fewer registered documents than their description names ("..., TD24 n. 210 del ..., TD01 n. 211 del
/// ..."). A description that is cut off names fewer than there are, but never less than one.
constexpr const char *kCandidates =
    " FROM admin.allegati WHERE all_tab_tipo = 20"
    " AND (SELECT COUNT(DISTINCT pno_all_doc) FROM admin.pnota1 WHERE pno_all = all_codice)"
    " < CASE WHEN all_desc LIKE '% n. %' THEN (LENGTH(all_desc) - LENGTH(REPLACE(all_desc, ' n. ', ''))) / 4 ELSE 1 "
    "END";

std::vector<long> CandidateFiles(SACommand *cmd)
{
    SACommand query(cmd->Connection(),
                    fmt::format("SELECT all_codice{} ORDER BY all_date_time, all_codice LIMIT :quante", kCandidates));
    query.Param("quante").setAsLong(static_cast<long>(kFilesExamined) + 1);
    query.Execute();
    std::vector<long> codes;
    while (query.FetchNext()) codes.push_back(query.Field("all_codice").asLong());
    return codes;
}

long CountOfCandidates(SACommand *cmd)
{
    SACommand query(cmd->Connection(), fmt::format("SELECT COUNT(*) AS quante{}", kCandidates));
    query.Execute();
    query.FetchNext();
    return query.Field("quante").asLong();
}

/// Whether the document is registered now, and who its supplier is now.
bool IsStillWaiting(SACommand *cmd, InvoiceRow *row)
{
    if (!row->fault.empty()) return true;
    FORNITORI supplier;
    if (FindSupplierOfRow(cmd, row->vat_number, row->fiscal_code, &supplier)) {
        row->supplier = supplier.for_codice;
        row->supplier_name = supplier.for_desc.str();
    }
    FindRegisteredEntry(cmd, row);
    return !row->is_registered;
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

const std::vector<InvoiceRow> &WaitingReader::DocumentsOf(SACommand *cmd, long code)
{
    if (const auto known = documents_.find(code); known != documents_.end()) return known->second;
    std::vector<InvoiceRow> rows;
    try {
        CFattureElettronicheDB content;
        const ALLEGATI filed = LoadInvoice(cmd, code, &content);
        for (std::size_t document = 0; document < content.Count(); ++document)
            rows.push_back(DescribeInvoice(cmd, filed, content, document));
    } catch (const InvoiceFileError &error) {
        InvoiceRow row;
        row.code = code;
        row.fault = error.what();
        rows.push_back(row);
    }
    return documents_[code] = std::move(rows);
}

void WaitingReader::ReadInvoices(SACommand *cmd, Waiting *waiting)
{
    std::vector<long> files = CandidateFiles(cmd);
    waiting->are_invoices_at_least = files.size() > kFilesExamined;
    if (waiting->are_invoices_at_least) files.pop_back();
    for (const long code : files) {
        for (InvoiceRow row : DocumentsOf(cmd, code)) {
            row.is_registered = false;
            if (!IsStillWaiting(cmd, &row)) continue;
            ++waiting->invoices;
            if (waiting->oldest_invoices.size() < kWaitingListed) waiting->oldest_invoices.push_back(std::move(row));
        }
    }
    // Beyond those looked into, a file stands for one invoice.
    if (waiting->are_invoices_at_least) waiting->invoices += CountOfCandidates(cmd) - static_cast<long>(files.size());
}

Waiting WaitingReader::Read(SACommand *cmd, long today)
{
    if (target_ != lumera_db_target) documents_.clear();
    target_ = lumera_db_target;
    Waiting waiting;
    SATransaction one_picture(cmd, SATransactionKind::Read);
    ReadInvoices(cmd, &waiting);
    constexpr long kFirstDay = 2'299'161; // no date lies before the calendar
    for (const long side : {kCustomer, kSupplier}) {
        waiting.overdue[side] = ReadInstalments(cmd, side, kFirstDay, today - 1);
        waiting.due_soon[side] = ReadInstalments(cmd, side, today, today + kDueSoonDays - 1);
    }
    ReadUnbalanced(cmd, &waiting);
    return waiting;
}
