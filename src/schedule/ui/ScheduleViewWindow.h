#pragma once

#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/TarvoRecordDialog.h"

/// What the windows of the schedule's views share: filters that take effect as soon as they are left or chosen, F9 and
/// Ctrl+E, Esc without a question.
class ScheduleViewWindow : public CTarvoRecordBrowseDialog {
  public:
    explicit ScheduleViewWindow(CWnd *parent);

    void LoadTable(SACommand *cmd, bool progress) override;

    void OnUpdateRecordApri(CCmdUI *command) override;
    void OnUpdateRecordStampa(CCmdUI *command) override;

  protected:
    static CSpreadSheet::Column GridColumn(const char *title, CSpreadSheet::Type type, int width);
    /// An amount with its sum in the foot.
    static CSpreadSheet::Column SumColumn(const char *title, int width = 15);

    /// Reads again when the user leaves the field changed, or chooses from it.
    void ReloadOn(CTarvoField *field);
    /// F2 with this caption, F9 and Ctrl+E.
    void AddViewCommands(const char *open, const char *open_tooltip, const char *print_tooltip);

    /// Fills the grid and empties it when that fails: a list not read to its end must not stand there as whole.
    void FillOrClear(const std::function<void()> &fill);

    /// Shows in the status line why a field is refused. @return false
    bool Refuse(CTarvoField *field, const char *reason);

    virtual bool CheckFilter() { return true; } ///< after the fields were read; false when a field was refused
    virtual void ReadRows(SACommand *cmd, bool progress) = 0; ///< fills the grid and the status line
    virtual void Export() { OnExport(); }
    virtual bool HasRows() const { return Spread()->RowCount() > 0; }

    void OnCancel() override { EndDialog(IDCANCEL); } ///< filters are nothing to be lost

  private:
    bool TakeFilter();

    bool loading_ = false;
};

/// "1 scadenza", "12.345 scadenze": a number with what it counts.
QString Counted(long count, const char *one, const char *many);
