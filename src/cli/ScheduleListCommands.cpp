#include "cli/ScheduleCommands.h"

#include "cli/DateCheck.h"
#include "cli/PrintFile.h"
#include "cli/Table.h"
#include "schedule/ScheduleDates.h"
#include "schedule/SchedulePrint.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/print/Interruption.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

struct ListOptions {
    bool customers = false, suppliers = false, open = false, closed = false;
    std::string from, to;
    ScheduleFilter filter; ///< the codes as given; the rest is made by FilterOf
    PrintFile file;        ///< of the print
};

/// @throws UsageError for options that make no sense together
ScheduleFilter FilterOf(const ListOptions &options)
{
    if (options.customers && options.suppliers) throw UsageError("--clienti e --fornitori si escludono.");
    if (options.open && options.closed) throw UsageError("--aperte e --chiuse si escludono.");
    ScheduleFilter filter = options.filter;
    filter.relaz = options.customers ? kCustomer : options.suppliers ? kSupplier : kBothSides;
    filter.state = options.open ? kOpenInstalments : options.closed ? kPaidInstalments : kAllInstalments;
    filter.d_start = ParseDateOption("--dal", options.from);
    filter.d_stop = ParseDateOption("--al", options.to);
    if (filter.codclf != 0 && filter.relaz == kBothSides)
        throw UsageError("--intestatario richiede --clienti o --fornitori.");
    if (filter.coddst != 0 && filter.codclf == 0) throw UsageError("--destinazione richiede --intestatario.");
    return filter;
}

nlohmann::json ToJson(const ScheduleLine &line)
{
    const SCADENZE &instalment = line.scadenza;
    return {{"relaz", instalment.sca_relaz},
            {"num", instalment.sca_num},
            {"data", JsonDate(instalment.sca_data)},
            {"importo", JsonAmount(instalment.sca_importo)},
            {"cli_for", instalment.sca_cli_for},
            {"nome", line.name},
            {"fattura", instalment.sca_fattura.str()},
            {"data_fattura", JsonDate(instalment.sca_data_fattura)},
            {"desc", instalment.sca_desc.str()},
            {"tipo_pag", instalment.sca_tipo_pag},
            {"rata", instalment.sca_rata},
            {"rate", instalment.sca_rate},
            {"pagato", instalment.sca_pagato},
            {"data_pag", JsonDate(instalment.sca_data_pag)},
            {"pno", instalment.sca_pno},
            {"sez", instalment.sca_sez},
            {"anno", instalment.sca_anno},
            {"pag", instalment.sca_pag},
            {"ban", instalment.sca_ban},
            {"emessa", JsonDate(instalment.sca_emessa)},
            {"dst", instalment.sca_dst},
            {"age", instalment.sca_age},
            {"parked", instalment.sca_parked},
            {"printed", instalment.sca_printed},
            {"ultima", instalment.sca_ultima},
            {"tot_fat", JsonAmount(instalment.sca_tot_fat)}};
}

int ListAsJson(SACommand *cmd, const ScheduleFilter &filter)
{
    JsonListPrinter json("scadenze");
    long count = 0;
    ForEachScheduleLine(cmd, filter, [&](const ScheduleLine &line) {
        json.Add(ToJson(line));
        ++count;
    });
    json.Finish({{"totale", count}});
    return kExitDone;
}

int ListAsTable(SACommand *cmd, const ScheduleFilter &filter, bool colours)
{
    constexpr auto kRight = TableColumn::Align::Right;
    Table table({{"Scadenza"},
                 {"C/F"},
                 {"Num.", kRight},
                 {"Cliente/fornitore", TableColumn::Align::Left, 34},
                 {"Fattura"},
                 {"Rata"},
                 {"Importo", kRight},
                 {"Stato"}},
                colours);
    const long today = CurrentUserInterface().Today();
    ScheduleSums sums[2]; // by side
    ForEachScheduleLine(cmd, filter, [&](const ScheduleLine &line) {
        const SCADENZE &instalment = line.scadenza;
        const bool customer = instalment.sca_relaz == kCustomer;
        sums[instalment.sca_relaz].Add(instalment, today);
        table.AddRow({FormatDate(instalment.sca_data), customer ? "C" : "F", std::to_string(instalment.sca_num),
                      line.name, instalment.sca_fattura.str(), InstalmentOfInvoice(instalment),
                      FormatAmount(instalment.sca_importo),
                      instalment.sca_pagato == 0 ? "aperta"
                      : customer                 ? "incassata"
                                                 : "pagata"});
        Print(table.Take());
    });
    Print(table.Finish() +
          fmt::format("{} scadenze; da incassare {}, da pagare {}.\n", sums[kCustomer].count + sums[kSupplier].count,
                      FormatAmount(FromCents(sums[kCustomer].open)), FormatAmount(FromCents(sums[kSupplier].open))));
    return kExitDone;
}

int List(Session *session, const ListOptions &options)
{
    const ScheduleFilter filter = FilterOf(options);
    session->OpenArchive();
    CommandScope scope(nullptr);
    return session->json ? ListAsJson(scope.get(), filter) : ListAsTable(scope.get(), filter, session->Colours());
}

int PrintList(Session *session, const ListOptions &options)
{
    const ReportDestination destination = options.file.RequiredDestination();
    const ScheduleFilter filter = FilterOf(options);
    if (filter.relaz == kBothSides) throw UsageError("Indicare --clienti o --fornitori.");
    RequireOrder(filter.d_start, filter.d_stop, "--dal viene dopo --al.");
    session->OpenArchive();
    const InterruptionGuard guard;
    return FinishPrint(*session, PrintSchedule(filter, destination), destination);
}

void AddFilterOptions(CLI::App *command, ListOptions *options)
{
    command->add_flag("--clienti", options->customers, "Solo da incassare dai clienti");
    command->add_flag("--fornitori", options->suppliers, "Solo da pagare ai fornitori");
    command->add_flag("--aperte", options->open, "Solo aperte");
    command->add_flag("--chiuse", options->closed, "Solo pagate o incassate");
    command->add_option("--dal", options->from, "Scadenti dal giorno");
    command->add_option("--al", options->to, "Scadenti fino al giorno");
    command->add_option("--sezione", options->filter.codsez, "Sezione IVA");
    command->add_option("--intestatario", options->filter.codclf, "Codice del cliente o fornitore");
    command->add_option("--destinazione", options->filter.coddst, "Destinazione dell'intestatario");
    command->add_option("--agente", options->filter.codage, "Agente");
}

} // namespace

void AddScheduleListCommands(CLI::App *group, Session *session, Action *action)
{
    auto list = std::make_shared<ListOptions>();
    CLI::App *listing = group->add_subcommand("elenco", "Elenca le scadenze per data");
    listing->footer("Esempio:\n  lumera scadenze elenco --fornitori --aperte --al 31/12/2026");
    AddFilterOptions(listing, list.get());
    listing->callback([=] { *action = [=] { return List(session, *list); }; });

    auto print = std::make_shared<ListOptions>();
    CLI::App *printing = group->add_subcommand("stampa", "Stampa le scadenze per data, con i totali per mese");
    printing->footer("Esempio:\n  lumera scadenze stampa --clienti --aperte --pdf scadenze.pdf");
    AddFilterOptions(printing, print.get());
    AddPrintFileOptions(printing, &print->file);
    printing->callback([=] { *action = [=] { return PrintList(session, *print); }; });

    AddDateCheckCommand(group, session, action,
                        {.description = "Elenca in out/scadenze.log le date fuori da un periodo",
                         .example = "lumera scadenze controlla-date --dal 2026-01-01 --al 2027-06-30",
                         .check = [](const DatePeriod &period) { return CheckScheduleDates(period); },
                         .log = ScheduleDatesLog});
}
