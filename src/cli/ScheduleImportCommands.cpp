#include "cli/ScheduleCommands.h"

#include "schedule/OpeningBalances.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

struct ImportOptions {
    std::string file;
    bool trial = false;
};

nlohmann::json ToJson(const DiscardedBalance &balance)
{
    const OpeningBalanceRow &row = balance.row;
    return {{"riga", row.row},          {"rel", row.side},        {"codice", row.code},
            {"rag_sociale", row.name},  {"piva", row.vat_number}, {"codfis", row.fiscal_code},
            {"saldo", row.amount_text}, {"data", row.day_text},   {"motivo", balance.reason}};
}

nlohmann::json ToJson(const OpeningBalancesOutcome &outcome, bool trial)
{
    nlohmann::json discarded = nlohmann::json::array();
    for (const DiscardedBalance &balance : outcome.discarded) discarded.push_back(ToJson(balance));
    return {{"prova", trial},
            {"importate", outcome.stored},
            {"clienti", JsonAmount(outcome.customers)},
            {"fornitori", JsonAmount(outcome.suppliers)},
            {"scartate", discarded},
            {"log", outcome.log.empty() ? nlohmann::json() : nlohmann::json(outcome.log.string())}};
}

std::string ToText(const OpeningBalancesOutcome &outcome, bool trial)
{
    std::string text;
    for (const DiscardedBalance &balance : outcome.discarded)
        text += fmt::format("scartata     riga {}: {}{}\n", balance.row.row,
                            balance.row.name.empty() ? "" : balance.row.name + ": ", balance.reason);
    text += fmt::format("{} {} scadenze: da incassare {}, da pagare {}; {} righe scartate.\n",
                        trial ? "Da importare" : "Importate", outcome.stored, FormatAmount(outcome.customers),
                        FormatAmount(outcome.suppliers), outcome.discarded.size());
    if (!outcome.log.empty()) text += fmt::format("Dettaglio: {}\n", outcome.log.string());
    return text;
}

int Import(Session *session, const ImportOptions &options)
{
    session->OpenArchive();
    OpeningBalancesOutcome outcome;
    try {
        outcome = ImportOpeningBalances(nullptr, options.file, options.trial);
    } catch (const OpeningBalancesError &error) {
        throw RefusedError(error.what());
    }
    if (session->json)
        PrintJson(ToJson(outcome, options.trial));
    else
        Print(ToText(outcome, options.trial));
    return outcome.discarded.empty() ? kExitDone : kExitRefused;
}

} // namespace

void AddScheduleImportCommands(CLI::App *group, Session *session, Action *action)
{
    auto options = std::make_shared<ImportOptions>();
    CLI::App *import = group->add_subcommand("importa-saldi", "Importa i saldi iniziali da un foglio .xls o .xlsx");
    import->footer("La prima riga dà i titoli delle colonne, in qualunque ordine: REL (CLIENTE o FORNITORE), CODICE,\n"
                   "RAG_SOCIALE, PIVA, CODFIS, SALDO, DATA.\n\n"
                   "Esempio:\n  lumera scadenze importa-saldi saldi.xlsx --prova");
    import->add_option("file", options->file, "Foglio di calcolo")->required();
    import->add_flag("--prova", options->trial, "Dice che cosa importerebbe e non scrive nulla");
    import->callback([=] { *action = [=] { return Import(session, *options);
};
});
}
