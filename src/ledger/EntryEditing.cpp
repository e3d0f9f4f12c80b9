#include "ledger/EntryEditing.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Causali.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/Lookups.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/PaymentTerms.h"
#include "tarvolumera/Protocols.h"

#include <cmath>
#include <fmt/format.h>

namespace {

/// What the entry takes from its counterpart.
struct CounterpartData {
    long relation = kNoCounterpart, code = 0, account = 0, terms = 0;
    Text<91> name;
};

CounterpartData ReadCounterpart(SACommand *cmd, long relation, long code)
{
    CounterpartData data;
    if (relation == kCustomer) {
        CLIENTI customer;
        sqlcli.Search(cmd, code, &customer);
        data = {relation, customer.cli_codice, GetContoCliente(&customer), customer.cli_pag, customer.cli_desc};
    } else if (relation == kSupplier) {
        FORNITORI supplier;
        sqlfor.Search(cmd, code, &supplier);
        data = {relation, supplier.for_codice, GetContoFornitore(&supplier), supplier.for_pag, supplier.for_desc};
    }
    return data;
}

void TakeCounterpart(SACommand *cmd, PNOTA *entry, const CounterpartData &data)
{
    entry->pno_cli_for = data.code;
    entry->des_clifor = data.name;
    entry->pno_pag = data.terms;
    PAGAMENTI terms;
    sqlpag.Search(cmd, data.terms, &terms);
    entry->des_pag = terms.pag_desc;
}

bool IsCounterpartMaster(long mas)
{
    return mas != 0 && (mas == lumera_db_impo.dit_mas_cli || mas == lumera_db_impo.dit_mas_for);
}

void RowFromTemplate(SACommand *cmd, const CAUCONT &causale, const CAUCONT_RIGA &model,
                     const CounterpartData &counterpart, PNOTA_RIGA *row)
{
    row->row_mas = model.car_mas;
    row->row_con = model.car_con;
    row->row_sot = model.car_sot;
    if (IsCounterpartMaster(model.car_mas)) {
        row->row_con = counterpart.account;
        row->row_sot = counterpart.code;
    }
    const bool is_own = counterpart.code != 0 && row->Account().IsSet() &&
                        MasterRelation(lumera_db_impo, row->row_mas) == counterpart.relation;
    row->des_sot = is_own ? counterpart.name : AccountDescription(cmd, row->Account());
    if (causale.cac_codice == 0) return;
    row->row_auto = model.car_auto;
    row->row_tipo = model.car_tipo == 0 ? "D" : model.car_tipo == 1 ? "A" : "";
    row->row_base = row->row_tipo;
    if (model.car_mas == 0) return;
    row->row_cau = causale.cac_codice;
    row->row_descac = causale.cac_desc;
}

void RenumberProtocol(SACommand *cmd, PNOTA *entry)
{
    entry->pno_prot = GetProt(cmd, entry->pno_sez, Year(entry->pno_data), entry->pno_reg);
}

} // namespace

void EnterCausale(SACommand *cmd, PNOTA *entry, long code)
{
    CommandScope scope(cmd);
    CAUCONT causale;
    sqlcac.Search(scope.get(), code, &causale);
    EnterCausale(scope.get(), entry, causale);
}

void EnterCausale(SACommand *cmd, PNOTA *entry, const CAUCONT &causale)
{
    CommandScope scope(cmd);
    entry->pno_cau = causale.cac_codice;
    entry->pno_reg = causale.cac_reg;
    entry->pno_cau_iva = causale.cac_iva;
    entry->pno_iva_sosp = causale.cac_iva_sosp;
    if (causale.cac_sez != 0) entry->pno_sez = causale.cac_sez;
    entry->pno_des_cau = causale.cac_desc;
    entry->pno_prot_fisso = 0; // what was fixed was a protocol of another register
    RenumberProtocol(scope.get(), entry);
    entry->iva = {};

    CounterpartData counterpart;
    entry->pno_rel = causale.cac_codice != 0 ? causale.cac_rel : kNoCounterpart;
    if (entry->pno_rel != kNoCounterpart) {
        counterpart = ReadCounterpart(scope.get(), entry->pno_rel, entry->pno_cli_for);
        TakeCounterpart(scope.get(), entry, counterpart);
    }
    entry->righe = {};
    entry->centri.clear(); // they split rows that are gone
    for (std::size_t i = 0; i < causale.righe.size(); ++i)
        RowFromTemplate(scope.get(), causale, causale.righe[i], counterpart, &entry->righe[i]);
    sqlpno.RecalcPNota(scope.get(), entry, 1, 0, 0, 0, 0);
}

bool EnterCounterpart(SACommand *cmd, PNOTA *entry, long code)
{
    CommandScope scope(cmd);
    const long previous = entry->pno_cli_for;
    const CounterpartData counterpart = ReadCounterpart(scope.get(), entry->pno_rel, code);
    TakeCounterpart(scope.get(), entry, counterpart);
    const long master = entry->pno_rel == kCustomer ? lumera_db_impo.dit_mas_cli : lumera_db_impo.dit_mas_for;
    for (PNOTA_RIGA &row : entry->righe) {
        // Rows that stand on somebody else were put there by hand and stay.
        if (!row.InUse() || row.row_mas != master || (row.row_sot != 0 && row.row_sot != previous)) continue;
        row.row_con = counterpart.account;
        row.row_sot = counterpart.code;
        row.des_sot = counterpart.name;
    }
    return counterpart.code != 0;
}

void EnterCausaleDescription(PNOTA *entry, std::string_view text)
{
    entry->pno_des_cau = text;
    for (PNOTA_RIGA &row : entry->righe) {
        if (row.row_cau == entry->pno_cau) row.row_descac = entry->pno_des_cau;
    }
}

void EnterDocumentNumber(PNOTA *entry, std::string_view number)
{
    const Text<20> previous = entry->pno_doc;
    entry->pno_doc = Trimmed(number);
    for (PNOTA_RIGA &row : entry->righe) {
        if (!row.InUse() || row.row_cau != entry->pno_cau) continue;
        if (!row.row_n_doc.empty() && row.row_n_doc != previous) continue;
        row.row_n_doc = entry->pno_doc;
        row.row_d_doc = 0; // the header's, when it is stored
    }
}

bool EnterSection(SACommand *cmd, PNOTA *entry, long code)
{
    CommandScope scope(cmd);
    SEZIONI section;
    const bool found = sqlsez.Search(scope.get(), code, &section);
    entry->pno_sez = section.sez_codice;
    if (entry->pno_prot_fisso == 0) RenumberProtocol(scope.get(), entry);
    return found;
}

bool EnterTerms(SACommand *cmd, PNOTA *entry, long code)
{
    PAGAMENTI terms;
    const bool found = sqlpag.Search(cmd, code, &terms);
    entry->pno_pag = terms.pag_codice;
    entry->des_pag = terms.pag_desc;
    const std::string_view start = Trimmed(terms.pag_ini);
    if (entry->pno_data_pag == 0 && (start == "FINE MESE" || start == "DATA FATTURA"))
        entry->pno_data_pag = entry->pno_data_doc;
    return found;
}

void EnterDocumentTotal(SACommand *cmd, PNOTA *entry, double total)
{
    entry->pno_tot_doc = Round(total, 2);
    sqlpno.RecalcPNota(cmd, entry, 0, 0, 0, 0, 0);
}

void EnterDocumentDate(PNOTA *entry, long day)
{
    for (PNOTA_RIGA &row : entry->righe) {
        if (row.InUse() && row.row_n_doc == entry->pno_doc && row.row_d_doc == entry->pno_data_doc) row.row_d_doc = 0;
    }
    entry->pno_data_doc = day;
}

PNOTA CopyAsNew(SACommand *cmd, const PNOTA &original, long day)
{
    CommandScope scope(cmd);
    PNOTA blank, copy = original;
    sqlpno.Blank(scope.get(), &blank);
    copy.pno_codice = blank.pno_codice;
    copy.pno_data = day;
    copy.pno_prot_fisso = 0;
    copy.pno_data_pag = 0;
    copy.pno_operazione = kOrdinary;
    copy.pno_verifica = copy.pno_trasf = 0;
    copy.pno_agr = copy.pno_all = copy.pno_all_doc = 0;
    copy.pno_revisione = 0;
    copy.allegati.clear();
    for (PNOTA_RIGA &row : copy.righe) {
        if (row.row_n_doc == copy.pno_doc) row.row_d_doc = 0; // its date is likely to be changed
    }
    RenumberProtocol(scope.get(), &copy);
    return copy;
}

namespace {

struct RegisterNeighbour {
    long protocol = 0, day = 0;
};

/// The entry whose protocol comes next before or behind the entry's own.
RegisterNeighbour NeighbourOf(SACommand *cmd, const PNOTA &entry, bool before)
{
    SACommand query(cmd->Connection(),
                    std::string("SELECT pno_prot, pno_data FROM admin.pnota1 WHERE EXTRACT(YEAR FROM pno_data) = :anno"
                                " AND pno_sez = :sez AND pno_reg = :reg AND pno_codice <> :codice AND pno_prot ") +
                        (before ? "< :prot ORDER BY pno_prot DESC" : "> :prot ORDER BY pno_prot") + " LIMIT 1");
    query.Param("anno").setAsLong(Year(entry.pno_data));
    query.Param("sez").setAsLong(entry.pno_sez);
    query.Param("reg").setAsLong(entry.pno_reg);
    query.Param("codice").setAsLong(entry.pno_codice);
    query.Param("prot").setAsLong(entry.pno_prot);
    query.Execute();
    if (!query.FetchNext()) return {};
    return {query.Field("pno_prot").asLong(), FromSqlDate(query.Field("pno_data").asDateTime())};
}

} // namespace

std::string DescribeProtocolOrder(SACommand *cmd, const PNOTA &entry)
{
    if (entry.pno_prot == 0 || entry.pno_data == 0) return {};
    CommandScope scope(cmd);
    const RegisterNeighbour before = NeighbourOf(scope.get(), entry, true);
    const RegisterNeighbour behind =
        before.day > entry.pno_data ? RegisterNeighbour{} : NeighbourOf(scope.get(), entry, false);
    const bool is_behind = behind.day != 0 && behind.day < entry.pno_data;
    if (before.day <= entry.pno_data && !is_behind) return {};
    const RegisterNeighbour &other = is_behind ? behind : before;
    return fmt::format("Date non in ordine: il protocollo {} del registro {} è del {}", other.protocol,
                       RegisterName(entry.pno_reg), FormatDate(other.day));
}

void LeaveRowCausale(PNOTA *entry, std::size_t row)
{
    if (row >= kEntryRows) return;
    PNOTA_RIGA &target = entry->righe[row];
    if (!target.InUse() || target.row_cau != 0) return;
    target.row_cau = entry->pno_cau;
    target.row_descac = entry->pno_des_cau;
}

void LeaveRowDocument(PNOTA *entry, std::size_t row)
{
    if (row >= kEntryRows) return;
    PNOTA_RIGA &target = entry->righe[row];
    if (target.InUse() && target.row_n_doc.empty()) target.row_n_doc = entry->pno_doc;
}

void LeaveRowAmount(SACommand *cmd, PNOTA *entry, std::size_t row)
{
    if (row >= kEntryRows) return;
    // Before 2002 the books were in lire, which have no cents.
    const int decimals = lumera_db_impo.dit_anno < 2002 ? 0 : 2;
    PNOTA_RIGA &target = entry->righe[row];
    if (!target.InUse()) return;
    sqlpno.Squadratura(cmd, entry); // an amount typed in another row has changed it
    if (!TestIfZero(target.row_importo, decimals) || TestIfZero(entry->pno_tot_squ, decimals)) return;
    target.row_importo = std::fabs(entry->pno_tot_squ);
    sqlpno.Squadratura(cmd, entry);
}
