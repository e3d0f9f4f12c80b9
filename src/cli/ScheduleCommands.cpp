#include "cli/Commands.h"

#include "cli/Table.h"
#include "schedule/Instalments.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/Schedule.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

struct ListOptions {
    bool customers = false, suppliers = false, open = false, closed = false;
    std::string from, to;
};

nlohmann::json ToJson(SACommand &query)
{
    return {{"relaz", query.Field("sca_relaz").asLong()},
            {"num", query.Field("sca_num").asLong()},
            {"data", JsonDate(FromSqlDate(query.Field("sca_data").asDateTime()))},
            {"importo", JsonAmount(query.Field("sca_importo").asDouble())},
            {"cli_for", query.Field("sca_cli_for").asLong()},
            {"nome", query.Field("nome").asString()},
            {"fattura", query.Field("sca_fattura").asString()},
            {"data_fattura", JsonDate(FromSqlDate(query.Field("sca_data_fattura").asDateTime()))},
            {"desc", query.Field("sca_desc").asString()},
            {"tipo_pag", query.Field("sca_tipo_pag").asLong()},
            {"rata", query.Field("sca_rata").asLong()},
            {"rate", query.Field("sca_rate").asLong()},
            {"pagato", query.Field("sca_pagato").asLong()},
            {"data_pag", JsonDate(FromSqlDate(query.Field("sca_data_pag").asDateTime()))},
            {"pno", query.Field("sca_pno").asLong()},
            {"sez", query.Field("sca_sez").asLong()},
            {"anno", query.Field("sca_anno").asLong()},
            {"pag", query.Field("sca_pag").asLong()},
            {"ban", query.Field("sca_ban").asLong()},
            {"emessa", JsonDate(FromSqlDate(query.Field("sca_emessa").asDateTime()))},
            {"dst", query.Field("sca_dst").asLong()},
            {"age", query.Field("sca_age").asLong()},
            {"parked", query.Field("sca_parked").asLong()},
            {"printed", query.Field("sca_printed").asLong()},
            {"ultima", query.Field("sca_ultima").asLong()},
            {"tot_fat", JsonAmount(query.Field("sca_tot_fat").asDouble())}};
}

std::string ListText(const ListOptions &options, long first, long last)
{
    std::string text =
        "SELECT sca_relaz, sca_num, sca_data, sca_importo, sca_cli_for, sca_fattura, sca_data_fattura, sca_desc,"
        " sca_tipo_pag, sca_rata, sca_rate, sca_pagato, sca_data_pag, sca_pno,"
        " sca_sez, sca_anno, sca_pag, sca_ban, sca_emessa, sca_dst, sca_age, sca_parked, sca_printed, sca_ultima,"
        " sca_tot_fat,"
        " CASE sca_relaz WHEN 0 THEN cli_desc ELSE for_desc END AS nome FROM admin.scadenze"
        " LEFT JOIN admin.clienti1 ON cli_codice = sca_cliente"
        " LEFT JOIN admin.fornito1 ON for_codice = sca_fornitore WHERE 1 = 1";
    if (options.customers) text += " AND sca_relaz = 0";
    if (options.suppliers) text += " AND sca_relaz = 1";
    if (options.open) text += " AND sca_pagato = 0";
    if (options.closed) text += " AND sca_pagato <> 0";
    if (first != 0) text += " AND sca_data >= :d_start";
    if (last != 0) text += " AND sca_data <= :d_stop";
    return text + " ORDER BY sca_data, sca_relaz, sca_num";
}

int List(Session *session, const ListOptions &options)
{
    if (options.customers && options.suppliers) throw UsageError("--clienti e --fornitori si escludono.");
    if (options.open && options.closed) throw UsageError("--aperte e --chiuse si escludono.");
    const long first = ParseDateOption("--dal", options.from), last = ParseDateOption("--al", options.to);
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand query(&connection, ListText(options, first, last));
    if (first != 0) query.Param("d_start").setAsDateTime(ToSqlDate(first));
    if (last != 0) query.Param("d_stop").setAsDateTime(ToSqlDate(last));
    query.Execute();
    std::optional<JsonListPrinter> json;
    if (session->json) json.emplace("scadenze");
    constexpr auto kRight = TableColumn::Align::Right;
    Table table({{"Scadenza"},
                 {"C/F"},
                 {"Num.", kRight},
                 {"Cliente/fornitore", TableColumn::Align::Left, 34},
                 {"Fattura"},
                 {"Rata"},
                 {"Importo", kRight},
                 {"Stato"}},
                session->Colours());
    long count = 0;
    long long to_collect = 0, to_pay = 0;
    while (query.FetchNext()) {
        ++count;
        if (json) {
            json->Add(ToJson(query));
            continue;
        }
        const bool customer = query.Field("sca_relaz").asLong() == kCustomer,
                   paid = query.Field("sca_pagato").asLong() != 0;
        const double amount = query.Field("sca_importo").asDouble();
        if (!paid) (customer ? to_collect : to_pay) += ToCents(amount);
        table.AddRow({FormatDate(FromSqlDate(query.Field("sca_data").asDateTime())), customer ? "C" : "F",
                      query.Field("sca_num").asString(), query.Field("nome").asString(),
                      query.Field("sca_fattura").asString(),
                      fmt::format("{}/{}", query.Field("sca_rata").asLong(), query.Field("sca_rate").asLong()),
                      FormatAmount(amount),
                      !paid      ? "aperta"
                      : customer ? "incassata"
                                 : "pagata"});
        Print(table.Take());
    }
    if (json)
        json->Finish({{"totale", count}});
    else
        Print(table.Finish() + fmt::format("{} scadenze; da incassare {}, da pagare {}.\n", count,
                                           FormatAmount(FromCents(to_collect)), FormatAmount(FromCents(to_pay))));
    return kExitDone;
}

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

    auto list = std::make_shared<ListOptions>();
    CLI::App *listing = group->add_subcommand("elenco", "Elenca le scadenze per data");
    listing->footer("Esempio:\n  lumera scadenze elenco --fornitori --aperte --al 31/12/2026");
    listing->add_flag("--clienti", list->customers, "Solo da incassare dai clienti");
    listing->add_flag("--fornitori", list->suppliers, "Solo da pagare ai fornitori");
    listing->add_flag("--aperte", list->open, "Solo aperte");
    listing->add_flag("--chiuse", list->closed, "Solo pagate o incassate");
    listing->add_option("--dal", list->from, "Scadenti dal giorno");
    listing->add_option("--al", list->to, "Scadenti fino al giorno");
    listing->callback([=] { *action = [=] { return List(session, *list); }; });

    auto number = std::make_shared<long>(0);
    CLI::App *generate = group->add_subcommand("genera", "Genera le scadenze di un movimento che non ne ha");
    generate->footer("Esempio:\n  lumera scadenze genera 12");
    generate->add_option("numero", *number, "Numero del movimento")->required();
    generate->callback([=] { *action = [=] { return Generate(session, *number); }; });
}
