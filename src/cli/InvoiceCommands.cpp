#include "cli/Commands.h"

#include "cli/InvoiceIds.h"
#include "cli/Table.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Schedule.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

std::string IdOf(const InvoiceRow &row)
{
    return row.documents > 1 ? fmt::format("{}.{}", row.code, row.document + 1) : std::to_string(row.code);
}

namespace {

int Import(Session *session, const std::vector<std::string> &files)
{
    session->OpenArchive();
    if (const std::string fault = CompanyFaultForInvoices(lumera_db_impo); !fault.empty()) throw RefusedError(fault);
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    std::optional<JsonListPrinter> json;
    if (session->json) json.emplace("file");
    std::array<long, 4> counts{};
    const auto show = [&](const ImportResult &result) {
        ++counts.at(static_cast<std::size_t>(result.outcome));
        if (json) {
            json->Add({{"file", result.origin},
                       {"esito", ImportOutcomeText(result.outcome)},
                       {"codice", result.code},
                       {"testo", result.text},
                       {"avvisi", result.warnings}});
            return;
        }
        Print(fmt::format("{} {} {}: {}\n", PadRight(ImportOutcomeText(result.outcome), 12),
                          result.code == 0 ? "     " : fmt::format("{:5}", result.code), OnOneLine(result.origin),
                          OnOneLine(result.text)));
        for (const std::string &warning : result.warnings)
            std::fprintf(stderr, "  avviso: %s\n", OnOneLine(warning).c_str());
    };
    ImportInvoices(&command, {files.begin(), files.end()}, show);
    if (json)
        json->Finish(
            {{"caricate", counts[0]}, {"gia_presenti", counts[1]}, {"rifiutate", counts[2]}, {"ignorate", counts[3]}});
    else
        Print(fmt::format("{} caricate, {} già presenti, {} rifiutate{}.\n", counts[0], counts[1], counts[2],
                          counts[3] == 0 ? "" : fmt::format(", {} ignorate", counts[3])));
    return counts[2] == 0 ? kExitDone : kExitRefused;
}

const char *StateOf(const InvoiceRow &row)
{
    if (!row.fault.empty()) return "illeggibile";
    return row.is_registered ? "registrata" : "da registrare";
}

std::string NumberOrDash(long number)
{
    return number == 0 ? "-" : std::to_string(number);
}

nlohmann::json ToJson(const InvoiceRow &row)
{
    return {{"id", IdOf(row)},
            {"codice", row.code},
            {"documento", row.document + 1},
            {"file", row.file_name.str()},
            {"tipo", row.type},
            {"numero", row.number},
            {"data", JsonDate(row.day)},
            {"cedente", row.seller_name},
            {"piva", row.vat_number},
            {"codfis", row.fiscal_code},
            {"fornitore", row.supplier},
            {"fornitore_nome", row.supplier_name},
            {"tipo_testo", row.type_text},
            {"magazzino", row.is_in_warehouse},
            {"totale", JsonAmount(row.total)},
            {"firmata", row.is_signed},
            {"sdi", row.sdi},
            {"registrata", row.is_registered},
            {"movimento", row.entry},
            {"protocollo", row.protocol},
            {"stato", StateOf(row)}};
}

struct ListOptions {
    std::string from, to;
    bool only_open = false;
};

int List(Session *session, const ListOptions &options)
{
    const long first = ParseDateOption("--dal", options.from), last = ParseDateOption("--al", options.to);
    session->OpenArchive();
    std::optional<JsonListPrinter> json;
    if (session->json) json.emplace("fatture");
    constexpr auto kRight = TableColumn::Align::Right;
    Table table({{"Id", kRight},
                 {"Tipo"},
                 {"Numero", TableColumn::Align::Left, 20},
                 {"Data"},
                 {"Forn.", kRight},
                 {"Cedente", TableColumn::Align::Left, 34},
                 {"Totale", kRight},
                 {"Mov.", kRight},
                 {"Prot.", kRight},
                 {"Scad.", kRight},
                 {"File", kRight},
                 {"Stato"}},
                session->Colours());
    long count = 0;
    ForEachInvoice(nullptr, first, last, [&](const InvoiceRow &row) {
        if (options.only_open && row.is_registered) return true;
        ++count;
        if (json) {
            json->Add(ToJson(row));
            return true;
        }
        table.AddRow({IdOf(row), row.type, row.number, FormatDate(row.day), NumberOrDash(row.supplier), row.seller_name,
                      FormatAmount(row.total), NumberOrDash(row.entry), NumberOrDash(row.protocol),
                      row.entry == 0 ? "-" : std::to_string(sqlsca.CountOf(nullptr, row.entry)),
                      row.entry == 0 ? "-" : std::to_string(sqlpat.ListOf(nullptr, row.entry).size()), StateOf(row)});
        Print(table.Take());
        return true;
    });
    if (json)
        json->Finish({{"totale", count}});
    else
        Print(table.Finish() + fmt::format("{} fatture.\n", count));
    return kExitDone;
}

} // namespace

void AddInvoiceCommands(CLI::App *app, Session *session, Action *action)
{
    CLI::App *group = app->add_subcommand("fatture", "Fatture elettroniche ricevute");
    group->require_subcommand(1);
    group->footer("Esempio:\n  lumera fatture importa scaricate/");

    auto files = std::make_shared<std::vector<std::string>>();
    CLI::App *import = group->add_subcommand("importa", "Carica fatture da file, cartelle e archivi .zip");
    import->footer("Esempio:\n  lumera fatture importa scaricate/ IT01234567897_00001.xml.p7m");
    import->add_option("file", *files, "File XML o .p7m, cartelle, .zip")->required();
    import->callback([=] { *action = [=] { return Import(session, *files);
};
});

auto list = std::make_shared<ListOptions>();
CLI::App *listing = group->add_subcommand("elenco", "Elenca le fatture caricate e il loro stato");
listing->footer("Esempio:\n  lumera fatture elenco --da-registrare");
listing->add_option("--dal", list->from, "Acquisite dal giorno");
listing->add_option("--al", list->to, "Acquisite fino al giorno");
listing->add_flag("--da-registrare", list->only_open, "Solo quelle non ancora registrate");
listing->callback([=] { *action = [=] { return List(session, *list); }; });
}
