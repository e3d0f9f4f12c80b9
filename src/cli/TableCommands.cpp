#include "cli/Commands.h"

#include "cli/JsonInput.h"
#include "cli/Table.h"
#include "cli/TableJson.h"
#include "cli/TableRecords.h"
#include "tables/BrowseKeys.h"
#include "tarvodlg/print/RowWriter.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <set>

namespace {

constexpr std::size_t kRecordsMax = 100'000;

struct TableOptions {
    std::string table, search, csv, xlsx, file;
    std::vector<std::string> keys;
};

template <class Tables>
std::string NamesOf(const Tables &tables)
{
    std::string names;
    for (const auto &table : tables) names += (names.empty() ? "" : ", ") + std::string(table.name);
    return names;
}

const BrowseDescription &BrowseOf(const std::string &name)
{
    const BrowseDescription *description = FindBrowse(name);
    if (description == nullptr)
        throw UsageError(
            fmt::format("Tabella «{}» sconosciuta. Si elencano: {}.", name, NamesOf(BrowseDescriptions())));
    return *description;
}

const RecordTable &RecordsOf(const std::string &name)
{
    const RecordTable *table = FindRecordTable(name);
    if (table == nullptr)
        throw UsageError(fmt::format("Tabella «{}» sconosciuta. Sono: {}.", name, NamesOf(RecordTables())));
    return *table;
}

void CheckKeyCount(const std::string &table, std::size_t wanted, std::size_t given)
{
    if (wanted != given)
        throw UsageError(fmt::format("{}: {} codic{} invece di {}.", table, given, given == 1 ? "e" : "i", wanted));
}

// --- elenco
// -------------------------------------------------------------------------------------------------------------

/// What the archive holds: the stored value, where people read words for it.
nlohmann::json CellJson(const BrowseDescription &description, const BrowseColumn &column, const ReportValue &cell)
{
    if (const auto *number = std::get_if<long long>(&cell)) return *number;
    if (const auto *amount = std::get_if<double>(&cell)) return *amount;
    if (const auto *date = std::get_if<ReportDate>(&cell)) return JsonDate(date->day);
    const auto *text = std::get_if<std::string>(&cell);
    const bool is_code = FindColumn(*description.table, column.column)->kind == ColumnKind::Long;
    if (text == nullptr) return is_code ? nlohmann::json(0) : nlohmann::json(nullptr);
    for (const BrowseChoice &choice : column.choices) {
        if (*text != choice.text) continue;
        return is_code ? nlohmann::json(ParseCode(choice.value).value_or(0)) : nlohmann::json(choice.value);
    }
    return *text;
}

nlohmann::json RowJson(const BrowseDescription &description, const BrowseRow &row)
{
    nlohmann::json object = nlohmann::json::object();
    for (std::size_t i = 0; i < row.cells.size(); ++i)
        object[JsonKey(description.columns[i].column)] = CellJson(description, description.columns[i], row.cells[i]);
    return object;
}

ColumnFormat FormatOf(BrowseColumn::Kind kind)
{
    switch (kind) {
    case BrowseColumn::Kind::Code:
        return ColumnFormat::Code;
    case BrowseColumn::Kind::Amount:
        return ColumnFormat::Amount;
    case BrowseColumn::Kind::Date:
        return ColumnFormat::Date;
    default:
        return ColumnFormat::Text;
    }
}

long Export(const BrowseDescription &description, const TableOptions &options)
{
    std::vector<RowColumn> columns;
    for (const BrowseColumn &column : description.columns) columns.push_back({column.title, FormatOf(column.kind)});
    const std::unique_ptr<RowWriter> writer = options.xlsx.empty()
                                                  ? OpenCsv(options.csv, std::move(columns))
                                                  : OpenXlsx(options.xlsx, description.title, std::move(columns));
    long count = 0;
    ForEachBrowseRow(nullptr, description, {}, [&](const BrowseRow &row) {
        if (!RowMatches(description, row, options.search)) return true;
        std::vector<ReportValue> values = row.cells;
        for (std::size_t i = 0; i < values.size(); ++i)
            if (description.columns[i].kind == BrowseColumn::Kind::Flag)
                values[i] = CellText(description.columns[i], values[i]);
        writer->Add(values);
        ++count;
        return true;
    });
    writer->Finish();
    return count;
}

int ExportList(Session *session, const BrowseDescription &description, const TableOptions &options)
{
    const std::string &file = options.xlsx.empty() ? options.csv : options.xlsx;
    const long count = Export(description, options);
    if (session->json)
        PrintJson(nlohmann::json{{"file", file}, {"totale", count}});
    else
        Print(fmt::format("Scritte {} righe in {}\n", count, file));
    return kExitDone;
}

std::vector<TableColumn> ScreenColumns(const BrowseDescription &description)
{
    std::vector<TableColumn> columns;
    for (const BrowseColumn &column : description.columns) {
        const bool right = column.kind == BrowseColumn::Kind::Code || column.kind == BrowseColumn::Kind::Amount;
        columns.push_back({column.title, right ? TableColumn::Align::Right : TableColumn::Align::Left,
                           column.kind == BrowseColumn::Kind::Text ? static_cast<std::size_t>(column.width) : 0});
    }
    return columns;
}

int List(Session *session, const TableOptions &options)
{
    const BrowseDescription &description = BrowseOf(options.table);
    if (!options.csv.empty() && !options.xlsx.empty()) throw UsageError("Indicare --csv oppure --xlsx, non entrambi.");
    session->OpenArchive();
    if (!options.csv.empty() || !options.xlsx.empty()) return ExportList(session, description, options);

    std::optional<JsonListPrinter> json;
    if (session->json) json.emplace(description.name);
    Table table(ScreenColumns(description), session->Colours());
    long count = 0;
    ForEachBrowseRow(nullptr, description, {}, [&](const BrowseRow &row) {
        if (!RowMatches(description, row, options.search)) return true;
        ++count;
        if (json) {
            json->Add(RowJson(description, row));
            return true;
        }
        std::vector<std::string> cells;
        for (std::size_t i = 0; i < row.cells.size(); ++i)
            cells.push_back(CellText(description.columns[i], row.cells[i]));
        table.AddRow(std::move(cells));
        Print(table.Take());
        return true;
    });
    if (json)
        json->Finish({{"totale", count}});
    else
        Print(table.Finish() + fmt::format("{} righe\n", count));
    return kExitDone;
}

// --- mostra
// -------------------------------------------------------------------------------------------------------------

std::string ShownValue(const nlohmann::json &value)
{
    if (value.is_null()) return {};
    if (value.is_string()) return value.get<std::string>();
    return value.dump();
}

RecordKeys KeysOf(const RecordTable &table, const TableOptions &options)
{
    CheckKeyCount(options.table, table.keys, options.keys.size());
    return table.keys == 0 ? RecordKeys{std::to_string(lumera_db_impo.dit_codice)} : options.keys;
}

int Show(Session *session, const TableOptions &options)
{
    const RecordTable &table = RecordsOf(options.table);
    CheckKeyCount(options.table, table.keys, options.keys.size());
    session->OpenArchive();
    const RecordKeys keys = KeysOf(table, options);
    const std::unique_ptr<TableRecord> record = table.make();
    if (!record->Load(nullptr, keys))
        throw RefusedError(fmt::format("Non esiste: {} {}.", options.table, KeyText(keys)));
    const nlohmann::json json = record->ToJson();
    if (session->json) {
        Print(json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
        return kExitDone;
    }
    Table shown({{"Campo"}, {"Valore"}}, session->Colours());
    for (const auto &[key, value] : json.items()) {
        if (value.is_array())
            for (const nlohmann::json &row : value) shown.AddRow({key, row.dump()});
        else
            shown.AddRow({key, ShownValue(value)});
    }
    Print(shown.Finish());
    return kExitDone;
}

// --- salva
// --------------------------------------------------------------------------------------------------------------

/// The records of a document: an object is one, a list several.
nlohmann::json RecordsIn(const std::string &file)
{
    nlohmann::json document = nlohmann::json::parse(ReadJsonInput(file), nullptr, false);
    if (document.is_discarded()) throw RefusedError("Il documento JSON non è valido.");
    if (document.is_object()) document = nlohmann::json::array({document});
    if (!document.is_array() || document.empty())
        throw RefusedError("Il documento JSON deve essere un oggetto o un elenco di oggetti.");
    if (document.size() > kRecordsMax) throw RefusedError(fmt::format("Più di {} record in un file.", kRecordsMax));
    return document;
}

using Records = std::vector<std::unique_ptr<TableRecord>>;

std::string PlaceOf(const std::string &table, std::size_t index, std::size_t count)
{
    return count == 1 ? table : fmt::format("{}, record {}", table, index + 1);
}

/// Reads and checks the whole document before anything is stored: questions come while no transaction is open.
Records CheckedRecords(SACommand *cmd, const RecordTable &table, const nlohmann::json &document)
{
    Records records;
    std::set<std::string> codes;
    for (std::size_t i = 0; i < document.size(); ++i) {
        const std::string place = PlaceOf(table.name, i, document.size());
        std::unique_ptr<TableRecord> record = table.make();
        record->Take(cmd, document[i], place);
        if (!record->HasProposedCode() && !codes.insert(record->Keys()).second)
            throw RefusedError(place + ": il codice è ripetuto nel documento.");
        if (const TableOutcome refused = record->Confirm(cmd); !refused.done)
            throw RefusedError(fmt::format("{}: {}", place, refused.reason));
        records.push_back(std::move(record));
    }
    return records;
}

int Save(Session *session, const TableOptions &options)
{
    const RecordTable &table = RecordsOf(options.table);
    const nlohmann::json document = RecordsIn(options.file);
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    const Records records = CheckedRecords(&command, table, document);
    SATransaction transaction(&command);
    nlohmann::json codes = nlohmann::json::array();
    long inserted = 0;
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (const TableOutcome refused = records[i]->Write(&command); !refused.done)
            throw RefusedError(fmt::format("{}: {}", PlaceOf(table.name, i, records.size()), refused.reason));
        codes.push_back(records[i]->Keys());
        inserted += records[i]->IsNew() ? 1 : 0;
    }
    transaction.Commit();
    const long changed = static_cast<long>(records.size()) - inserted;
    if (session->json)
        PrintJson(nlohmann::json{
            {"tabella", table.name}, {"inseriti", inserted}, {"modificati", changed}, {"codici", codes}});
    else
        Print(fmt::format("{}: {} inseriti, {} modificati{}\n", table.name, inserted, changed,
                          records.size() == 1 ? " (" + records.front()->Keys() + ")" : ""));
    return kExitDone;
}

// --- elimina
// ------------------------------------------------------------------------------------------------------------

int Delete(Session *session, const TableOptions &options)
{
    const RecordTable &table = RecordsOf(options.table);
    if (table.keys == 0) throw UsageError(fmt::format("«{}» non si elimina.", options.table));
    CheckKeyCount(options.table, table.keys, options.keys.size());
    session->OpenArchive();
    const TableOutcome outcome = DeleteRecord(nullptr, BrowseOf(options.table), options.keys);
    if (!outcome.done) throw RefusedError(outcome.reason);
    if (session->json)
        PrintJson(nlohmann::json{{"tabella", table.name}, {"eliminato", KeyText(options.keys)}});
    else
        Print(fmt::format("Eliminato: {} {}\n", table.name, KeyText(options.keys)));
    return kExitDone;
}

} // namespace

void AddTableCommands(CLI::App *app, Session *session, Action *action)
{
    CLI::App *group = app->add_subcommand("tabelle", "Anagrafiche e tabelle");
    group->require_subcommand(1);
    group->footer("Tabelle: " + NamesOf(RecordTables()) +
                  "\n         (solo elenco: nazioni, province, aggregazioni)\n\nEsempio:\n"
                  "  lumera tabelle elenco fornitori --cerca calabro");

    auto options = std::make_shared<TableOptions>();
    const auto add = [&](const char *name, const char *text, const char *example,
                         int (*run)(Session *, const TableOptions &)) {
        CLI::App *command = group->add_subcommand(name, text);
        command->footer(std::string("Esempio:\n  ") + example);
        command->add_option("tabella", options->table, "Tabella")->required();
        command->callback([=] { *action = [=] { return run(session, *options); }; });
        return command;
    };
    CLI::App *list = add("elenco", "Elenca una tabella", "lumera tabelle elenco clienti --xlsx clienti.xlsx", List);
    list->add_option("--cerca", options->search, "Solo le righe con questo testo (o codice che inizia così)");
    list->add_option("--csv", options->csv, "Scrive un file CSV");
    list->add_option("--xlsx", options->xlsx, "Scrive un foglio XLSX");

    CLI::App *show = add("mostra", "Mostra un record", "lumera tabelle mostra sottocon 260 1 1 --json", Show);
    show->add_option("codice", options->keys, "Codice; per i conti mastro e conto, per i sottoconti tutti e tre");

    CLI::App *save =
        add("salva", "Inserisce o modifica record descritti in JSON, tutti o nessuno",
            "echo '{\"desc\":\"Rossi S.r.l.\",\"piva\":\"01234567897\"}' | lumera tabelle salva clienti -", Save);
    save->add_option("file", options->file, "File JSON, o - per lo standard input")->required();

    CLI::App *remove =
        add("elimina", "Elimina un record che nulla usa", "lumera --si tabelle elimina agenti 3", Delete);
    remove->add_option("codice", options->keys, "Codice, come per mostra")->required();
}
