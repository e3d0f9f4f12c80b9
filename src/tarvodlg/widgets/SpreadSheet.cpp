#include "tarvodlg/widgets/SpreadSheet.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/SpreadState.h"

#include <QAbstractButton>
#include <QHeaderView>
#include <QMouseEvent>
#include <QScrollBar>
#include <cassert>

namespace {

SpreadCell CellAt(long row, long column)
{
    return {row - 1, static_cast<int>(column - 1)};
}

SpreadCell CellOf(const QModelIndex &index)
{
    return {index.row(), index.column()};
}

} // namespace

CSpreadSheet::CSpreadSheet(CWnd *parent) : QTableView(parent), state_(std::make_unique<State>(this))
{
    setHorizontalHeader(new SpreadHeader(this));
    state_->Connect();
    setModel(&state_->model);
    setItemDelegate(&state_->delegate);
    setAccessibleName(QStringLiteral("Griglia"));
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    setShowGrid(false);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::AnyKeyPressed);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    setWordWrap(false);
    setTabKeyNavigation(false);
    for (QAbstractButton *corner : findChildren<QAbstractButton *>(QString(), Qt::FindDirectChildrenOnly))
        corner->hide();
    state_->SizeRows();
}

CSpreadSheet::~CSpreadSheet()
{
    state_->SaveLayout();
    setModel(nullptr); // the view must not ask a model that is gone
}

void CSpreadSheet::SetColumns(std::vector<Column> columns)
{
    state_->EndEdit();
    state_->batch_active = {};
    state_->told_row = -1;
    state_->foot_texts.assign(columns.size(), {});
    state_->user_widths.assign(columns.size(), 0);
    state_->ForgetSorting();
    state_->model.SetColumns(std::move(columns));
    state_->LoadLayout();
    state_->SizeColumns();
    state_->Restructured();
}

long CSpreadSheet::ColumnCount() const
{
    return state_->model.Store().Columns();
}

const CSpreadSheet::Column &CSpreadSheet::ColumnAt(long column) const
{
    assert(column >= 1 && column <= ColumnCount());
    return state_->model.Column(column - 1);
}

long CSpreadSheet::RowCount() const
{
    return state_->model.Store().Rows();
}

void CSpreadSheet::SetRowCount(long rows)
{
    rows = std::max(0L, rows);
    state_->ForgetSorting();
    if (rows == RowCount()) return;
    const SpreadCell active = state_->Active();
    if (rows == 0) state_->told_row = -1;
    if (state_->IsEditing() && state_->editing.row() >= rows) state_->EndEdit();
    state_->quiet = true;
    state_->model.SetRows(rows);
    state_->FollowActive(active);
}

void CSpreadSheet::InsertRow(long before)
{
    before = std::clamp(before, 1L, RowCount() + 1);
    state_->ForgetSorting();
    SpreadCell active = state_->Active();
    if (active.row >= before - 1) {
        ++active.row;
        ++state_->told_row; // the user still stands on the same row
    }
    if (state_->updates > 0 && !state_->leaving) state_->EndEdit();
    state_->quiet = true;
    state_->model.InsertRow(before - 1);
    state_->FollowActive(active);
}

void CSpreadSheet::DeleteRow(long row)
{
    if (row < 1 || row > RowCount()) return;
    SpreadCell active = state_->Active();
    if (active.row == row - 1) state_->told_row = -1;
    if (active.row > row - 1) {
        --active.row;
        --state_->told_row;
    }
    if (state_->IsEditing() && (state_->editing.row() == row - 1 || (state_->updates > 0 && !state_->leaving)))
        state_->EndEdit();
    state_->quiet = true;
    state_->model.DeleteRow(row - 1);
    state_->FollowActive(active);
}

void CSpreadSheet::Clear()
{
    SetRowCount(0);
}

std::string CSpreadSheet::Text(long row, long column) const
{
    return state_->model.Shown(row - 1, static_cast<int>(column - 1));
}

long CSpreadSheet::Long(long row, long column) const
{
    const SpreadStore &store = state_->model.Store();
    const SpreadCell cell = CellAt(row, column);
    const bool is_number = store.Has(cell.row, cell.column) && store.Kind(cell.column) == SpreadKind::Number;
    return is_number ? store.Number(cell.row, cell.column) : 0;
}

double CSpreadSheet::Number(long row, long column) const
{
    const SpreadStore &store = state_->model.Store();
    const SpreadCell cell = CellAt(row, column);
    const bool is_amount = store.Has(cell.row, cell.column) && store.Kind(cell.column) == SpreadKind::Amount;
    return is_amount ? store.Amount(cell.row, cell.column) : 0;
}

void CSpreadSheet::SetText(long row, long column, std::string_view text)
{
    SpreadStore &store = state_->model.Store();
    const SpreadCell cell = CellAt(row, column);
    if (!store.Has(cell.row, cell.column)) return;
    const bool is_text = store.Kind(cell.column) == SpreadKind::Text;
    assert(is_text && "the column holds numbers");
    if (!is_text) return;
    store.SetText(cell.row, cell.column, text);
    state_->Repaint(cell);
}

void CSpreadSheet::SetLong(long row, long column, long value)
{
    SpreadStore &store = state_->model.Store();
    const SpreadCell cell = CellAt(row, column);
    if (!store.Has(cell.row, cell.column)) return;
    const bool is_number = store.Kind(cell.column) == SpreadKind::Number;
    assert(is_number && "the column holds no codes or dates");
    if (!is_number) return;
    store.SetNumber(cell.row, cell.column, value);
    state_->Repaint(cell);
}

void CSpreadSheet::SetNumber(long row, long column, double value)
{
    SpreadStore &store = state_->model.Store();
    const SpreadCell cell = CellAt(row, column);
    if (!store.Has(cell.row, cell.column)) return;
    const bool is_amount = store.Kind(cell.column) == SpreadKind::Amount;
    assert(is_amount && "the column holds no amounts");
    if (!is_amount) return;
    store.SetAmount(cell.row, cell.column, value);
    state_->Repaint(cell);
}

void CSpreadSheet::ClearCell(long row, long column)
{
    const SpreadCell cell = CellAt(row, column);
    if (!state_->model.Store().Has(cell.row, cell.column)) return;
    state_->model.Store().ClearCell(cell.row, cell.column);
    state_->Repaint(cell);
}

long CSpreadSheet::RowData(long row) const
{
    return row >= 1 && row <= RowCount() ? state_->model.Store().RowData(row - 1) : 0;
}

void CSpreadSheet::SetRowData(long row, long record)
{
    if (row >= 1 && row <= RowCount()) state_->model.Store().SetRowData(row - 1, record);
}

void CSpreadSheet::LockCell(long row, long column, bool locked)
{
    const SpreadCell cell = CellAt(row, column);
    if (!state_->model.Store().Has(cell.row, cell.column)) return;
    state_->model.Store().LockCell(cell.row, cell.column, locked);
    state_->Restructured();
}

void CSpreadSheet::LockColumn(long column, bool locked)
{
    if (column < 1 || column > ColumnCount()) return;
    state_->model.Store().LockColumn(static_cast<int>(column - 1), locked);
    state_->Restructured();
}

bool CSpreadSheet::IsLocked(long row, long column) const
{
    return !state_->IsOpen(CellAt(row, column));
}

void CSpreadSheet::SetRowColor(long row, const QColor &text_colour)
{
    if (row < 1 || row > RowCount()) return;
    std::vector<QColor> &colors = state_->colors;
    const QColor wanted = text_colour.isValid() ? text_colour : QColor();
    auto known = std::find(colors.begin(), colors.end(), wanted);
    if (known == colors.end() && colors.size() <= 255) known = colors.insert(known, wanted);
    if (known == colors.end()) known = colors.begin();
    state_->model.Store().SetRowColor(row - 1, static_cast<unsigned>(known - colors.begin()));
    if (state_->updates == 0) viewport()->update();
}

long CSpreadSheet::ActiveRow() const
{
    return state_->Active().row + 1;
}

long CSpreadSheet::ActiveColumn() const
{
    return state_->Active().column + 1;
}

void CSpreadSheet::SetActiveCell(long row, long column)
{
    state_->PutActive(CellAt(row, column));
}

bool CSpreadSheet::IsEditing() const
{
    return state_->IsEditing();
}

bool CSpreadSheet::LeaveActiveCell()
{
    return state_->Leave();
}

void CSpreadSheet::Advance(bool forward)
{
    state_->Advance(forward);
}

void CSpreadSheet::BeginUpdate()
{
    if (state_->updates == 0) {
        state_->batch_active = state_->Active();
        state_->ForgetSorting();
        state_->model.BeginBatch();
    }
    ++state_->updates;
}

void CSpreadSheet::EndUpdate()
{
    assert(state_->updates > 0);
    if (--state_->updates > 0) return;
    state_->quiet = true;
    state_->model.EndBatch();
    state_->FollowActive(state_->batch_active);
}

long long CSpreadSheet::SumCents(long column) const
{
    return column >= 1 && column <= ColumnCount() ? state_->model.Store().SumCents(static_cast<int>(column - 1)) : 0;
}

void CSpreadSheet::ShowSums(bool show)
{
    state_->sums_shown = show;
    updateGeometries();
}

void CSpreadSheet::SetFootText(long column, const QString &text)
{
    if (column < 1 || column > ColumnCount()) return;
    state_->foot_texts[static_cast<std::size_t>(column - 1)] = text;
    state_->foot.update();
}

void CSpreadSheet::RememberLayout(const QString &name)
{
    state_->layout_name = name;
    state_->LoadLayout();
    state_->SizeColumns();
}

QSize CSpreadSheet::sizeHint() const
{
    constexpr int kRowsAtMost = 12, kCharactersAtMost = 110;
    const int digit = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    int width = 2 * frameWidth() + verticalScrollBar()->sizeHint().width();
    for (int column = 0; column < state_->model.columnCount(); ++column) width += state_->ColumnWidth(column);
    const int rows = std::clamp(static_cast<int>(std::min(RowCount(), 1000L)), 5, kRowsAtMost);
    const int foot = state_->sums_shown ? state_->foot.sizeHint().height() : 0;
    const int height = 2 * frameWidth() + horizontalHeader()->sizeHint().height() + foot +
                       rows * verticalHeader()->defaultSectionSize();
    return {std::min(width, kCharactersAtMost * digit), height};
}

bool CSpreadSheet::event(QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        // QWidget would move the focus with Tab before keyPressEvent ever saw it.
        auto *key = static_cast<QKeyEvent *>(event);
        const bool is_tab = key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab;
        if (is_tab && !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier))) {
            keyPressEvent(key);
            return key->isAccepted();
        }
    }
    return QTableView::event(event);
}

void CSpreadSheet::keyPressEvent(QKeyEvent *event)
{
    event->setAccepted(state_->GridKey(event));
}

void CSpreadSheet::mousePressEvent(QMouseEvent *event)
{
    state_->pressed = {};
    event->accept();
    if (!indexAt(event->position().toPoint()).isValid()) {
        if (state_->editor) state_->editor->setFocus();
        return;
    }
    const unsigned before = state_->moves;
    const bool stays = CellOf(indexAt(event->position().toPoint())) == state_->Active();
    if (!stays && (!state_->Leave() || state_->moves != before)) return;
    // Handlers may have changed the rows under the pointer.
    const SpreadCell cell = CellOf(indexAt(event->position().toPoint()));
    if (!cell.IsValid()) return;
    if (cell != state_->Active()) state_->PutActive(cell);
    if (state_->editor) state_->editor->setFocus();
    if (event->button() == Qt::LeftButton) state_->pressed = cell;
}

void CSpreadSheet::mouseMoveEvent(QMouseEvent *event)
{
    event->accept(); // the view would drag the active cell along without asking
}

void CSpreadSheet::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
    const SpreadCell cell = CellOf(indexAt(event->position().toPoint()));
    if (event->button() != Qt::LeftButton || !cell.IsValid() || cell != state_->pressed) return;
    state_->pressed = {};
    if (on_click) state_->Guarded([&] { on_click(cell.row + 1, cell.column + 1); });
}

void CSpreadSheet::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->accept();
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || !index.isValid() || CellOf(index) != state_->Active()) return;
    if (!state_->LookUp()) edit(index, AllEditTriggers, nullptr);
}

void CSpreadSheet::focusInEvent(QFocusEvent *event)
{
    state_->Entered(event->reason());
    QTableView::focusInEvent(event);
    viewport()->update();
}

void CSpreadSheet::focusOutEvent(QFocusEvent *event)
{
    QTableView::focusOutEvent(event);
    viewport()->update();
}

void CSpreadSheet::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    const bool sizes = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
    if (sizes && state_) {
        state_->SizeRows();
        state_->SizeColumns();
    }
}

void CSpreadSheet::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTableView::currentChanged(current, previous);
    if (!state_->quiet) state_->TellRowChanged();
}

void CSpreadSheet::resizeEvent(QResizeEvent *event)
{
    const bool in_sight = QRect(QPoint(0, 0), event->oldSize()).intersects(visualRect(currentIndex()));
    QTableView::resizeEvent(event);
    if (in_sight) scrollTo(currentIndex());
    state_->ShowSearch();
}

/// The view's own way knows no foot, and asks for room row by row; all rows here have one height.
void CSpreadSheet::updateGeometries()
{
    if (!state_ || state_->in_geometry) return;
    state_->in_geometry = true;
    const int head = horizontalHeader()->isHidden() ? 0 : horizontalHeader()->sizeHint().height();
    const int foot = state_->sums_shown ? state_->foot.sizeHint().height() : 0;
    for (int attempt = 0; attempt < 3; ++attempt) { // a scroll bar that comes or goes changes the room
        setViewportMargins(0, head, 0, foot);
        const QRect room = viewport()->geometry();
        horizontalHeader()->setGeometry(room.left(), room.top() - head, room.width(), head);
        verticalHeader()->setGeometry(room.left(), room.top(), 0, room.height());
        QMetaObject::invokeMethod(verticalHeader(), "updateGeometries"); // hidden, it would not notice
        state_->foot.setGeometry(room.left(), room.bottom() + 1, room.width(), foot);
        state_->foot.setVisible(foot > 0);
        state_->StretchColumns();

        horizontalScrollBar()->setPageStep(room.width());
        horizontalScrollBar()->setSingleStep(fontMetrics().averageCharWidth() * 4);
        horizontalScrollBar()->setRange(0, std::max(0, horizontalHeader()->length() - room.width()));
        verticalScrollBar()->setPageStep(state_->RowsInView());
        verticalScrollBar()->setRange(0, std::max(0, state_->model.rowCount() - state_->RowsInView()));
        if (viewport()->geometry() == room) break;
    }
    QAbstractItemView::updateGeometries();
    state_->in_geometry = false;
}

void CSpreadSheet::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint)
{
    QTableView::closeEditor(editor, QAbstractItemDelegate::NoHint);
    state_->editor = nullptr;
    state_->original.reset();
}

bool CSpreadSheet::edit(const QModelIndex &index, EditTrigger trigger, QEvent *event)
{
    const bool by_key = trigger == AnyKeyPressed; // or by an input method, for composed letters
    if (!by_key && trigger != AllEditTriggers) return false;
    if (!index.isValid() || state_->IsEditing() || !state_->IsOpen(CellOf(index)) ||
        state_->model.Column(index.column()).type == Type::Choice)
        return false;
    state_->replaces = by_key;
    return QTableView::edit(index, trigger, event);
}
