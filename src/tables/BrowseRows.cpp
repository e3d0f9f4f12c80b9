#include "tables/BrowseKeys.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

/// WHERE and the names of the parameters f1, f2 ...
std::string FixedCondition(const BrowseDescription &description, const FixedKeys &fixed)
{
    std::string text;
    for (std::size_t i = 0; i < fixed.size(); ++i) {
        const ColumnDescription *column = FindColumn(*description.table, fixed[i].first);
        if (column == nullptr)
            throw SAException(SA_Library_Error, 0,
                              fmt::format("{} non ha la colonna {}", description.name, fixed[i].first));
        text += fmt::format("{} {} = :f{}", i == 0 ? " WHERE" : " AND", column->name, i + 1);
    }
    return text;
}

void BindFixed(SACommand *query, const FixedKeys &fixed)
{
    for (std::size_t i = 0; i < fixed.size(); ++i) query->Param(fmt::format("f{}", i + 1)).setAsLong(fixed[i].second);
}

ReportValue ChoiceText(const BrowseColumn &column, const std::string &value)
{
    const auto found = std::find_if(column.choices.begin(), column.choices.end(),
                                    [&](const BrowseChoice &choice) { return value == choice.value; });
    return found == column.choices.end() ? value : std::string(found->text);
}

ReportValue CellOf(const BrowseColumn &column, const SAField &field)
{
    if (field.isNull()) return std::monostate{};
    switch (column.kind) {
    case BrowseColumn::Kind::Code:
    case BrowseColumn::Kind::Flag:
        return field.asInt64();
    case BrowseColumn::Kind::Amount:
        return field.asDouble();
    case BrowseColumn::Kind::Date:
        return ReportDate{FromSqlDate(field.asDateTime())};
    case BrowseColumn::Kind::Choice:
        return ChoiceText(column, field.asString());
    case BrowseColumn::Kind::Text:
        break;
    }
    return field.asString();
}

bool IsNumber(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool HasTextCode(const BrowseDescription &description)
{
    return FindColumn(*description.table, description.keys.back())->kind == ColumnKind::Text;
}

} // namespace

void ForEachBrowseRow(SACommand *cmd, const BrowseDescription &description, const FixedKeys &fixed,
                      const std::function<bool(const BrowseRow &)> &each)
{
    CommandScope scope(cmd);
    std::string columns;
    for (const char *key : description.keys) columns += std::string(columns.empty() ? "" : ", ") + key;
    for (const BrowseColumn &column : description.columns) columns += std::string(", ") + column.column;
    SACommand query(scope->Connection(), "SELECT " + columns + " FROM " + description.table->TableName() +
                                             FixedCondition(description, fixed) + " ORDER BY " + description.order);
    BindFixed(&query, fixed);
    query.Execute();
    BrowseRow row;
    row.keys.resize(description.keys.size());
    row.cells.resize(description.columns.size());
    while (query.FetchNext()) {
        int at = 0;
        for (std::string &key : row.keys) key = query.Field(++at).asString();
        for (std::size_t i = 0; i < row.cells.size(); ++i)
            row.cells[i] = CellOf(description.columns[i], query.Field(++at));
        if (!each(row)) break;
    }
}

std::string CellText(const BrowseColumn &column, const ReportValue &cell)
{
    if (const auto *number = std::get_if<long long>(&cell)) {
        if (column.kind == BrowseColumn::Kind::Flag) return *number != 0 ? "Sì" : "";
        return *number == 0 ? "" : std::to_string(*number);
    }
    if (const auto *amount = std::get_if<double>(&cell)) return FormatAmount(*amount);
    if (const auto *date = std::get_if<ReportDate>(&cell)) return FormatDate(date->day);
    if (const auto *text = std::get_if<std::string>(&cell)) return *text;
    return {};
}

bool RowMatches(const BrowseDescription &, const BrowseRow &row, std::string_view typed)
{
    const std::string wanted = Folded(typed);
    if (wanted.empty() || row.keys.back().starts_with(wanted)) return true;
    return std::any_of(row.cells.begin(), row.cells.end(), [&](const ReportValue &cell) {
        const auto *text = std::get_if<std::string>(&cell);
        return text != nullptr && Folded(*text).find(wanted) != std::string::npos;
    });
}

std::optional<std::string> DescribeCode(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys)
{
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), std::string("SELECT ") + description.description + " FROM " +
                                             description.table->TableName() + " WHERE " + KeyCondition(description));
    if (!BindKeys(&query, description, keys)) return std::nullopt;
    query.Execute();
    if (!query.FetchNext()) return std::nullopt;
    return query.Field(1).asString();
}

std::vector<CodeMatch> MatchCodes(SACommand *cmd, const BrowseDescription &description, const FixedKeys &fixed,
                                  std::string_view typed, std::size_t most)
{
    const std::string wanted = Folded(typed);
    if (wanted.empty() || most == 0) return {};
    const bool by_code = IsNumber(wanted) || HasTextCode(description);
    CommandScope scope(cmd);
    std::string columns;
    for (const char *key : description.keys) columns += std::string(key) + ", ";
    SACommand query(scope->Connection(), "SELECT " + columns + description.description + " FROM " +
                                             description.table->TableName() + FixedCondition(description, fixed) +
                                             " ORDER BY " + description.order);
    BindFixed(&query, fixed);
    query.Execute();
    const int keys = static_cast<int>(description.keys.size());
    std::vector<CodeMatch> exact, others;
    while (query.FetchNext()) {
        const std::string_view code = query.Field(keys).asStringView();
        const bool is_exact = by_code && code == wanted;
        const bool matches = is_exact || (by_code && code.starts_with(wanted)) ||
                             (!IsNumber(wanted) && others.size() < most &&
                              Folded(query.Field(keys + 1).asStringView()).find(wanted) != std::string::npos);
        if (!matches || (!is_exact && others.size() >= most)) continue;
        CodeMatch match;
        for (int i = 1; i <= keys; ++i) match.keys.push_back(query.Field(i).asString());
        match.description = query.Field(keys + 1).asString();
        (is_exact ? exact : others).push_back(std::move(match));
        if (!by_code && others.size() >= most) break; // no exact code can follow
    }
    exact.insert(exact.end(), std::make_move_iterator(others.begin()), std::make_move_iterator(others.end()));
    if (exact.size() > most) exact.resize(most);
    return exact;
}

bool NeighbourRecord(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys, bool forward,
                     RecordKeys *result)
{
    CommandScope scope(cmd);
    std::string columns, parameters, order;
    for (std::size_t i = 0; i < description.keys.size(); ++i) {
        const char *separator = i == 0 ? "" : ", ";
        columns += separator + std::string(description.keys[i]);
        parameters += fmt::format("{}:k{}", separator, i + 1);
        order += fmt::format("{}{} {}", separator, description.keys[i], forward ? "ASC" : "DESC");
    }
    std::string text = "SELECT " + columns + " FROM " + description.table->TableName();
    if (!keys.empty()) text += fmt::format(" WHERE ({}) {} ({})", columns, forward ? ">" : "<", parameters);
    SACommand query(scope->Connection(), text + " ORDER BY " + order + " LIMIT 1");
    if (!keys.empty() && !BindKeys(&query, description, keys)) return false;
    query.Execute();
    if (!query.FetchNext()) return false;
    result->clear();
    for (std::size_t i = 0; i < description.keys.size(); ++i)
        result->push_back(query.Field(static_cast<int>(i + 1)).asString());
    return true;
}
