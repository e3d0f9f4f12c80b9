#include "cli/DateCheck.h"

#include "tarvodlg/base/Dates.h"
#include "tarvolumera/Company.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

struct PeriodOptions {
    std::string from, to;
};

int Run(Session *session, const PeriodOptions &options, const DateCheck &check)
{
    DatePeriod period{ParseDateOption("--dal", options.from), ParseDateOption("--al", options.to)};
    session->OpenArchive();
    const int year = static_cast<int>(lumera_db_impo.dit_anno);
    if (period.first == 0) period.first = DateToJulian(1, 1, year);
    if (period.last == 0) period.last = DateToJulian(31, 12, year);
    if (period.first > period.last) throw UsageError("--al è anteriore a --dal.");
    const long faults = check.check(period);
    if (session->json)
        PrintJson(nlohmann::json{{"dal", JsonDate(period.first)},
                                 {"al", JsonDate(period.last)},
                                 {"errori", faults},
                                 {"file", check.log().string()}});
    else
        Print(
            fmt::format("Date dal {} al {}: {} errori.\n", FormatDate(period.first), FormatDate(period.last), faults));
    return faults == 0 ? kExitDone : kExitRefused;
}

} // namespace

void AddDateCheckCommand(CLI::App *group, Session *session, Action *action, const DateCheck &check)
{
    auto period = std::make_shared<PeriodOptions>();
    CLI::App *command = group->add_subcommand("controlla-date", check.description);
    command->footer(fmt::format("Esempio:\n  {}", check.example));
    command->add_option("--dal", period->from, "Primo giorno ammesso (inizio dell'esercizio)");
    command->add_option("--al", period->to, "Ultimo giorno ammesso (fine dell'esercizio)");
    command->callback([=] { *action = [=] { return Run(session, *period, check); }; });
}
