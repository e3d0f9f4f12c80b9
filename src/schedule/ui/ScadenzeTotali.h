#pragma once

#include "schedule/Aging.h"
#include "schedule/ui/ScheduleViewWindow.h"

/// The aging of the open amounts: a row for each customer or supplier with what is not due yet and what is overdue by
/// up to 30, 60, 90, 120 days and more. From a row its statement of account is opened.
class CScadenzeTotali : public ScheduleViewWindow {
  public:
    explicit CScadenzeTotali(CWnd *parent = nullptr);
    ~CScadenzeTotali() override;

    short m_relaz = 0; ///< side, set before DoModal: 0 customers, 1 suppliers

    void OnRecordApri() override; ///< the statement of the selected counterpart
    void OnRecordStampa() override;

  protected:
    bool OnInitDialog() override;
    bool CheckFilter() override;
    void ReadRows(SACommand *cmd, bool progress) override;

  private:
    struct Form;

    AgingFilter Filter() const;

    std::unique_ptr<Form> form_;
};
