#include "tarvodlg/widgets/SpreadStore.h"

#include "tarvodlg/base/Numbers.h"

#include <cassert>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace {

constexpr std::int32_t kNoNumber = std::numeric_limits<std::int32_t>::min();
constexpr double kNoAmount = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kFewTexts = 65'536; ///< up to here unused texts are not worth looking for

long long CentsOf(double amount)
{
    return std::isnan(amount) ? 0 : ToCents(amount);
}

template <class T>
void Permute(std::vector<T> &cells, const std::vector<std::uint32_t> &order)
{
    if (cells.empty()) return; // of another kind, or not used
    std::vector<T> ordered;
    ordered.reserve(order.size());
    for (const std::uint32_t row : order) ordered.push_back(cells[row]);
    cells = std::move(ordered);
}

template <class T>
auto Place(std::vector<T> &cells, long row)
{
    return cells.begin() + row;
}

} // namespace

std::uint32_t TextPool::Intern(std::string_view text)
{
    if (text.empty()) return 0;
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = std::hash<std::string_view>{}(text)&mask;
    for (; slots_[slot] != 0; slot = (slot + 1) & mask)
        if (At(slots_[slot]) == text) return slots_[slot];
    if (text.size() > std::numeric_limits<std::uint32_t>::max() - bytes_.size())
        throw std::length_error("Troppi testi in un elenco");
    const auto id = static_cast<std::uint32_t>(Count());
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    starts_.push_back(static_cast<std::uint32_t>(bytes_.size()));
    slots_[slot] = id;
    if (Count() * 10 > slots_.size() * 7) Grow();
    return id;
}

std::string_view TextPool::At(std::uint32_t id) const
{
    return {bytes_.data() + starts_[id], starts_[id + 1] - starts_[id]};
}

void TextPool::Clear()
{
    bytes_ = {};
    starts_.assign({0, 0});
    slots_.assign(kFirstSlots, 0);
}

void TextPool::Grow()
{
    slots_.assign(slots_.size() * 2, 0);
    const std::size_t mask = slots_.size() - 1;
    for (std::uint32_t id = 1; id < Count(); ++id) {
        std::size_t slot = std::hash<std::string_view>{}(At(id)) & mask;
        while (slots_[slot] != 0) slot = (slot + 1) & mask;
        slots_[slot] = id;
    }
}

void SpreadStore::SetColumns(const std::vector<SpreadKind> &kinds)
{
    SetRows(0);
    columns_.assign(kinds.size(), {});
    for (std::size_t i = 0; i < kinds.size(); ++i) columns_[i].kind = kinds[i];
}

void SpreadStore::SetRows(long rows)
{
    if (rows < rows_) Forget(rows);
    const auto count = static_cast<std::size_t>(rows);
    for (ColumnCells &column : columns_) {
        switch (column.kind) {
        case SpreadKind::Number:
            column.numbers.resize(count, kNoNumber);
            break;
        case SpreadKind::Amount:
            column.amounts.resize(count, kNoAmount);
            break;
        case SpreadKind::Text:
            column.texts.resize(count, 0);
            break;
        }
        if (!column.locks.empty()) column.locks.resize(count, Lock::AsColumn);
    }
    if (!data_.empty()) data_.resize(count);
    if (!colors_.empty()) colors_.resize(count);
    rows_ = rows;
    if (rows == 0) {
        pool_.Clear();
        kept_texts_ = 0;
    }
}

void SpreadStore::InsertRow(long before)
{
    for (ColumnCells &column : columns_) {
        if (column.kind == SpreadKind::Number)
            column.numbers.insert(Place(column.numbers, before), kNoNumber);
        else if (column.kind == SpreadKind::Amount)
            column.amounts.insert(Place(column.amounts, before), kNoAmount);
        else
            column.texts.insert(Place(column.texts, before), 0);
        if (!column.locks.empty()) column.locks.insert(Place(column.locks, before), Lock::AsColumn);
    }
    if (!data_.empty()) data_.insert(Place(data_, before), 0);
    if (!colors_.empty()) colors_.insert(Place(colors_, before), 0);
    ++rows_;
}

void SpreadStore::DeleteRow(long row)
{
    for (int i = 0; i < Columns(); ++i) {
        ColumnCells &column = At(i);
        ClearCell(row, i);
        SetLock(row, column, Lock::AsColumn);
        if (column.kind == SpreadKind::Number)
            column.numbers.erase(Place(column.numbers, row));
        else if (column.kind == SpreadKind::Amount)
            column.amounts.erase(Place(column.amounts, row));
        else
            column.texts.erase(Place(column.texts, row));
        if (!column.locks.empty()) column.locks.erase(Place(column.locks, row));
    }
    if (!data_.empty()) data_.erase(Place(data_, row));
    if (!colors_.empty()) colors_.erase(Place(colors_, row));
    --rows_;
}

void SpreadStore::Reorder(const std::vector<std::uint32_t> &order)
{
    assert(static_cast<long>(order.size()) == rows_);
    for (ColumnCells &column : columns_) {
        Permute(column.numbers, order);
        Permute(column.amounts, order);
        Permute(column.texts, order);
        Permute(column.locks, order);
    }
    Permute(data_, order);
    Permute(colors_, order);
}

void SpreadStore::Forget(long first_row)
{
    for (ColumnCells &column : columns_) {
        for (std::size_t row = static_cast<std::size_t>(first_row); row < column.locks.size(); ++row) {
            column.locked_cells -= column.locks[row] == Lock::Locked;
            column.unlocked_cells -= column.locks[row] == Lock::Unlocked;
        }
        for (std::size_t row = static_cast<std::size_t>(first_row); row < column.texts.size(); ++row)
            text_cells_ -= column.texts[row] != 0;
        if (first_row == 0) {
            column.sum_cents = 0;
            continue;
        }
        for (std::size_t row = static_cast<std::size_t>(first_row); row < column.amounts.size(); ++row)
            column.sum_cents -= CentsOf(column.amounts[row]);
    }
}

bool SpreadStore::IsEmpty(long row, int column) const
{
    const ColumnCells &cells = At(column);
    const auto at = static_cast<std::size_t>(row);
    if (cells.kind == SpreadKind::Number) return cells.numbers[at] == kNoNumber;
    if (cells.kind == SpreadKind::Amount) return std::isnan(cells.amounts[at]);
    return cells.texts[at] == 0;
}

long SpreadStore::Number(long row, int column) const
{
    const std::int32_t number = At(column).numbers[static_cast<std::size_t>(row)];
    return number == kNoNumber ? 0 : number;
}

double SpreadStore::Amount(long row, int column) const
{
    const double amount = At(column).amounts[static_cast<std::size_t>(row)];
    return std::isnan(amount) ? 0 : amount;
}

std::string_view SpreadStore::Text(long row, int column) const
{
    return pool_.At(At(column).texts[static_cast<std::size_t>(row)]);
}

void SpreadStore::SetNumber(long row, int column, long number)
{
    if (number <= kNoNumber || number > std::numeric_limits<std::int32_t>::max())
        throw std::out_of_range("Codice fuori dai limiti");
    At(column).numbers[static_cast<std::size_t>(row)] = static_cast<std::int32_t>(number);
}

void SpreadStore::SetAmount(long row, int column, double amount)
{
    ColumnCells &cells = At(column);
    double &cell = cells.amounts[static_cast<std::size_t>(row)];
    cells.sum_cents += CentsOf(amount) - CentsOf(cell);
    cell = amount;
}

void SpreadStore::SetText(long row, int column, std::string_view text)
{
    PutText(At(column).texts[static_cast<std::size_t>(row)], pool_.Intern(text));
    // There can't be more different texts than cells, so this bounds the pool without looking at the cells.
    if (pool_.Count() > std::max(kFewTexts, 2 * std::max(text_cells_, kept_texts_))) DropUnusedTexts();
}

void SpreadStore::PutText(std::uint32_t &cell, std::uint32_t id)
{
    text_cells_ += id != 0;
    text_cells_ -= cell != 0;
    cell = id;
}

void SpreadStore::ClearCell(long row, int column)
{
    ColumnCells &cells = At(column);
    if (cells.kind == SpreadKind::Number)
        cells.numbers[static_cast<std::size_t>(row)] = kNoNumber;
    else if (cells.kind == SpreadKind::Amount)
        SetAmount(row, column, kNoAmount);
    else
        PutText(cells.texts[static_cast<std::size_t>(row)], 0);
}

SpreadValue SpreadStore::Value(long row, int column) const
{
    if (IsEmpty(row, column)) return {};
    switch (Kind(column)) {
    case SpreadKind::Number:
        return Number(row, column);
    case SpreadKind::Amount:
        return Amount(row, column);
    case SpreadKind::Text:
        break;
    }
    return std::string(Text(row, column));
}

void SpreadStore::SetValue(long row, int column, const SpreadValue &value)
{
    if (std::holds_alternative<std::monostate>(value))
        ClearCell(row, column);
    else if (Kind(column) == SpreadKind::Number)
        SetNumber(row, column, std::get<long>(value));
    else if (Kind(column) == SpreadKind::Amount)
        SetAmount(row, column, std::get<double>(value));
    else
        SetText(row, column, std::get<std::string>(value));
}

void SpreadStore::LockCell(long row, int column, bool locked)
{
    SetLock(row, At(column), locked ? Lock::Locked : Lock::Unlocked);
}

void SpreadStore::SetLock(long row, ColumnCells &cells, Lock lock)
{
    if (cells.locks.empty() && lock == Lock::AsColumn) return;
    if (cells.locks.empty()) cells.locks.resize(static_cast<std::size_t>(rows_), Lock::AsColumn);
    Lock &cell = cells.locks[static_cast<std::size_t>(row)];
    cells.locked_cells += (lock == Lock::Locked) - (cell == Lock::Locked);
    cells.unlocked_cells += (lock == Lock::Unlocked) - (cell == Lock::Unlocked);
    cell = lock;
}

bool SpreadStore::IsLocked(long row, int column) const
{
    const ColumnCells &cells = At(column);
    const Lock lock = cells.locks.empty() ? Lock::AsColumn : cells.locks[static_cast<std::size_t>(row)];
    return lock == Lock::AsColumn ? cells.locked : lock == Lock::Locked;
}

bool SpreadStore::HasUnlocked() const
{
    for (const ColumnCells &cells : columns_) {
        if (cells.unlocked_cells > 0) return true;
        if (!cells.locked && (rows_ == 0 || cells.locked_cells < rows_)) return true;
    }
    return false;
}

void SpreadStore::SetRowData(long row, long data)
{
    if (data_.empty() && data == 0) return;
    if (data_.empty()) data_.resize(static_cast<std::size_t>(rows_));
    data_[static_cast<std::size_t>(row)] = data;
}

void SpreadStore::SetRowColor(long row, unsigned color)
{
    assert(color <= 255 && "a grid has a handful of colours");
    if (colors_.empty() && color == 0) return;
    if (colors_.empty()) colors_.resize(static_cast<std::size_t>(rows_));
    colors_[static_cast<std::size_t>(row)] = static_cast<std::uint8_t>(color);
}

/// A list that is filled again and again without being emptied must not keep every text it ever showed.
void SpreadStore::DropUnusedTexts()
{
    TextPool used;
    std::vector<std::uint32_t> renumbered(pool_.Count(), 0);
    for (ColumnCells &column : columns_)
        for (std::uint32_t &text : column.texts) {
            if (text == 0) continue;
            if (renumbered[text] == 0) renumbered[text] = used.Intern(pool_.At(text));
            text = renumbered[text];
        }
    pool_ = std::move(used);
    kept_texts_ = pool_.Count();
}
