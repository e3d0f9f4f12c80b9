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

namespace {

/// What the entry takes from its counterpart.
struct CounterpartData {
    long code = 0, account = 0, terms = 0;
    Text<91> name;
};

CounterpartData ReadCounterpart(SACommand *cmd, long relation, long code)
{
    CounterpartData data;
    if (relation == kCustomer) {
        CLIENTI customer;
        sqlcli.Search(cmd, code, &customer);
        data = {customer.cli_codice, GetContoCliente(&customer), customer.cli_pag, customer.cli_desc};
    } else if (relation == kSupplier) {
        FORNITORI supplier;
        sqlfor.Search(cmd, code, &supplier);
        data = {supplier.for_codice, GetContoFornitore(&supplier), supplier.for_pag, supplier.for_desc};
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
    row->des_sot = AccountDescription(cmd, row->Account());
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
    const bool found = sqlcac.Search(scope.get(), code, &causale);
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
    entry->pno_rel = found && causale.cac_rel != kNoCounterpart ? causale.cac_rel : kNoCounterpart;
    if (entry->pno_rel != kNoCounterpart) {
        counterpart = ReadCounterpart(scope.get(), entry->pno_rel, entry->pno_cli_for);
        TakeCounterpart(scope.get(), entry, counterpart);
    }
    entry->righe = {};
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
        if (row.row_n_doc.empty() || row.row_n_doc == previous) row.row_n_doc = entry->pno_doc;
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
