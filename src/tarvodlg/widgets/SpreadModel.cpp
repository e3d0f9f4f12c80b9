#include "tarvodlg/widgets/SpreadModel.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/widgets/Fields.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace {

SpreadKind KindOf(CSpreadSheet::Type type)
{
    switch (type) {
    case CSpreadSheet::Type::Code:
    case CSpreadSheet::Type::Date:
        return SpreadKind::Number;
    case CSpreadSheet::Type::Amount:
        return SpreadKind::Amount;
    case CSpreadSheet::Type::Text:
    case CSpreadSheet::Type::Choice:
        break;
    }
    return SpreadKind::Text;
}

std::optional<long> ReadCode(std::string_view text)
{
    std::int32_t code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
    if (error != std::errc() || end != text.data() + text.size() || code < 0) return std::nullopt;
    return code;
}

template <class T>
bool Take(const std::optional<T> &read, SpreadValue *value)
{
    if (read) *value = *read;
    return read.has_value();
}

} // namespace

void SpreadModel::SetColumns(std::vector<CSpreadSheet::Column> columns)
{
    beginResetModel();
    columns_ = std::move(columns);
    std::vector<SpreadKind> kinds;
    for (const CSpreadSheet::Column &column : columns_) kinds.push_back(KindOf(column.type));
    store_.SetColumns(kinds);
    for (std::size_t i = 0; i < columns_.size(); ++i) store_.LockColumn(static_cast<int>(i), columns_[i].locked);
    known_rows_ = 0;
    endResetModel();
}

void SpreadModel::SetRows(long rows)
{
    store_.SetRows(rows);
    if (!batching_) EndBatch();
}

void SpreadModel::InsertRow(long before)
{
    if (!batching_) beginInsertRows({}, static_cast<int>(before), static_cast<int>(before));
    store_.InsertRow(before);
    if (batching_) return;
    ++known_rows_;
    endInsertRows();
}

void SpreadModel::DeleteRow(long row)
{
    if (!batching_) beginRemoveRows({}, static_cast<int>(row), static_cast<int>(row));
    store_.DeleteRow(row);
    if (batching_) return;
    --known_rows_;
    endRemoveRows();
}

void SpreadModel::EndBatch()
{
    batching_ = false;
    const long rows = store_.Rows();
    if (rows > known_rows_) {
        beginInsertRows({}, static_cast<int>(known_rows_), static_cast<int>(rows - 1));
        known_rows_ = rows;
        endInsertRows();
    } else if (rows < known_rows_) {
        beginRemoveRows({}, static_cast<int>(rows), static_cast<int>(known_rows_ - 1));
        known_rows_ = rows;
        endRemoveRows();
    }
}

std::string SpreadModel::Shown(long row, int column) const
{
    if (!store_.Has(row, column) || store_.IsEmpty(row, column)) return {};
    const CSpreadSheet::Column &format = Column(column);
    switch (format.type) {
    case CSpreadSheet::Type::Code: {
        const long code = store_.Number(row, column);
        return code == 0 && format.blank_zero ? std::string() : std::to_string(code);
    }
    case CSpreadSheet::Type::Date:
        return FormatDate(store_.Number(row, column));
    case CSpreadSheet::Type::Amount: {
        const double amount = store_.Amount(row, column);
        const bool blank = format.blank_zero && TestIfZero(amount, format.decimals);
        return blank ? std::string() : FormatAmount(amount, format.decimals);
    }
    case CSpreadSheet::Type::Text:
    case CSpreadSheet::Type::Choice:
        break;
    }
    return std::string(store_.Text(row, column));
}

Qt::Alignment SpreadModel::Alignment(int column) const
{
    switch (Column(column).type) {
    case CSpreadSheet::Type::Code:
    case CSpreadSheet::Type::Amount:
        return Qt::AlignRight | Qt::AlignVCenter;
    case CSpreadSheet::Type::Choice:
        return Qt::AlignHCenter | Qt::AlignVCenter;
    case CSpreadSheet::Type::Date:
    case CSpreadSheet::Type::Text:
        break;
    }
    return Qt::AlignLeft | Qt::AlignVCenter;
}

int SpreadModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(known_rows_);
}

int SpreadModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant SpreadModel::data(const QModelIndex &index, int role) const
{
    if (role == Qt::DisplayRole || role == Qt::EditRole) return ToQt(Shown(index.row(), index.column()));
    if (role == Qt::TextAlignmentRole) return QVariant(Alignment(index.column()));
    return {};
}

QVariant SpreadModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical) return role == Qt::DisplayRole ? QVariant(section + 1) : QVariant();
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) return Column(section).title;
    if (role == Qt::TextAlignmentRole) return QVariant(Alignment(section));
    return {};
}

Qt::ItemFlags SpreadModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    const bool is_open = store_.Has(index.row(), index.column()) && !store_.IsLocked(index.row(), index.column());
    return is_open ? flags | Qt::ItemIsEditable : flags;
}

bool CompleteCell(const CSpreadSheet::Column &column, const QString &typed, SpreadValue *value)
{
    *value = {};
    const std::string text(Trimmed(FromQt(typed)));
    if (text.empty()) return true;
    switch (column.type) {
    case CSpreadSheet::Type::Code:
        return Take(ReadCode(text), value);
    case CSpreadSheet::Type::Date:
        return Take(CompleteDate(text, CDateField::WorkingDate()), value);
    case CSpreadSheet::Type::Amount: {
        const std::optional<double> amount = EvaluateAmount(text);
        return amount && Take(std::optional(Round(*amount, column.decimals)), value);
    }
    case CSpreadSheet::Type::Choice:
        *value = text;
        return column.choices.contains(ToQt(text));
    case CSpreadSheet::Type::Text:
        break;
    }
    const auto limit = static_cast<std::size_t>(column.max_characters);
    *value = std::string(limit == 0 ? std::string_view(text) : Utf8Prefix(text, limit));
    return true;
}
