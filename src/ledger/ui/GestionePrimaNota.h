#pragma once

#include "tarvodlg/widgets/TarvoRecordDialog.h"
#include "tarvolumera/PSQLpno.h"

/// The journal list: entries of a range of numbers and dates, of a section and a causale, newest first; from it entries
/// are opened, made, found, printed and given attachments.
///
/// The window shows at once and is filled a moment later, by a timer of its own.
class CGestionePrimaNota : public CTarvoRecordBrowseDialog {
  public:
    explicit CGestionePrimaNota(CWnd *parent);
    ~CGestionePrimaNota() override;

    /// Fills the list from the archive. Errors are shown, and the list then keeps what it showed.
    void LoadTable(SACommand *cmd, bool progress) override;
    /// Writes an entry into the list when it passes the filter. An entry that is listed already keeps its row, whatever
    /// row is given, and loses it when it does not pass any more.
    /// @param row  from 1; 0 inserts a new first row. A list that went up to the newest entry grows with it
    void SetRow(long row, const PNOTA *entry);
    void DeleteRow(long row);
    /// True when the entry passes the current filter.
    bool TestFilter(const PNOTA *entry) const;
    QSize sizeHint() const override; ///< all columns, and as many rows as a screen has
    /// The row of an entry, 0 = not listed. Editors browse and users sort, so that a row remembered may be another's.
    long RowOf(long code) const;

    void OnRecordApri() override;
    void OnRecordNuovo() override;
    void OnRecordStampa() override;
    void OnAllegati();
    void OnRecordTrova();

    void OnUpdateRecordApri(CCmdUI *command) override;
    void OnUpdateRecordStampa(CCmdUI *command) override;
    void OnUpdateAllegati(CCmdUI *command);
    void OnUpdateRecordTrova(CCmdUI *command);

  protected:
    bool OnInitDialog() override;
    void OnCancel() override;
    void SetField() override;
    void resizeEvent(QResizeEvent *event) override;

  private:
    struct List;

    void BuildFilters();
    void BuildGrid();
    void AddCommands();

    bool OnEnKillfocusStart();
    bool OnEnKillfocusStop();
    bool OnEnKillfocusNStart();
    bool OnEnKillfocusNStop();
    bool OnEnKillfocusCodSez();
    bool OnEnKillfocusCodCac();
    void OnDblClickCodSez();
    void OnDblClickCodCac();
    void OnTimer();
    void OnSize();
    void OnGetMinMaxInfo();

    bool TakeFilter();
    void ShowRestrictions();
    void ShowCount();
    void MoveUpperBound(long highest);
    long Selected() const; ///< number of the selected entry, 0 = none
    void Select(long code);
    bool ReadSelected(PNOTA *entry);

    std::unique_ptr<List> list_;
};

/// Opens one entry in the editor, without the list. Nothing happens for 0 or when no entry has the number.
void EditPNota(long code);
