#include "cli/Commands.h"

#include "cli/InvoiceIds.h"
#include "cli/Table.h"
#include "einvoice/InvoiceBatch.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvolumera/Counterparts.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <fmt/format.h>

namespace {

struct RegisterOptions {
    std::vector<std::string> ids;
    std::string day;
    bool all = false, trial = false, new_supplier = false;
    long causale = 0, supplier = 0, vat_code = 0;
};

long ParsePositive(std::string_view text)
{
    long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() && value > 0 ? value : 0;
}

/// "12" is every body of file 12, "12.2" its second one.
void AddRows(SACommand *cmd, const std::string &id, std::vector<InvoiceRow> *rows)
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
            rows->push_back(DescribeInvoice(cmd, filed, content, document));
    }
}

/// Oldest document first: the protocols then follow the dates, whatever the order of arrival.
void SortByDay(std::vector<InvoiceRow> *rows)
{
    std::ranges::stable_sort(*rows, {}, &InvoiceRow::day);
}

RegistrationChoices ChoicesFrom(const RegisterOptions &options)
{
    RegistrationChoices choices;
    if (options.supplier != 0) choices.choose_supplier = [=](const fatturapa::PartyType &) { return options.supplier; };
    choices.confirm_supplier = [](FORNITORI *) { return true; };
    choices.choose_causale = [](long proposed) { return proposed; };
    choices.registration_day = ParseDateOption("--data", options.day);
    if (options.vat_code != 0)
        choices.choose_vat_code = [=](const fatturapa::DatiRiepilogoType &) { return options.vat_code; };
    return choices;
}

BatchOptions BatchFrom(const Session &session, const RegisterOptions &options)
{
    return {ChoicesFrom(options), options.causale, options.new_supplier, session.yes};
}

// --- what was done
// ----------------------------------------------------------------------------------------------------

/// Prints the documents of a run as they come, and counts them.
class Report {
  public:
    explicit Report(bool as_json)
    {
        if (as_json) json_.emplace("fatture");
    }

    void AlreadyThere(const InvoiceRow &invoice)
    {
        ++already_;
        if (json_)
            json_->Add({{"codice", invoice.code},
                        {"documento", invoice.document + 1},
                        {"registrata", true},
                        {"motivo", "già registrata"}});
        else
            Print(fmt::format("già fatta    {}\n", Label(invoice)));
    }

    void Add(const InvoiceRow &invoice, const BatchResult &result)
    {
        ++(result.registered ? registered_ : refused_);
        if (json_) return json_->Add(ToJson(invoice, result));
        if (result.registered)
            Print(fmt::format("registrata   {}: movimento {}, protocollo {} {}, righe IVA {}, scadenze {}\n",
                              Label(invoice), result.entry, result.protocol, RegisterName(result.vat_register),
                              result.vat_lines, result.instalments));
        else
            Print(fmt::format("rifiutata    {}: {}\n", Label(invoice), OnOneLine(result.reason)));
        for (const std::string &note : result.notes) Print(fmt::format("             {}\n", OnOneLine(note)));
    }

    int Finish()
    {
        if (json_)
            json_->Finish({{"registrate", registered_}, {"gia_registrate", already_}, {"rifiutate", refused_}});
        else
            Print(fmt::format("{} registrate, {} già registrate, {} rifiutate.\n", registered_, already_, refused_));
        return refused_ == 0 ? kExitDone : kExitRefused;
    }

  private:
    static std::string Label(const InvoiceRow &row)
    {
        return OnOneLine(fmt::format("n. {} del {}, {}", row.number, FormatDate(row.day), row.seller_name));
    }

    static nlohmann::json ToJson(const InvoiceRow &invoice, const BatchResult &result)
    {
        nlohmann::json json = {{"codice", invoice.code},
                               {"documento", invoice.document + 1},
                               {"registrata", result.registered},
                               {"motivo", result.reason},
                               {"note", result.notes}};
        if (result.registered)
            json.update({{"movimento", result.entry},
                         {"protocollo", result.protocol},
                         {"registro", result.vat_register},
                         {"totale", JsonAmount(result.total)},
                         {"scadenze", result.instalments}});
        return json;
    }

    std::optional<JsonListPrinter> json_;
    long registered_ = 0, already_ = 0, refused_ = 0;
};

int RegisterNamed(Session *session, const RegisterOptions &options, SACommand *cmd)
{
    session->user.answer_choice = options.new_supplier ? IDNO : options.supplier != 0 ? IDYES : IDCANCEL;
    std::vector<InvoiceRow> rows;
    for (const std::string &id : options.ids) AddRows(cmd, id, &rows);
    SortByDay(&rows);
    Report report(session->json);
    for (const InvoiceRow &row : rows)
        report.Add(row, ResultOf(RegisterInvoice(cmd, row.code, row.document, options.causale, ChoicesFrom(options))));
    return report.Finish();
}

// --- all at once
// ------------------------------------------------------------------------------------------------------

BatchPlan Plan(SACommand *cmd, const std::vector<BatchTarget> &targets, const BatchOptions &options)
{
    CTarvoProgressDlg progress;
    progress.SetStatus("Controllo fatture in corso...");
    return PlanRegistration(cmd, targets, options, [&](long done, long of) {
        if (done == 1) progress.SetRange(0, of);
        progress.SetPos(done);
        return true;
    });
}

/// An invoice whose file cannot be read is no work that waits; the list shows it.
bool IsWork(const BatchLine &line)
{
    return line.invoice.fault.empty() && !line.is_registered;
}

int RegisterAll(const Session &session, const RegisterOptions &options, SACommand *cmd)
{
    Report report(session.json);
    std::vector<InvoiceRow> already;
    InvoiceFilter filter;
    filter.state = InvoiceState::Registered;
    ForEachInvoice(cmd, filter, [&](const InvoiceRow &row) {
        already.push_back(row);
        return true;
    });
    SortByDay(&already);
    for (const InvoiceRow &row : already) report.AlreadyThere(row);

    const BatchOptions batch = BatchFrom(session, options);
    const BatchPlan plan = Plan(cmd, {}, batch);
    auto next = plan.lines.begin();
    const auto add_refused = [&] { // those between one that was ready and the next
        for (; next != plan.lines.end() && !next->is_ready; ++next) {
            if (!IsWork(*next)) continue;
            BatchResult result;
            result.reason = next->reason;
            report.Add(next->invoice, result);
        }
    };
    add_refused();
    RegisterPlanned(cmd, plan, batch, [&](const BatchOutcome &outcome) {
        report.Add((next++)->invoice, outcome.outcome);
        add_refused();
        return true;
    });
    return report.Finish();
}

// --- trial
// ------------------------------------------------------------------------------------------------------------

const char *StateOf(const BatchLine &line)
{
    if (line.is_ready) return "pronta";
    return line.is_registered ? "registrata" : "da completare";
}

nlohmann::json ToJson(const BatchLine &line)
{
    return {{"id", IdOf(line.invoice)},
            {"codice", line.invoice.code},
            {"documento", line.invoice.document + 1},
            {"numero", line.invoice.number},
            {"data", JsonDate(line.invoice.day)},
            {"data_registrazione", JsonDate(line.day)},
            {"fornitore", line.supplier},
            {"fornitore_nome", line.supplier_name},
            {"fornitore_nuovo", line.is_new_supplier},
            {"causale", line.causale},
            {"causale_testo", line.causale_text},
            {"codici_iva", line.vat_codes},
            {"totale", JsonAmount(line.total)},
            {"scadenze", line.instalments},
            {"stato", StateOf(line)},
            {"motivo", line.reason},
            {"note", line.notes}};
}

std::vector<std::string> CellsOf(const BatchLine &line)
{
    std::string state = StateOf(line);
    if (!line.reason.empty()) state += ": " + line.reason;
    return {IdOf(line.invoice),
            line.invoice.number,
            FormatDate(line.invoice.day),
            line.supplier_name + (line.is_new_supplier ? " (nuovo)" : ""),
            line.causale == 0 ? "-" : fmt::format("{} {}", line.causale, line.causale_text),
            line.vat_codes,
            FormatAmount(line.total),
            line.is_ready ? std::to_string(line.instalments) : "-",
            state};
}

void PrintPlan(const Session &session, const BatchPlan &plan)
{
    constexpr auto kLeft = TableColumn::Align::Left, kRight = TableColumn::Align::Right;
    Table table({{"Id", kRight},
                 {"Numero", kLeft, 20},
                 {"Data"},
                 {"Fornitore", kLeft, 30},
                 {"Causale", kLeft, 24},
                 {"Codici IVA"},
                 {"Totale", kRight},
                 {"Scad.", kRight},
                 {"Stato"}},
                session.Colours());
    for (const BatchLine &line : plan.lines) {
        table.AddRow(CellsOf(line));
        Print(table.Take());
    }
    Print(table.Finish());
}

int Try(const Session &session, const RegisterOptions &options, SACommand *cmd)
{
    std::vector<BatchTarget> targets;
    std::vector<InvoiceRow> rows;
    for (const std::string &id : options.ids) AddRows(cmd, id, &rows);
    for (const InvoiceRow &row : rows) targets.push_back({row.code, row.document});
    const BatchPlan plan = Plan(cmd, targets, BatchFrom(session, options));
    const long ready = plan.Ready(),
               registered = std::ranges::count_if(plan.lines, [](const BatchLine &line) { return line.is_registered; });
    const long open = static_cast<long>(plan.lines.size()) - ready - registered;
    if (session.json) {
        JsonListPrinter json("fatture");
        for (const BatchLine &line : plan.lines) json.Add(ToJson(line));
        json.Finish({{"pronte", ready}, {"da_completare", open}, {"gia_registrate", registered}});
        return kExitDone;
    }
    PrintPlan(session, plan);
    Print(fmt::format("{} pronte, {} da completare{}. Nulla è stato registrato.\n", ready, open,
                      registered == 0 ? "" : fmt::format(", {} già registrate", registered)));
    return kExitDone;
}

int Register(Session *session, const RegisterOptions &options)
{
    if (options.all == !options.ids.empty())
        throw UsageError("Indicare gli identificativi delle fatture oppure --tutte.");
    if (options.new_supplier && options.supplier != 0)
        throw UsageError("--fornitore e --nuovo-fornitore si escludono.");
    ParseDateOption("--data", options.day); // before anything is opened
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    FORNITORI supplier;
    if (options.supplier != 0 && !sqlfor.Search(&command, options.supplier, &supplier))
        throw RefusedError(fmt::format("Il fornitore {} non esiste.", options.supplier));
    if (options.trial) return Try(*session, options, &command);
    return options.all ? RegisterAll(*session, options, &command) : RegisterNamed(session, options, &command);
}

} // namespace

void AddInvoiceRegisterCommand(CLI::App *app, Session *session, Action *action)
{
    auto options = std::make_shared<RegisterOptions>();
    CLI::App *registration = app->get_subcommand("fatture")->add_subcommand(
        "registra", "Registra fatture in prima nota con le loro scadenze");
    registration->footer("Con --tutte una fattura che richiede una risposta resta da completare, con il motivo.\n\n"
                         "Esempi:\n  lumera fatture registra 12\n  lumera fatture registra 12.2 --causale 22\n"
                         "  lumera fatture registra --tutte --prova\n"
                         "  lumera fatture registra --tutte --nuovo-fornitore");
    registration->add_option("id", options->ids, "Identificativi (codice, o codice.documento)");
    registration->add_flag("--tutte", options->all, "Tutte quelle non ancora registrate");
    registration->add_flag("--prova", options->trial, "Mostra che cosa sarebbe registrato, senza registrare");
    registration->add_option("--data", options->day, "Data di registrazione (quella del documento)");
    registration->add_option("--causale", options->causale, "Causale contabile, invece di quella del fornitore");
    registration->add_option("--fornitore", options->supplier, "Fornitore da usare quando non è individuato");
    registration->add_flag("--nuovo-fornitore", options->new_supplier, "Crea il fornitore quando non è individuato");
    registration->add_option("--codice-iva", options->vat_code, "Codice IVA da usare quando nessuno corrisponde");
    registration->callback([=] { *action = [=] { return Register(session, *options); }; });
}
