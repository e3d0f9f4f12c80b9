#include "cli/Commands.h"

#include "ledger/JournalPrint.h"
#include "tables/ChartPrint.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/print/Interruption.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>

namespace {

/// The one file that a print goes to.
struct PrintOptions {
    std::string pdf, xlsx, csv;
};

struct JournalOptions {
    PrintOptions file;
    JournalPrintFilter filter;
    std::string from_day, to_day;
};

struct ChartOptions {
    PrintOptions file;
    long first = 0, last = 0;
};

ReportDestination DestinationOf(const PrintOptions &options)
{
    const std::pair<const std::string *, ReportTarget> files[] = {
        {&options.pdf, ReportTarget::Pdf}, {&options.xlsx, ReportTarget::Xlsx}, {&options.csv, ReportTarget::Csv}};
    const auto given = [](const auto &file) { return !file.first->empty(); };
    if (std::count_if(std::begin(files), std::end(files), given) != 1)
        throw UsageError("Indicare un solo file, con --pdf, --xlsx o --csv.");
    const auto *chosen = std::find_if(std::begin(files), std::end(files), given);
    return {chosen->second, *chosen->first};
}

/// Bounds the wrong way round select nothing; somebody meant something else. @param last  0 = no upper bound
void RequireOrder(long first, long last, const char *fault)
{
    if (last != 0 && last < first) throw UsageError(fault);
}

/// A print shows its own errors, so all that is left to say is that there is no file.
int Finish(const Session &session, bool printed, const ReportDestination &destination)
{
    if (!printed) throw FileError(fmt::format("La stampa non è stata scritta: {}", destination.file.string()));
    if (session.json)
        PrintJson(nlohmann::json{{"file", destination.file.string()}});
    else
        Print(fmt::format("Scritto {}\n", destination.file.string()));
    return kExitDone;
}

int PrintJournal(Session *session, JournalOptions options)
{
    const ReportDestination destination = DestinationOf(options.file);
    options.filter.d_start = ParseDateOption("--dal", options.from_day);
    options.filter.d_stop = ParseDateOption("--al", options.to_day);
    RequireOrder(options.filter.d_start, options.filter.d_stop, "--dal viene dopo --al.");
    RequireOrder(options.filter.n_start, options.filter.n_stop, "--da viene dopo --a.");
    session->OpenArchive();
    const InterruptionGuard guard;
    return Finish(*session, PrintJournalList(options.filter, destination), destination);
}

int PrintChart(Session *session, const ChartOptions &options)
{
    const ReportDestination destination = DestinationOf(options.file);
    RequireOrder(options.first, options.last, "--da viene dopo --a.");
    session->OpenArchive();
    const InterruptionGuard guard;
    return Finish(*session, PrintChartOfAccounts(options.first, options.last, destination), destination);
}

void AddFileOptions(CLI::App *command, PrintOptions *options)
{
    command->add_option("--pdf", options->pdf, "Scrive le pagine in un PDF");
    command->add_option("--xlsx", options->xlsx, "Scrive le righe in un foglio XLSX");
    command->add_option("--csv", options->csv, "Scrive le righe in un file CSV");
}

} // namespace

void AddPrintCommands(CLI::App *app, Session *session, Action *action)
{
    auto journal = std::make_shared<JournalOptions>();
    CLI::App *entries = app->get_subcommand("pnota")->add_subcommand("stampa", "Stampa l'elenco dei movimenti");
    entries->footer("Esempio:\n  lumera pnota stampa --dal 2026-01-01 --al 2026-03-31 --pdf movimenti.pdf");
    entries->add_option("--da", journal->filter.n_start, "Dal movimento numero");
    entries->add_option("--a", journal->filter.n_stop, "Al movimento numero");
    entries->add_option("--dal", journal->from_day, "Registrati dal giorno");
    entries->add_option("--al", journal->to_day, "Registrati fino al giorno");
    entries->add_option("--sezione", journal->filter.codsez, "Sezione IVA");
    entries->add_option("--causale", journal->filter.codcac, "Causale");
    AddFileOptions(entries, &journal->file);
    entries->callback([=] { *action = [=] { return PrintJournal(session, *journal); }; });

    auto chart = std::make_shared<ChartOptions>();
    CLI::App *accounts = app->get_subcommand("tabelle")->add_subcommand("piano-conti", "Stampa il piano dei conti");
    accounts->footer("Esempio:\n  lumera tabelle piano-conti --pdf piano.pdf");
    accounts->add_option("--da", chart->first, "Dal mastro");
    accounts->add_option("--a", chart->last, "Al mastro");
    AddFileOptions(accounts, &chart->file);
    accounts->callback([=] { *action = [=] { return PrintChart(session, *chart); }; });
}
