#include "cli/Commands.h"

#include "cli/Table.h"
#include "demo/DemoJournal.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/FiscalCodes.h"
#include "tarvolumera/archive/ArchiveCheck.h"
#include "tarvolumera/archive/ArchiveCopy.h"
#include "tarvolumera/archive/ArchiveCreation.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

constexpr long kDemoEntries = 600;
constexpr unsigned kDemoSeed = 2026;

struct CreateOptions {
    std::string folder, postgres;
    bool demo = false;
    long year = 0, entries = kDemoEntries;
    unsigned seed = kDemoSeed;
    std::string name, vat_number, fiscal_code, address, postcode, town, province, country = "IT";
};

DITTE CompanyFrom(const CreateOptions &options)
{
    DITTE company;
    company.dit_desc = options.name;
    company.dit_piva = NormalisedFiscalCode(options.vat_number);
    company.dit_codfis =
        options.fiscal_code.empty() ? company.dit_piva.str() : NormalisedFiscalCode(options.fiscal_code);
    company.dit_pers = HolderOf(company.dit_codfis) == FiscalCodeHolder::Person ? "F" : "G";
    company.dit_indirizzo = options.address;
    company.dit_cap = options.postcode;
    company.dit_citta = options.town;
    company.dit_prov = ToUpper(options.province);
    company.dit_naz = ToUpper(options.country);
    company.dit_periodicita = "T";
    company.dit_mas_cli = 150; // the masters of the base chart
    company.dit_con_cli = 1;
    company.dit_mas_for = 250;
    company.dit_con_for = 1;
    return company;
}

void CheckCompany(const DITTE &company)
{
    if (Trimmed(company.dit_desc).empty())
        throw UsageError("Indicare la denominazione della ditta con --ditta (o --demo).");
    if (company.dit_naz != "IT") return;
    if (const FiscalCodeCheck check = CheckVatNumber(company.dit_piva); !check.ok())
        throw RefusedError(fmt::format("Partita IVA della ditta non valida: {}.", check.text));
    if (const FiscalCodeCheck check = CheckFiscalCode(company.dit_codfis); !check.ok())
        throw RefusedError(fmt::format("Codice fiscale della ditta non valido: {}.", check.text));
}

int Create(Session *session, const CreateOptions &options)
{
    if (!options.folder.empty() && !options.postgres.empty())
        throw UsageError("Indicare una cartella oppure --postgres, non entrambi.");
    if (options.entries < 0) throw UsageError("--movimenti: il numero non può essere negativo.");
    NewArchive wanted;
    wanted.archive = !options.postgres.empty() ? options.postgres
                     : !options.folder.empty() ? options.folder
                                               : session->ArchiveName();
    if (IsPostgresTarget(wanted.archive)) wanted.data_folder = DataFolderOf(wanted.archive);
    wanted.year = options.year != 0 ? options.year : Year(session->user.Today());
    if (wanted.year < 1980 || wanted.year > 9999) throw UsageError("--anno: l'anno non è valido.");
    wanted.demo = options.demo;
    if (options.demo) {
        wanted.fill = [&](SACommand *cmd) { FillDemoJournal(cmd, options.entries, options.seed); };
    } else {
        wanted.company = CompanyFrom(options);
        CheckCompany(wanted.company);
    }
    CreateArchive(wanted);
    const std::string shown = IsPostgresTarget(wanted.archive) ? "PostgreSQL" : wanted.archive;
    if (session->json)
        PrintJson(nlohmann::json{{"archivio", shown}, {"ditta", lumera_db_impo.dit_desc.str()}, {"anno", wanted.year}});
    else
        Print(fmt::format("Archivio creato: {}\n{}\nEsercizio {}\n", shown, CompanyLine(), wanted.year));
    return kExitDone;
}

int Verify(Session *session)
{
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    const ArchiveCheckResult result = CheckArchive(&command);
    const int code = result.faults.empty() ? kExitDone : kExitRefused;
    if (session->json) {
        JsonListPrinter list("segnalazioni");
        for (const ArchiveFault &fault : result.faults)
            list.Add({{"controllo", fault.kind}, {"dove", fault.where}, {"testo", fault.text}});
        list.Finish({{"movimenti", result.entries},
                     {"righe", result.rows},
                     {"scadenze", result.instalments},
                     {"troncato", result.truncated}});
        return code;
    }
    Print(fmt::format("{}\nControllati {} movimenti, {} righe, {} scadenze.\n", CompanyLine(), result.entries,
                      result.rows, result.instalments));
    if (result.faults.empty()) {
        Print("Nessuna anomalia.\n");
        return code;
    }
    Table table({{"Controllo"}, {"Dove", TableColumn::Align::Left, 50}, {"Anomalia"}}, session->Colours());
    for (const ArchiveFault &fault : result.faults) table.AddRow({fault.kind, fault.where, fault.text});
    Print(table.Finish());
    Print(fmt::format("{}{} anomalie.\n", result.truncated ? "Oltre " : "", result.faults.size()));
    return code;
}

int Copy(Session *session, const std::string &file)
{
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    CopyArchive(&command, file);
    const auto bytes = static_cast<long long>(std::filesystem::file_size(file));
    if (session->json)
        PrintJson(nlohmann::json{{"file", file}, {"bytes", bytes}});
    else
        Print(fmt::format("Copia scritta: {} ({} KB)\n", file, bytes / 1024));
    return kExitDone;
}

} // namespace

void AddArchiveCommands(CLI::App *app, Session *session, Action *action)
{
    CLI::App *group = app->add_subcommand("archivio", "Crea, verifica e copia l'archivio di una ditta");
    group->require_subcommand(1);
    group->footer("Esempio:\n  lumera archivio crea demo --demo");

    auto options = std::make_shared<CreateOptions>();
    CLI::App *create = group->add_subcommand("crea", "Crea l'archivio di una nuova ditta con le tabelle di base");
    create->footer("Esempi:\n  lumera archivio crea demo --demo\n"
                   "  lumera archivio crea rossi --ditta \"Rossi S.r.l.\" --piva 01234567897 --anno 2026");
    create->add_option("cartella", options->folder, "Cartella da creare");
    create->add_option("--postgres", options->postgres, "Indirizzo di un database PostgreSQL vuoto");
    create->add_flag("--demo", options->demo, "Ditta dimostrativa con un anno di movimenti");
    create->add_option("--anno", options->year, "Esercizio (l'anno in corso)");
    create->add_option("--movimenti", options->entries, "Movimenti della ditta dimostrativa (600)");
    create->add_option("--seme", options->seed, "Seme dei movimenti dimostrativi (2026)");
    create->add_option("--ditta", options->name, "Denominazione della ditta");
    create->add_option("--piva", options->vat_number, "Partita IVA");
    create->add_option("--codfis", options->fiscal_code, "Codice fiscale (uguale alla partita IVA)");
    create->add_option("--indirizzo", options->address, "Indirizzo");
    create->add_option("--cap", options->postcode, "CAP");
    create->add_option("--citta", options->town, "Città");
    create->add_option("--prov", options->province, "Provincia");
    create->add_option("--naz", options->country, "Nazione (IT)");
    create->callback([=] { *action = [=] { return Create(session, *options); }; });

    CLI::App *verify = group->add_subcommand("verifica", "Controlla l'intero archivio senza modificarlo");
    verify->footer("Esempio:\n  lumera --archivio demo archivio verifica");
    verify->callback([=] { *action = [=] { return Verify(session); }; });

    auto file = std::make_shared<std::string>();
    CLI::App *copy = group->add_subcommand("copia", "Scrive una copia coerente dell'archivio mentre altri lavorano");
    copy->footer("Esempio:\n  lumera --archivio demo archivio copia copie/demo.db");
    copy->add_option("file", *file, "File da scrivere; non deve esistere")->required();
    copy->callback([=] { *action = [=] { return Copy(session, *file); }; });
}
