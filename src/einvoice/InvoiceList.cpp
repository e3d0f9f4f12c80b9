#include "einvoice/InvoiceInbox.h"
#include "einvoice/InvoiceSummary.h"
#include "tarvolumera/fatturapa/FatturaCodes.h"

#include <fmt/format.h>

// One text for the whole list: for each document its supplier as FindSupplierOfRow finds it (a number that is not
// there meets nobody), the entry as CheckPNota does, the warehouse as CheckTestate does. Each step is
// materialized, or its subquery would be computed again wherever its result is used. The
// "+ 0" and the COALESCE keep the engines from walking the journal by number or by date.
std::string InvoiceListQuery(const InvoiceFilter &filter)
{
    std::string condition = " WHERE fat_documento > 0";
    if (filter.first != 0) condition += " AND fat_acquisita >= :start";
    if (filter.last != 0) condition += " AND fat_acquisita < :stop";
    // Most of an archive is registered from its files: those need no further look.
    if (filter.state == InvoiceState::ToRegister)
        condition += " AND NOT EXISTS (SELECT 1 FROM admin.pnota1 WHERE pno_all = fat_codice"
                     " AND pno_all_doc = fat_documento)";
    return "WITH elenco AS MATERIALIZED (SELECT " + sqlfat.ColumnList() +
           ", (SELECT MAX(trovato + 0) FROM"
           " (SELECT for_codice AS trovato FROM admin.fornito1 WHERE for_piva = fat_piva AND fat_piva <> ''"
           " UNION ALL"
           " SELECT for_codice AS trovato FROM admin.fornito1 WHERE for_codfis = fat_codfis AND fat_codfis <> '')"
           " AS trovati) AS fornitore FROM admin.fatture" +
           condition + "), stato AS MATERIALIZED (SELECT " + sqlfat.ColumnList() +
           ", fornitore, (SELECT MAX(trovato + 0) FROM"
           " (SELECT pno_codice AS trovato FROM admin.pnota1 WHERE pno_all = fat_codice AND pno_all_doc = fat_documento"
           " UNION ALL"
           " SELECT pno_codice AS trovato FROM admin.pnota1 WHERE pno_reg IN (2, 6) AND pno_cli_for = fornitore"
           " AND pno_doc = SUBSTR(TRIM(fat_numero), 1, 20) AND COALESCE(pno_data_doc, pno_data_doc) = fat_data"
           " AND NOT EXISTS (SELECT 1 FROM admin.fatture AS altra WHERE altra.fat_codice = pno_all"
           " AND altra.fat_documento = pno_all_doc AND altra.fat_tipo <> elenco.fat_tipo))"
           " AS trovati) AS movimento FROM elenco)"
           " SELECT " +
           sqlfat.ColumnList() +
           ", fornitore, for_desc, movimento, pno_prot, CASE WHEN EXISTS (SELECT 1 FROM admin.testate1"
           " WHERE tes_cod_for = fornitore AND tes_n_fat = SUBSTR(TRIM(fat_numero), 1, 20) AND tes_d_fat = fat_data) "
           "THEN 1 ELSE 0 END"
           " AS magazzino FROM stato LEFT JOIN admin.fornito1 ON for_codice = fornitore"
           " LEFT JOIN admin.pnota1 ON pno_codice = movimento ORDER BY fat_acquisita, fat_codice, fat_documento";
}

namespace {

InvoiceRow ReadRow(SACommand *query)
{
    FATTURE summary;
    sqlfat.ReadFields(query, &summary);
    InvoiceRow row;
    row.code = summary.fat_codice;
    row.year = summary.fat_anno;
    row.document = static_cast<std::size_t>(summary.fat_documento - 1);
    row.documents = static_cast<std::size_t>(summary.fat_documenti);
    row.file_name = summary.fat_fname;
    row.acquired = summary.fat_acquisita;
    row.supplier_name = kUnknownSupplier;
    row.sdi = summary.fat_sdi.str();
    row.fault = summary.fat_guasto.str();
    if (!row.fault.empty()) return row;
    row.seller_name = summary.fat_cedente.str();
    row.vat_number = summary.fat_piva.str();
    row.fiscal_code = summary.fat_codfis.str();
    row.type = summary.fat_tipo.str();
    row.type_text = fatturapa::TipoDocumentoText(row.type);
    row.number = summary.fat_numero.str();
    row.day = summary.fat_data;
    row.total = summary.fat_totale;
    row.is_signed = summary.fat_firmata != 0;
    row.supplier = query->Field("fornitore").asLong();
    if (row.supplier != 0) row.supplier_name = query->Field("for_desc").asString();
    row.entry = query->Field("movimento").asLong();
    row.is_registered = row.entry != 0;
    row.protocol = query->Field("pno_prot").asLong();
    row.is_in_warehouse = query->Field("magazzino").asLong() != 0;
    return row;
}

bool IsInState(const InvoiceRow &row, InvoiceState state)
{
    switch (state) {
    case InvoiceState::ToRegister:
        return !row.is_registered;
    case InvoiceState::Registered:
        return row.is_registered;
    case InvoiceState::ToLoad:
        return row.fault.empty() && !row.is_in_warehouse;
    case InvoiceState::InWarehouse:
        return row.is_in_warehouse;
    case InvoiceState::Unreadable:
        return !row.fault.empty();
    case InvoiceState::Any:
        break;
    }
    return true;
}

/// In capitals, the accented ones too, which the two engines do not compare alike.
bool Contains(std::string_view text, const std::string &capitals)
{
    return ToUpper(text).find(capitals) != std::string::npos;
}

} // namespace

void StreamInvoices(SACommand *cmd, const InvoiceFilter &filter, const std::function<bool(const InvoiceRow &)> &each)
{
    const std::string seller = ToUpper(Trimmed(filter.seller)), number = ToUpper(Trimmed(filter.number));
    const auto is_wanted = [&](const InvoiceRow &row) {
        const bool is_seller = seller.empty() || Contains(row.seller_name, seller) ||
                               (row.supplier != 0 && Contains(row.supplier_name, seller)) ||
                               Contains(row.vat_number, seller) || Contains(row.fiscal_code, seller);
        return is_seller && (number.empty() || Contains(row.number, number)) && IsInState(row, filter.state);
    };
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), InvoiceListQuery(filter));
    if (filter.first != 0) query.Param("start").setAsDateTime(ToSqlDate(filter.first));
    if (filter.last != 0) query.Param("stop").setAsDateTime(ToSqlDate(filter.last + 1));
    query.Execute();
    while (query.FetchNext()) {
        const InvoiceRow row = ReadRow(&query);
        if (is_wanted(row) && !each(row)) break;
    }
}

void ForEachInvoice(SACommand *, const InvoiceFilter &filter, const std::function<bool(const InvoiceRow &)> &each)
{
    CommandScope list(nullptr);
    SummariseOlderInvoices(list.get());
    StreamInvoices(list.get(), filter, each);
}

void ForEachInvoice(SACommand *cmd, long first, long last, const std::function<bool(const InvoiceRow &)> &each)
{
    InvoiceFilter filter;
    filter.first = first;
    filter.last = last;
    ForEachInvoice(cmd, filter, each);
}
