#include "ledger/Maintenance.h"

#include "ledger/FiscalPrinterLog.h"
#include "ledger/Renumbering.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/DateFaults.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <fmt/printf.h>

namespace {

constexpr const char *kLog = "pnota.log";

const char *QuestionOf(MaintenanceBatch batch)
{
    switch (batch) {
    case MaintenanceBatch::CheckDates:
        return "Vuoi Controllare le date dei Movimenti di Prima Nota ?";
    case MaintenanceBatch::Renumber:
        return "Vuoi Rinumerare i Movimenti di Prima Nota ?";
    case MaintenanceBatch::Rewrite:
        return "Vuoi riscrivere tutti i movimenti ?";
    case MaintenanceBatch::ImportReceipts:
        break;
    }
    return "Vuoi Importare le fattura dai log Della Stampante Fiscale EPSON FP?";
}

long DayOf(SACommand &query, const char *column)
{
    return FromSqlDate(query.Field(column).asDateTime());
}

void CheckEntries(SACommand *cmd, DateFaults *faults, CTarvoProgressDlg *progress)
{
    SACommand query(cmd->Connection(), "SELECT pno_codice, pno_data, pno_data_doc, pno_data_pag, pno_data_ret"
                                       " FROM admin.pnota1 ORDER BY pno_codice");
    query.Execute();
    while (query.FetchNext()) {
        const long code = query.Field("pno_codice").asLong();
        if (faults->Outside(DayOf(query, "pno_data")))
            faults->Add(fmt::sprintf("Movimento %ld - Data Registrazione fuori range\r\n", code));
        if (faults->OutsideIfSet(DayOf(query, "pno_data_doc")))
            faults->Add(fmt::sprintf("Movimento %ld - Data Documento fuori range\r\n", code));
        if (faults->OutsideIfSet(DayOf(query, "pno_data_pag")))
            faults->Add(fmt::sprintf("Movimento %ld - Data Pagamento fuori range\r\n", code));
        if (faults->OutsideIfSet(DayOf(query, "pno_data_ret")))
            faults->Add(fmt::sprintf("Movimento %ld - Data Documento Rettifica range\r\n", code));
        progress->StepIt();
    }
}

void CheckRows(SACommand *cmd, DateFaults *faults, CTarvoProgressDlg *progress)
{
    SACommand query(cmd->Connection(), "SELECT row_codice, row_idx, row_data, row_d_doc FROM admin.pnotaro2"
                                       " ORDER BY row_codice, row_idx");
    query.Execute();
    while (query.FetchNext()) {
        const long code = query.Field("row_codice").asLong(), index = query.Field("row_idx").asLong();
        if (faults->Outside(DayOf(query, "row_data")))
            faults->Add(fmt::sprintf("Riga Movimento %ld : %ld- Data Registrazione fuori range\r\n", code, index));
        if (faults->OutsideIfSet(DayOf(query, "row_d_doc")))
            faults->Add(fmt::sprintf("Riga Movimento %ld : %ld - Data Documento fuori range\r\n", code, index));
        progress->StepIt();
    }
}

long CountOf(SACommand *cmd, const char *text)
{
    SACommand query(cmd->Connection(), text);
    query.Execute();
    query.FetchNext();
    return query.Field("numrec").asLong();
}

/// Faults after which the next entry cannot go better.
bool ArchiveFailed(const SAException &error)
{
    switch (error.Fault()) {
    case SAFault::ConnectionLost:
    case SAFault::CannotOpen:
    case SAFault::DiskFull:
    case SAFault::ReadOnly:
        return true;
    default:
        return false;
    }
}

std::vector<long> AllNumbers(SACommand *cmd)
{
    SACommand query(cmd->Connection(), "SELECT pno_codice FROM admin.pnota1 ORDER BY pno_codice");
    query.Execute();
    std::vector<long> numbers;
    while (query.FetchNext()) numbers.push_back(query.Field("pno_codice").asLong());
    return numbers;
}

/// One step of the rewriting. @param text  what to say when it fails, with the places of error and entry number
bool Step(const char *text, long number, const std::function<bool()> &work)
{
    int error_number = 0;
    try {
        if (work()) return true;
    } catch (const SAException &error) {
        if (ArchiveFailed(error)) throw;
        error_number = static_cast<int>(error.ErrNativeCode());
    }
    AfxMessageBox(fmt::sprintf(text, error_number, number), MB_OK | MB_ICONEXCLAMATION);
    return false;
}

// --- the offer: each batch with what it has to ask for; false = it failed and may be offered again

bool OfferedDateCheck()
{
    if (const auto period = PickDatePeriod()) CheckDate(period->first, period->last);
    return true;
}

bool OfferedImport(SACommand *cmd)
{
    const auto files = CurrentUserInterface().PickFiles(
        {"Log della stampante fiscale", "Log della stampante fiscale (*.txt;*.log)|*.txt;*.log||", "txt", {}});
    if (files.empty()) return true;
    const ReceiptsImport import = ImportFiscalLog(cmd, files.front(), 0);
    AfxMessageBox(DescribeImport(import), MB_OK | (import.refusal.empty() ? MB_ICONINFORMATION : MB_ICONSTOP));
    return import.refusal.empty();
}

bool RunOffered(MaintenanceBatch batch, long *followed)
{
    bool done = false;
    const bool unit = RunUnit(LUMERA_TAG, [&](SACommand *cmd) {
        try {
            switch (batch) {
            case MaintenanceBatch::CheckDates:
                done = OfferedDateCheck();
                break;
            case MaintenanceBatch::Renumber:
                RenumberEntries(cmd, followed);
                done = true;
                break;
            case MaintenanceBatch::Rewrite:
                done = RewriteEntries(cmd).failed == 0;
                break;
            case MaintenanceBatch::ImportReceipts:
                done = OfferedImport(cmd);
                break;
            }
        } catch (const FileError &error) {
            AfxMessageBox(error.what(), MB_OK | MB_ICONSTOP);
        }
    });
    return unit && done;
}

void TakeWishBack(SACommand *cmd)
{
    SACommand update(cmd->Connection(), "UPDATE admin.ditte SET dit_manutenzione = 0 WHERE dit_codice = :codice");
    update.Param("codice").setAsLong(lumera_db_impo.dit_codice);
    update.Execute();
    lumera_db_impo.dit_manutenzione = 0;
}

} // namespace

bool AskMaintenance(MaintenanceBatch batch)
{
    return AfxMessageBox(QuestionOf(batch), MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

std::filesystem::path DateCheckLog()
{
    return DateFaults::LogFile(kLog);
}

long CheckDate(long first, long last)
{
    SAConnection connection;
    SACommand command;
    sqlpno.OpenConnection(&connection, &command, true);
    DateFaults faults({first, last});
    {
        CTarvoProgressDlg progress("Controllo Date Movimenti");
        progress.SetStatus("Controllo dati corso...");
        progress.SetRange(0, CountOf(&command, "SELECT COUNT(*) AS numrec FROM admin.pnota1") +
                                 CountOf(&command, "SELECT COUNT(*) AS numrec FROM admin.pnotaro2"));
        CheckEntries(&command, &faults, &progress);
        CheckRows(&command, &faults, &progress);
    }
    connection.Disconnect();
    faults.Conclude(kLog);
    return faults.Count();
}

RewriteResult RewriteEntries(SACommand *cmd)
{
    CommandScope scope(cmd);
    const std::vector<long> numbers = AllNumbers(scope.get());
    CTarvoProgressDlg progress;
    progress.SetStatus("Riscrittura Movimenti in Corso....");
    progress.SetRange(0, static_cast<long>(numbers.size()));
    RewriteResult result;
    for (const long number : numbers) {
        auto entry = std::make_unique<PNOTA>();
        const bool done = Step("Errore di lettura n. %d - Mov. N. %ld", number,
                               [&] { return sqlpno.Search(scope.get(), number, entry.get()); }) &&
                          Step("Errore di scrittura n. %d - Mov. N. %ld", number, [&] {
                              sqlpno.SqlTransaction(scope.get(), kUpdate, entry.get());
                              return true;
                          });
        ++(done ? result.rewritten : result.failed);
        progress.StepIt();
    }
    return result;
}

bool OfferMaintenance(long *followed)
{
    if (lumera_db_impo.dit_manutenzione == 0) return false;
    bool all_done = true, any_ran = false;
    for (const MaintenanceBatch batch : {MaintenanceBatch::CheckDates, MaintenanceBatch::Renumber,
                                         MaintenanceBatch::Rewrite, MaintenanceBatch::ImportReceipts}) {
        if (!AskMaintenance(batch)) continue;
        any_ran = true;
        if (!RunOffered(batch, followed)) all_done = false;
    }
    if (all_done) RunUnit(LUMERA_TAG, TakeWishBack);
    return any_ran;
}
