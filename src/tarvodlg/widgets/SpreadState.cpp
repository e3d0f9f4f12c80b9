#include "tarvodlg/widgets/SpreadState.h"

#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QSettings>
#include <fmt/format.h>

namespace {

constexpr int kSearchPauseMs = 1000;
constexpr double kHundredths = 100; ///< widths are remembered in hundredths of a digit, good for every screen

QString LayoutKey(const QString &name)
{
    return QStringLiteral("griglie/") + name;
}

} // namespace

CSpreadSheet::State::State(CSpreadSheet *grid)
    : sheet(grid), delegate(grid), foot(grid, [this](int column) { return FootCell(column); }), search_label(grid)
{
    foot.hide();
    search_label.hide();
    search_label.setAutoFillBackground(true);
    search_label.setBackgroundRole(QPalette::ToolTipBase);
    search_label.setForegroundRole(QPalette::ToolTipText);
    search_label.setFrameStyle(int(QFrame::Panel) | int(QFrame::Plain));
    search_pause.setSingleShot(true);
    search_pause.setInterval(kSearchPauseMs);
    QObject::connect(&search_pause, &QTimer::timeout, &search_pause, [this] {
        searched.clear();
        ShowSearch();
    });
}

void CSpreadSheet::State::Connect()
{
    QHeaderView *header = sheet->horizontalHeader();
    QObject::connect(header, &QHeaderView::sectionResized, sheet, [this](int column, int, int size) {
        foot.update();
        if (sizing) return;
        user_widths[static_cast<std::size_t>(column)] = size;
        layout_changed = true;
        StretchColumns();
    });
    // The view would select the column whose title is clicked.
    QObject::disconnect(header, &QHeaderView::sectionPressed, sheet, nullptr);
    QObject::disconnect(header, &QHeaderView::sectionEntered, sheet, nullptr);
    QObject::connect(header, &QHeaderView::sectionClicked, sheet, [this](int column) { SortByTitle(column); });
    QObject::connect(sheet->horizontalScrollBar(), &QScrollBar::valueChanged, &foot, [this] { foot.update(); });
}

SpreadCell CSpreadSheet::State::Active() const
{
    if (updates > 0) return batch_active;
    const QModelIndex current = sheet->currentIndex();
    return {current.row(), current.column()};
}

bool CSpreadSheet::State::IsOpen(SpreadCell cell) const
{
    const SpreadStore &store = model.Store();
    return store.Has(cell.row, cell.column) && !store.IsLocked(cell.row, cell.column);
}

SpreadCell CSpreadSheet::State::Clipped(SpreadCell cell) const
{
    const SpreadStore &store = model.Store();
    if (!cell.IsValid() || store.Rows() == 0 || store.Columns() == 0) return {};
    return {std::min(cell.row, store.Rows() - 1), std::clamp(cell.column, 0, store.Columns() - 1)};
}

void CSpreadSheet::State::PutActive(SpreadCell cell)
{
    ++moves;
    if (!model.Store().Has(cell.row, cell.column)) cell = {};
    if (updates > 0) {
        batch_active = cell;
        return;
    }
    EndEdit();
    if (cell.IsValid())
        sheet->setCurrentIndex(model.index(static_cast<int>(cell.row), cell.column));
    else
        sheet->selectionModel()->clear();
    TellRowChanged();
}

void CSpreadSheet::State::FollowActive(SpreadCell cell)
{
    cell = Clipped(cell);
    if (updates > 0) {
        batch_active = cell;
        quiet = false;
        return;
    }
    if (cell.IsValid())
        sheet->setCurrentIndex(model.index(static_cast<int>(cell.row), cell.column));
    else
        sheet->selectionModel()->clear();
    quiet = false;
    Restructured();
    TellRowChanged();
}

/// Told once the grid is whole again; leaving the last row of all is no other row.
void CSpreadSheet::State::TellRowChanged()
{
    const long row = Active().row;
    if (updates > 0 || quiet || row == told_row) return;
    told_row = row;
    if (row >= 0 && sheet->on_row_changed) Guarded([&] { sheet->on_row_changed(row + 1); });
}

bool CSpreadSheet::State::Guarded(const std::function<void()> &work) const
{
    try {
        work();
        return true;
    } catch (const SAException &error) {
        SAExceptionDisplay(error, LUMERA_TAG, false);
    } catch (const std::exception &error) {
        AfxMessageBox(fmt::format("Errore imprevisto: {}\n\n[{}]", error.what(), LUMERA_TAG), MB_OK | MB_ICONSTOP);
    }
    return false;
}

/// An entry grid shows the cell the user is in, a list the row.
void CSpreadSheet::State::Restructured()
{
    if (updates > 0) return;
    const auto behaviour = IsEntry() ? QAbstractItemView::SelectItems : QAbstractItemView::SelectRows;
    if (sheet->selectionBehavior() != behaviour) {
        sheet->setSelectionBehavior(behaviour);
        const QModelIndex current = sheet->currentIndex();
        sheet->clearSelection();
        if (current.isValid()) sheet->setCurrentIndex(current);
    }
    if (sheet->horizontalHeader()->sectionsClickable() != sheet->CanSort())
        sheet->horizontalHeader()->setSectionsClickable(sheet->CanSort());
    SizeRows();
    sheet->viewport()->update();
    foot.update();
}

void CSpreadSheet::State::Repaint(SpreadCell cell)
{
    if (updates > 0 || !sheet->isVisible()) return;
    const long first = sheet->verticalScrollBar()->value();
    if (cell.row >= first && cell.row <= first + RowsInView() + 1)
        sheet->viewport()->update(sheet->visualRect(model.index(static_cast<int>(cell.row), cell.column)));
    if (sums_shown && model.Column(cell.column).sum) foot.update();
}

int CSpreadSheet::State::RowsInView() const
{
    return std::max(1, sheet->viewport()->height() / std::max(1, sheet->verticalHeader()->defaultSectionSize()));
}

void CSpreadSheet::State::SizeRows()
{
    const int text = sheet->fontMetrics().height();
    const int height = IsEntry() ? text * 3 / 2 : text * 4 / 3;
    QHeaderView *rows = sheet->verticalHeader();
    if (rows->defaultSectionSize() == height) return;
    rows->setMinimumSectionSize(1);
    rows->setDefaultSectionSize(height);
}

/// Wide enough for its characters and its title.
int CSpreadSheet::State::ColumnWidth(int column) const
{
    const CSpreadSheet::Column &format = model.Column(column);
    const int digit = sheet->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    const int content = format.width * digit + 2 * SpreadPadding(sheet->fontMetrics());
    const QFontMetrics titles = sheet->horizontalHeader()->fontMetrics();
    const int title = titles.size(0, format.title).width() + 2 * SpreadPadding(titles) + digit / 2;
    return std::max(content, title);
}

void CSpreadSheet::State::SizeColumns()
{
    sizing = true;
    for (int column = 0; column < model.columnCount(); ++column) {
        const int by_user = user_widths[static_cast<std::size_t>(column)];
        sheet->horizontalHeader()->resizeSection(column, by_user > 0 ? by_user : ColumnWidth(column));
    }
    sizing = false;
    StretchColumns();
}

/// Unlike the header's own stretching this never makes a column narrower than its text.
void CSpreadSheet::State::StretchColumns()
{
    QHeaderView *header = sheet->horizontalHeader();
    std::vector<int> stretched;
    int left = sheet->viewport()->width();
    for (int column = 0; column < model.columnCount(); ++column) {
        const bool by_user = user_widths[static_cast<std::size_t>(column)] > 0;
        if (model.Column(column).stretch && !by_user) stretched.push_back(column);
        left -= model.Column(column).stretch && !by_user ? ColumnWidth(column) : header->sectionSize(column);
    }
    sizing = true;
    for (std::size_t i = 0; i < stretched.size(); ++i) {
        const int share = std::max(0, left) / static_cast<int>(stretched.size() - i);
        left -= share;
        header->resizeSection(stretched[i], ColumnWidth(stretched[i]) + share);
    }
    sizing = false;
}

void CSpreadSheet::State::LoadLayout()
{
    if (layout_name.isEmpty()) return;
    const int digit = sheet->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    for (const QString &entry : QSettings().value(LayoutKey(layout_name)).toStringList()) {
        const qsizetype equals = entry.lastIndexOf(QLatin1Char('='));
        const int width = static_cast<int>(entry.mid(equals + 1).toInt() * digit / kHundredths);
        for (int column = 0; column < model.columnCount(); ++column)
            if (width >= digit && model.Column(column).title == entry.left(std::max(equals, qsizetype(0))))
                user_widths[static_cast<std::size_t>(column)] = width;
    }
}

/// A stretched column is not remembered: it takes what the window leaves.
void CSpreadSheet::State::SaveLayout() const
{
    if (layout_name.isEmpty() || !layout_changed) return;
    const int digit = sheet->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    QStringList entries;
    for (int column = 0; column < model.columnCount(); ++column) {
        const int width = user_widths[static_cast<std::size_t>(column)];
        if (width == 0 || model.Column(column).stretch) continue;
        entries << QStringLiteral("%1=%2").arg(model.Column(column).title).arg(qRound(width * kHundredths / digit));
    }
    QSettings().setValue(LayoutKey(layout_name), entries);
}

SpreadFoot::Cell CSpreadSheet::State::FootCell(int column) const
{
    const QString &text = foot_texts[static_cast<std::size_t>(column)];
    if (!text.isEmpty()) return {text, Qt::AlignLeft | Qt::AlignVCenter};
    if (!model.Column(column).sum || model.Column(column).type != Type::Amount) return {};
    return {ToQt(FormatAmount(FromCents(model.Store().SumCents(column)))), Qt::AlignRight | Qt::AlignVCenter};
}

void CSpreadSheet::State::ShowSearch()
{
    search_label.setVisible(!searched.isEmpty());
    if (searched.isEmpty()) return;
    search_label.setText(QStringLiteral(" Cerca: %1 ").arg(searched));
    search_label.adjustSize();
    const QRect room = sheet->viewport()->geometry();
    search_label.move(room.left(), room.bottom() + 1 - search_label.height());
    search_label.raise();
}
