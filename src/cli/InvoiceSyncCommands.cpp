#include "cli/Commands.h"

#include "einvoice/InvoiceInbox.h"
#include "einvoice/InvoiceSync.h"
#include "einvoice/WatchedFolder.h"
#include "sqlapi/SACommand.h"
#include "tarvolumera/Company.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

void PrintLine(const SyncLine &line)
{
    Print(fmt::format("{} {} {}: {}\n", PadRight(SyncOutcomeText(line.outcome), 12),
                      line.code == 0 ? "     " : fmt::format("{:5}", line.code), OnOneLine(line.name),
                      OnOneLine(line.text)));
    for (const std::string &warning : line.warnings) std::fprintf(stderr, "  avviso: %s\n", OnOneLine(warning).c_str());
}

nlohmann::json ToJson(const SyncLine &line)
{
    return {{"file", line.name},
            {"esito", SyncOutcomeText(line.outcome)},
            {"codice", line.code},
            {"testo", line.text},
            {"avvisi", line.warnings}};
}

int Synchronise(Session *session, const std::string &folder)
{
    session->OpenArchive();
    if (const std::string fault = CompanyFaultForInvoices(lumera_db_impo); !fault.empty()) throw RefusedError(fault);
    if (folder.empty() && lumera_db_flag.flg_sdi_cartella.empty())
        throw RefusedError("Cartella delle fatture ricevute non impostata sulla ditta!");
    WatchedFolder provider(folder.empty() ? ReceivedInvoicesFolder() : std::filesystem::path(folder));
    std::optional<JsonListPrinter> json;
    if (session->json) json.emplace("file");
    const SyncResult result = SynchroniseInvoices(
        nullptr, provider, [&](const SyncLine &line) { json ? json->Add(ToJson(line)) : PrintLine(line); });
    const long loaded = result.Count(SyncOutcome::Loaded), there = result.Count(SyncOutcome::AlreadyThere),
               notifications = result.Count(SyncOutcome::Notification), pdf = result.Count(SyncOutcome::Pdf),
               waiting = result.Count(SyncOutcome::Waiting), refused = result.Count(SyncOutcome::Refused);
    if (json)
        json->Finish({{"caricate", loaded},
                      {"gia_presenti", there},
                      {"notifiche", notifications},
                      {"pdf", pdf},
                      {"rimandati", waiting},
                      {"rifiutati", refused}});
    else
        Print(fmt::format("{} caricate, {} già presenti, {} notifiche, {} PDF, {} rimandati, {} rifiutati.\n", loaded,
                          there, notifications, pdf, waiting, refused));
    return refused == 0 ? kExitDone : kExitRefused;
}

} // namespace

void AddInvoiceSyncCommands(CLI::App *app, Session *session, Action *action)
{
    auto folder = std::make_shared<std::string>();
    CLI::App *synchronise = app->get_subcommand("fatture")->add_subcommand(
        "sincronizza", "Carica quello che è arrivato nella cartella delle fatture ricevute");
    synchronise->footer("Prende ogni file una volta sola e non ne tocca nessuno.\n\n"
                        "Esempio:\n  lumera fatture sincronizza --cartella /mnt/fatture");
    synchronise->add_option("--cartella", *folder, "Cartella, invece di quella impostata sulla ditta");
    synchronise->callback([=] { *action = [=] { return Synchronise(session, *folder); }; });
}
