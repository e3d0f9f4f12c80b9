#pragma once

#include "tables/ui/CounterpartForm.h"

/// The editor of customers.
class CClientiNew : public CTableEditor<CLIENTI, CTarvoTabbedRecordDialog> {
  public:
    explicit CClientiNew(CWnd *parent = nullptr);

    /// @param code  0 = a new customer   @return the code stored, 0 when nothing was
    static long Edit(CWnd *parent, long code) { return EditCode<CClientiNew>(parent, code); }

  protected:
    void OnRecordShown() override { form_.OnRecordShown(); }
    void Protect(SACommand *) override { form_.Protect(); }
    bool BeforeStore() override;

  private:
    std::vector<FieldFault> CheckShown();

    CounterpartForm form_;
};
