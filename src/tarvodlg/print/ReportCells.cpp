#include "tarvodlg/print/ReportCells.h"

#include "sqlapi/SADateTime.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"

#include <charconv>
#include <cmath>

#include <fmt/format.h>

namespace {

constexpr std::size_t kIsoDateLength = 10;

std::optional<double> AsNumber(std::string_view text)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return std::nullopt;
    return number;
}

long AsDay(std::string_view text)
{
    const SADateTime date = SADateTime::Parse(text);
    return DateToJulian(date.GetDay(), date.GetMonth(), date.GetYear());
}

/// Codes with zeros before them ("007", "+39") are texts, whatever their column holds otherwise.
bool LooksLikeNumber(std::string_view text)
{
    if (text.starts_with('-')) text.remove_prefix(1);
    if (text.empty() || text[0] < '0' || text[0] > '9') return false;
    return text.size() == 1 || text[0] != '0' || text[1] == '.';
}

std::string Lower(std::string_view text)
{
    std::string lower(text);
    for (char &c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

} // namespace

void ReportRow::Set(std::size_t column, bool is_null, std::string_view text)
{
    cells_[column].is_null = is_null;
    cells_[column].text.assign(is_null ? std::string_view() : text);
}

double ReportRow::Number(std::size_t column) const
{
    return AsNumber(cells_[column].text).value_or(0);
}

long ReportRow::Day(std::size_t column) const
{
    return AsDay(cells_[column].text);
}

ReportValue ReportRow::Value(std::size_t column) const
{
    if (IsNull(column)) return std::monostate{};
    const std::string &text = Text(column);
    if (LooksLikeNumber(text)) {
        long long whole = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), whole);
        if (error == std::errc() && end == text.data() + text.size()) return whole;
        if (const std::optional<double> number = AsNumber(text)) return *number;
    }
    if (text.size() == kIsoDateLength && AsDay(text) != 0) return ReportDate{AsDay(text)};
    return text;
}

bool ReportRow::SameIn(std::size_t column, const ReportRow &other) const
{
    return IsNull(column) == other.IsNull(column) && Text(column) == other.Text(column);
}

void ReportColumns::Assign(std::vector<std::string> names)
{
    names_ = std::move(names);
    for (std::string &name : names_) name = Lower(name);
    last_ = 0;
}

std::size_t ReportColumns::Find(std::string_view name) const
{
    for (std::size_t i = 0; i < names_.size(); ++i) {
        const std::size_t place = (last_ + 1 + i) % names_.size();
        if (EqualsIgnoreCase(names_[place], name)) return last_ = place;
    }
    return kNone;
}

std::size_t ReportColumns::Require(const ReportLayout &layout, LayoutPlace place, std::string_view name) const
{
    const std::size_t column = Find(name);
    if (column == kNone)
        throw ReportError(fmt::format("{}: la query non dà la colonna \"{}\"", layout.Words(place), name));
    return column;
}

bool IsNumberFormat(std::string_view format)
{
    return format == "code" || format.starts_with('0');
}

std::string FormatNumber(double number, std::string_view format)
{
    if (format == "code") return fmt::format("{:.0f}", number);
    const bool zero_is_empty = format.ends_with('z');
    const std::size_t comma = format.find(',');
    const std::size_t end = format.size() - (zero_is_empty ? 1 : 0);
    const int decimals = comma == std::string_view::npos ? 0 : static_cast<int>(end - comma - 1);
    if (zero_is_empty && TestIfZero(number, decimals)) return {};
    return FormatAmount(number, decimals);
}

std::string FormatCell(const ReportRow &row, std::size_t column, std::string_view format)
{
    if (row.IsNull(column)) return {};
    const std::string &text = row.Text(column);
    if (format == "date") {
        const long day = AsDay(text);
        return day == 0 ? text : FormatDate(day);
    }
    if (!IsNumberFormat(format)) return text;
    const std::optional<double> number = AsNumber(text);
    return number ? FormatNumber(*number, format) : text;
}

namespace {

struct ValueText {
    std::string_view format;
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(long long number) const
    {
        return IsNumberFormat(format) ? FormatNumber(static_cast<double>(number), format) : std::to_string(number);
    }
    std::string operator()(double number) const
    {
        return FormatNumber(number, IsNumberFormat(format) ? format : std::string_view("0,00"));
    }
    std::string operator()(const std::string &text) const { return text; }
    std::string operator()(ReportDate date) const { return FormatDate(date.day); }
};

} // namespace

std::string FormatValue(const ReportValue &value, std::string_view format)
{
    return std::visit(ValueText{format}, value);
}

void RequireColumns(const SelectionFormula &when, const ReportColumns &columns, const ReportLayout &layout,
                    LayoutPlace place)
{
    for (const SelectionFormula::Column &used : when.Columns())
        if (!PagePlace::Has(used.column)) columns.Require(layout, place, used.column);
}

bool Holds(const SelectionFormula &when, const ReportColumns &columns, const ReportRow *row,
           const ReportValues &parameters, const PagePlace &place)
{
    if (when.IsEmpty()) return true;
    const auto column_value = [&](std::string_view, std::string_view name) -> ReportValue {
        if (name == "report_page") return static_cast<long long>(place.page_index);
        if (name == "report_end") return static_cast<long long>(place.at_end ? 1 : 0);
        const std::size_t column = columns.Find(name);
        return row == nullptr || column == ReportColumns::kNone ? ReportValue{} : row->Value(column);
    };
    const auto parameter_value = [&](std::string_view name) -> ReportValue {
        const auto found = parameters.find(std::string(name));
        return found == parameters.end() ? ReportValue{} : found->second;
    };
    return when.Holds(column_value, parameter_value);
}
