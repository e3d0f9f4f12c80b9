#include "cli/Commands.h"

#include "cli/Table.h"
#include "einvoice/InvoiceRegistration.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Schedule.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <fmt/format.h>

namespace {

const char *OutcomeText(ImportOutcome outcome)
{
    switch (outcome) {
    case ImportOutcome::Loaded:
        return "caricata";
    case ImportOutcome::AlreadyThere:
        return "già presente";
    case ImportOutcome::Ignored:
        return "ignorata";
    case ImportOutcome::Refused:
        break;
    }
    return "rifiutata";
}

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
                       {"esito", OutcomeText(result.outcome)},
                       {"codice", result.code},
                       {"testo", result.text},
                       {"avvisi", result.warnings}});
            return;
        }
        Print(fmt::format("{} {} {}: {}\n", PadRight(OutcomeText(result.outcome), 12),
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

std::string IdOf(const InvoiceRow &row)
{
    return row.documents > 1 ? fmt::format("{}.{}", row.code, row.document + 1) : std::to_string(row.code);
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

struct RegisterOptions {
    std::vector<std::string> ids;
    std::string day;
    bool all = false, new_supplier = false;
    long causale = 0, supplier = 0, vat_code = 0;
};

/// One body of a filed invoice to be registered.
struct Target {
    long code = 0;
    std::size_t document = 0;
    std::string label; ///< number, date and seller, for the line of the report
    long day = 0;      ///< date of the document
    bool done = false; ///< the journal holds it already
};

long ParsePositive(std::string_view text)
{
    long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() && value > 0 ? value : 0;
}

Target ToTarget(const InvoiceRow &row)
{
    return {row.code, row.document, fmt::format("n. {} del {}, {}", row.number, FormatDate(row.day), row.seller_name),
            row.day, row.is_registered};
}

/// "12" is every body of file 12, "12.2" its second one.
void AddTargets(SACommand *cmd, const std::string &id, std::vector<Target> *targets)
{
    const std::size_t dot = id.find('.');
    const long code = ParsePositive(std::string_view(id).substr(0, dot));
    const long body = dot == std::string::npos ? 0 : ParsePositive(std::string_view(id).substr(dot + 1));
    if (code == 0 || (dot != std::string::npos && body == 0))
        throw UsageError(fmt::format("«{}» non è l'identificativo di una fattura (vedere fatture elenco).", id));
    CFattureElettronicheDB content;
    const ALLEGATI filed = LoadInvoice(cmd, code, &content);
    if (body > static_cast<long>(content.Count()))
        throw UsageError(fmt::format("Il file n. {} contiene {} documenti.", code, content.Count()));
    for (std::size_t document = 0; document < content.Count(); ++document) {
        if (body == 0 || document + 1 == static_cast<std::size_t>(body))
            targets->push_back(ToTarget(DescribeInvoice(cmd, filed, content, document)));
    }
}

RegistrationChoices ChoicesFrom(const RegisterOptions &options)
{
    RegistrationChoices choices;
    choices.choose_supplier = [=](const fatturapa::PartyType &) { return options.supplier; };
    choices.confirm_supplier = [](FORNITORI *) { return true; };
    choices.choose_causale = [](long proposed) { return proposed; };
    choices.registration_day = ParseDateOption("--data", options.day);
    choices.skip_duplicates = options.all;
    choices.choose_vat_code = [=](const fatturapa::DatiRiepilogoType &) { return options.vat_code; };
    return choices;
}

nlohmann::json ToJson(const Target &target, const RegistrationOutcome &outcome)
{
    nlohmann::json json = {{"codice", target.code},
                           {"documento", target.document + 1},
                           {"registrata", outcome.registered},
                           {"motivo", outcome.reason},
                           {"note", outcome.notes}};
    if (outcome.registered)
        json.update({{"movimento", outcome.entry.pno_codice},
                     {"protocollo", outcome.entry.pno_prot},
                     {"registro", outcome.entry.pno_reg},
                     {"totale", JsonAmount(outcome.entry.pno_tot_doc)},
                     {"scadenze", outcome.instalments}});
    return json;
}

void PrintOutcome(const Target &target, const RegistrationOutcome &outcome)
{
    if (outcome.registered)
        Print(fmt::format("registrata   {}: movimento {}, protocollo {} {}, {} righe IVA, {} scadenze\n",
                          OnOneLine(target.label), outcome.entry.pno_codice, outcome.entry.pno_prot,
                          RegisterName(outcome.entry.pno_reg),
                          std::count_if(outcome.entry.iva.begin(), outcome.entry.iva.end(),
                                        [](const PNOTA_IVA &line) { return line.iva != 0; }),
                          outcome.instalments));
    else
        Print(fmt::format("rifiutata    {}: {}\n", OnOneLine(target.label), OnOneLine(outcome.reason)));
    for (const std::string &note : outcome.notes) Print(fmt::format("             {}\n", OnOneLine(note)));
}

int Register(Session *session, const RegisterOptions &options)
{
    if (options.all == !options.ids.empty())
        throw UsageError("Indicare gli identificativi delle fatture oppure --tutte.");
    if (options.new_supplier && options.supplier != 0)
        throw UsageError("--fornitore e --nuovo-fornitore si escludono.");
    session->OpenArchive();
    session->user.answer_choice = options.new_supplier ? IDNO : options.supplier != 0 ? IDYES : IDCANCEL;
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    std::vector<Target> targets;
    for (const std::string &id : options.ids) AddTargets(&command, id, &targets);
    if (options.all)
        ForEachInvoice(&command, 0, 0, [&](const InvoiceRow &row) {
            if (row.fault.empty()) targets.push_back(ToTarget(row));
            return true;
        });
    // Oldest document first: the protocols then follow the dates, whatever the order of arrival.
    std::stable_sort(targets.begin(), targets.end(), [](const Target &a, const Target &b) { return a.day < b.day; });
    std::optional<JsonListPrinter> json;
    if (session->json) json.emplace("fatture");
    long registered = 0, already = 0, refused = 0;
    for (const Target &target : targets) {
        if (options.all && target.done) {
            ++already;
            if (json)
                json->Add({{"codice", target.code},
                           {"documento", target.document + 1},
                           {"registrata", true},
                           {"motivo", "già registrata"}});
            else
                Print(fmt::format("già fatta    {}\n", OnOneLine(target.label)));
            continue;
        }
        const RegistrationOutcome outcome =
            RegisterInvoice(&command, target.code, target.document, options.causale, ChoicesFrom(options));
        ++(outcome.registered ? registered : refused);
        if (json)
            json->Add(ToJson(target, outcome));
        else
            PrintOutcome(target, outcome);
    }
    if (json)
        json->Finish({{"registrate", registered}, {"gia_registrate", already}, {"rifiutate", refused}});
    else
        Print(fmt::format("{} registrate, {} già registrate, {} rifiutate.\n", registered, already, refused));
    return refused == 0 ? kExitDone : kExitRefused;
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

auto options = std::make_shared<RegisterOptions>();
CLI::App *registration = group->add_subcommand("registra", "Registra fatture in prima nota con le loro scadenze");
registration->footer("Esempi:\n  lumera fatture registra 12\n  lumera fatture registra 12.2 --causale 22\n"
                     "  lumera fatture registra --tutte --nuovo-fornitore");
registration->add_option("id", options->ids, "Identificativi (codice, o codice.documento)");
registration->add_flag("--tutte", options->all, "Tutte quelle non ancora registrate");
registration->add_option("--data", options->day, "Data di registrazione (quella del documento)");
registration->add_option("--causale", options->causale, "Causale contabile, invece di quella del fornitore");
registration->add_option("--fornitore", options->supplier, "Fornitore da usare quando non è individuato");
registration->add_flag("--nuovo-fornitore", options->new_supplier, "Crea il fornitore quando non è individuato");
registration->add_option("--codice-iva", options->vat_code, "Codice IVA da usare quando nessuno corrisponde");
registration->callback([=] { *action = [=] { return Register(session, *options); }; });
}
