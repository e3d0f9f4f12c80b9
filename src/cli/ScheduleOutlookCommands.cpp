#include "cli/PrintFile.h"
#include "cli/ScheduleCommands.h"
#include "cli/Table.h"
#include "schedule/CashOutlook.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/print/Interruption.h"
#include "tarvolumera/Company.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

struct OutlookOptions {
    OutlookFilter filter;
    PrintFile file;
    std::string cash;
};

nlohmann::json JsonCents(long long cents)
{
    return JsonAmount(FromCents(cents));
}

nlohmann::json ToJson(const CashSums &sums)
{
    return {{"aperte", sums.count},
            {"importo", JsonCents(sums.Open())},
            {"scadute", JsonCents(sums.overdue)},
            {"attese", JsonCents(sums.expected)},
            {"saldate", JsonCents(sums.paid)}};
}

nlohmann::json ToJson(const CashOutlook &outlook)
{
    nlohmann::json periods = nlohmann::json::array(), late = nlohmann::json::array();
    for (const CashPeriod &period : outlook.periods)
        periods.push_back({{"nome", period.name},
                           {"dal", JsonDate(period.first_day)},
                           {"al", JsonDate(period.last_day)},
                           {"incassare", ToJson(period.collect)},
                           {"pagare", ToJson(period.pay)},
                           {"progressivo", JsonCents(period.balance)}});
    for (const LateCustomer &customer : outlook.late)
        late.push_back({{"codice", customer.code},
                        {"nome", customer.name},
                        {"scadenze", customer.count},
                        {"prima", JsonDate(customer.oldest_day)},
                        {"giorni", outlook.today - customer.oldest_day},
                        {"importo", JsonCents(customer.cents)}});
    return {{"oggi", JsonDate(outlook.today)},
            {"disponibilita", JsonCents(outlook.cash)},
            {"mesi", periods},
            {"incassare", ToJson(outlook.collect)},
            {"pagare", ToJson(outlook.pay)},
            {"clienti_in_ritardo", late}};
}

std::string Euro(long long cents)
{
    return FormatAmount(FromCents(cents));
}

constexpr auto kRight = TableColumn::Align::Right;

void PrintMonths(const Session &session, const CashOutlook &outlook)
{
    Table table({{"Mese"},
                 {"Da incassare", kRight},
                 {"di cui scadute", kRight},
                 {"Incassate", kRight},
                 {"Da pagare", kRight},
                 {"di cui scadute", kRight},
                 {"Pagate", kRight},
                 {"Saldo", kRight},
                 {"Progressivo", kRight}},
                session.Colours());
    const auto cells = [](const std::string &name, const CashSums &collect, const CashSums &pay, long long balance) {
        return std::vector<std::string>{name,
                                        Euro(collect.Open()),
                                        Euro(collect.overdue),
                                        Euro(collect.paid),
                                        Euro(pay.Open()),
                                        Euro(pay.overdue),
                                        Euro(pay.paid),
                                        Euro(collect.Open() - pay.Open()),
                                        Euro(balance)};
    };
    for (const CashPeriod &period : outlook.periods)
        table.AddRow(cells(period.name, period.collect, period.pay, period.balance));
    Print(table.Finish(cells("Totali", outlook.collect, outlook.pay, outlook.periods.back().balance)));
}

void PrintLate(const Session &session, const CashOutlook &outlook)
{
    if (outlook.late.empty()) {
        Print("\nNessun cliente è in ritardo.\n");
        return;
    }
    Print("\nClienti in ritardo\n");
    Table table({{"Codice", kRight},
                 {"Cliente", TableColumn::Align::Left, 44},
                 {"Scadenze", kRight},
                 {"La prima"},
                 {"Giorni", kRight},
                 {"Importo", kRight}},
                session.Colours());
    for (const LateCustomer &customer : outlook.late)
        table.AddRow({std::to_string(customer.code), customer.name, std::to_string(customer.count),
                      FormatDate(customer.oldest_day), std::to_string(outlook.today - customer.oldest_day),
                      Euro(customer.cents)});
    Print(table.Finish());
}

int ShowOutlook(Session *session, OutlookOptions options)
{
    if (options.filter.months < 1 || options.filter.months > kOutlookMonthsMax)
        throw UsageError(fmt::format("--mesi va da 1 a {}.", kOutlookMonthsMax));
    if (!options.cash.empty()) {
        const std::optional<double> cash = ParseAmount(options.cash);
        if (!cash) throw UsageError("--saldo non è un importo.");
        options.filter.cash = *cash;
    }
    const std::optional<ReportDestination> destination = options.file.Destination();
    session->OpenArchive();
    const long today = session->user.Today();
    if (destination) {
        const InterruptionGuard guard;
        return FinishPrint(*session, PrintCashOutlook(options.filter, today, destination), *destination);
    }
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    const CashOutlook outlook = ReadCashOutlook(&command, options.filter, today);
    if (session->json) {
        PrintJson(ToJson(outlook));
        return kExitDone;
    }
    PrintMonths(*session, outlook);
    PrintLate(*session, outlook);
    return kExitDone;
}

} // namespace

void AddScheduleOutlookCommands(CLI::App *group, Session *session, Action *action)
{
    auto options = std::make_shared<OutlookOptions>();
    CLI::App *command =
        group->add_subcommand("cruscotto", "Da incassare e da pagare mese per mese, con i clienti in ritardo");
    command->footer("Esempio:\n  lumera scadenze cruscotto --mesi 12 --saldo 15000");
    command->add_option("--mesi", options->filter.months, "Quanti mesi, da quello di oggi (6)");
    command->add_option("--saldo", options->cash, "Denaro di oggi, da cui parte il progressivo");
    AddPrintFileOptions(command, &options->file);
    command->callback([=] { *action = [=] { return ShowOutlook(session, *options); }; });
}
