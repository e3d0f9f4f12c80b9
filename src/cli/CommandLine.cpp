#include "cli/CommandLine.h"

#include "cli/Commands.h"
#include "frame/Module.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/SaExceptionDisplay.h"
#include "tarvolumera/fatturapa/InvoiceFileError.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fmt/format.h>

namespace {

constexpr const char *kExamples =
    "Esempi:\n"
    "  lumera archivio crea demo --demo\n"
    "  lumera --archivio demo fatture importa fatture/\n"
    "  lumera --archivio demo fatture registra --tutte\n"
    "  lumera --archivio demo pnota elenco --dal 2026-01-01 --json\n"
    "  lumera --archivio demo tabelle elenco clienti --xlsx clienti.xlsx\n"
    "  lumera desk --archivio demo        (apre la scrivania)\n\n"
    "Le opzioni comuni (--archivio, --json, --si, --oggi) valgono per ogni comando, prima o dopo il suo nome.\n"
    "Codici di uscita: 0 eseguito, 1 rifiutato da un controllo, 2 uso errato, 3 errore di archivio o di file.";

/// The library's help speaks English; these are its words.
void SpeakItalian(CLI::App *app)
{
    const auto formatter = app->get_formatter();
    for (const auto &[english, italian] : {std::pair{"Usage", "Uso"},
                                           {"OPTIONS", "OPZIONI"},
                                           {"SUBCOMMAND", "COMANDO"},
                                           {"SUBCOMMANDS", "COMANDI"},
                                           {"Options", "Opzioni"},
                                           {"Positionals", "Argomenti"},
                                           {"POSITIONALS", "ARGOMENTI"},
                                           {"Subcommands", "Comandi"},
                                           {"REQUIRED", "(obbligatorio)"},
                                           {"TEXT", "TESTO"},
                                           {"INT", "N"},
                                           {"UINT", "N"},
                                           {"Excludes", "Esclude"},
                                           {"Needs", "Richiede"},
                                           {"Env", "Ambiente"}})
        formatter->label(english, italian);
    formatter->column_width(36);
}

/// Group titles belong to each option and command, so they are set once all of them exist.
void NameGroups(CLI::App *app)
{
    for (CLI::Option *option : app->get_options()) option->group("Opzioni");
    for (CLI::App *command : app->get_subcommands({})) {
        command->group("Comandi");
        NameGroups(command);
    }
}

/// Codes and numbers have 32 bits in the archive. The library cuts a larger one down, and another record would be
/// meant.
std::string NumberFault(const std::string &text)
{
    long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc{} && end == text.data() + text.size() && value >= 0 && value <= 2'147'483'647) return {};
    return fmt::format("«{}» non è un numero tra 0 e 2147483647", text);
}

void LimitNumbers(CLI::App *app)
{
    for (CLI::Option *option : app->get_options()) {
        if (option->get_type_name() == "INT") option->check(NumberFault);
    }
    for (CLI::App *command : app->get_subcommands({})) LimitNumbers(command);
}

/// The first word that is neither an option nor a command.
std::string UnknownCommand(const CLI::App &app)
{
    for (const std::string &word : app.remaining(true)) {
        if (!word.starts_with('-')) return word;
    }
    return {};
}

/// What is wrong with the words of a command, in Italian.
std::string UsageText(const CLI::App &app, const CLI::ParseError &error)
{
    const std::string name = error.get_name();
    const std::string what = error.what();
    if (dynamic_cast<const CLI::ExtrasError *>(&error) != nullptr) // its name is the command's
        return "Argomento o opzione non riconosciuti: " + what.substr(what.find(": ") + 2);
    if (name == "RequiredError" && what.find("subcommand") != std::string::npos) {
        const std::string word = UnknownCommand(app);
        return word.empty() ? "Manca il comando." : "Comando non riconosciuto: " + word;
    }
    if (name == "RequiredError") return "Manca un argomento obbligatorio: " + what.substr(0, what.find(" is required"));
    if (name == "ArgumentMismatch") return "Numero di argomenti errato: " + what.substr(0, what.find(':'));
    if (name == "ConversionError" || name == "InvalidError")
        return "Valore non valido: " + what.substr(what.find(": ") == std::string::npos ? 0 : what.find(": ") + 2);
    if (name == "ExcludesError") return "Opzioni che si escludono: " + what;
    if (name == "RequiresError") return "Opzione che ne richiede un'altra: " + what;
    if (name == "ValidationError") return "Valore non ammesso: " + what;
    return what;
}

int Report(const Session &session, const char *outcome, const std::string &text, int code)
{
    const nlohmann::json report = {{"esito", outcome}, {"messaggio", text}};
    if (!JsonListPrinter::FinishOpen(report) && session.json) PrintJson(report);
    if (!text.empty()) std::fprintf(stderr, "lumera: %s\n", text.c_str());
    return code;
}

/// An error of the books is a refusal; everything else of the archive is a failure.
int ReportDatabase(const Session &session, const SAException &error)
{
    const bool refused = error.ErrClass() == SA_UserGenerated_Error && error.ErrNativeCode() < 20070;
    std::string text = DescribeError(error);
    if (error.ErrClass() == SA_DBMS_API_Error && text == error.ErrText()) // the engine's own words alone, English
        text = "Errore dell'archivio: " + text;
    return Report(session, refused ? "rifiutato" : "errore", text, refused ? kExitRefused : kExitFailed);
}

int Run(Session *session, const Action &action)
{
    try {
        session->user.answer_yes = session->yes;
        const long today = ParseDateOption("--oggi", session->today);
        if (today != 0) session->user.today = today;
        return action ? action() : kExitUsage;
    } catch (const UsageError &error) {
        return Report(*session, "uso errato", error.what(), kExitUsage);
    } catch (const RefusedError &error) {
        return Report(*session, "rifiutato", error.what(), kExitRefused);
    } catch (const SAException &error) {
        return ReportDatabase(*session, error);
    } catch (const FileError &error) {
        return Report(*session, "errore", error.what(), kExitFailed);
    } catch (const InvoiceFileError &error) {
        return Report(*session, "errore", error.what(), kExitFailed);
    } catch (const std::exception &error) {
        return Report(*session, "errore", std::string("Errore imprevisto: ") + error.what(), kExitFailed);
    }
}

/// Half a list on a full disk must not pass for a whole one.
bool OutputArrived()
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
    std::fprintf(stderr, "lumera: il risultato non è stato scritto per intero: %s\n", SystemErrorText(errno).c_str());
    return false;
}

} // namespace

int RunCommandLine(int argc, const char *const *argv)
{
    Session session;
    UserInterface *previous = SetUserInterface(&session.user);
    Action action;

    CLI::App app{"Lumera Contabilità: contabilità generale per le imprese italiane.", "lumera"};
    SpeakItalian(&app);
    app.footer(kExamples);
    app.set_help_flag("-h,--help", "Mostra questo aiuto");
    const ModuleInfo module = DescribeModule();
    app.set_version_flag(
        "--version", fmt::format("lumera {} ({}, archivio {})", module.version, module.name, module.archive_version),
        "Mostra la versione");
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--archivio", session.archive, "Cartella o indirizzo PostgreSQL dell'archivio (o LUMERA_ARCHIVIO)");
    app.add_flag("--json", session.json, "Scrive un solo documento JSON");
    app.add_flag("--si", session.yes, "Risponde Sì alle domande");
    app.add_option("--oggi", session.today, "Data di lavoro invece di quella di oggi");

    AddArchiveCommands(&app, &session, &action);
    AddInvoiceCommands(&app, &session, &action);
    AddInvoiceRegisterCommand(&app, &session, &action);
    AddInvoiceSyncCommands(&app, &session, &action);
    AddInvoiceWarehouseCommands(&app, &session, &action);
    AddInvoiceExportCommands(&app, &session, &action);
    AddJournalCommands(&app, &session, &action);
    AddMaintenanceCommands(&app, &session, &action);
    AddScheduleCommands(&app, &session, &action);
    AddTableCommands(&app, &session, &action);
    AddPrintCommands(&app, &session, &action);
    AddTodayCommand(&app, &session, &action);

    NameGroups(&app);
    LimitNumbers(&app);

    int code = kExitDone;
    try {
        app.parse(argc, argv);
        code = Run(&session, action);
    } catch (const CLI::Success &success) { // help and version
        app.exit(success);
    } catch (const CLI::ParseError &error) {
        code = Report(session, "uso errato", UsageText(app, error) + "\nVedere lumera --help.", kExitUsage);
    }
    SAConnection::ClosePool();
    SetUserInterface(previous);
    return OutputArrived() ? code : kExitFailed;
}
