#pragma once

#include "schedule/CashOutlook.h"
#include "schedule/ui/ScheduleViewWindow.h"

/// The dashboard of the schedule: how much is to be collected and paid and how much of it is late, month by month as a
/// chart and in figures, where the balance goes, and the customers who owe most. The month that is selected in the
/// chart is the row of the figures, and reads out in the status line.
class CCruscottoScadenze : public ScheduleViewWindow {
  public:
    explicit CCruscottoScadenze(CWnd *parent = nullptr);
    ~CCruscottoScadenze() override;

    void OnRecordApri() override; ///< the instalments of the selected month
    void OnRecordStampa() override;

    void OnUpdateRecordApri(CCmdUI *command) override;

    bool PreTranslateMessage(QKeyEvent *message) override; ///< Enter belongs to the chart while it has the focus

  protected:
    bool OnInitDialog() override;
    bool CheckFilter() override;
    void ReadRows(SACommand *cmd, bool progress) override;
    bool HasRows() const override;

  private:
    struct Form;

    void BuildFilters();
    QWidget *NewTiles();
    QWidget *NewLateList();
    void BuildGrid();
    void AddCommands();

    void ShowTiles();
    void ShowLate();
    void ShowMonths();
    void ShowPeriod(int period);

    std::unique_ptr<Form> form_;
};
