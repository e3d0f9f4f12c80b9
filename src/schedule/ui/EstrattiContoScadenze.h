#pragma once

#include "schedule/AccountStatement.h"
#include "schedule/ui/ScheduleViewWindow.h"

/// The statement of account of a customer or supplier, or of a range of them: their instalments with what is open,
/// overdue and paid. Printed as letters, one for each.
class CEstrattiContoScadenze : public ScheduleViewWindow {
  public:
    explicit CEstrattiContoScadenze(CWnd *parent = nullptr);
    ~CEstrattiContoScadenze() override;

    // Set before DoModal.
    short m_relaz = 0; ///< side: 0 customers, 1 suppliers
    long m_codice = 0; ///< the counterpart; 0 = all of them
    long m_al = 0;     ///< reference day; 0 = today

    void OnRecordApri() override; ///< the selected instalment
    void OnRecordStampa() override;

  protected:
    bool OnInitDialog() override;
    bool CheckFilter() override;
    void ReadRows(SACommand *cmd, bool progress) override;

  private:
    struct Form;

    void BuildFilters();
    void BuildGrid();
    StatementFilter Filter() const;

    std::unique_ptr<Form> form_;
};
