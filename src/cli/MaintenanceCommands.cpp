#include "cli/Commands.h"

#include "ledger/FiscalPrinterLog.h"
#include "ledger/Maintenance.h"
#include "ledger/Renumbering.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/Company.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

struct Period {
    std::string from, to;
};

/// The date check of a period; of the fiscal year where no bound is given.
int CheckDates(Session *session, const Period &period)
{
    long first = ParseDateOption("--dal", period.from), last = ParseDateOption("--al", period.to);
    session->OpenArchive();
    const int year = static_cast<int>(lumera_db_impo.dit_anno);
    if (first == 0) first = DateToJulian(1, 1, year);
    if (last == 0) last = DateToJulian(31, 12, year);
    if (first > last) throw UsageError("--al è anteriore a --dal.");
    const long faults = CheckDate(first, last);
    const std::string log = DateCheckLog().string();
    if (session->json)
        PrintJson(nlohmann::json{{"dal", JsonDate(first)}, {"al", JsonDate(last)}, {"errori", faults}, {"file", log}});
    else
        Print(fmt::format("Date dal {} al {}: {} errori.\n", FormatDate(first), FormatDate(last), faults));
    return faults == 0 ? kExitDone : kExitRefused;
}

void RequireYes(MaintenanceBatch batch)
{
    if (!AskMaintenance(batch)) throw RefusedError("Operazione non confermata (usare --si).");
}

int Renumber(Session *session)
{
    session->OpenArchive();
    RequireYes(MaintenanceBatch::Renumber);
    const long renumbered = RenumberEntries(nullptr);
    if (session->json)
        PrintJson(nlohmann::json{{"rinumerati", renumbered}});
    else
        Print(fmt::format("Rinumerati {} movimenti.\n", renumbered));
    return kExitDone;
}

int Rewrite(Session *session)
{
    session->OpenArchive();
    RequireYes(MaintenanceBatch::Rewrite);
    const RewriteResult result = RewriteEntries(nullptr);
    if (session->json)
        PrintJson(nlohmann::json{{"riscritti", result.rewritten}, {"errori", result.failed}});
    else
        Print(fmt::format("Riscritti {} movimenti, {} errori.\n", result.rewritten, result.failed));
    return result.failed == 0 ? kExitDone : kExitRefused;
}

int ImportReceipts(Session *session, const std::string &file, long causale)
{
    session->OpenArchive();
    const ReceiptsImport import = ImportFiscalLog(nullptr, file, causale);
    if (!import.refusal.empty()) throw RefusedError(DescribeImport(import));
    if (session->json)
        PrintJson(
            nlohmann::json{{"registrate", import.stored}, {"gia_registrate", import.known}, {"vuote", import.empty}});
    else
        Print(DescribeImport(import) + "\n");
    return kExitDone;
}

} // namespace

void AddMaintenanceCommands(CLI::App *app, Session *session, Action *action)
{
    CLI::App *group = app->get_subcommand("pnota");

    auto period = std::make_shared<Period>();
    CLI::App *dates = group->add_subcommand("controlla-date", "Elenca in out/pnota.log le date fuori da un periodo");
    dates->footer("Esempio:\n  lumera pnota controlla-date --dal 2026-01-01 --al 2026-12-31");
    dates->add_option("--dal", period->from, "Primo giorno ammesso (inizio dell'esercizio)");
    dates->add_option("--al", period->to, "Ultimo giorno ammesso (fine dell'esercizio)");
    dates->callback([=] { *action = [=] { return CheckDates(session, *period); }; });

    CLI::App *renumber = group->add_subcommand("rinumera", "Rinumera i movimenti da 1, per data e numero");
    renumber->footer("Esempio:\n  lumera --si pnota rinumera");
    renumber->callback([=] { *action = [=] { return Renumber(session); }; });

    CLI::App *rewrite = group->add_subcommand("riscrivi", "Riscrive tutti i movimenti con i loro totali");
    rewrite->footer("Esempio:\n  lumera --si pnota riscrivi");
    rewrite->callback([=] { *action = [=] { return Rewrite(session); }; });

    auto file = std::make_shared<std::string>();
    auto causale = std::make_shared<long>(0);
    CLI::App *import = group->add_subcommand("importa-scontrini", "Registra le chiusure di una stampante fiscale");
    import->footer("Esempio:\n  lumera pnota importa-scontrini chiusure.txt --causale 15");
    import->add_option("file", *file, "Log delle chiusure giornaliere")->required();
    import->add_option("--causale", *causale, "Causale dei corrispettivi (la prima che c'è)");
    import->callback([=] { *action = [=] { return ImportReceipts(session, *file, *causale);
};
});
}
