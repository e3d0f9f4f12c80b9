#include "cli/Table.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "tarvodlg/base/Text.h"

namespace {

constexpr std::string_view kGap = "  ";

std::string CutWithMark(std::string text, std::size_t max_width)
{
    if (max_width == 0 || Utf8Length(text) <= max_width) return text;
    return std::string(Utf8Prefix(text, max_width - 1)).append("…");
}

} // namespace

Table::Table(std::vector<TableColumn> columns, bool colours)
    : columns_(std::move(columns)), widths_(columns_.size(), 0), colours_(colours)
{
    std::vector<std::string> titles;
    for (const TableColumn &column : columns_) titles.push_back(column.title);
    Measure(Clean(std::move(titles)));
}

std::vector<std::string> Table::Clean(std::vector<std::string> cells) const
{
    assert(cells.size() <= columns_.size());
    cells.resize(columns_.size());
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = CutWithMark(OnOneLine(cells[i]), columns_[i].max_width);
    return cells;
}

void Table::Measure(const std::vector<std::string> &cells)
{
    for (std::size_t i = 0; i < cells.size(); ++i) widths_[i] = std::max(widths_[i], Utf8Length(cells[i]));
}

void Table::AddRow(std::vector<std::string> cells)
{
    cells = Clean(std::move(cells));
    if (!measuring_) return WriteRow(cells, Weight::Plain);
    Measure(cells);
    kept_.push_back(std::move(cells));
    if (kept_.size() == kMeasuredRows) WriteMeasured();
}

void Table::WriteMeasured()
{
    if (!std::exchange(measuring_, false)) return;
    std::vector<std::string> titles;
    for (const TableColumn &column : columns_) titles.push_back(column.title);
    WriteRow(Clean(std::move(titles)), Weight::Bold);
    WriteRule();
    for (const std::vector<std::string> &cells : kept_) WriteRow(cells, Weight::Plain);
    kept_ = {};
}

void Table::WriteRow(const std::vector<std::string> &cells, Weight weight)
{
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::size_t length = Utf8Length(cells[i]);
        const std::string padding(length < widths_[i] ? widths_[i] - length : 0, ' ');
        if (i > 0) line += kGap;
        line += columns_[i].align == TableColumn::Align::Right ? padding + cells[i] : cells[i] + padding;
    }
    line.resize(line.find_last_not_of(' ') + 1); // trailing blanks would wrap on a narrow terminal
    if (colours_ && weight == Weight::Bold) line = "\033[1m" + line + "\033[0m";
    text_ += line;
    text_ += '\n';
}

void Table::WriteRule()
{
    for (std::size_t i = 0; i < widths_.size(); ++i) {
        if (i > 0) text_ += kGap;
        for (std::size_t n = 0; n < widths_[i]; ++n) text_ += "─";
    }
    text_ += '\n';
}

std::string Table::Take()
{
    return std::exchange(text_, {});
}

std::string Table::Finish(std::vector<std::string> totals)
{
    const bool has_totals = !totals.empty();
    if (has_totals) {
        totals = Clean(std::move(totals));
        if (measuring_) Measure(totals);
    }
    WriteMeasured();
    if (has_totals) {
        WriteRule();
        WriteRow(totals, Weight::Bold);
    }
    return Take();
}
