#include "cli/TableJson.h"

#include "cli/Session.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace {

using nlohmann::json;

constexpr double kNumberMax = 1e12;

[[noreturn]] void Refuse(const std::string &where, std::string_view key, const std::string &what)
{
    throw RefusedError(fmt::format("{}: «{}» {}.", where, key, what));
}

long LongOf(const json &value, const std::string &where, std::string_view key)
{
    if (value.is_null()) return 0;
    if (value.is_boolean()) return value.get<bool>() ? 1 : 0;
    if (!value.is_number_integer()) Refuse(where, key, "deve essere un numero intero");
    const auto number = value.get<long long>();
    if (number < 0 || number > 2'147'483'647) Refuse(where, key, "è fuori dai limiti");
    return static_cast<long>(number);
}

double DoubleOf(const json &value, const std::string &where, std::string_view key)
{
    if (value.is_null()) return 0;
    std::optional<double> number;
    if (value.is_number()) number = value.get<double>();
    if (value.is_string()) number = ParseDecimal(value.get_ref<const std::string &>());
    if (!number || !std::isfinite(*number) || std::fabs(*number) > kNumberMax)
        Refuse(where, key, "deve essere un numero");
    return *number;
}

const std::string &TextOf(const json &value, const std::string &where, std::string_view key)
{
    static const std::string kNone;
    if (value.is_null()) return kNone;
    if (!value.is_string()) Refuse(where, key, "deve essere un testo");
    return value.get_ref<const std::string &>();
}

/// A name that is cut without a word would be another name.
void AssignText(BoundedText *text, const json &value, const std::string &where, std::string_view key)
{
    const std::string one_line = OnOneLine(TextOf(value, where, key));
    // Blanks and points may stand in IBAN and VAT numbers; they are gone when the record is stored.
    const bool is_code = key == "iban" || key == "piva" || key == "codfis";
    std::string kept = one_line;
    if (is_code) std::erase_if(kept, [](char c) { return c == ' ' || c == '.' || c == '-'; });
    if (Utf8Length(kept) > text->MaxLength())
        Refuse(where, key, fmt::format("ha più di {} caratteri", text->MaxLength()));
    text->Assign(kept);
}

void Assign(const ColumnDescription &column, void *member, const json &value, const std::string &where,
            std::string_view key)
{
    switch (column.kind) {
    case ColumnKind::Long:
        *static_cast<long *>(member) = LongOf(value, where, key);
        break;
    case ColumnKind::Double:
        *static_cast<double *>(member) = DoubleOf(value, where, key);
        break;
    case ColumnKind::Date: {
        const std::string &text = TextOf(value, where, key);
        const std::optional<long> day = text.empty() ? 0 : ParseDate(text);
        if (!day) Refuse(where, key, fmt::format("non è una data: {}", OnOneLine(text)));
        *static_cast<long *>(member) = *day;
        break;
    }
    case ColumnKind::Text:
        AssignText(static_cast<BoundedText *>(member), value, where, key);
        break;
    case ColumnKind::Moment:
    case ColumnKind::Bytes:
        Refuse(where, key, "non si può scrivere");
    }
}

json ValueOf(const ColumnDescription &column, const void *record)
{
    const void *member = column.member(const_cast<void *>(record));
    switch (column.kind) {
    case ColumnKind::Long:
        return *static_cast<const long *>(member);
    case ColumnKind::Double:
        return *static_cast<const double *>(member);
    case ColumnKind::Date:
        return JsonDate(*static_cast<const long *>(member));
    case ColumnKind::Text:
        return static_cast<const BoundedText *>(member)->str();
    case ColumnKind::Moment:
    case ColumnKind::Bytes:
        break;
    }
    return nullptr;
}

} // namespace

std::string JsonKey(std::string_view column)
{
    return std::string(column.substr(column.find('_') + 1));
}

json RecordToJson(const TableDescription &description, const void *record)
{
    json object = json::object();
    for (const ColumnDescription &column : description.Columns())
        object[JsonKey(column.name)] = ValueOf(column, record);
    return object;
}

void RecordFromJson(const json &object, const TableDescription &description, void *record, const std::string &where,
                    std::string_view more)
{
    if (!object.is_object()) throw RefusedError(where + ": deve essere un oggetto JSON.");
    for (const auto &[key, value] : object.items()) {
        if (!more.empty() && key == more) continue;
        const auto &columns = description.Columns();
        const auto found = std::find_if(columns.begin(), columns.end(),
                                        [&](const auto &column) { return JsonKey(column.name) == key; });
        if (found == columns.end())
            throw RefusedError(fmt::format("{}: chiave «{}» sconosciuta.", where, OnOneLine(key)));
        Assign(*found, found->member(record), value, where, key);
    }
}

json TemplateRowsToJson(const CAUCONT &causale)
{
    json rows = json::array();
    for (std::size_t i = 0; i < causale.righe.size(); ++i) {
        if (causale.righe[i].car_mas == 0) continue;
        json row = RecordToJson(sqlcar.Description(), &causale.righe[i]);
        row.erase("cau");
        row["idx"] = i + 1;
        rows.push_back(std::move(row));
    }
    return rows;
}

void TemplateRowsFromJson(const json &rows, CAUCONT *causale, const std::string &where)
{
    if (!rows.is_array()) Refuse(where, "righe", "deve essere un elenco");
    if (rows.size() > causale->righe.size())
        Refuse(where, "righe", fmt::format("ha più di {} elementi", causale->righe.size()));
    causale->righe = {};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string place = fmt::format("{}, riga {}", where, i + 1);
        CAUCONT_RIGA row;
        RecordFromJson(rows[i], sqlcar.Description(), &row, place);
        if (rows[i].contains("cau")) throw RefusedError(place + ": chiave «cau» sconosciuta.");
        const long position = rows[i].contains("idx") ? row.car_idx : static_cast<long>(i + 1);
        if (position < 1 || position > static_cast<long>(causale->righe.size())) Refuse(place, "idx", "va da 1 a 20");
        CAUCONT_RIGA &target = causale->righe[static_cast<std::size_t>(position - 1)];
        if (target.car_mas != 0) Refuse(place, "idx", "è ripetuto");
        if (row.car_mas == 0) Refuse(place, "mas", "manca");
        target = row;
    }
}
