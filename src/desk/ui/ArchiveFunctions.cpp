#include "desk/ui/ArchiveFunctions.h"

#include "desk/NewCompany.h"
#include "desk/ui/BehindProgress.h"
#include "desk/ui/Guarded.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/widgets/ListWindow.h"
#include "tarvolumera/SaExceptionDisplay.h"
#include "tarvolumera/archive/ArchiveCheck.h"
#include "tarvolumera/archive/ArchiveCopy.h"

#include <fmt/format.h>

namespace {

/// The user has said in the window that an older copy may go; it goes when the new one is whole.
void CopyOver(SACommand *cmd, const std::filesystem::path &file)
{
    if (!std::filesystem::exists(file)) {
        CopyArchive(cmd, file);
        return;
    }
    std::filesystem::path fresh = file;
    fresh += ".nuova";
    std::filesystem::remove(fresh);
    CopyArchive(cmd, fresh);
    std::filesystem::rename(fresh, file);
}

} // namespace

void CheckArchiveOf(QWidget *parent)
{
    ArchiveCheckResult result;
    const bool done = RunGuarded(LUMERA_TAG, [&] {
        RunBehindProgress("Controllo dell'archivio in corso...", [&](SACommand *cmd) { result = CheckArchive(cmd); });
    });
    if (!done) return;
    const std::string looked_at = fmt::format("Controllati {} movimenti, {} righe, {} scadenze.", result.entries,
                                              result.rows, result.instalments);
    if (result.faults.empty()) {
        AfxMessageBox(looked_at + "\n\nNessuna anomalia.", MB_OK | MB_ICONINFORMATION);
        return;
    }
    CElenco list(QStringLiteral("Verifica dell'archivio"), QStringLiteral("VerificaArchivio"),
                 {{.title = QStringLiteral("Controllo"), .width = 18},
                  {.title = QStringLiteral("Dove"), .width = 34},
                  {.title = QStringLiteral("Anomalia"), .width = 60, .stretch = true}},
                 parent);
    for (const ArchiveFault &fault : result.faults) list.AddRow({fault.kind, fault.where, fault.text});
    list.SetStatus(
        ToQt(fmt::format("{} {}{} anomalie.", looked_at, result.truncated ? "Oltre " : "", result.faults.size())));
    list.DoModal();
}

void CopyArchiveToPickedFile()
{
    UserInterface &user = CurrentUserInterface();
    FilePicking picking;
    picking.title = "Copia di sicurezza";
    picking.filter = "Archivi (*.db)|*.db||";
    picking.default_extension = "db";
    picking.proposed =
        SafeFileName(fmt::format("{} {}.db", lumera_db_impo.dit_desc.str(), FormatIsoDate(user.Today())));
    picking.save = true;
    const std::vector<std::filesystem::path> picked = user.PickFiles(picking);
    if (picked.empty()) return;
    const std::filesystem::path &file = picked.front();
    RunGuarded(LUMERA_TAG, [&] {
        RunBehindProgress("Copia dell'archivio in corso...", [&](SACommand *cmd) { CopyOver(cmd, file); });
        AfxMessageBox(
            fmt::format("Copia scritta:\n{}\n\n{} KB", file.string(), std::filesystem::file_size(file) / 1024),
            MB_OK | MB_ICONINFORMATION);
    });
}

bool ChangeYearOf(QWidget *)
{
    const std::optional<long> year = CurrentUserInterface().PickYear("Esercizio", lumera_db_impo.dit_anno);
    if (!year || *year == lumera_db_impo.dit_anno) return false;
    if (*year < kFirstYear || *year > kLastYear) {
        BeepRefused();
        return false;
    }
    if (AfxMessageBox(fmt::format("L'azienda passa dall'esercizio {} all'esercizio {} su tutte le stazioni.\n\n"
                                  "Vuoi Continuare ?",
                                  lumera_db_impo.dit_anno, *year),
                      MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return false;
    return RunUnit(LUMERA_TAG, [&](SACommand *cmd) { ChangeFiscalYear(cmd, *year); });
}
