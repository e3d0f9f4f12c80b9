#include "cli/DateCheck.h"

#include "ledger/FiscalPrinterLog.h"
#include "ledger/Maintenance.h"
#include "ledger/Renumbering.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

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

    AddDateCheckCommand(group, session, action,
                        {.description = "Elenca in out/pnota.log le date fuori da un periodo",
                         .example = "lumera pnota controlla-date --dal 2026-01-01 --al 2026-12-31",
                         .check = [](const DatePeriod &period) { return CheckDate(period.first, period.last); },
                         .log = DateCheckLog});

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
