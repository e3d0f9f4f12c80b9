#include "schedule/Instalments.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvolumera/JournalTotals.h"
#include "tarvolumera/Lookups.h"
#include "tarvolumera/Protocols.h"
#include "tarvolumera/Schedule.h"
#include "tarvolumera/VatCodes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace {

struct EntryTotals {
    double total = 0, vat = 0;
};

/// Kind 8 is owed without its tax, which goes to the tax office; everything else with it.
EntryTotals TotalsOfVatLines(SACommand *cmd, const PNOTA &entry)
{
    long long total = 0, vat = 0;
    for (const PNOTA_IVA &line : entry.iva) {
        if (line.iva == 0) continue;
        CODIVA code;
        sqliva.Search(cmd, line.iva, &code);
        total += ToCents(line.impo);
        if (code.iva_tip == kVatReverseChargeOwn) continue;
        total += ToCents(line.imposta);
        vat += ToCents(line.imposta);
    }
    return {FromCents(total), FromCents(vat)};
}

long CounterpartBank(SACommand *cmd, const PNOTA &entry)
{
    if (entry.pno_rel == kCustomer) {
        CLIENTI customer;
        sqlcli.Search(cmd, entry.pno_cli_for, &customer);
        return customer.cli_ban;
    }
    FORNITORI supplier;
    sqlfor.Search(cmd, entry.pno_cli_for, &supplier);
    return supplier.for_ban;
}

/// What the terms leave to the user; empty when the proposal is whole.
std::string NoticeOf(const PAGAMENTI &terms, long start_day, const std::vector<Instalment> &rows)
{
    if (rows.empty())
        return fmt::format("Il pagamento {} prevede {} rate, più di {}: le scadenze vanno scritte a mano.",
                           terms.pag_codice, InstalmentCount(terms), kInstalmentsMax);
    if (start_day == 0)
        return fmt::format("Il pagamento {} non ha una decorrenza: le date vanno scritte a mano.", terms.pag_codice);
    if (rows.back().due_day == 0)
        return fmt::format("Con il pagamento {} non si trovano tutte le date: quelle mancanti vanno scritte a mano.",
                           terms.pag_codice);
    return {};
}

/// While the proposal is looked at, another station may change the entry, delete it and give its number to another, or
/// generate its instalments.
void CheckUnchanged(SACommand *cmd, const PNOTA &entry)
{
    SACommand query(cmd->Connection(), "SELECT pno_rel, pno_cli_for, pno_doc, pno_tot_doc, (SELECT COUNT(*) FROM"
                                       " admin.scadenze WHERE sca_pno = pno_codice) AS numrec FROM admin.pnota1"
                                       " WHERE pno_codice = :codice");
    query.Param("codice").setAsLong(entry.pno_codice);
    query.Execute();
    const auto refuse = [&](const char *why) {
        throw SAException(SA_UserGenerated_Error, 20064, fmt::format(fmt::runtime(why), entry.pno_codice));
    };
    const bool is_same = query.FetchNext() && query.Field("pno_rel").asLong() == entry.pno_rel &&
                         query.Field("pno_cli_for").asLong() == entry.pno_cli_for &&
                         Trimmed(query.Field("pno_doc").asStringView()) == Trimmed(entry.pno_doc) &&
                         TestIfZero(query.Field("pno_tot_doc").asDouble() - entry.pno_tot_doc);
    if (!is_same)
        refuse("Il movimento n. {} è stato cambiato da un'altra stazione: le scadenze non sono state generate.");
    if (query.Field("numrec").asLong() > 0) refuse("Le scadenze del movimento n. {} sono già state generate.");
}

SCADENZE CommonFields(SACommand *cmd, const PNOTA &entry, const InstalmentProposal &proposal, long count)
{
    PAGAMENTI terms;
    sqlpag.Search(cmd, entry.pno_pag, &terms);
    SCADENZE record;
    sqlsca.Blank(cmd, &record, static_cast<short>(entry.pno_rel));
    record.sca_cli_for = entry.pno_cli_for;
    record.sca_data_fattura = entry.pno_data_doc;
    record.sca_pag = terms.pag_codice;
    record.sca_tipo_pag = terms.pag_tipo_pag;
    record.sca_sez = entry.pno_sez;
    record.sca_tot_fat = entry.pno_tot_doc;
    record.sca_fattura = entry.pno_doc;
    record.sca_desc = proposal.description;
    record.sca_ban = proposal.bank;
    record.sca_rate = count;
    record.sca_pno = entry.pno_codice;
    return record;
}

} // namespace

std::optional<InstalmentProposal> ProposeInstalments(SACommand *cmd, const PNOTA &entry)
{
    if (entry.pno_pag == 0 || (entry.pno_rel != kCustomer && entry.pno_rel != kSupplier)) return std::nullopt;
    CommandScope scope(cmd);
    PAGAMENTI terms;
    if (!sqlpag.Search(scope.get(), entry.pno_pag, &terms) || !GeneratesInstalments(terms)) return std::nullopt;

    InstalmentProposal proposal;
    proposal.bank = CounterpartBank(scope.get(), entry);
    BANCHE bank;
    sqlban.Search(scope.get(), proposal.bank, &bank);
    proposal.bank_description = bank.ban_desc.str();

    const EntryTotals totals = TotalsOfVatLines(scope.get(), entry);
    if (TestIfZero(totals.total) || terms.pag_num_rate <= 0) return std::nullopt;
    const std::vector<double> amounts = SplitTotal(terms, totals.total, totals.vat);
    const long start = StartDay(terms, {entry.pno_data, entry.pno_data_doc, entry.pno_data_pag});
    const std::vector<long> days = DueDays(terms, start, amounts.size());
    for (std::size_t i = 0; i < amounts.size(); ++i) proposal.rows.push_back({days[i], amounts[i]});
    proposal.notice = NoticeOf(terms, start, proposal.rows);
    proposal.total = totals.total;
    proposal.description = entry.pno_rel == kSupplier ? "PAGAMENTO FATTURA ACQUISTO MERCI" : "INCASSO FATTURA VENDITA";
    return proposal;
}

std::optional<InstalmentProposal> ProposeWholeInstalments(SACommand *cmd, const PNOTA &entry, std::string *why_not)
{
    why_not->clear();
    std::optional<InstalmentProposal> proposal = ProposeInstalments(cmd, entry);
    if (!proposal || proposal->notice.empty()) return proposal;
    *why_not = proposal->notice + " Nessuna scadenza generata.";
    return std::nullopt;
}

bool ConfirmTotal(std::span<const Instalment> rows, double total)
{
    if (fmt::format("{:.2f}", std::fabs(TotalOf(rows))) == fmt::format("{:.2f}", std::fabs(total))) return true;
    Beep(1000, 10);
    return AfxMessageBox("Il totale delle Scadenze non coincide\ncon il totale del documento!\n\nVuoi Continuare?",
                         MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

long StoreInstalments(SACommand *cmd, const PNOTA &entry, const InstalmentProposal &proposal)
{
    const std::vector<Instalment> &rows = proposal.rows;
    const long count = std::count_if(rows.begin(), rows.end(), [](const Instalment &row) { return row.IsComplete(); });
    long latest = 0;
    for (const Instalment &row : rows) {
        if (row.IsComplete()) latest = std::max(latest, row.due_day);
    }
    CommandScope scope(cmd);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Schedule);
    CheckUnchanged(scope.get(), entry);
    CTarvoProgressDlg progress;
    progress.SetStatus("Generazione Scadenze in Corso...");
    progress.SetRange(0, static_cast<long>(rows.size()));
    SCADENZE record = CommonFields(scope.get(), entry, proposal, count);
    for (const Instalment &row : rows) {
        progress.StepIt();
        if (!row.IsComplete()) continue;
        record.sca_data = row.due_day;
        record.sca_importo = Round(row.amount, 2);
        ++record.sca_rata;
        record.sca_ultima = row.due_day == latest ? 1 : 0;
        record.sca_non_ultima = 1 - record.sca_ultima;
        record.sca_anno = Year(record.sca_data);
        sqlsca.CTable::SqlTransaction(scope.get(), kInsert, &record);
        ++record.sca_num; // the series is ours until the commit: one question for the number serves all rows
    }
    transaction.Commit();
    return count;
}

long GenerateInstalments(SACommand *cmd, const PNOTA &entry)
{
    CommandScope scope(cmd);
    if (sqlsca.CountOf(scope.get(), entry.pno_codice) > 0) return 0;
    std::string why_not;
    const std::optional<InstalmentProposal> proposal = ProposeWholeInstalments(scope.get(), entry, &why_not);
    if (!why_not.empty()) AfxMessageBox(why_not, MB_OK | MB_ICONEXCLAMATION);
    if (!proposal) return 0;
    if (!ConfirmTotal(proposal->rows, proposal->total)) return 0;
    return StoreInstalments(scope.get(), entry, *proposal);
}
