#include "cli/Commands.h"

#include "cli/EntryJson.h"
#include "cli/JsonInput.h"
#include "cli/Table.h"
#include "ledger/EntryStorage.h"
#include "schedule/Instalments.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Attachments.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/Schedule.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

struct ListOptions {
    std::string from, to;
    long section = 0, causale = 0;
};

std::string Condition(const ListOptions &options)
{
    std::string text = " WHERE 1 = 1";
    if (!options.from.empty()) text += " AND pno_data >= :d_start";
    if (!options.to.empty()) text += " AND pno_data <= :d_stop";
    if (options.section != 0) text += " AND pno_sez = :codsez";
    if (options.causale != 0) text += " AND pno_cau = :codcac";
    return text;
}

constexpr const char *kListColumns =
    "SELECT pno_codice, pno_data, pno_des_cau, pno_data_doc, pno_tot_doc, pno_sez, pno_cau, pno_reg, pno_prot,"
    " pno_rel, pno_cli_for, pno_doc, pno_dare, pno_avere,"
    " CASE pno_rel WHEN 0 THEN cli_desc WHEN 1 THEN for_desc END AS nome FROM admin.pnota1"
    " LEFT JOIN admin.clienti1 ON cli_codice = pno_cliente LEFT JOIN admin.fornito1 ON for_codice = pno_fornitore";

nlohmann::json ListedAsJson(SACommand &query)
{
    return {{"codice", query.Field("pno_codice").asLong()},
            {"data", JsonDate(FromSqlDate(query.Field("pno_data").asDateTime()))},
            {"cau", query.Field("pno_cau").asLong()},
            {"des_cau", query.Field("pno_des_cau").asString()},
            {"sez", query.Field("pno_sez").asLong()},
            {"reg", query.Field("pno_reg").asLong()},
            {"prot", query.Field("pno_prot").asLong()},
            {"doc", query.Field("pno_doc").asString()},
            {"data_doc", JsonDate(FromSqlDate(query.Field("pno_data_doc").asDateTime()))},
            {"rel", query.Field("pno_rel").asLong()},
            {"cli_for", query.Field("pno_cli_for").asLong()},
            {"nome", query.Field("nome").asString()},
            {"tot_doc", JsonAmount(query.Field("pno_tot_doc").asDouble())},
            {"dare", JsonAmount(query.Field("pno_dare").asDouble())},
            {"avere", JsonAmount(query.Field("pno_avere").asDouble())}};
}

std::vector<std::string> ListedAsCells(SACommand &query)
{
    const long protocol = query.Field("pno_prot").asLong();
    return {query.Field("pno_codice").asString(),
            FormatDate(FromSqlDate(query.Field("pno_data").asDateTime())),
            query.Field("pno_des_cau").asString(),
            RegisterName(query.Field("pno_reg").asLong()),
            protocol == 0 ? "" : std::to_string(protocol),
            query.Field("pno_doc").asString(),
            query.Field("nome").asString(),
            FormatAmount(query.Field("pno_tot_doc").asDouble()),
            FormatAmount(query.Field("pno_dare").asDouble()),
            FormatAmount(query.Field("pno_avere").asDouble())};
}

void ListAsJson(SACommand &query)
{
    JsonListPrinter json("movimenti");
    long count = 0;
    for (; query.FetchNext(); ++count) json.Add(ListedAsJson(query));
    json.Finish({{"totale", count}});
}

void ListAsTable(SACommand &query, bool colours)
{
    constexpr auto kRight = TableColumn::Align::Right;
    Table table({{"Mov.", kRight},
                 {"Data"},
                 {"Causale"},
                 {"Registro"},
                 {"Prot.", kRight},
                 {"Documento"},
                 {"Cliente/fornitore", TableColumn::Align::Left, 32},
                 {"Totale", kRight},
                 {"Dare", kRight},
                 {"Avere", kRight}},
                colours);
    long count = 0;
    long long dare = 0, avere = 0;
    for (; query.FetchNext(); ++count) {
        dare += ToCents(query.Field("pno_dare").asDouble());
        avere += ToCents(query.Field("pno_avere").asDouble());
        table.AddRow(ListedAsCells(query));
        Print(table.Take());
    }
    Print(table.Finish({"", "", fmt::format("{} movimenti", count), "", "", "", "", "", FormatAmount(FromCents(dare)),
                        FormatAmount(FromCents(avere))}));
}

int List(Session *session, const ListOptions &options)
{
    const long first = ParseDateOption("--dal", options.from), last = ParseDateOption("--al", options.to);
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand query(&connection, kListColumns + Condition(options) + " ORDER BY pno_data DESC, pno_codice DESC");
    if (first != 0) query.Param("d_start").setAsDateTime(ToSqlDate(first));
    if (last != 0) query.Param("d_stop").setAsDateTime(ToSqlDate(last));
    if (options.section != 0) query.Param("codsez").setAsLong(options.section);
    if (options.causale != 0) query.Param("codcac").setAsLong(options.causale);
    query.Execute();
    if (session->json)
        ListAsJson(query);
    else
        ListAsTable(query, session->Colours());
    return kExitDone;
}

PNOTA Load(SACommand *cmd, long number)
{
    PNOTA entry;
    if (!sqlpno.Search(cmd, number, &entry)) throw RefusedError(fmt::format("Il movimento n. {} non esiste.", number));
    return entry;
}

std::string HeaderText(const PNOTA &entry)
{
    std::string text = fmt::format("Movimento {} del {}   causale {} {}\n", entry.pno_codice,
                                   FormatDate(entry.pno_data), entry.pno_cau, entry.pno_des_cau.str());
    if (entry.pno_rel != kNoCounterpart)
        text += fmt::format("{} {} {}\n", entry.pno_rel == kCustomer ? "Cliente" : "Fornitore", entry.pno_cli_for,
                            entry.des_clifor.str());
    if (!entry.pno_doc.empty())
        text += fmt::format("Documento {} del {}   totale {}\n", entry.pno_doc.str(), FormatDate(entry.pno_data_doc),
                            FormatAmount(entry.pno_tot_doc));
    text += fmt::format("Registro {}", RegisterName(entry.pno_reg));
    if (entry.pno_prot != 0) text += fmt::format("   sezione {}   protocollo {}", entry.pno_sez, entry.pno_prot);
    if (entry.pno_pag != 0) text += fmt::format("\nPagamento {} {}", entry.pno_pag, entry.des_pag.str());
    return text + "\n";
}

int Show(Session *session, long number)
{
    session->OpenArchive();
    const PNOTA entry = Load(nullptr, number);
    const std::vector<PNOTA_ALLEGATO> files = sqlpat.ListOf(nullptr, number);
    if (session->json) {
        nlohmann::json json = EntryToJson(entry);
        json["allegati"] = nlohmann::json::array();
        for (const PNOTA_ALLEGATO &file : files)
            json["allegati"].push_back({{"nome", file.pat_fname.str()}, {"bytes", file.pat_bytes_size}});
        Print(json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
        return kExitDone;
    }
    Print(HeaderText(entry));
    constexpr auto kRight = TableColumn::Align::Right;
    if (entry.pno_cau_iva == 1) {
        Table vat(
            {{"IVA", kRight}, {"Imponibile", kRight}, {"Aliq.", kRight}, {"Imposta", kRight}, {"Indetr.%", kRight}},
            session->Colours());
        for (const PNOTA_IVA &line : entry.iva) {
            if (line.iva != 0)
                vat.AddRow({std::to_string(line.iva), FormatAmount(line.impo), FormatAmount(line.aliq),
                            FormatAmount(line.imposta), FormatAmount(line.ind)});
        }
        Print("\n" + vat.Finish());
    }
    Table rows({{"Conto"}, {"Descrizione", TableColumn::Align::Left, 44}, {"Dare", kRight}, {"Avere", kRight}},
               session->Colours());
    for (const PNOTA_RIGA &row : entry.righe) {
        if (!row.InUse()) continue;
        const std::string amount = FormatAmount(row.row_importo);
        rows.AddRow({fmt::format("{}.{}.{}", row.row_mas, row.row_con, row.row_sot), row.des_sot.str(),
                     row.IsDare() ? amount : "", row.IsDare() ? "" : amount});
    }
    Print("\n" + rows.Finish({"", "", FormatAmount(entry.pno_dare), FormatAmount(entry.pno_avere)}));
    for (const PNOTA_ALLEGATO &file : files)
        Print(fmt::format("Allegato: {} ({} byte)\n", OnOneLine(file.pat_fname), file.pat_bytes_size));
    return kExitDone;
}

int Store(Session *session, const std::string &file)
{
    const std::string text = ReadJsonInput(file);
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    PNOTA entry = EntryFromJson(&command, text, session->user.Today());
    // The instalments are proposed before the entry has its number, so that the questions come before any write.
    std::string why_not;
    const std::optional<InstalmentProposal> instalments = ProposeWholeInstalments(&command, entry, &why_not);
    if (instalments && !ConfirmTotal(instalments->rows, instalments->total))
        throw RefusedError("Scadenze non confermate.");
    long stored_instalments = 0;
    StoreTogether together;
    if (instalments)
        together.after = [&](SACommand *inner, const PNOTA &stored) {
            stored_instalments = StoreInstalments(inner, stored, *instalments);
        };
    const StoreOutcome outcome = StoreEntry(&command, &entry, true, together);
    if (!outcome.stored) throw RefusedError(outcome.reason);
    if (session->json) {
        nlohmann::json json = {{"codice", entry.pno_codice},
                               {"prot", entry.pno_prot},
                               {"tot_doc", JsonAmount(entry.pno_tot_doc)},
                               {"scadenze", stored_instalments}};
        if (!why_not.empty()) json["avviso"] = why_not;
        PrintJson(json);
    } else {
        Print(fmt::format("Registrato il movimento {}{}, {} scadenze.\n", entry.pno_codice,
                          entry.pno_prot == 0 ? "" : fmt::format(" con protocollo {}", entry.pno_prot),
                          stored_instalments));
        if (!why_not.empty()) Print(why_not + "\n");
    }
    return kExitDone;
}

int Delete(Session *session, long number)
{
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    PNOTA entry = Load(&command, number);
    if (AfxMessageBox(
            fmt::format("Vuoi veramente eliminare il movimento n. {} del {}?", number, FormatDate(entry.pno_data)),
            MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        throw RefusedError("Eliminazione non confermata (usare --si).");
    if (!DeleteEntry(&command, &entry)) throw RefusedError("Esercizio chiuso: eliminazione non confermata.");
    if (session->json)
        PrintJson(nlohmann::json{{"eliminato", number}});
    else
        Print(fmt::format("Eliminato il movimento {}.\n", number));
    return kExitDone;
}

} // namespace

void AddJournalCommands(CLI::App *app, Session *session, Action *action)
{
    CLI::App *group = app->add_subcommand("pnota", "Movimenti di prima nota");
    group->require_subcommand(1);
    group->footer("Esempio:\n  lumera pnota mostra 12");

    auto list = std::make_shared<ListOptions>();
    CLI::App *listing = group->add_subcommand("elenco", "Elenca i movimenti, dal più recente");
    listing->footer("Esempio:\n  lumera pnota elenco --dal 2026-01-01 --al 31/03/2026 --causale 21");
    listing->add_option("--dal", list->from, "Registrati dal giorno");
    listing->add_option("--al", list->to, "Registrati fino al giorno");
    listing->add_option("--sezione", list->section, "Sezione IVA");
    listing->add_option("--causale", list->causale, "Causale");
    listing->callback([=] { *action = [=] { return List(session, *list); }; });

    auto number = std::make_shared<long>(0);
    CLI::App *show = group->add_subcommand("mostra", "Mostra un movimento intero");
    show->footer("Esempio:\n  lumera pnota mostra 12 --json");
    show->add_option("numero", *number, "Numero del movimento")->required();
    show->callback([=] { *action = [=] { return Show(session, *number); }; });

    auto file = std::make_shared<std::string>();
    CLI::App *store = group->add_subcommand("registra", "Registra un movimento descritto in JSON");
    store->footer("Esempio:\n  echo "
                  "'{\"data\":\"2026-03-15\",\"cau\":21,\"cli_for\":1,\"doc\":\"45\",\"data_doc\":\"2026-03-10\","
                  "\"iva\":[{\"codice\":22,\"imponibile\":100.00}]}' | lumera pnota registra -");
    store->add_option("file", *file, "File JSON, o - per lo standard input")->required();
    store->callback([=] { *action = [=] { return Store(session, *file); }; });

    CLI::App *remove = group->add_subcommand("elimina", "Elimina un movimento con le sue scadenze aperte");
    remove->footer("Esempio:\n  lumera --si pnota elimina 12");
    remove->add_option("numero", *number, "Numero del movimento")->required();
    remove->callback([=] { *action = [=] { return Delete(session, *number); }; });
}
