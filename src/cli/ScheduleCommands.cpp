#include "cli/ScheduleCommands.h"

#include "schedule/Instalments.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/Schedule.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

int Generate(Session *session, long number)
{
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    PNOTA entry;
    if (!sqlpno.Search(&command, number, &entry))
        throw RefusedError(fmt::format("Il movimento n. {} non esiste.", number));
    if (const long there = sqlsca.CountOf(&command, number); there > 0)
        throw RefusedError(fmt::format("Il movimento n. {} ha già {} scadenze.", number, there));
    const long stored = GenerateInstalments(&command, entry);
    if (stored == 0) throw RefusedError(fmt::format("Il movimento n. {} non genera scadenze.", number));
    if (session->json)
        PrintJson(nlohmann::json{{"movimento", number}, {"scadenze", stored}});
    else
        Print(fmt::format("Generate {} scadenze del movimento {}.\n", stored, number));
    return kExitDone;
}

} // namespace

void AddScheduleCommands(CLI::App *app, Session *session, Action *action)
{
    CLI::App *group = app->add_subcommand("scadenze", "Scadenzario di clienti e fornitori");
    group->require_subcommand(1);
    group->footer("Esempio:\n  lumera scadenze elenco --fornitori --aperte");

    auto number = std::make_shared<long>(0);
    CLI::App *generate = group->add_subcommand("genera", "Genera le scadenze di un movimento che non ne ha");
    generate->footer("Esempio:\n  lumera scadenze genera 12");
    generate->add_option("numero", *number, "Numero del movimento")->required();
    generate->callback([=] { *action = [=] { return Generate(session, *number); }; });

    AddScheduleListCommands(group, session, action);
    AddScheduleViewCommands(group, session, action);
    AddInstalmentCommands(group, session, action);
    AddScheduleImportCommands(group, session, action);
    AddScheduleOutlookCommands(group, session, action);
}
