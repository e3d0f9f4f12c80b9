#include "schedule/ScheduleDates.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Schedule.h"

#include <fmt/printf.h>

namespace {

constexpr const char *kLog = "scadenze.log";

void CheckInstalments(SACommand *cmd, DateFaults *faults, CTarvoProgressDlg *progress)
{
    SACommand query(cmd->Connection(), "SELECT sca_relaz, sca_num, sca_data, sca_data_fattura, sca_emessa, sca_data_pag"
                                       " FROM admin.scadenze ORDER BY sca_relaz, sca_num");
    query.Execute();
    while (query.FetchNext()) {
        const char *side = query.Field(1).asLong() == kCustomer ? "Cliente" : "Fornitore";
        const long number = query.Field(2).asLong();
        const auto day = [&query](int column) { return FromSqlDate(query.Field(column).asDateTime()); };
        if (faults->Outside(day(3)))
            faults->Add(fmt::sprintf("Scadenza %-s %ld - Data Scadenza fuori range\r\n", side, number));
        if (faults->OutsideIfSet(day(4)))
            faults->Add(fmt::sprintf("Scadenza %-s %ld - Data Fattura fuori range\r\n", side, number));
        if (faults->OutsideIfSet(day(5)))
            faults->Add(fmt::sprintf("Scadenza %-s %ld - Data Emissione fuori range\r\n", side, number));
        if (faults->OutsideIfSet(day(6)))
            faults->Add(fmt::sprintf("Scadenza %-s %ld - Data Pagamento fuori range\r\n", side, number));
        progress->StepIt();
    }
}

long CountInstalments(SACommand *cmd)
{
    SACommand query(cmd->Connection(), "SELECT COUNT(*) AS numrec FROM admin.scadenze");
    query.Execute();
    return query.FetchNext() ? query.Field("numrec").asLong() : 0;
}

} // namespace

bool AskScheduleDates()
{
    return AfxMessageBox("Vuoi Controllare le date sulle scadenze ?", MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) ==
           IDYES;
}

std::filesystem::path ScheduleDatesLog()
{
    return DateFaults::LogFile(kLog);
}

long CheckScheduleDates(const DatePeriod &period)
{
    DateFaults faults(period);
    {
        SAConnection connection;
        SACommand command;
        sqlsca.OpenConnection(&connection, &command, true);
        CTarvoProgressDlg progress("Controllo Date Scadenze");
        progress.SetStatus("Controllo dati corso...");
        progress.SetRange(0, CountInstalments(&command));
        CheckInstalments(&command, &faults, &progress);
    }
    faults.Conclude(kLog);
    return faults.Count();
}
