#include "einvoice/ui/DetailGrid.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"

#include <QLabel>
#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>

namespace {

using Values = std::vector<SpreadValue>;

bool HasNothing(const SpreadValue &value)
{
    const auto *text = std::get_if<std::string>(&value);
    return std::holds_alternative<std::monostate>(value) || (text && text->empty());
}

Values ValuesOf(const DetailColumn &column, std::size_t rows)
{
    Values values(rows);
    for (std::size_t i = 0; i < rows; ++i) {
        values[i] = column.value(i);
        if (auto *text = std::get_if<std::string>(&values[i])) *text = OnOneLine(*text);
    }
    return values;
}

int DecimalsOf(double value, int decimals_max)
{
    std::string text = fmt::format("{:.{}f}", value, decimals_max);
    while (text.back() == '0') text.pop_back();
    const std::size_t point = text.find('.');
    return point == std::string::npos ? 0 : static_cast<int>(text.size() - point - 1);
}

void Widen(CSpreadSheet::Column *column, const Values &values, int decimals_max)
{
    for (const SpreadValue &value : values)
        if (const auto *amount = std::get_if<double>(&value))
            column->decimals = std::max(column->decimals, DecimalsOf(*amount, decimals_max));
}

void Put(CSpreadSheet *grid, long row, long column, const SpreadValue &value)
try {
    if (const auto *number = std::get_if<long>(&value)) {
        grid->SetLong(row, column, *number);
    } else if (const auto *amount = std::get_if<double>(&value)) {
        grid->SetNumber(row, column, *amount);
    } else if (const auto *text = std::get_if<std::string>(&value)) {
        grid->SetText(row, column, *text);
    }
} catch (const std::out_of_range &) {
    grid->ClearCell(row, column); // of a file that no schema admits; the rest of it can be read all the same
}

} // namespace

std::string PercentText(double percent)
{
    return FormatAmount(percent, 2) + "%";
}

SpreadValue AmountCell(const std::optional<double> &amount)
{
    return amount ? SpreadValue(*amount) : SpreadValue();
}

void ShowDetails(CSpreadSheet *grid, std::vector<DetailColumn> columns, std::size_t rows)
{
    std::vector<CSpreadSheet::Column> shown;
    std::vector<Values> values;
    for (DetailColumn &detail : columns) {
        Values of_column = ValuesOf(detail, rows);
        if (detail.is_optional && std::all_of(of_column.begin(), of_column.end(), HasNothing)) continue;
        detail.column.locked = true;
        if (detail.decimals_max > 0) Widen(&detail.column, of_column, detail.decimals_max);
        shown.push_back(std::move(detail.column));
        values.push_back(std::move(of_column));
    }
    const SpreadUpdate update(grid);
    grid->SetColumns(std::move(shown));
    grid->SetRowCount(static_cast<long>(rows));
    for (std::size_t column = 0; column < values.size(); ++column)
        for (std::size_t row = 0; row < rows; ++row)
            Put(grid, static_cast<long>(row) + 1, static_cast<long>(column) + 1, values[column][row]);
    if (rows > 0) grid->SetActiveCell(1, 1);
}

QLabel *DetailNote(QWidget *page)
{
    auto *note = new QLabel(page);
    note->setTextFormat(Qt::PlainText); // parts of it come from the file
    note->setWordWrap(true);
    note->setTextInteractionFlags(Qt::TextSelectableByMouse);
    note->hide();
    return note;
}

void ShowNote(QLabel *note, const std::string &text)
{
    note->setText(ToQt(text));
    note->setVisible(!text.empty());
}
