// Sorting of lists, by a click on a title or by key.
#include "tarvodlg/widgets/SpreadState.h"

#include <QCollator>
#include <QHeaderView>
#include <QKeyEvent>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN(); ///< an empty cell

/// The place of every text of the column in the Italian alphabet, by number of the text: accents and capitals count
/// only between texts that are equal without them, and "Fattura 9" stands before "Fattura 10".
std::vector<double> RanksOfTexts(const SpreadStore &store, int column)
{
    std::vector<bool> is_used(store.TextCount());
    std::vector<std::pair<QCollatorSortKey, std::uint32_t>> texts;
    QCollator collator(QLocale(QLocale::Italian, QLocale::Italy));
    collator.setNumericMode(true);
    for (long row = 0; row < store.Rows(); ++row) {
        const std::uint32_t id = store.TextId(row, column);
        if (id == 0 || is_used[id]) continue;
        is_used[id] = true;
        texts.emplace_back(collator.sortKey(ToQt(store.Text(row, column))), id);
    }
    std::sort(texts.begin(), texts.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::vector<double> ranks(store.TextCount(), kNothing);
    double rank = 0;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0 && texts[i - 1].first < texts[i].first) ++rank;
        ranks[texts[i].second] = rank;
    }
    return ranks;
}

/// What the rows are compared by; numbers of 32 bits and ranks are exact in a double.
std::vector<double> SortKeys(const SpreadStore &store, int column)
{
    const SpreadKind kind = store.Kind(column);
    const std::vector<double> ranks = kind == SpreadKind::Text ? RanksOfTexts(store, column) : std::vector<double>();
    std::vector<double> keys(static_cast<std::size_t>(store.Rows()), kNothing);
    for (long row = 0; row < store.Rows(); ++row) {
        double &key = keys[static_cast<std::size_t>(row)];
        if (kind == SpreadKind::Text)
            key = ranks[store.TextId(row, column)];
        else if (!store.IsEmpty(row, column))
            key =
                kind == SpreadKind::Number ? static_cast<double>(store.Number(row, column)) : store.Amount(row, column);
    }
    return keys;
}

/// The present row numbers in their new order. Equal rows keep theirs, so that a list sorted by name and then by place
/// is sorted by both; empty cells come last either way.
std::vector<std::uint32_t> SortedRows(const SpreadStore &store, int column, bool ascending)
{
    const std::vector<double> keys = SortKeys(store, column);
    std::vector<std::uint32_t> rows(keys.size());
    std::iota(rows.begin(), rows.end(), 0U);
    std::stable_sort(rows.begin(), rows.end(), [&](std::uint32_t a, std::uint32_t b) {
        if (std::isnan(keys[a]) || std::isnan(keys[b])) return !std::isnan(keys[a]) && std::isnan(keys[b]);
        return ascending ? keys[a] < keys[b] : keys[b] < keys[a];
    });
    return rows;
}

} // namespace

void CSpreadSheet::AllowSorting(bool allow)
{
    state_->may_sort = allow;
    state_->Restructured();
}

bool CSpreadSheet::CanSort() const
{
    return state_->may_sort && !state_->IsEntry();
}

void CSpreadSheet::Sort(long column, bool ascending)
{
    if (!CanSort() || column < 1 || column > ColumnCount()) return;
    const int by = static_cast<int>(column - 1);
    const std::vector<std::uint32_t> order = SortedRows(state_->model.Store(), by, ascending);
    SpreadCell active = state_->Active();
    state_->model.Store().Reorder(order);
    const auto place = std::find(order.begin(), order.end(), static_cast<std::uint32_t>(active.row));
    if (active.IsValid() && place != order.end()) {
        if (state_->told_row == active.row) state_->told_row = place - order.begin(); // the user stands where he was
        active.row = place - order.begin();
    }
    state_->sorted = {by, ascending};
    state_->quiet = true;
    state_->FollowActive(active);
    state_->ShowSorting();
}

bool CSpreadSheet::State::SortKey(const QKeyEvent &key)
{
    const bool is_key = key.key() == Qt::Key_Down || key.key() == Qt::Key_Up;
    const Qt::KeyboardModifiers modifiers = key.modifiers() & ~Qt::KeypadModifier;
    if (!is_key || modifiers != (Qt::ControlModifier | Qt::ShiftModifier) || !sheet->CanSort()) return false;
    const int column = std::max(0, Active().column);
    Guarded([&] { sheet->Sort(column + 1, key.key() == Qt::Key_Down); });
    return true;
}

void CSpreadSheet::State::SortByTitle(int column)
{
    const bool turns = sorted.column == column && sorted.ascending;
    Guarded([&] { sheet->Sort(column + 1, !turns); });
    ShowSorting(); // the header has moved its arrow by its own rule
}

void CSpreadSheet::State::ForgetSorting()
{
    if (sorted.column < 0) return;
    sorted = {};
    ShowSorting();
}

void CSpreadSheet::State::ShowSorting()
{
    QHeaderView *header = sheet->horizontalHeader();
    const bool is_sorted = sorted.column >= 0;
    if (is_sorted) header->setSortIndicator(sorted.column, sorted.ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    header->setSortIndicatorShown(is_sorted);
    header->viewport()->update();
}
