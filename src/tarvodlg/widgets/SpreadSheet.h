#pragma once

#include "tarvodlg/widgets/Field.h"

#include <QColor>
#include <QTableView>
#include <functional>
#include <memory>

/// The grid of entry editors and lists. Rows and columns are counted from 1, as bookkeepers and the program's rules do.
///
/// Cells have the type of their column. Values live column by column in a compact store (equal texts once), so a list
/// of a million rows fits and scrolls. Everything works by keyboard: Enter and Tab complete the cell and go to the next
/// unlocked one, Shift+Tab goes back, arrows move, F4 or double click look up, Ins and Del are events, typing replaces
/// the cell, Ctrl+Enter edits what is in it, Esc in a cell gives its value back. Typing in a list (no unlocked cell)
/// searches the active column, Alt+Down goes to the next match.
///
/// What a handler throws is shown and counts as a refusal. Beyond 32 bits SetLong throws std::out_of_range.
class CSpreadSheet : public QTableView {
  public:
    enum class Type { Text, Code, Amount, Date, Choice };

    struct Column {
        QString title{};
        Type type = Type::Text;
        int width = 10;         ///< characters
        bool locked = false;    ///< cells cannot be typed into
        int decimals = 2;       ///< of Amount
        int max_characters = 0; ///< of Text; 0 = no limit
        bool sum = false;       ///< its sum shows in the foot, see ShowSums
        bool blank_zero = true; ///< 0 shows as an empty cell
        QStringList choices{};  ///< of Choice: the texts; the first letter typed selects
        bool stretch = false;   ///< takes the room that is left
    };

    explicit CSpreadSheet(CWnd *parent = nullptr);
    ~CSpreadSheet() override;

    void SetColumns(std::vector<Column> columns);
    long ColumnCount() const;
    const Column &ColumnAt(long column) const;

    long RowCount() const;
    void SetRowCount(long rows); ///< new rows are empty
    void InsertRow(long before); ///< before = RowCount() + 1 appends
    void DeleteRow(long row);
    void Clear(); ///< no rows

    // Values. A cell outside the grid reads as empty and is not written.
    std::string Text(long row, long column) const;              ///< what the cell shows
    long Long(long row, long column) const;                     ///< of Code and Date (a day number)
    double Number(long row, long column) const;                 ///< of Amount
    void SetText(long row, long column, std::string_view text); ///< Text and Choice
    void SetLong(long row, long column, long value);
    void SetNumber(long row, long column, double value);
    void ClearCell(long row, long column);

    /// A record number or the like behind the row, not shown.
    long RowData(long row) const;
    void SetRowData(long row, long data);

    void LockCell(long row, long column, bool locked); ///< wins over the column's
    void LockColumn(long column, bool locked);
    bool IsLocked(long row, long column) const;
    void SetRowColor(long row, const QColor &text_colour); ///< an invalid colour = the default one

    long ActiveRow() const; ///< 0 = none
    long ActiveColumn() const;
    /// Moves there without asking on_leave_cell; what is being typed is dropped. A handler that calls it has decided
    /// where the user goes: the move that it was asked about does not take place.
    void SetActiveCell(long row, long column);
    /// True while a cell is being typed: Esc then belongs to the cell.
    bool IsEditing() const;
    /// Completes the cell being typed and asks on_leave_cell. @return false when it was refused
    bool LeaveActiveCell();
    /// Moves to the next (previous) unlocked cell, asking on_leave_cell; past the last one calls on_advance.
    void Advance(bool forward = true);

    /// Many changes between the two cost one repaint.
    void BeginUpdate();
    void EndUpdate();

    /// Sum of an Amount column in cents over all rows.
    long long SumCents(long column) const;
    void ShowSums(bool show); ///< a foot with the sums of the columns marked so
    /// Foot text of a column without a sum ("Totali", "600 movimenti").
    void SetFootText(long column, const QString &text);

    /// Finds the next row, from the one given, whose cell contains the text, whatever case and accents. 0 = none.
    long FindText(long from_row, long column, const QString &text) const;

    /// Lets the user sort a list (no unlocked cell) by a click on a title, or by Ctrl+Shift+Down and Up for the active
    /// column. Rows are then numbered as they show, with their data and colours; only who knows a row by its RowData or
    /// its cells may allow it. Off by default; sorted once, rows that come later stand where they are put.
    void AllowSorting(bool allow);
    bool CanSort() const;
    void Sort(long column, bool ascending); ///< where allowed; the active cell goes along

    /// Widths that the user changed, remembered at this station under a name, by column title.
    void RememberLayout(const QString &name);

    // Events. Rows and columns from 1.
    std::function<bool(long row, long column)> on_leave_cell; ///< false refuses: beep, the cell stays active
    std::function<void(long row, long column)> on_change;     ///< the user changed the cell, after completion
    std::function<void(long row, long column)> on_dbl_click;  ///< also F4, and Enter in a list without unlocked cells
    std::function<void(long row, long column)> on_click;
    std::function<bool(long row, long column, QKeyEvent *)>
        on_key_press;                             ///< before the grid's own keys; true = used up
    std::function<void(bool forward)> on_advance; ///< Enter or Tab past the last cell, Shift+Tab before the first
    std::function<void(long row)> on_row_changed; ///< another row became active; never for none

    QSize sizeHint() const override; ///< its columns and some rows

  protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void resizeEvent(QResizeEvent *event) override;
    void updateGeometries() override;
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;

  private:
    friend class SpreadDelegate;
    struct State;
    std::unique_ptr<State> state_;
};

/// BeginUpdate and EndUpdate of a grid around a block, also when the block is left by an exception.
class SpreadUpdate {
  public:
    explicit SpreadUpdate(CSpreadSheet *sheet) : sheet_(sheet) { sheet_->BeginUpdate(); }
    ~SpreadUpdate() { sheet_->EndUpdate(); }
    SpreadUpdate(const SpreadUpdate &) = delete;
    SpreadUpdate &operator=(const SpreadUpdate &) = delete;

  private:
    CSpreadSheet *sheet_;
};
