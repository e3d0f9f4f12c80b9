#include "cli/Commands.h"

#include "cli/Table.h"
#include "desk/NewCompany.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/archive/ArchiveCheck.h"
#include "tarvolumera/archive/ArchiveCopy.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

struct CreateOptions {
    std::string folder, postgres;
    bool demo = false;
    long year = 0, entries = kDemoEntries;
    unsigned seed = kDemoSeed;
    CompanyDetails company;
};

DITTE CheckedCompany(const CompanyDetails &details)
{
    const DITTE company = CompanyFrom(details);
    if (company.dit_desc.empty()) throw UsageError("Indicare la denominazione della ditta con --ditta (o --demo).");
    if (const std::string fault = CompanyCodeFault(company); !fault.empty()) throw RefusedError(fault);
    return company;
}

int Create(Session *session, const CreateOptions &options)
{
    if (!options.folder.empty() && !options.postgres.empty())
        throw UsageError("Indicare una cartella oppure --postgres, non entrambi.");
    if (options.entries < 0) throw UsageError("--movimenti: il numero non può essere negativo.");
    const std::string archive = !options.postgres.empty() ? options.postgres
                                : !options.folder.empty() ? options.folder
                                                          : session->ArchiveName();
    const long year = options.year != 0 ? options.year : Year(session->user.Today());
    if (year < kFirstYear || year > kLastYear) throw UsageError("--anno: l'anno non è valido.");
    if (options.demo)
        CreateDemoCompany(archive, year, options.entries, options.seed);
    else
        CreateCompany(archive, CheckedCompany(options.company), year);
    const std::string shown = IsPostgresTarget(archive) ? "PostgreSQL" : archive;
    if (session->json)
        PrintJson(nlohmann::json{{"archivio", shown}, {"ditta", lumera_db_impo.dit_desc.str()}, {"anno", year}});
    else
        Print(fmt::format("Archivio creato: {}\n{}\nEsercizio {}\n", shown, CompanyLine(), year));
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
    create->add_option("--ditta", options->company.name, "Denominazione della ditta");
    create->add_option("--piva", options->company.vat_number, "Partita IVA");
    create->add_option("--codfis", options->company.fiscal_code, "Codice fiscale (uguale alla partita IVA)");
    create->add_option("--indirizzo", options->company.address, "Indirizzo");
    create->add_option("--cap", options->company.postcode, "CAP");
    create->add_option("--citta", options->company.town, "Città");
    create->add_option("--prov", options->company.province, "Provincia");
    create->add_option("--naz", options->company.country, "Nazione (IT)");
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
