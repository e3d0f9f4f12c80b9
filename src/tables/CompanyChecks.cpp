#include "tables/FaultList.h"

#include "tarvolumera/JournalEntry.h"

#include <filesystem>
#include <fmt/format.h>

// The company and its settings.

namespace {

void CheckIdentity(FaultList &faults, const DITTE &record)
{
    const bool is_person = record.dit_pers == "F";
    faults.RefuseIf(Trimmed(record.dit_desc).empty(), "desc", "Ragione sociale mancante.");
    faults.RefuseIf(!is_person && record.dit_pers != "G", "pers",
                    "Indicare F (persona fisica) o G (persona giuridica).");
    if (is_person) {
        faults.RefuseIf(Trimmed(record.dit_cognome).empty(), "cognome", "Cognome mancante: è una persona fisica.");
        faults.RefuseIf(Trimmed(record.dit_nome).empty(), "nome", "Nome mancante: è una persona fisica.");
    }
    const FiscalCodeCheck vat = CheckCounterpartVat(record.dit_naz, record.dit_piva);
    faults.RefuseIf(!vat.ok(), "piva", fmt::format("Partita IVA {}: {}.", record.dit_piva.str(), vat.text));
    const FiscalCodeCheck fiscal = CheckCounterpartFiscalCode(record.dit_naz, is_person, record.dit_codfis);
    faults.RefuseIf(!fiscal.ok(), "codfis",
                    fmt::format("Codice fiscale {}: {}.", record.dit_codfis.str(), fiscal.text));
    if (record.dit_piva.empty() && record.dit_codfis.empty())
        faults.Ask("piva", "Mancano partita IVA e codice fiscale.");
}

void CheckSeat(FaultList &faults, const DITTE &record)
{
    NAZIONI nation;
    PROVINCE province;
    faults.RefuseIf(!sqlnaz.Search(faults.Cmd(), record.dit_naz, &nation), "naz",
                    fmt::format("La nazione «{}» non esiste.", record.dit_naz.str()));
    if (record.dit_naz != "IT") return;
    const FiscalCodeCheck postcode = CheckPostcode(record.dit_cap);
    faults.RefuseIf(!record.dit_cap.empty() && !postcode.ok(), "cap",
                    fmt::format("CAP {}: {}.", record.dit_cap.str(), postcode.text));
    faults.RefuseIf(!record.dit_prov.empty() && !sqlprv.Search(faults.Cmd(), record.dit_prov, &province), "prov",
                    fmt::format("La provincia «{}» non esiste.", record.dit_prov.str()));
}

/// @param stored_master  the one in the archive: once it has entries it can no longer be another, since what they stand
/// on would turn into accounts that do not exist
void CheckCounterpartMaster(FaultList &faults, long relation, long master, long account, long stored_master)
{
    const bool customers = relation == kCustomer;
    const char *mas = customers ? "mas_cli" : "mas_for", *con = customers ? "con_cli" : "con_for";
    MASTRI master_record;
    CONTI account_record;
    if (!sqlmas.Search(faults.Cmd(), master, &master_record))
        return faults.Refuse(mas, fmt::format("Il mastro {} non esiste.", master));
    faults.RefuseIf((customers ? master_record.mas_cli : master_record.mas_for) == 0, mas,
                    fmt::format("Il mastro {} non è dei {}.", master, customers ? "clienti" : "fornitori"));
    faults.RefuseIf(!sqlcon.Search(faults.Cmd(), master, account, &account_record), con,
                    fmt::format("Il conto {}.{} non esiste.", master, account));
    if (stored_master == 0 || stored_master == master) return;
    const long rows = CountRows(faults.Cmd(), "SELECT COUNT(*) FROM admin.pnotaro2 WHERE row_mas = :mastro",
                                [&](SACommand &query) { query.Param("mastro").setAsLong(stored_master); });
    faults.RefuseIf(
        rows > 0, mas,
        fmt::format("Il mastro {} ha già righe di prima nota ({}): non può essere sostituito.", stored_master, rows));
}

} // namespace

std::vector<FieldFault> CheckDitta(SACommand *cmd, const DITTE &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "dit_");
    faults.Code("codice", record.dit_codice, sqldit, &record, is_new);
    CheckIdentity(faults, record);
    CheckSeat(faults, record);
    faults.RefuseIf(record.dit_anno < 1980 || record.dit_anno > 9999, "anno", "L'esercizio va dal 1980 al 9999.");
    faults.Flag("fuori_anno", record.dit_fuori_anno);
    faults.RefuseIf(record.dit_periodicita != "M" && record.dit_periodicita != "T", "periodicita",
                    "Liquidazione IVA: M mensile o T trimestrale.");
    faults.Range("tasso_mora", record.dit_tasso_mora, 0, 100);
    DITTE stored;
    sqldit.Search(scope.get(), record.dit_codice, &stored);
    CheckCounterpartMaster(faults, kCustomer, record.dit_mas_cli, record.dit_con_cli, stored.dit_mas_cli);
    CheckCounterpartMaster(faults, kSupplier, record.dit_mas_for, record.dit_con_for, stored.dit_mas_for);
    faults.RefuseIf(record.dit_mas_cli == record.dit_mas_for, "mas_for",
                    "Clienti e fornitori vogliono due mastri diversi.");
    faults.Flag("manutenzione", record.dit_manutenzione);
    return faults.Take();
}

namespace {

struct WantedCausale {
    const char *field;
    long code, vat_register, relation;
    const char *use; ///< "i pagamenti ai fornitori"
};

void CheckAutomaticCausale(FaultList &faults, const WantedCausale &wanted)
{
    if (wanted.code == 0) return;
    CAUCONT causale;
    if (!sqlcac.Search(faults.Cmd(), wanted.code, &causale))
        faults.Refuse(wanted.field, fmt::format("La causale {} non esiste.", wanted.code));
    else if (causale.cac_reg != wanted.vat_register || causale.cac_rel != wanted.relation)
        faults.Refuse(wanted.field, fmt::format("La causale {} non è adatta per {}: serve il registro {} con un {}.",
                                                wanted.code, wanted.use, RegisterName(wanted.vat_register),
                                                wanted.relation == kCustomer ? "cliente" : "fornitore"));
}

/// A share that is not mounted today must not keep the other settings from being saved: a question is enough for a
/// folder that was there when it was set.
void CheckFolder(FaultList &faults, const FLAG &record)
{
    const std::string folder = record.flg_sdi_cartella.str();
    std::error_code unreachable;
    if (folder.empty() || std::filesystem::is_directory(folder, unreachable)) return;
    FLAG stored;
    const std::string text = fmt::format("La cartella delle fatture ricevute «{}» non esiste.", folder);
    if (sqlflg.Search(faults.Cmd(), record.flg_codice, &stored) && stored.flg_sdi_cartella == record.flg_sdi_cartella)
        faults.Ask("sdi_cartella", text);
    else
        faults.Refuse("sdi_cartella", text);
}

} // namespace

std::vector<FieldFault> CheckFlag(SACommand *cmd, const FLAG &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "flg_");
    faults.Code("codice", record.flg_codice, sqlflg, &record, is_new);
    DITTE company;
    faults.RefuseIf(!sqldit.Search(scope.get(), record.flg_codice, &company), "codice",
                    fmt::format("La ditta {} non esiste.", record.flg_codice));
    faults.Account("mas_iva_acq", record.PurchaseVat());
    faults.Account("mas_iva_ven", record.SalesVat());
    faults.Account("mas_iva_cor", record.ReceiptsVat());
    faults.Account("mas_iva_sos", record.SuspendedVat());
    faults.Account("mas_iva_cee", record.EuVat());
    faults.Account("mas_arr_att", record.RoundingIncome());
    faults.Account("mas_arr_pas", record.RoundingExpense());
    faults.Range("arr_limite", record.flg_arr_limite, 0, 1000);
    for (const WantedCausale &wanted :
         {WantedCausale{"cau_pagamento", record.flg_cau_pagamento, kJournalOnly, kSupplier, "i pagamenti ai fornitori"},
          WantedCausale{"cau_incasso", record.flg_cau_incasso, kJournalOnly, kCustomer, "gli incassi dai clienti"},
          WantedCausale{"cau_effetti", record.flg_cau_effetti, kJournalOnly, kCustomer, "gli incassi di effetti"},
          WantedCausale{"cau_fatture", record.flg_cau_fatture, kPurchases, kSupplier, "le fatture ricevute"}})
        CheckAutomaticCausale(faults, wanted);
    faults.Flag("fatture_altro_anno", record.flg_fatture_altro_anno);
    CheckFolder(faults, record);
    CAUMAG reason;
    faults.Reference("cau_magazzino", sqlcam, record.flg_cau_magazzino, "La causale di magazzino");
    if (IsCode(record.flg_cau_magazzino) && sqlcam.Search(scope.get(), record.flg_cau_magazzino, &reason) &&
        reason.cam_tipo != "C")
        faults.Refuse("cau_magazzino",
                      fmt::format("La causale di magazzino {} è di scarico: per le fatture ricevute ne "
                                  "serve una di carico.",
                                  reason.cam_codice));
    return faults.Take();
}
