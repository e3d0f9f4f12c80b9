#include "tarvodlg/base/UserInterface.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/SpreadState.h"

#include <QApplication>

SpreadCell CSpreadSheet::State::NextOpen(SpreadCell from, bool forward) const
{
    const int step = forward ? 1 : -1;
    const int columns = model.Store().Columns();
    for (SpreadCell cell = from; columns > 0;) {
        cell.column += step;
        if (cell.column < 0 || cell.column >= columns) {
            cell.row += step;
            cell.column = forward ? 0 : columns - 1;
        }
        if (cell.row < 0 || cell.row >= model.Store().Rows()) return {};
        if (IsOpen(cell)) return cell;
    }
    return {};
}

bool CSpreadSheet::State::MoveTo(SpreadCell cell)
{
    if (cell == Active()) return true;
    const unsigned before = moves;
    if (!Leave()) return false;
    if (moves != before || !model.Store().Has(cell.row, cell.column)) return true;
    PutActive(cell);
    return true;
}

void CSpreadSheet::State::Advance(bool forward)
{
    const unsigned before = moves;
    if (!Leave() || moves != before) return;
    SpreadCell from = Active(); // handlers may have put rows above it
    if (!from.IsValid()) from = forward ? SpreadCell{0, -1} : SpreadCell{model.Store().Rows(), 0};
    const SpreadCell next = NextOpen(from, forward);
    if (next.IsValid())
        PutActive(next);
    else if (sheet->on_advance)
        Guarded([&] { sheet->on_advance(forward); });
    else
        sheet->QAbstractScrollArea::focusNextPrevChild(forward);
}

/// Entered by Tab the grid starts at its beginning; otherwise the user comes back to where he was.
void CSpreadSheet::State::Entered(Qt::FocusReason reason)
{
    if (model.Store().Rows() == 0 || updates > 0) return;
    if (IsEntry() && (reason == Qt::TabFocusReason || !Active().IsValid()))
        PutActive(NextOpen({0, -1}, true));
    else if (!Active().IsValid())
        PutActive({0, 0});
}

bool CSpreadSheet::State::Leave()
{
    const SpreadCell cell = Active();
    if (leaving || !cell.IsValid() || !IsOpen(cell)) return true;
    leaving = true;
    const unsigned before = moves;
    bool is_good = TakeTyped();
    if (is_good && moves == before && sheet->on_leave_cell) {
        const SpreadCell left = Active(); // on_change may have put rows above it
        bool is_accepted = false;
        const bool is_asked = Guarded([&] { is_accepted = sheet->on_leave_cell(left.row + 1, left.column + 1); });
        is_good = is_asked && is_accepted;
    }
    leaving = false;
    if (is_good)
        EndEdit();
    else
        Refuse();
    return is_good;
}

bool CSpreadSheet::State::TakeTyped()
{
    if (!editor || !editor->isModified()) return true;
    const SpreadCell cell{editing.row(), editing.column()};
    SpreadValue value;
    if (!CompleteCell(model.Column(cell.column), editor->text(), &value)) return false;
    if (!original) original = model.Store().Value(cell.row, cell.column);
    const long *day = std::get_if<long>(&value);
    if (day && model.Column(cell.column).type == Type::Date) CDateField::NoteTypedDate(*day);
    const bool is_told = Change(cell, value);
    // Shows what handlers made of it, in case that the cell can't be left; a failed handler runs again.
    if (editor && editing.isValid()) editor->setText(ToQt(model.Shown(editing.row(), editing.column())));
    if (editor) editor->setModified(!is_told);
    return is_told;
}

void CSpreadSheet::State::EndEdit()
{
    if (editor) sheet->closeEditor(editor, QAbstractItemDelegate::NoHint);
}

void CSpreadSheet::State::Restore()
{
    const SpreadCell cell{editing.row(), editing.column()};
    const std::optional<SpreadValue> value = std::exchange(original, std::nullopt);
    EndEdit();
    if (value && IsOpen(cell)) Change(cell, *value);
}

void CSpreadSheet::State::Refuse()
{
    BeepRefused();
    const SpreadCell active = Active();
    if (editor && (editing.row() != active.row || editing.column() != active.column))
        EndEdit(); // a handler moved the rows or went elsewhere
    if (editor) {
        if (!editor->isModified()) editor->setText(ToQt(model.Shown(active.row, active.column)));
        editor->selectAll();
        replaces = true;
    }
    const QWidget *cell = editor ? static_cast<QWidget *>(editor) : sheet;
    if (cell->hasFocus()) return;
    // The focus may be on its way elsewhere just now; it comes back when it has arrived.
    QTimer::singleShot(0, sheet, [this] {
        if (!editor) return sheet->setFocus();
        editor->setFocus();
        editor->selectAll();
    });
}

void CSpreadSheet::State::EditorMade(QLineEdit *line, const QModelIndex &index)
{
    editor = line;
    editing = index;
    original.reset();
}

bool CSpreadSheet::State::Change(SpreadCell cell, const SpreadValue &value)
{
    return Guarded([&] {
        model.Store().SetValue(cell.row, cell.column, value);
        Repaint(cell);
        if (sheet->on_change) sheet->on_change(cell.row + 1, cell.column + 1);
    });
}

/// A letter goes to the next choice that begins with it, a blank to the next one of all.
bool CSpreadSheet::State::TypeChoice(SpreadCell cell, const QString &typed)
{
    const QStringList &choices = model.Column(cell.column).choices;
    const QString present = ToQt(model.Shown(cell.row, cell.column));
    const qsizetype at = choices.indexOf(present);
    for (qsizetype step = 1; step <= choices.size(); ++step) {
        const QString &choice = choices[(at + step) % choices.size()];
        if (typed != QLatin1String(" ") && !choice.startsWith(typed, Qt::CaseInsensitive)) continue;
        if (choice != present) Change(cell, FromQt(choice));
        return true;
    }
    BeepRefused();
    return true;
}

void CSpreadSheet::State::FocusLeftEditor(Qt::FocusReason reason)
{
    if (leaving || !sheet->isVisible()) return;
    if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason)
        return;
    // A press on another cell asks by itself, when it is known which one.
    const QWidget *entered = QApplication::focusWidget();
    if (!entered || entered == sheet || sheet->isAncestorOf(entered)) return;
    Leave();
}
