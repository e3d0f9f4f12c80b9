#pragma once

#include "schedule/DueList.h"
#include "schedule/ui/ScheduleViewWindow.h"

/// The due list: the weeks or months of a period with what is to be collected and paid in each, and the instalments of
/// the one that is selected. What was due before the period stands first, in a row of its own.
class CScadenzeSt : public ScheduleViewWindow {
  public:
    explicit CScadenzeSt(CWnd *parent = nullptr);
    ~CScadenzeSt() override;

    /// Due dates shown at first, month by month; set before DoModal, day numbers. Both 0 = the next weeks.
    long m_dal = 0, m_al = 0;

    void OnRecordApri() override; ///< the selected instalment
    void OnRecordStampa() override;

  protected:
    bool OnInitDialog() override;
    bool CheckFilter() override;
    void ReadRows(SACommand *cmd, bool progress) override;
    void Export() override; ///< the instalments of all the periods
    bool HasRows() const override;

  private:
    struct Form;

    void BuildFilters();
    void BuildPeriods();
    void BuildGrid();
    DueListFilter Filter() const;
    void ShowPeriods();
    void ReadPeriod(SACommand *cmd);

    std::unique_ptr<Form> form_;
};
