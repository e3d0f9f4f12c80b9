#include "cli/ScheduleCommands.h"

#include "cli/PrintFile.h"
#include "cli/Table.h"
#include "schedule/AccountStatement.h"
#include "schedule/Aging.h"
#include "schedule/DueList.h"
#include "schedule/ScheduleList.h"
#include "sqlapi/SAConnection.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/print/Interruption.h"
#include "tarvolumera/Counterparts.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

constexpr auto kRight = TableColumn::Align::Right;
constexpr std::size_t kNameWidth = 34;

std::string Euro(long long cents)
{
    return FormatAmount(FromCents(cents));
}

nlohmann::json JsonCents(long long cents)
{
    return JsonAmount(FromCents(cents));
}

/// The day named by the option, today without it.
long DayOrToday(const std::string &option, const std::string &text)
{
    const long day = ParseDateOption(option, text);
    return day != 0 ? day : CurrentUserInterface().Today();
}

struct DueOptions {
    bool customers = false, suppliers = false;
    std::string from, to, length = "settimana";
    PrintFile file;
};

DueListFilter FilterOf(const DueOptions &options)
{
    if (options.customers && options.suppliers) throw UsageError("--clienti e --fornitori si escludono.");
    if (options.length != "settimana" && options.length != "mese")
        throw UsageError("--per vuole \"settimana\" o \"mese\".");
    DueListFilter filter;
    filter.customers = !options.suppliers;
    filter.suppliers = !options.customers;
    filter.d_start = ParseDateOption("--dal", options.from);
    filter.d_stop = ParseDateOption("--al", options.to);
    RequireOrder(filter.d_start, filter.d_stop, "--dal viene dopo --al.");
    filter.length = options.length == "mese" ? DueLength::Month : DueLength::Week;
    return filter;
}

nlohmann::json ToJson(const DueGroup &group)
{
    return {{"periodo", group.name},
            {"dal", JsonDate(group.range.first_day)},
            {"al", JsonDate(group.range.last_day)},
            {"scadenze", group.count},
            {"da_incassare", JsonCents(group.collect)},
            {"da_pagare", JsonCents(group.pay)},
            {"saldo", JsonCents(group.Balance())},
            {"progressivo", JsonCents(group.running)}};
}

void PrintGroups(const std::vector<DueGroup> &groups, bool colours)
{
    Table table({{"Periodo"},
                 {"Dal"},
                 {"Al"},
                 {"Scadenze", kRight},
                 {"Da incassare", kRight},
                 {"Da pagare", kRight},
                 {"Saldo", kRight},
                 {"Progressivo", kRight}},
                colours);
    for (const DueGroup &group : groups)
        table.AddRow({group.name, FormatDate(group.range.first_day), FormatDate(group.range.last_day),
                      std::to_string(group.count), Euro(group.collect), Euro(group.pay), Euro(group.Balance()),
                      Euro(group.running)});
    const DueGroup total = TotalOf(groups);
    Print(table.Finish({"Totale", "", "", std::to_string(total.count), Euro(total.collect), Euro(total.pay),
                        Euro(total.Balance()), ""}));
}

int DueListCommand(Session *session, const DueOptions &options)
{
    const DueListFilter filter = FilterOf(options);
    const std::optional<ReportDestination> destination = options.file.Destination();
    session->OpenArchive();
    const InterruptionGuard guard;
    if (destination) return FinishPrint(*session, PrintDueList(filter, destination), *destination);
    CommandScope scope(nullptr);
    const SATransaction picture(scope.get(), SATransactionKind::Read); // rows and totals of one moment
    const std::vector<DueGroup> groups = ReadDueGroups(scope.get(), filter);
    if (!session->json) {
        PrintGroups(groups, session->Colours());
        return kExitDone;
    }
    const DueGroup total = TotalOf(groups);
    JsonListPrinter json("periodi");
    for (const DueGroup &group : groups) json.Add(ToJson(group));
    json.Finish({{"scadenze", total.count},
                 {"da_incassare", JsonCents(total.collect)},
                 {"da_pagare", JsonCents(total.pay)},
                 {"saldo", JsonCents(total.Balance())}});
    return kExitDone;
}

struct AgingOptions {
    bool customers = false, suppliers = false, by_overdue = false;
    std::string at;
    PrintFile file;
};

/// @param first  what stands before the sums
nlohmann::json AgingJson(nlohmann::json first, const AgingLine &line)
{
    first.update({{"scadenze", line.count},
                  {"a_scadere", JsonCents(line.not_due)},
                  {"sca_30", JsonCents(line.sca_30)},
                  {"sca_60", JsonCents(line.sca_60)},
                  {"sca_90", JsonCents(line.sca_90)},
                  {"sca_120", JsonCents(line.sca_120)},
                  {"sca_oltre", JsonCents(line.sca_oltre)},
                  {"scaduto", JsonCents(line.Overdue())},
                  {"totale", JsonCents(line.Total())}});
    return first;
}

std::vector<std::string> AgingCells(const std::string &code, const std::string &name, const AgingLine &line)
{
    return {code,
            name,
            Euro(line.not_due),
            Euro(line.sca_30),
            Euro(line.sca_60),
            Euro(line.sca_90),
            Euro(line.sca_120),
            Euro(line.sca_oltre),
            Euro(line.Overdue()),
            Euro(line.Total())};
}

void PrintAgingTable(SACommand *cmd, const AgingFilter &filter, bool colours)
{
    Table table({{"Codice", kRight},
                 {"Nome", TableColumn::Align::Left, kNameWidth},
                 {"A scadere", kRight},
                 {"1-30 gg", kRight},
                 {"31-60 gg", kRight},
                 {"61-90 gg", kRight},
                 {"91-120 gg", kRight},
                 {"Oltre 120 gg", kRight},
                 {"Scaduto", kRight},
                 {"Totale", kRight}},
                colours);
    ForEachAging(cmd, filter, [&](AgingLine &&line) {
        table.AddRow(AgingCells(std::to_string(line.code), line.name, line));
        Print(table.Take());
    });
    Print(table.Finish(AgingCells("", "Totale", ReadAgingTotal(cmd, filter))));
}

int AgingCommand(Session *session, const AgingOptions &options)
{
    if (options.customers == options.suppliers) throw UsageError("Indicare --clienti o --fornitori.");
    AgingFilter filter;
    filter.side = static_cast<short>(options.customers ? kCustomer : kSupplier);
    filter.order = options.by_overdue ? AgingOrder::Overdue : AgingOrder::Name;
    const std::optional<ReportDestination> destination = options.file.Destination();
    filter.reference_day = DayOrToday("--al", options.at);
    session->OpenArchive();
    const InterruptionGuard guard;
    if (destination) return FinishPrint(*session, PrintAging(filter, destination), *destination);
    CommandScope scope(nullptr);
    const SATransaction picture(scope.get(), SATransactionKind::Read);
    if (!session->json) {
        PrintAgingTable(scope.get(), filter, session->Colours());
        return kExitDone;
    }
    JsonListPrinter json("saldi");
    ForEachAging(scope.get(), filter, [&](AgingLine &&line) {
        json.Add(AgingJson({{"codice", line.code}, {"nome", line.name}}, line));
    });
    json.Finish(AgingJson({{"al", JsonDate(filter.reference_day)}}, ReadAgingTotal(scope.get(), filter)));
    return kExitDone;
}

struct StatementOptions {
    long customer = 0, supplier = 0;
    bool all = false;
    std::string from, to, at;
    PrintFile file;
};

StatementFilter FilterOf(const StatementOptions &options)
{
    if ((options.customer != 0) == (options.supplier != 0)) throw UsageError("Indicare --cliente o --fornitore.");
    StatementFilter filter;
    filter.side = static_cast<short>(options.customer != 0 ? kCustomer : kSupplier);
    filter.first_code = filter.last_code = options.customer + options.supplier;
    filter.open_only = !options.all;
    filter.d_start = ParseDateOption("--dal", options.from);
    filter.d_stop = ParseDateOption("--scadenti-al", options.to);
    RequireOrder(filter.d_start, filter.d_stop, "--dal viene dopo --scadenti-al.");
    filter.reference_day = DayOrToday("--al", options.at);
    return filter;
}

void RequireCounterpart(SACommand *cmd, const StatementFilter &filter)
{
    CLIENTI customer;
    FORNITORI supplier;
    const long code = filter.first_code;
    if (filter.side == kCustomer ? sqlcli.Search(cmd, code, &customer) : sqlfor.Search(cmd, code, &supplier)) return;
    throw RefusedError(
        fmt::format("Il {} n. {} non esiste.", filter.side == kCustomer ? "cliente" : "fornitore", code));
}

nlohmann::json ToJson(const StatementLine &line, short side)
{
    return {{"num", line.num},
            {"fattura", line.fattura},
            {"data_fattura", JsonDate(line.data_fattura)},
            {"rata", line.rata},
            {"rate", line.rate},
            {"desc", line.desc},
            {"data", JsonDate(line.data)},
            {"ritardo", line.days_late},
            {"importo", JsonAmount(line.importo)},
            {"stato", StatementStateName(line.state, side)},
            {"data_pag", JsonDate(line.data_pag)},
            {"aperto", JsonAmount(line.open)},
            {"scaduto", JsonAmount(line.overdue)},
            {"saldo", JsonAmount(line.balance)}};
}

void PrintStatementTable(SACommand *cmd, const StatementFilter &filter, bool colours)
{
    Table table({{"Fattura"},
                 {"Data"},
                 {"Rata"},
                 {"Scadenza"},
                 {"Ritardo", kRight},
                 {"Importo", kRight},
                 {"Stato"},
                 {"Pagata il"},
                 {"Aperto", kRight},
                 {"Scaduto", kRight},
                 {"Saldo", kRight}},
                colours);
    ForEachStatementLine(cmd, filter, [&](StatementLine &&line) {
        table.AddRow({line.fattura, FormatDate(line.data_fattura), InstalmentOfInvoice(line.rata, line.rate),
                      FormatDate(line.data), line.days_late == 0 ? std::string() : std::to_string(line.days_late),
                      FormatAmount(line.importo), StatementStateName(line.state, filter.side),
                      FormatDate(line.data_pag), FormatAmount(line.open), FormatAmount(line.overdue),
                      FormatAmount(line.balance)});
        Print(table.Take());
    });
    const StatementTotals totals = ReadStatementTotals(cmd, filter);
    Print(table.Finish(
        {"Totale", "", "", "", "", Euro(totals.amount), "", "", Euro(totals.open), Euro(totals.overdue), ""}));
}

int StatementCommand(Session *session, const StatementOptions &options)
{
    const std::optional<ReportDestination> destination = options.file.Destination();
    const StatementFilter filter = FilterOf(options);
    session->OpenArchive();
    const InterruptionGuard guard;
    CommandScope scope(nullptr);
    RequireCounterpart(scope.get(), filter);
    if (destination) return FinishPrint(*session, PrintStatements(filter, destination), *destination);
    const SATransaction picture(scope.get(), SATransactionKind::Read);
    if (!session->json) {
        PrintStatementTable(scope.get(), filter, session->Colours());
        return kExitDone;
    }
    JsonListPrinter json("scadenze");
    ForEachStatementLine(scope.get(), filter, [&](StatementLine &&line) { json.Add(ToJson(line, filter.side)); });
    const StatementTotals totals = ReadStatementTotals(scope.get(), filter);
    json.Finish({{"al", JsonDate(filter.reference_day)},
                 {"totale", totals.count},
                 {"importo", JsonCents(totals.amount)},
                 {"aperto", JsonCents(totals.open)},
                 {"scaduto", JsonCents(totals.overdue)}});
    return kExitDone;
}

void AddDueList(CLI::App *group, Session *session, Action *action)
{
    auto options = std::make_shared<DueOptions>();
    CLI::App *command = group->add_subcommand("scadenzario", "Scadenze aperte per settimana o per mese, con i saldi");
    command->footer("Esempio:\n  lumera scadenze scadenzario --dal 01/01/2026 --al 31/03/2026 --per mese");
    command->add_option("--dal", options->from, "Dal giorno; le scadenze precedenti stanno in un gruppo a parte");
    command->add_option("--al", options->to, "Fino al giorno");
    command->add_option("--per", options->length, "settimana (dal lunedì alla domenica) o mese");
    command->add_flag("--clienti", options->customers, "Solo da incassare dai clienti");
    command->add_flag("--fornitori", options->suppliers, "Solo da pagare ai fornitori");
    AddPrintFileOptions(command, &options->file);
    command->callback([=] { *action = [=] { return DueListCommand(session, *options); }; });
}

void AddAging(CLI::App *group, Session *session, Action *action)
{
    auto options = std::make_shared<AgingOptions>();
    CLI::App *command = group->add_subcommand("anzianita", "Saldi aperti per giorni di ritardo");
    command->footer("Esempio:\n  lumera scadenze anzianita --clienti --al 31/12/2026");
    command->add_flag("--clienti", options->customers, "Dei clienti");
    command->add_flag("--fornitori", options->suppliers, "Dei fornitori");
    command->add_option("--al", options->at, "Giorno della situazione; senza, oggi");
    command->add_flag("--per-scaduto", options->by_overdue, "Prima gli importi scaduti più alti");
    AddPrintFileOptions(command, &options->file);
    command->callback([=] { *action = [=] { return AgingCommand(session, *options); }; });
}

void AddStatement(CLI::App *group, Session *session, Action *action)
{
    auto options = std::make_shared<StatementOptions>();
    CLI::App *command = group->add_subcommand("estratto-conto", "Scadenze di un cliente o di un fornitore");
    command->footer("Esempio:\n  lumera scadenze estratto-conto --cliente 12 --pdf estratto.pdf");
    command->add_option("--cliente", options->customer, "Codice del cliente");
    command->add_option("--fornitore", options->supplier, "Codice del fornitore");
    command->add_option("--al", options->at, "Giorno della situazione; senza, oggi");
    command->add_option("--dal", options->from, "Scadenti dal giorno");
    command->add_option("--scadenti-al", options->to, "Scadenti fino al giorno");
    command->add_flag("--tutte", options->all, "Anche quelle pagate o incassate");
    AddPrintFileOptions(command, &options->file);
    command->callback([=] { *action = [=] { return StatementCommand(session, *options); }; });
}

} // namespace

void AddScheduleViewCommands(CLI::App *group, Session *session, Action *action)
{
    AddDueList(group, session, action);
    AddAging(group, session, action);
    AddStatement(group, session, action);
}
