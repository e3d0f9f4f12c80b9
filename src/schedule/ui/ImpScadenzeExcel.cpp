#include "schedule/ui/ImpScadenzeExcel.h"

#include "schedule/OpeningBalances.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <fmt/format.h>
#include <fmt/printf.h>

namespace {

void Refuse(const std::string &why)
{
    BeepRefused();
    AfxMessageBox(why, MB_OK | MB_ICONSTOP);
}

void Import(SACommand *cmd, const std::filesystem::path &workbook)
{
    try {
        const OpeningBalancesOutcome outcome = ImportOpeningBalances(cmd, workbook);
        if (!outcome.discarded.empty())
            AfxMessageBox(fmt::sprintf("Sono state scartate righe dall'importazione. Potete trovare il dettaglio nel "
                                       "seguente file : \n\n%-s",
                                       outcome.log.string()),
                          MB_OK | MB_ICONEXCLAMATION);
        else
            AfxMessageBox(fmt::format("Importazione conclusa: {} scadenze, {} dai clienti e {} ai fornitori.",
                                      outcome.stored, FormatAmount(outcome.customers), FormatAmount(outcome.suppliers)),
                          MB_OK | MB_ICONINFORMATION);
    } catch (const FileError &error) {
        Refuse(error.what());
    } catch (const OpeningBalancesError &error) {
        Refuse(error.what());
    }
}

} // namespace

void ImpScadenzeExcel()
{
    if (AfxMessageBox("Vuoi importare il saldo iniziale delle Scadenze da un foglio Excel ?",
                      MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return;
    FilePicking picking;
    picking.title = "Importazione Scadenze";
    picking.filter = "Documenti Excel (*.xls)|*.xls|Documenti Excel (*.xlsx)|*.xlsx||";
    const std::vector<std::filesystem::path> files = CurrentUserInterface().PickFiles(picking);
    if (files.empty()) return;
    RunUnit(LUMERA_TAG, [&](SACommand *cmd) { Import(cmd, files.front()); });
}
