#include "cli/Commands.h"

#include "cli/PrintFile.h"
#include "ledger/JournalPrint.h"
#include "tables/ChartPrint.h"
#include "tarvodlg/print/Interruption.h"

#include <CLI/CLI.hpp>

namespace {

struct JournalOptions {
    PrintFile file;
    JournalPrintFilter filter;
    std::string from_day, to_day;
};

struct ChartOptions {
    PrintFile file;
    long first = 0, last = 0;
};

int PrintJournal(Session *session, JournalOptions options)
{
    const ReportDestination destination = options.file.RequiredDestination();
    options.filter.d_start = ParseDateOption("--dal", options.from_day);
    options.filter.d_stop = ParseDateOption("--al", options.to_day);
    RequireOrder(options.filter.d_start, options.filter.d_stop, "--dal viene dopo --al.");
    RequireOrder(options.filter.n_start, options.filter.n_stop, "--da viene dopo --a.");
    session->OpenArchive();
    const InterruptionGuard guard;
    return FinishPrint(*session, PrintJournalList(options.filter, destination), destination);
}

int PrintChart(Session *session, const ChartOptions &options)
{
    const ReportDestination destination = options.file.RequiredDestination();
    RequireOrder(options.first, options.last, "--da viene dopo --a.");
    session->OpenArchive();
    const InterruptionGuard guard;
    return FinishPrint(*session, PrintChartOfAccounts(options.first, options.last, destination), destination);
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
    AddPrintFileOptions(entries, &journal->file);
    entries->callback([=] { *action = [=] { return PrintJournal(session, *journal); }; });

    auto chart = std::make_shared<ChartOptions>();
    CLI::App *accounts = app->get_subcommand("tabelle")->add_subcommand("piano-conti", "Stampa il piano dei conti");
    accounts->footer("Esempio:\n  lumera tabelle piano-conti --pdf piano.pdf");
    accounts->add_option("--da", chart->first, "Dal mastro");
    accounts->add_option("--a", chart->last, "Al mastro");
    AddPrintFileOptions(accounts, &chart->file);
    accounts->callback([=] { *action = [=] { return PrintChart(session, *chart); }; });
}
