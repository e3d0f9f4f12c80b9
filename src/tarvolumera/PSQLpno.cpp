#include "tarvolumera/PSQLpno.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Attachments.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/JournalTotals.h"
#include "tarvolumera/Lookups.h"
#include "tarvolumera/PSQLrow.h"
#include "tarvolumera/PaymentTerms.h"
#include "tarvolumera/Protocols.h"

#include <fmt/format.h>
#include <mutex>
#include <random>

CPSQLpno sqlpno;

namespace {

/// A column of one of the seven VAT lines.
template <std::size_t Line, auto Pointer>
ColumnDescription VatColumn(const char *name, unsigned flags = kPlain)
{
    using Member = typename table_description::MemberTraits<decltype(Pointer)>::MemberType;
    return {name, table_description::KindOf<Member>(), flags,
            [](void *record) -> void * { return &(static_cast<PNOTA *>(record)->iva[Line].*Pointer); }};
}

#define VAT_LINE(n)                                                                                                    \
    VatColumn<n, &PNOTA_IVA::iva>("pno_iva_" #n, kNullIfZero), VatColumn<n, &PNOTA_IVA::tip>("pno_tip_" #n),           \
        VatColumn<n, &PNOTA_IVA::aliq>("pno_aliq_" #n), VatColumn<n, &PNOTA_IVA::impo>("pno_impo_" #n),                \
        VatColumn<n, &PNOTA_IVA::imposta>("pno_imposta_" #n), VatColumn<n, &PNOTA_IVA::ind>("pno_ind_" #n)

TableDescription JournalDescription()
{
    return {"pnota1",
            {LUMERA_COLUMN(PNOTA, pno_codice, kKey),
             LUMERA_DATE(PNOTA, pno_data),
             LUMERA_CODE(PNOTA, pno_cau),
             LUMERA_PLAIN(PNOTA, pno_des_cau),
             LUMERA_PLAIN(PNOTA, pno_desc),
             LUMERA_PLAIN(PNOTA, pno_doc),
             LUMERA_PLAIN(PNOTA, pno_paddoc),
             LUMERA_DATE(PNOTA, pno_data_doc),
             LUMERA_PLAIN(PNOTA, pno_rel),
             LUMERA_PLAIN(PNOTA, pno_cli_for),
             LUMERA_CODE(PNOTA, pno_sez),
             LUMERA_PLAIN(PNOTA, pno_reg),
             LUMERA_CODE(PNOTA, pno_prot),
             LUMERA_PLAIN(PNOTA, pno_prot_fisso),
             LUMERA_PLAIN(PNOTA, pno_cau_iva),
             LUMERA_PLAIN(PNOTA, pno_iva_sosp),
             LUMERA_CODE(PNOTA, pno_pag),
             LUMERA_DATE(PNOTA, pno_data_pag),
             LUMERA_DATE(PNOTA, pno_data_ret),
             VAT_LINE(0),
             VAT_LINE(1),
             VAT_LINE(2),
             VAT_LINE(3),
             VAT_LINE(4),
             VAT_LINE(5),
             VAT_LINE(6),
             LUMERA_PLAIN(PNOTA, pno_tot_doc),
             LUMERA_PLAIN(PNOTA, pno_tot_imp),
             LUMERA_PLAIN(PNOTA, pno_tot_iva),
             LUMERA_PLAIN(PNOTA, pno_tot_esente),
             LUMERA_PLAIN(PNOTA, pno_tot_non_imp),
             LUMERA_PLAIN(PNOTA, pno_tot_non_82),
             LUMERA_PLAIN(PNOTA, pno_dare),
             LUMERA_PLAIN(PNOTA, pno_avere),
             LUMERA_PLAIN(PNOTA, pno_tot_squ),
             LUMERA_PLAIN(PNOTA, pno_operazione),
             LUMERA_PLAIN(PNOTA, pno_verifica),
             LUMERA_PLAIN(PNOTA, pno_trasf),
             LUMERA_PLAIN(PNOTA, pno_split_payment),
             LUMERA_PLAIN(PNOTA, pno_esc_spesometro),
             LUMERA_CODE(PNOTA, pno_agr),
             LUMERA_CODE(PNOTA, pno_all),
             LUMERA_PLAIN(PNOTA, pno_all_doc),
             LUMERA_PLAIN(PNOTA, pno_utente),
             LUMERA_PLAIN(PNOTA, pno_creato),
             LUMERA_PLAIN(PNOTA, pno_aggiornato),
             LUMERA_PLAIN(PNOTA, pno_revisione)}};
}

long NextNumber(SACommand *cmd)
{
    SACommand query(cmd->Connection(), "SELECT pno_codice FROM admin.pnota1 ORDER BY pno_codice DESC LIMIT 1");
    query.Execute();
    return query.FetchNext() ? query.Field(1).asLong() + 1 : 1;
}

/// What the header knows is copied to the rows, which the registers and balances read alone.
void CompleteRows(PNOTA *entry)
{
    for (std::size_t i = 0; i < kEntryRows; ++i) {
        PNOTA_RIGA &row = entry->righe[i];
        row.row_codice = entry->pno_codice;
        row.row_idx = static_cast<long>(i + 1);
        row.row_data = entry->pno_data;
        row.row_sez = entry->pno_sez;
        row.row_operazione = entry->pno_operazione;
        const long relation = MasterRelation(lumera_db_impo, row.row_mas);
        row.row_rel = relation;
        row.row_clfo = relation == kNoCounterpart ? 0 : row.row_sot;
        if (row.row_d_doc == 0 && !row.row_n_doc.empty() && row.row_n_doc == entry->pno_doc)
            row.row_d_doc = entry->pno_data_doc;
    }
}

/// Where the revisions of a new entry start. Not at 0: the number of a deleted last entry is given again, and a station
/// that still shows the old entry must not take the new one for it.
long FirstRevision()
{
    static std::mutex guard;
    static std::mt19937 numbers{std::random_device{}()};
    const std::lock_guard lock(guard);
    return static_cast<long>(numbers() % 1'000'000'000U) + 1;
}

/// What is stored must follow from the rows that are stored, whoever prepared the record.
void Prepare(PNOTA *entry)
{
    if (entry->pno_cau_iva == 0) {
        entry->iva = {};
        RecalcVatTotals(entry);
    }
    entry->pno_doc = Trimmed(entry->pno_doc);
    if (entry->pno_rel == kNoCounterpart) entry->pno_cli_for = 0;
    entry->pno_paddoc = PadDocumentNumber(entry->pno_doc.str());
    entry->pno_utente = CurrentUserInterface().UserName();
    entry->pno_aggiornato = CurrentMoment();
    ::Squadratura(entry);
    CompleteRows(entry);
}

[[noreturn]] void ThrowChanged(long number)
{
    throw SAException(SA_UserGenerated_Error, 20061,
                      fmt::format("Il movimento n. {} è stato modificato o eliminato da un'altra stazione.\n\n"
                                  "Rileggerlo prima di salvare.",
                                  number),
                      SAFault::Changed);
}

void RefuseTakenProtocol(const PNOTA &entry)
{
    throw SAException(SA_UserGenerated_Error, 20062,
                      fmt::format("Il protocollo {} del registro {} (sezione {}, anno {}) è già assegnato.",
                                  entry.pno_prot, RegisterName(entry.pno_reg), entry.pno_sez, Year(entry.pno_data)),
                      SAFault::UniqueViolation);
}

/// A fixed protocol stays what the user wanted; any other is the next free one.
void SettleProtocol(SACommand *cmd, PNOTA *entry)
{
    const bool has_protocol = entry->pno_reg > kJournalOnly;
    if (has_protocol && entry->pno_prot_fisso != 0 && entry->pno_prot > 0) {
        SACommand taken(cmd->Connection(),
                        "SELECT pno_codice FROM admin.pnota1 WHERE EXTRACT(YEAR FROM pno_data) = :anno"
                        " AND pno_sez = :sez AND pno_reg = :reg AND pno_prot = :prot AND pno_codice <> :codice");
        taken.Param("anno").setAsLong(Year(entry->pno_data));
        taken.Param("sez").setAsLong(entry->pno_sez);
        taken.Param("reg").setAsLong(entry->pno_reg);
        taken.Param("prot").setAsLong(entry->pno_prot);
        taken.Param("codice").setAsLong(entry->pno_codice);
        taken.Execute();
        if (taken.FetchNext()) RefuseTakenProtocol(*entry);
        return;
    }
    entry->pno_prot = has_protocol ? GetProt(cmd, entry->pno_sez, Year(entry->pno_data), entry->pno_reg) : 0;
}

/// The rows with the names of what they stand on: of a sub-account from the same query, of the entry's own counterpart
/// from its header.
void LoadRows(SACommand *cmd, PNOTA *entry)
{
    SACommand query(cmd->Connection(),
                    "SELECT " + sqlrow.ColumnList() +
                        ", sot_desc FROM admin.pnotaro2 LEFT JOIN admin.sotcon ON sot_mas = row_mas"
                        " AND sot_con = row_con AND sot_codice = row_sot WHERE row_codice = :codice ORDER BY row_idx");
    query.Param("codice").setAsLong(entry->pno_codice);
    query.Execute();
    while (query.FetchNext()) {
        PNOTA_RIGA read;
        sqlrow.ReadFields(&query, &read);
        if (read.row_idx < 1 || read.row_idx > static_cast<long>(kEntryRows)) continue;
        PNOTA_RIGA &row = entry->righe[static_cast<std::size_t>(read.row_idx - 1)];
        row = read;
        if (row.InUse()) row.des_sot = query.Field("sot_desc").asStringView();
    }
    for (PNOTA_RIGA &row : entry->righe) {
        const long relation = row.InUse() ? MasterRelation(lumera_db_impo, row.row_mas) : kNoCounterpart;
        if (relation == kNoCounterpart) continue;
        const bool is_own = row.Account().IsSet() && relation == entry->pno_rel && row.row_sot == entry->pno_cli_for;
        row.des_sot = is_own && !entry->des_clifor.empty() ? entry->des_clifor : AccountDescription(cmd, row.Account());
    }
}

} // namespace

CPSQLpno::CPSQLpno() : CTable(JournalDescription()) {}

void CPSQLpno::Blank(SACommand *cmd, PNOTA *entry) const
{
    CommandScope scope(cmd);
    *entry = PNOTA{};
    entry->pno_codice = NextNumber(scope.get());
    SEZIONI section;
    if (sqlsez.First(scope.get(), " ORDER BY sez_codice", {}, &section)) entry->pno_sez = section.sez_codice;
}

bool CPSQLpno::Search(SACommand *cmd, long code, PNOTA *entry, bool) const
{
    CommandScope scope(cmd);
    auto found = std::make_unique<PNOTA>();
    found->pno_codice = code;
    if (code == 0 || !SearchByKeys(scope.get(), found.get())) return false;
    LoadDetails(scope.get(), found.get());
    *entry = std::move(*found);
    return true;
}

bool CPSQLpno::Reload(SACommand *cmd, PNOTA *entry, bool whole) const
{
    if (whole) return Search(cmd, entry->pno_codice, entry);
    return SearchByKeys(cmd, entry);
}

void CPSQLpno::LoadDetails(SACommand *cmd, PNOTA *entry) const
{
    if (entry->pno_rel == kCustomer) {
        CLIENTI customer;
        sqlcli.Search(cmd, entry->pno_cli_for, &customer);
        entry->des_clifor = customer.cli_desc;
    } else if (entry->pno_rel == kSupplier) {
        FORNITORI supplier;
        sqlfor.Search(cmd, entry->pno_cli_for, &supplier);
        entry->des_clifor = supplier.for_desc;
    }
    LoadRows(cmd, entry);
    sqlpcc.ForEach(
        cmd, " WHERE pcc_pno = :codice ORDER BY pcc_idx",
        [&](SACommand &query) { query.Param("codice").setAsLong(entry->pno_codice); },
        [&](const PNOTA_CENTRO &line) {
            entry->centri.push_back(line);
            return true;
        });
    PAGAMENTI terms;
    sqlpag.Search(cmd, entry->pno_pag, &terms);
    entry->des_pag = terms.pag_desc;
}

void CPSQLpno::SqlTransaction(SACommand *cmd, int operation, PNOTA *entry) const
{
    CommandScope scope(cmd);
    // The caller's record keeps its values when the transaction fails half way.
    auto record = std::make_unique<PNOTA>(*entry);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Journal);
    if (operation == kInsert)
        Insert(scope.get(), record.get());
    else if (operation == kUpdate)
        Update(scope.get(), record.get());
    else
        Delete(scope.get(), record.get());
    transaction.Commit();
    *entry = std::move(*record);
}

void CPSQLpno::Insert(SACommand *cmd, PNOTA *entry) const
{
    entry->pno_codice = NextNumber(cmd);
    SettleProtocol(cmd, entry);
    Prepare(entry);
    entry->pno_creato = entry->pno_aggiornato;
    entry->pno_revisione = FirstRevision();
    Transact(cmd, kInsert, entry);
    InsertDetails(cmd, entry);
}

void CPSQLpno::Update(SACommand *cmd, PNOTA *entry) const
{
    SACommand stored(cmd->Connection(), "SELECT pno_data, pno_sez, pno_reg, pno_prot, pno_revisione FROM admin.pnota1"
                                        " WHERE pno_codice = :codice FOR UPDATE");
    stored.Param("codice").setAsLong(entry->pno_codice);
    stored.Execute();
    if (!stored.FetchNext() || stored.Field("pno_revisione").asLong() != entry->pno_revisione)
        ThrowChanged(entry->pno_codice);
    const bool same_series = stored.Field("pno_sez").asLong() == entry->pno_sez &&
                             stored.Field("pno_reg").asLong() == entry->pno_reg &&
                             stored.Field("pno_data").asDateTime().GetYear() == Year(entry->pno_data);
    const long stored_protocol = stored.Field("pno_prot").asLong();
    stored.Close();
    if (same_series && (entry->pno_prot_fisso == 0 || entry->pno_prot == 0))
        entry->pno_prot = stored_protocol;
    else
        SettleProtocol(cmd, entry);

    Prepare(entry);
    ++entry->pno_revisione;
    Transact(cmd, kUpdate, entry);
    SACommand clear(cmd->Connection(), "DELETE FROM admin.pnotaro2 WHERE row_codice = :codice");
    clear.Param("codice").setAsLong(entry->pno_codice);
    clear.Execute();
    InsertDetails(cmd, entry);
}

void CPSQLpno::InsertDetails(SACommand *cmd, PNOTA *entry) const
{
    SACommand insert(cmd->Connection(), sqlrow.Description().InsertText());
    for (const PNOTA_RIGA &row : entry->righe) {
        if (!row.InUse()) continue;
        sqlrow.Description().Bind(&insert, &row);
        insert.Execute();
    }
    long index = 0;
    for (PNOTA_CENTRO &line : entry->centri) {
        line.pcc_pno = entry->pno_codice;
        line.pcc_idx = ++index;
        sqlpcc.SqlTransaction(cmd, kInsert, &line);
    }
    for (PNOTA_ALLEGATO &file : entry->allegati) {
        file.pat_pno = entry->pno_codice;
        sqlpat.Store(cmd, &file);
    }
    entry->allegati.clear();
}

void CPSQLpno::Delete(SACommand *cmd, PNOTA *entry) const
{
    SACommand held(cmd->Connection(), "SELECT COUNT(*) AS numrec FROM admin.scadenze"
                                      " WHERE sca_pno = :codice AND (sca_pagato <> 0 OR sca_parked <> 0)");
    held.Param("codice").setAsLong(entry->pno_codice);
    held.Execute();
    held.FetchNext();
    if (held.Field("numrec").asLong() > 0)
        throw SAException(SA_UserGenerated_Error, 20063,
                          fmt::format("Il movimento n. {} ha scadenze già pagate, incassate o in distinta.\n\n"
                                      "Annullare prima i pagamenti.",
                                      entry->pno_codice),
                          SAFault::ForeignKeyViolation);
    held.Close();
    SACommand open(cmd->Connection(), "DELETE FROM admin.scadenze WHERE sca_pno = :codice"
                                      " AND sca_pagato = 0 AND sca_parked = 0"); // one paid meanwhile holds the entry
    open.Param("codice").setAsLong(entry->pno_codice);
    open.Execute();
    SACommand header(cmd->Connection(), "DELETE FROM admin.pnota1 WHERE pno_codice = :codice AND pno_revisione = :rev");
    header.Param("codice").setAsLong(entry->pno_codice);
    header.Param("rev").setAsLong(entry->pno_revisione);
    header.Execute();
    if (header.RowsAffected() == 0) ThrowChanged(entry->pno_codice);
}

void CPSQLpno::RecalcPNota(SACommand *, PNOTA *entry, int mode, double document, double taxable, double tax,
                           double non_taxable) const
{
    RecalcTotals(entry, lumera_db_impo, lumera_db_flag, mode, {document, taxable, tax, non_taxable});
}

bool CPSQLpno::Squadratura(SACommand *, PNOTA *entry) const
{
    return ::Squadratura(entry);
}

bool CPSQLpno::CheckAnalitica(SACommand *, PNOTA *entry, int *row) const
{
    return ::CheckAnalitica(*entry, row);
}
