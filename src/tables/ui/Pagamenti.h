#pragma once

#include "tables/ui/TableEditor.h"

/// The editor of the payment terms. What they lead to is shown at once: dates and amounts of an invoice of today.
class CPagamenti : public CTableEditor<PAGAMENTI> {
  public:
    explicit CPagamenti(CWnd *parent = nullptr);

    void OnKickIdle() override; ///< the example follows what is being typed

  protected:
    void OnNewRecord() override;
    void OnRecordShown() override;

  private:
    bool OnLostFocusEventTipoPag();
    void ShowExample();

    CChoiceField *payment_type_;
    CTextField *short_text_;
    QLabel *example_;
};
