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

std::string KeysAndDescription(const BrowseDescription &description)
{
    std::string columns;
    for (const char *key : description.keys) columns += std::string(key) + ", ";
    return columns + description.description;
}

CodeMatch MatchOf(const BrowseDescription &description, SACommand &query)
{
    const int keys = static_cast<int>(description.keys.size());
    CodeMatch match;
    for (int i = 1; i <= keys; ++i) match.keys.push_back(query.Field(i).asString());
    match.description = query.Field(keys + 1).asString();
    return match;
}

/// The codes whose digits begin with those of a number, bounds included: 31 itself, 310 to 319, 3100 to 3199 ...
std::vector<std::pair<long, long>> CodesBeginningWith(long number)
{
    constexpr long kCodeMax = 2'147'483'647;
    std::vector<std::pair<long, long>> ranges;
    long width = 1;
    for (long first = number; first <= kCodeMax; first *= 10, width *= 10) {
        ranges.emplace_back(first, std::min(first + width - 1, kCodeMax));
        if (number == 0) break; // no other number begins with it
    }
    return ranges;
}

/// Matches of digits over a table of numbers: only what begins so is read, however large the table.
std::vector<CodeMatch> MatchNumber(SACommand *cmd, const BrowseDescription &description, const FixedKeys &fixed,
                                   std::string_view digits, std::size_t most)
{
    const std::optional<long> number = ParseCode(digits);
    if (!number || (digits.size() > 1 && digits.starts_with('0'))) return {};
    const std::vector<std::pair<long, long>> ranges = CodesBeginningWith(*number);
    const char *const code = description.keys.back();
    std::string condition;
    for (std::size_t i = 0; i < ranges.size(); ++i)
        condition += fmt::format("{}{} BETWEEN :a{} AND :b{}", i == 0 ? "" : " OR ", code, i, i);
    const std::string fixed_condition = FixedCondition(description, fixed);
    SACommand query(cmd->Connection(),
                    fmt::format("SELECT {} FROM {}{}{} ({}) ORDER BY CASE WHEN {} = :esatto THEN 0 ELSE 1 END, {}",
                                KeysAndDescription(description), description.table->TableName(), fixed_condition,
                                fixed_condition.empty() ? " WHERE" : " AND", condition, code, description.order));
    BindFixed(&query, fixed);
    query.Param("esatto").setAsLong(*number);
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        query.Param(fmt::format("a{}", i)).setAsLong(ranges[i].first);
        query.Param(fmt::format("b{}", i)).setAsLong(ranges[i].second);
    }
    query.Execute();
    std::vector<CodeMatch> matches;
    while (matches.size() < most && query.FetchNext()) matches.push_back(MatchOf(description, query));
    return matches;
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
    const bool by_code = HasTextCode(description);
    CommandScope scope(cmd);
    if (IsNumber(wanted) && !by_code) return MatchNumber(scope.get(), description, fixed, wanted, most);
    SACommand query(scope->Connection(), "SELECT " + KeysAndDescription(description) + " FROM " +
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
        (is_exact ? exact : others).push_back(MatchOf(description, query));
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
