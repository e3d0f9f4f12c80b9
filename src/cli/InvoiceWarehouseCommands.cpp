#include "cli/Commands.h"

#include "cli/Table.h"
#include "einvoice/CaricoMerci.h"
#include "tarvodlg/base/Numbers.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <fmt/format.h>
#include <map>

namespace {

struct LoadOptions {
    std::string id;
    std::vector<std::string> pairs;
    bool partial = false;
    long supplier = 0;
};

long PositiveOf(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() && value > 0 ? value : 0;
}

/// "12" is the first body of file 12, "12.2" its second one.
std::pair<long, std::size_t> TargetOf(const std::string &id)
{
    const std::size_t dot = id.find('.');
    const long code = PositiveOf(std::string_view(id).substr(0, dot));
    const long body = dot == std::string::npos ? 1 : PositiveOf(std::string_view(id).substr(dot + 1));
    if (code == 0 || body == 0)
        throw UsageError(fmt::format("«{}» non è l'identificativo di una fattura (vedere fatture elenco).", id));
    return {code, static_cast<std::size_t>(body - 1)};
}

using Pairs = std::map<std::string, std::string>; ///< the supplier's code and our article

Pairs PairsOf(const LoadOptions &options)
{
    Pairs pairs;
    for (const std::string &text : options.pairs) {
        const std::size_t equals = text.rfind('='); // a supplier's code may hold one, ours hardly
        const std::string code(Trimmed(std::string_view(text).substr(0, equals)));
        const std::string article =
            equals == std::string::npos ? "" : ToUpper(Trimmed(std::string_view(text).substr(equals + 1)));
        if (code.empty() || article.empty())
            throw UsageError(fmt::format("«{}»: scrivere CODICE_FORNITORE=ARTICOLO.", text));
        if (!pairs.emplace(code, article).second) throw UsageError(fmt::format("«{}» è abbinato due volte.", code));
    }
    return pairs;
}

/// Every article must exist, before anything is asked.
void CheckArticles(const Pairs &pairs)
{
    ARTICOLI article;
    for (const auto &[code, name] : pairs)
        if (!sqlart.Search(nullptr, name, &article))
            throw RefusedError(fmt::format("L'articolo {} non esiste (abbinato a {}).", name, code));
}

LoadChoices ChoicesFrom(const LoadOptions &options, const Pairs &pairs)
{
    LoadChoices choices;
    choices.skip_unmatched = options.partial;
    choices.supplier = options.supplier;
    choices.match_by_hand = [&pairs](long, std::vector<LoadLine> *lines) {
        for (LoadLine &line : *lines) {
            const auto pair = pairs.find(line.Code());
            if (pair == pairs.end()) continue;
            line.article = pair->second;
            line.match = ArticleMatch::ByHand;
        }
        return true;
    };
    return choices;
}

nlohmann::json ToJson(const LoadOutcome &outcome)
{
    nlohmann::json rows = nlohmann::json::array();
    for (std::size_t i = 0; i < outcome.rows.size(); ++i) {
        const RIGHE &row = outcome.rows[i];
        rows.push_back({{"idx", row.rig_idx},
                        {"linea", outcome.lines[i].number},
                        {"codice_fornitore", outcome.lines[i].Code()},
                        {"articolo", row.rig_articolo.str()},
                        {"abbinamento", ArticleMatchText(outcome.lines[i].match)},
                        {"desc", row.rig_desc.str()},
                        {"um", row.rig_um.str()},
                        {"qta", row.rig_qta},
                        {"prezzo", row.rig_prezzo},
                        {"sconti", {row.rig_sconto_1, row.rig_sconto_2, row.rig_sconto_3}},
                        {"importo", JsonAmount(row.rig_importo)},
                        {"aliquota", row.rig_aliquota}});
    }
    return {{"caricata", outcome.loaded},
            {"motivo", outcome.reason},
            {"codice", outcome.document.tes_codice},
            {"rif", outcome.document.tes_rif.str()},
            {"fornitore", outcome.document.tes_cod_for},
            {"totale", JsonAmount(outcome.document.tes_totale)},
            {"imponibile", JsonAmount(outcome.taxable)},
            {"righe", outcome.loaded ? rows : nlohmann::json::array()},
            {"note", outcome.notes}};
}

/// A quantity or price with the decimals that it has, two at least.
std::string Decimals(double value)
{
    std::string text = FormatAmount(value, 8);
    while (text.ends_with('0') && text.size() - text.find(',') > 3) text.pop_back();
    return text;
}

void PrintOutcome(Session *session, const LoadOutcome &outcome)
{
    constexpr auto kRight = TableColumn::Align::Right;
    Table table({{"Riga", kRight},
                 {"Cod. fornitore", TableColumn::Align::Left, 20},
                 {"Articolo"},
                 {"Descrizione", TableColumn::Align::Left, 36},
                 {"Quantità", kRight},
                 {"Prezzo", kRight},
                 {"Importo", kRight},
                 {"Abbinamento"}},
                session->Colours());
    for (std::size_t i = 0; i < outcome.rows.size(); ++i) {
        const RIGHE &row = outcome.rows[i];
        table.AddRow({std::to_string(outcome.lines[i].number), OnOneLine(outcome.lines[i].Code()),
                      row.rig_articolo.str(), row.rig_desc.str(), Decimals(row.rig_qta), Decimals(row.rig_prezzo),
                      FormatAmount(row.rig_importo), ArticleMatchText(outcome.lines[i].match)});
    }
    Print(table.Finish());
    for (const std::string &note : outcome.notes) Print(OnOneLine(note) + "\n");
    Print(fmt::format("{}, totale {}.\n", outcome.document.tes_rif.str(), FormatAmount(outcome.document.tes_totale)));
}

int Load(Session *session, const LoadOptions &options)
{
    const auto [code, document] = TargetOf(options.id);
    const Pairs pairs = PairsOf(options);
    session->OpenArchive();
    CheckArticles(pairs);
    CFattureElettronicheDB content;
    LoadInvoice(nullptr, code, &content);
    if (document >= content.Count())
        throw UsageError(fmt::format("Il file n. {} contiene {} documenti.", code, content.Count()));
    if (content.Count() > 1 && options.id.find('.') == std::string::npos)
        throw UsageError(fmt::format("Il file n. {0} contiene {1} documenti: indicare {0}.1 fino a {0}.{1}.", code,
                                     content.Count()));
    const LoadOutcome outcome = LoadIntoWarehouse(nullptr, code, document, ChoicesFrom(options, pairs));
    if (session->json)
        PrintJson(ToJson(outcome));
    else if (outcome.loaded)
        PrintOutcome(session, outcome);
    else
        Print(fmt::format("non caricata: {}\n", OnOneLine(outcome.reason)));
    return outcome.loaded ? kExitDone : kExitRefused;
}

} // namespace

void AddInvoiceWarehouseCommands(CLI::App *app, Session *session, Action *action)
{
    CLI::App *group = app->get_subcommand("fatture");
    auto options = std::make_shared<LoadOptions>();
    CLI::App *load = group->add_subcommand("carica-merci", "Carica in magazzino le merci di una fattura");
    load->footer("Gli articoli si riconoscono dagli abbinamenti già fatti con il fornitore, dal codice nostro e dal\n"
                 "codice a barre; --abbina ne fa di nuovi, che restano.\n\nEsempio:\n"
                 "  lumera fatture carica-merci 12 --abbina PHC-19=PUNTEHSS19");
    load->add_option("id", options->id, "Identificativo (codice, o codice.documento)")->required();
    load->add_option("--abbina", options->pairs, "CODICE_FORNITORE=ARTICOLO")->take_all();
    load->add_flag("--parziale", options->partial, "Carica anche se restano righe senza articolo, che scarta");
    load->add_option("--fornitore", options->supplier, "Fornitore da usare quando non è individuato");
    load->callback([=] { *action = [=] { return Load(session, *options); }; });
}
