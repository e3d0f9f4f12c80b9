#include "cli/TableRecords.h"

#include "cli/Session.h"
#include "cli/TableJson.h"
#include "tables/BrowseKeys.h"

#include <fmt/format.h>

namespace {

using nlohmann::json;

template <class Record, auto &Table>
class RecordOf : public TableRecord {
  public:
    bool Load(SACommand *cmd, const RecordKeys &keys) override
    {
        std::size_t i = 0;
        for (const ColumnDescription *key : KeyColumns()) {
            if (key->kind == ColumnKind::Text) {
                if (i >= keys.size()) return false;
                TextCode(record_, *key).Assign(ToUpper(Trimmed(keys[i++])));
                continue;
            }
            const std::optional<long> code = i < keys.size() ? ParseCode(keys[i++]) : std::nullopt;
            if (!code) return false;
            Code(record_, *key) = *code;
        }
        return LoadRecord(cmd, &record_);
    }

    json ToJson() const override
    {
        json object = RecordToJson(Table.Description(), &record_);
        if constexpr (std::is_same_v<Record, CAUCONT>) object["righe"] = TemplateRowsToJson(record_);
        return object;
    }

    void Take(SACommand *cmd, const json &object, const std::string &where) override
    {
        Record named{};
        Merge(object, &named, where); // for its keys, and so that a bad value is refused before the archive is asked
        if constexpr (kIsCompany)
            if (!object.contains("codice")) Code(named, *KeyColumns().back()) = lumera_db_impo.dit_codice;
        record_ = named;
        if (IsNamed()) NormaliseRecord(&record_); // codes of letters are looked for in capitals
        const bool has_code = IsNamed() || Code(named, *KeyColumns().back()) != 0;
        is_new_ = !has_code || !LoadRecord(cmd, &record_);
        if (is_new_) {
            if (std::is_same_v<Record, DITTE>) throw RefusedError(where + ": l'archivio è di un'altra ditta.");
            is_proposed_ = !has_code;
            if (is_proposed_) Code(record_, *KeyColumns().back()) = ProposeCode(cmd, record_);
        } else {
            loaded_ = record_;
            Merge(object, &record_, where);
        }
        NormaliseRecord(&record_);
    }

    TableOutcome Confirm(SACommand *cmd) const override { return ConfirmRecord(cmd, record_, is_new_); }

    TableOutcome Write(SACommand *cmd) override
    {
        return WriteRecord<Record>(cmd, &record_, is_new_,
                                   {.proposed_code = is_proposed_, .loaded = is_new_ ? nullptr : &loaded_});
    }

    bool IsNew() const override { return is_new_; }
    bool HasProposedCode() const override { return is_proposed_; }

    std::string Keys() const override
    {
        RecordKeys keys;
        for (const ColumnDescription *key : KeyColumns())
            keys.push_back(key->kind == ColumnKind::Text ? TextCode(const_cast<Record &>(record_), *key).str()
                                                         : std::to_string(Code(const_cast<Record &>(record_), *key)));
        return KeyText(keys);
    }

  private:
    static constexpr bool kIsCompany = std::is_same_v<Record, DITTE> || std::is_same_v<Record, FLAG>;

    static std::vector<const ColumnDescription *> KeyColumns()
    {
        std::vector<const ColumnDescription *> keys;
        for (const ColumnDescription &column : Table.Description().Columns())
            if ((column.flags & kKey) != 0) keys.push_back(&column);
        return keys;
    }

    /// The code is a text, given by people and never proposed.
    static bool IsNamed() { return KeyColumns().back()->kind == ColumnKind::Text; }
    static BoundedText &TextCode(Record &record, const ColumnDescription &key)
    {
        return *static_cast<BoundedText *>(key.member(&record));
    }
    static long &Code(Record &record, const ColumnDescription &key)
    {
        return *static_cast<long *>(key.member(&record));
    }

    static void Merge(const json &object, Record *record, const std::string &where)
    {
        if constexpr (std::is_same_v<Record, CAUCONT>) {
            RecordFromJson(object, Table.Description(), record, where, "righe");
            if (object.contains("righe")) TemplateRowsFromJson(object["righe"], record, where);
        } else {
            RecordFromJson(object, Table.Description(), record, where);
        }
    }

    Record record_{}, loaded_{};
    bool is_new_ = false, is_proposed_ = false;
};

template <class Record, auto &Table>
std::unique_ptr<TableRecord> Make()
{
    return std::make_unique<RecordOf<Record, Table>>();
}

constexpr RecordTable kTables[] = {
    {"clienti", 1, Make<CLIENTI, sqlcli>},     {"fornitori", 1, Make<FORNITORI, sqlfor>},
    {"causali", 1, Make<CAUCONT, sqlcac>},     {"codiva", 1, Make<CODIVA, sqliva>},
    {"pagamenti", 1, Make<PAGAMENTI, sqlpag>}, {"mastri", 1, Make<MASTRI, sqlmas>},
    {"conti", 2, Make<CONTI, sqlcon>},         {"sottocon", 3, Make<SOTTOCON, sqlsot>},
    {"sezioni", 1, Make<SEZIONI, sqlsez>},     {"banche", 1, Make<BANCHE, sqlban>},
    {"centri", 1, Make<CENTRI, sqlcdc>},       {"agenti", 1, Make<AGENTI, sqlage>},
    {"articoli", 1, Make<ARTICOLI, sqlart>},   {"caumag", 1, Make<CAUMAG, sqlcam>},
    {"ditta", 0, Make<DITTE, sqldit>},         {"impostazioni", 0, Make<FLAG, sqlflg>},
};

} // namespace

std::span<const RecordTable> RecordTables()
{
    return kTables;
}

const RecordTable *FindRecordTable(std::string_view name)
{
    for (const RecordTable &table : kTables)
        if (name == table.name) return &table;
    return nullptr;
}
