#pragma once

#include "tarvodlg/widgets/SpreadDelegate.h"
#include "tarvodlg/widgets/SpreadFoot.h"
#include "tarvodlg/widgets/SpreadModel.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QLabel>
#include <QLineEdit>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QTimer>
#include <optional>

/// A place in the grid; rows and columns count from 0, a row of -1 is no place.
struct SpreadCell {
    long row = -1;
    int column = -1;

    bool IsValid() const { return row >= 0; }
    friend bool operator==(const SpreadCell &, const SpreadCell &) = default;
};

/// What the grid knows and does behind its events. Leaving a cell has one home, Leave(); whatever moves the user away
/// from a cell (keys, mouse, focus, the dialog) goes through it.
struct CSpreadSheet::State {
    explicit State(CSpreadSheet *grid);
    void Connect(); ///< to the header and the scroll bar of the finished grid

    // Where the user is.
    SpreadCell Active() const;
    bool IsEntry() const { return model.Store().HasUnlocked(); }
    bool IsOpen(SpreadCell cell) const; ///< can be typed into
    SpreadCell Clipped(SpreadCell cell) const;
    void PutActive(SpreadCell cell);    ///< without asking
    void FollowActive(SpreadCell cell); ///< rows changed around the active cell, the user did not move
    /// Goes there as the user wants, asking first. @return false when refused
    bool MoveTo(SpreadCell cell);
    void Advance(bool forward);
    SpreadCell NextOpen(SpreadCell from, bool forward) const;
    int RowsInView() const;
    void Entered(Qt::FocusReason reason);

    // Typing into cells.
    bool IsEditing() const { return !editor.isNull(); }
    bool Leave();
    bool TakeTyped(); ///< completes and stores what the editor holds. @return false when refused
    void EndEdit();   ///< drops the editor and what is not stored
    void Restore();   ///< Esc: gives the cell its value back
    void Refuse();
    void EditorMade(QLineEdit *line, const QModelIndex &index);
    bool Change(SpreadCell cell, const SpreadValue &value); ///< by the user. @return false when on_change threw
    bool TypeChoice(SpreadCell cell, const QString &typed);

    // Keys; each gives true when the key was used up.
    bool EditorKey(QKeyEvent *key);
    bool MayType(const QKeyEvent &key) const; ///< the column takes the character
    bool GridKey(QKeyEvent *key);
    bool MoveKey(const QKeyEvent &key);
    bool TypeKey(QKeyEvent *key);
    bool EnterKey(const QKeyEvent &key);
    bool OfferKey(QKeyEvent *key); ///< to on_key_press
    bool TabKey(bool forward);
    bool LookUp();
    void Copy() const;
    void FocusLeftEditor(Qt::FocusReason reason);

    // Search by typing, see SpreadSearch.
    bool SearchKey(const QKeyEvent &key);
    long FindTyped(const QString &text, long from_row) const; ///< all around the list; -1 = none
    void ShowSearch();

    // Sorting, see SpreadSort.
    bool SortKey(const QKeyEvent &key);
    void SortByTitle(int column); ///< a second time the other way round
    void ForgetSorting();
    void ShowSorting();

    // Handlers of the dialog. Whatever they throw is shown here.
    bool Guarded(const std::function<void()> &work) const;
    void TellRowChanged();

    // Looks.
    void Restructured(); ///< rows, columns or locks changed
    void Repaint(SpreadCell cell);
    int ColumnWidth(int column) const;
    void SizeColumns();
    void StretchColumns();
    void SizeRows();
    void LoadLayout();
    void SaveLayout() const;
    SpreadFoot::Cell FootCell(int column) const;

    CSpreadSheet *sheet;
    SpreadModel model;
    SpreadDelegate delegate;
    SpreadFoot foot;
    std::vector<QColor> colors{QColor()}; ///< of rows, by number; 0 is the default colour
    std::vector<QString> foot_texts;
    bool sums_shown = false;

    QPointer<QLineEdit> editor;
    QPersistentModelIndex editing;       ///< the cell being typed
    bool replaces = false;               ///< typing opened the editor, so the arrows leave it
    std::optional<SpreadValue> original; ///< of the cell being typed, once another one was stored
    bool leaving = false;                ///< handlers are being asked

    int updates = 0;         ///< depth of BeginUpdate
    SpreadCell batch_active; ///< the active cell while the view does not know of the changes
    bool quiet = false;      ///< the grid itself moves the active cell
    unsigned moves = 0;      ///< how often the active cell was set; tells whether a handler did
    long told_row = -1;      ///< the row of the last on_row_changed

    struct {
        int column = -1; ///< -1 = as the program put the rows
        bool ascending = true;
    } sorted;
    bool may_sort = false;

    SpreadCell pressed;    ///< where the left button went down
    QString searched;      ///< what was typed without a pause
    QString last_searched; ///< Alt+Down looks for it again
    QLabel search_label;
    QTimer search_pause;

    QString layout_name;
    bool sizing = false, in_geometry = false, layout_changed = false;
    std::vector<int> user_widths; ///< pixels, 0 = as the column says
};
