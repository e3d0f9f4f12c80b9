#include "ledger/EntryStorage.h"

#include "ledger/EntryEditing.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Causali.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/PSQLrow.h"
#include "tarvolumera/PaymentTerms.h"
#include "tarvolumera/Protocols.h"

#include <fmt/format.h>
#include <fmt/printf.h>

namespace {

StoreOutcome Refused(EntryFault fault, std::string reason)
{
    return {false, fault, std::move(reason)};
}

bool CounterpartExists(SACommand *cmd, const PNOTA &entry)
{
    if (entry.pno_rel == kCustomer) {
        CLIENTI customer;
        return sqlcli.Search(cmd, entry.pno_cli_for, &customer);
    }
    FORNITORI supplier;
    return sqlfor.Search(cmd, entry.pno_cli_for, &supplier);
}

/// A row on an account that does not exist would only meet the foreign key, whose words help nobody.
StoreOutcome MissingReference(SACommand *cmd, const PNOTA &entry, long new_counterpart)
{
    if (entry.pno_rel != kNoCounterpart && entry.pno_cli_for != new_counterpart && !CounterpartExists(cmd, entry))
        return Refused({EntryField::Counterpart},
                       fmt::format("Il {} {} non esiste.", entry.pno_rel == kCustomer ? "cliente" : "fornitore",
                                   entry.pno_cli_for));
    for (std::size_t i = 0; i < kEntryRows; ++i) {
        const PNOTA_RIGA &row = entry.righe[i];
        if (!row.InUse()) continue;
        const bool same_side = MasterRelation(lumera_db_impo, row.row_mas) == entry.pno_rel;
        if (same_side && new_counterpart != 0 && row.row_sot == new_counterpart) continue;
        // The counterpart itself was found above: only the account it stands on is left to look for.
        CONTI level;
        const bool is_own = same_side && entry.pno_rel != kNoCounterpart && row.row_sot == entry.pno_cli_for;
        if (!(is_own ? sqlcon.Search(cmd, row.row_mas, row.row_con, &level) : AccountExists(cmd, row.Account())))
            return Refused({EntryField::RowSubAccount, i}, fmt::format("Riga n. {}: il conto {}.{}.{} non esiste.",
                                                                       i + 1, row.row_mas, row.row_con, row.row_sot));
    }
    return {true, {}, {}};
}

bool ClosedYearAccepted(SACommand *cmd, long day)
{
    if (!sqlrow.CheckChiusura(cmd, day)) return true;
    return AfxMessageBox(
               "Attenzione la data indicata ricade in un esercizio con chiusura effettuata!\n\nVuoi Continuare?",
               MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

/// The registration date that the archive has for an entry; 0 when the entry is not there.
long StoredDay(SACommand *cmd, long number)
{
    SACommand query(cmd->Connection(), "SELECT pno_data FROM admin.pnota1 WHERE pno_codice = :codice");
    query.Param("codice").setAsLong(number);
    query.Execute();
    return query.FetchNext() ? FromSqlDate(query.Field("pno_data").asDateTime()) : 0;
}

/// An entry that is moved out of a closed year changes that year as much as one that is moved into it.
bool ClosedYearsAccepted(SACommand *cmd, const PNOTA &entry, bool is_new)
{
    if (!ClosedYearAccepted(cmd, entry.pno_data)) return false;
    const long stored_on = is_new ? 0 : StoredDay(cmd, entry.pno_codice);
    return stored_on == 0 || Year(stored_on) == Year(entry.pno_data) || ClosedYearAccepted(cmd, stored_on);
}

std::string CostCentreFault(SACommand *cmd, PNOTA *entry)
{
    int row = 0;
    if (sqlpno.CheckAnalitica(cmd, entry, &row)) return {};
    return row > 0 ? fmt::sprintf("Problema su contabilità analitica alla riga n. %ld", static_cast<long>(row))
                   : "Problema su contabilità analitica.";
}

/// The code that stands in the archive: an entry without counterpart keeps the one typed before only on screen.
long StoredCounterpart(const PNOTA &entry)
{
    return entry.pno_rel == kNoCounterpart ? 0 : entry.pno_cli_for;
}

/// The condition of another entry for the same document: register, counterpart, number and a year, or the same received
/// file, in whatever register and on whatever supplier.
std::string DuplicateCondition(const PNOTA &entry, DuplicateYear by)
{
    std::string condition = fmt::format(" WHERE pno_reg = :reg AND pno_cli_for = :codclf AND pno_doc = :numdoc AND "
                                        "EXTRACT(YEAR FROM {}) = :anno",
                                        by == DuplicateYear::OfDocument ? "pno_data_doc" : "pno_data");
    if (entry.pno_all != 0) condition += " OR (pno_all = :file AND pno_all_doc = :documento)";
    return condition;
}

void BindDuplicate(SACommand &query, const PNOTA &entry, DuplicateYear by)
{
    query.Param("reg").setAsLong(entry.pno_reg);
    query.Param("codclf").setAsLong(StoredCounterpart(entry));
    query.Param("numdoc").setAsString(Trimmed(entry.pno_doc));
    query.Param("anno").setAsLong(Year(by == DuplicateYear::OfDocument ? entry.pno_data_doc : entry.pno_data));
    if (entry.pno_all == 0) return;
    query.Param("file").setAsLong(entry.pno_all);
    query.Param("documento").setAsLong(entry.pno_all_doc);
}

long CountDuplicates(SACommand *cmd, const PNOTA &entry)
{
    if (entry.pno_doc.empty() || entry.pno_data_doc == 0) return 0;
    SACommand query(cmd->Connection(), "SELECT COUNT(*) AS numrec FROM admin.pnota1" +
                                           DuplicateCondition(entry, DuplicateYear::OfDocument));
    BindDuplicate(query, entry, DuplicateYear::OfDocument);
    query.Execute();
    query.FetchNext();
    return query.Field("numrec").asLong();
}

/// What StoreEntry looks at and asks before it writes.
/// @param duplicates  entries of the same document that the user was asked about
StoreOutcome AskBeforeStoring(SACommand *cmd, PNOTA *entry, bool is_new, long new_counterpart, long *duplicates)
{
    if (entry->pno_codice == 0) return Refused({}, "Numero di movimento mancante.");
    if (const EntryFault fault = ValidateEntry(cmd, entry)) return Refused(fault, DescribeFault(fault));
    if (const StoreOutcome missing = MissingReference(cmd, *entry, new_counterpart); !missing.stored) {
        BeepRefused();
        AfxMessageBox(missing.reason, MB_OK | MB_ICONSTOP);
        return missing;
    }
    if (entry->pno_trasf != 0) {
        BeepRefused();
        AfxMessageBox(
            "Attenzione!\n\nIl movimento risulta esportato al consulente.\nPrendere nota delle modifiche apportate "
            "e segnalarle.",
            MB_OK | MB_ICONEXCLAMATION);
    }
    *duplicates = is_new ? CountDuplicates(cmd, *entry) : 0;
    if (*duplicates > 0 && !ConfirmDuplicate(FindDuplicateDocument(cmd, *entry, DuplicateYear::OfDocument)))
        return Refused({}, "Documento già registrato.");
    if (!ClosedYearsAccepted(cmd, *entry, is_new)) return Refused({}, "Esercizio chiuso.");
    if (const std::string fault = CostCentreFault(cmd, entry); !fault.empty()) {
        BeepRefused();
        AfxMessageBox(fault, MB_OK | MB_ICONSTOP);
        return Refused({}, fault);
    }
    return {true, {}, {}};
}

} // namespace

std::string WhyNotStorable(SACommand *cmd, PNOTA *entry, long new_counterpart)
{
    CommandScope scope(cmd);
    long duplicates = 0;
    return AskBeforeStoring(scope.get(), entry, true, new_counterpart, &duplicates).reason;
}

StoreOutcome StoreEntry(SACommand *cmd, PNOTA *entry, bool is_new, const StoreTogether &together)
{
    CommandScope scope(cmd);
    long duplicates = 0;
    if (const StoreOutcome refused =
            AskBeforeStoring(scope.get(), entry, is_new, together.new_counterpart, &duplicates);
        !refused.stored)
        return refused;

    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Journal);
    if (is_new && CountDuplicates(scope.get(), *entry) > duplicates) // nobody was asked about this one
        return Refused({}, "Il documento è stato registrato in questo momento da un'altra stazione.");
    auto stored = std::make_unique<PNOTA>(*entry);
    if (together.before) together.before(scope.get(), stored.get());
    sqlpno.SqlTransaction(scope.get(), is_new ? kInsert : kUpdate, stored.get());
    if (together.after) together.after(scope.get(), *stored);
    sqlpno.Reload(scope.get(), stored.get(), true); // before the commit: once that is done nothing may fail any more
    transaction.Commit();
    *entry = std::move(*stored);
    return {true, {}, {}};
}

long FindDuplicateDocument(SACommand *cmd, const PNOTA &entry, DuplicateYear by)
{
    const long day = by == DuplicateYear::OfDocument ? entry.pno_data_doc : entry.pno_data;
    if (Trimmed(entry.pno_doc).empty() || day == 0) return 0;
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), "SELECT pno_data FROM admin.pnota1" + DuplicateCondition(entry, by) +
                                             " ORDER BY pno_reg, pno_cli_for, pno_doc");
    BindDuplicate(query, entry, by);
    query.Execute();
    return query.FetchNext() ? FromSqlDate(query.Field("pno_data").asDateTime()) : 0;
}

bool ConfirmDuplicate(long registered_on)
{
    if (registered_on == 0) return true;
    return AfxMessageBox(fmt::sprintf("Attenzione!\n\nE' già stato registrato un documento con lo stesso numero il "
                                      "%02d/%02d/%04d.\n\nVuoi Continuare?",
                                      Day(registered_on), Month(registered_on), Year(registered_on)),
                         MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

bool DeleteEntry(SACommand *cmd, PNOTA *entry)
{
    CommandScope scope(cmd);
    const long stored_on = StoredDay(scope.get(), entry->pno_codice);
    if (!ClosedYearAccepted(scope.get(), stored_on != 0 ? stored_on : entry->pno_data)) return false;
    sqlpno.SqlTransaction(scope.get(), kDelete, entry);
    return true;
}

void MarkEntry(SACommand *cmd, PNOTA *entry, long PNOTA::*mark, long value)
{
    CommandScope scope(cmd);
    auto stored = std::make_unique<PNOTA>(*entry); // one that is gone is refused below
    sqlpno.Search(scope.get(), entry->pno_codice, stored.get());
    stored->pno_revisione = entry->pno_revisione;
    (*stored).*mark = value;
    sqlpno.SqlTransaction(scope.get(), kUpdate, stored.get());
    entry->*mark = value;
    entry->pno_revisione = stored->pno_revisione;
}

long CountAttachments(SACommand *cmd, long number)
{
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), "SELECT COUNT(*) AS numrec FROM admin.pnotaall WHERE pat_pno = :codice");
    query.Param("codice").setAsLong(number);
    query.Execute();
    return query.FetchNext() ? query.Field("numrec").asLong() : 0;
}

bool OffersAttachments(SACommand *cmd, const PNOTA &entry)
{
    CAUCONT causale;
    return sqlcac.Search(cmd, entry.pno_cau, &causale) && causale.cac_allegati != 0;
}

bool OffersImmediatePayment(SACommand *cmd, const PNOTA &entry)
{
    if (entry.pno_rel != kSupplier || entry.pno_cli_for == 0 || !IsPurchaseRegister(entry.pno_reg)) return false;
    CommandScope scope(cmd);
    PAGAMENTI terms;
    if (!sqlpag.Search(scope.get(), entry.pno_pag, &terms) || terms.pag_tipo_pag != kPaymentImmediate) return false;
    CAUCONT payment;
    return sqlcac.Search(scope.get(), lumera_db_flag.flg_cau_pagamento, &payment) && payment.cac_reg == kJournalOnly &&
           payment.cac_iva != 1 && payment.cac_rel == kSupplier;
}

PNOTA PrepareImmediatePayment(SACommand *cmd, const PNOTA &invoice)
{
    CommandScope scope(cmd);
    PNOTA payment;
    sqlpno.Blank(scope.get(), &payment);
    payment.pno_data = invoice.pno_data;
    payment.pno_sez = invoice.pno_sez;
    payment.pno_cli_for = invoice.pno_cli_for;
    EnterCausale(scope.get(), &payment, lumera_db_flag.flg_cau_pagamento);
    payment.pno_data_doc = invoice.pno_data_doc;
    payment.pno_pag = 0;
    payment.des_pag.clear();
    return payment;
}
