#include "cli/ScheduleCommands.h"

#include "cli/JsonInput.h"
#include "cli/PrintFile.h"
#include "cli/Table.h"
#include "cli/TableJson.h"
#include "schedule/InstalmentEditing.h"
#include "schedule/PostalSlip.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/print/Interruption.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

constexpr const char *kPlace = "scadenza"; ///< how messages about the JSON document call it

struct EditOptions {
    std::string side, file, day;
    long number = 0;
    std::string amount;
    std::string pdf;
};

short SideOf(const std::string &name)
{
    if (name == "cliente" || name == "clienti" || name == "0") return kCustomer;
    if (name == "fornitore" || name == "fornitori" || name == "1") return kSupplier;
    throw UsageError(fmt::format("Lato «{}» sconosciuto: cliente o fornitore.", name));
}

const char *SideName(long side)
{
    return side == kCustomer ? "cliente" : "fornitore";
}

SCADENZE Load(SACommand *cmd, long side, long number)
{
    SCADENZE record;
    const bool is_number = number > 0 && number <= 2'147'483'647; // PostgreSQL refuses a query with a larger one
    if (!is_number || !sqlsca.Search(cmd, static_cast<short>(side), number, &record))
        throw RefusedError(fmt::format("La scadenza {} n. {} non esiste.", SideName(side), number));
    return record;
}

std::string NameOf(SACommand *cmd, const SCADENZE &record)
{
    CLIENTI customer;
    FORNITORI supplier;
    if (record.sca_relaz == kCustomer && sqlcli.Search(cmd, record.sca_cli_for, &customer))
        return customer.cli_desc.str();
    if (record.sca_relaz == kSupplier && sqlfor.Search(cmd, record.sca_cli_for, &supplier))
        return supplier.for_desc.str();
    return {};
}

void PrintRecord(const Session &session, const SCADENZE &record, const std::string &name)
{
    if (session.json) {
        nlohmann::json json = RecordToJson(sqlsca.Description(), &record);
        json["nome"] = name;
        return Print(json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
    }
    const std::string state = InstalmentState(record);
    std::string text =
        fmt::format("Scadenza {} n. {} del {}   importo {}   {}", SideName(record.sca_relaz), record.sca_num,
                    FormatDate(record.sca_data), FormatAmount(record.sca_importo), state.empty() ? "aperta" : state);
    if (record.sca_pagato != 0 && record.sca_data_pag != 0) text += " il " + FormatDate(record.sca_data_pag);
    text += fmt::format("\n{} {} {}\n", record.sca_relaz == kCustomer ? "Cliente" : "Fornitore", record.sca_cli_for,
                        OnOneLine(name));
    if (!record.sca_fattura.empty()) text += fmt::format("Fattura {}", OnOneLine(record.sca_fattura));
    if (record.sca_data_fattura != 0) text += " del " + FormatDate(record.sca_data_fattura);
    if (record.sca_rate != 0) text += fmt::format("   rata {}/{}", record.sca_rata, record.sca_rate);
    if (record.sca_pno != 0) text += fmt::format("   movimento {}", record.sca_pno);
    Print(text + fmt::format("\n{}\n", OnOneLine(record.sca_desc)));
}

int Show(Session *session, const EditOptions &options)
{
    const short side = SideOf(options.side);
    session->OpenArchive();
    CommandScope scope(nullptr);
    const SCADENZE record = Load(scope.get(), side, options.number);
    PrintRecord(*session, record, NameOf(scope.get(), record));
    return kExitDone;
}

/// A number in the document means the instalment of that number, which must exist; without one a new one is made.
long NumberIn(const nlohmann::json &document)
{
    const auto number = document.find("num");
    if (number == document.end() || number->is_null()) return 0;
    if (!number->is_number_integer()) throw RefusedError("scadenza: «num» deve essere un numero intero.");
    return number->get<long>();
}

void TakeNew(SACommand *cmd, const nlohmann::json &document, SCADENZE *record)
{
    SCADENZE typed;
    RecordFromJson(document, sqlsca.Description(), &typed, kPlace, "nome");
    if (!document.contains("relaz")) throw RefusedError("scadenza: «relaz» manca (0 cliente, 1 fornitore).");
    sqlsca.Blank(cmd, record, static_cast<short>(typed.sca_relaz));
    record->sca_data = 0; // a due date that was forgotten is not today
    EnterCounterpart(cmd, record, typed.sca_cli_for);
    if (document.contains("pag")) EnterTerms(cmd, record, typed.sca_pag);
}

/// The record as the document changes it; as it was read in *loaded when it is one of the archive.
SCADENZE RecordIn(SACommand *cmd, const nlohmann::json &document, std::optional<SCADENZE> *loaded)
{
    SCADENZE record;
    const long number = NumberIn(document);
    if (number == 0) {
        TakeNew(cmd, document, &record);
    } else {
        SCADENZE keys;
        RecordFromJson(document, sqlsca.Description(), &keys, kPlace, "nome");
        if (!document.contains("relaz")) throw RefusedError("scadenza: «relaz» manca (0 cliente, 1 fornitore).");
        *loaded = record = Load(cmd, keys.sca_relaz, number);
        if (document.contains("pag") && keys.sca_pag != record.sca_pag) EnterTerms(cmd, &record, keys.sca_pag);
    }
    RecordFromJson(document, sqlsca.Description(), &record, kPlace, "nome");
    return record;
}

void Finish(const Session &session, const InstalmentOutcome &outcome, nlohmann::json json, const std::string &text)
{
    if (session.json) {
        if (!outcome.warning.empty()) json["avviso"] = outcome.warning;
        return PrintJson(json);
    }
    Print(text + (outcome.warning.empty() ? "" : outcome.warning + "\n"));
}

int Save(Session *session, const EditOptions &options)
{
    const nlohmann::json document = nlohmann::json::parse(ReadJsonInput(options.file), nullptr, false);
    if (!document.is_object()) throw RefusedError("Il documento JSON deve essere un oggetto.");
    session->OpenArchive();
    CommandScope scope(nullptr);
    std::optional<SCADENZE> loaded;
    SCADENZE record = RecordIn(scope.get(), document, &loaded);
    const bool same_counterpart = loaded && loaded->sca_cli_for == record.sca_cli_for;
    if (!same_counterpart && !ConfirmCounterpart(scope.get(), record.sca_relaz, record.sca_cli_for))
        throw RefusedError("Il cliente è cessato (usare --si).");
    const InstalmentOutcome outcome = StoreInstalment(scope.get(), &record, loaded ? &*loaded : nullptr);
    if (!outcome.done) throw RefusedError(outcome.reason);
    Finish(*session, outcome, {{"relaz", record.sca_relaz}, {"num", record.sca_num}, {"inserita", !loaded.has_value()}},
           fmt::format("{} la scadenza {} n. {}.\n", loaded ? "Modificata" : "Inserita", SideName(record.sca_relaz),
                       record.sca_num));
    return kExitDone;
}

int Delete(Session *session, const EditOptions &options)
{
    const short side = SideOf(options.side);
    session->OpenArchive();
    CommandScope scope(nullptr);
    const InstalmentOutcome outcome = DeleteInstalment(scope.get(), Load(scope.get(), side, options.number));
    if (!outcome.done) throw RefusedError(outcome.reason);
    Finish(*session, outcome, {{"relaz", side}, {"eliminata", options.number}},
           fmt::format("Eliminata la scadenza {} n. {}.\n", SideName(side), options.number));
    return kExitDone;
}

int Split(Session *session, const EditOptions &options)
{
    const short side = SideOf(options.side);
    const long day = ParseDateOption("--data", options.day);
    const std::optional<double> amount = ParseAmount(options.amount);
    if (!amount) throw UsageError(fmt::format("--importo: «{}» non è un importo.", options.amount));
    session->OpenArchive();
    CommandScope scope(nullptr);
    SCADENZE first = Load(scope.get(), side, options.number), second;
    const InstalmentOutcome outcome =
        SplitInstalment(scope.get(), &first, *amount, day == 0 ? first.sca_data : day, &second);
    if (!outcome.done) throw RefusedError(outcome.reason);
    Finish(*session, outcome,
           {{"relaz", side},
            {"num", first.sca_num},
            {"importo", JsonAmount(first.sca_importo)},
            {"nuova", {{"num", second.sca_num}, {"importo", JsonAmount(second.sca_importo)}}}},
           fmt::format("La scadenza n. {} resta di {}, la nuova n. {} è di {} il {}.\n", first.sca_num,
                       FormatAmount(first.sca_importo), second.sca_num, FormatAmount(second.sca_importo),
                       FormatDate(second.sca_data)));
    return kExitDone;
}

int PrintSlip(Session *session, const EditOptions &options)
{
    const short side = SideOf(options.side);
    const ReportDestination destination{ReportTarget::Pdf, options.pdf};
    session->OpenArchive();
    const SCADENZE record = Load(nullptr, side, options.number);
    if (ToCents(record.sca_importo) <= 0)
        throw RefusedError(fmt::format("Il bollettino si stampa per un importo da versare, la scadenza è di {}.",
                                       FormatAmount(record.sca_importo)));
    const InterruptionGuard guard;
    return FinishPrint(*session, PrintPostalSlip(record, destination), destination);
}

} // namespace

void AddInstalmentCommands(CLI::App *group, Session *session, Action *action)
{
    auto options = std::make_shared<EditOptions>();
    const auto add = [&](const char *name, const char *text, const char *example,
                         int (*run)(Session *, const EditOptions &)) {
        CLI::App *command = group->add_subcommand(name, text);
        command->footer(std::string("Esempio:\n  ") + example);
        command->callback([=] { *action = [=] { return run(session, *options); }; });
        return command;
    };
    const auto add_key = [&](CLI::App *command) {
        command->add_option("lato", options->side, "cliente o fornitore")->required();
        command->add_option("numero", options->number, "Numero della scadenza")->required();
    };
    add_key(add("mostra", "Mostra una scadenza", "lumera scadenze mostra fornitore 12 --json", Show));

    CLI::App *save = add("salva", "Inserisce una scadenza descritta in JSON, o modifica quella con il suo numero",
                         "echo '{\"relaz\":0,\"cli_for\":1,\"data\":\"2026-06-30\",\"importo\":100.00,"
                         "\"desc\":\"ACCONTO\"}' | lumera scadenze salva -",
                         Save);
    save->add_option("file", options->file, "File JSON, o - per lo standard input")->required();

    add_key(add("elimina", "Elimina una scadenza aperta", "lumera --si scadenze elimina cliente 7", Delete));

    CLI::App *split = add("dividi", "Divide una scadenza aperta in due",
                          "lumera scadenze dividi cliente 7 --importo 40,00 --data 31/07/2026", Split);
    add_key(split);
    split->add_option("--importo", options->amount, "Importo della nuova scadenza")->required();
    split->add_option("--data", options->day, "Sua data di scadenza; senza, quella di prima");

    CLI::App *slip = add("bollettino", "Stampa il bollettino di conto corrente postale",
                         "lumera scadenze bollettino cliente 7 --pdf bollettino.pdf", PrintSlip);
    add_key(slip);
    slip->add_option("--pdf", options->pdf, "Scrive le pagine in un PDF")->required();
}
