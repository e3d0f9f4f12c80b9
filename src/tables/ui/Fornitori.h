#pragma once

#include "tables/ui/CounterpartForm.h"

/// The editor of suppliers.
class CFornitori : public CTableEditor<FORNITORI, CTarvoTabbedRecordDialog> {
  public:
    explicit CFornitori(CWnd *parent = nullptr);

    /// @param code  0 = a new supplier   @return the code stored, 0 when nothing was
    static long Edit(CWnd *parent, long code) { return EditCode<CFornitori>(parent, code); }

    /// Opens on a new supplier with these values, as an invoice tells them; the code is proposed. Before DoModal.
    void Propose(const FORNITORI &supplier) { proposal_ = supplier; }

  protected:
    void OnNewRecord() override;
    void OnRecordShown() override { form_.OnRecordShown(); }
    void Protect(SACommand *) override { form_.Protect(); }
    bool BeforeStore() override;

  private:
    std::vector<FieldFault> CheckShown();

    CounterpartForm form_;
    std::optional<FORNITORI> proposal_; ///< for the first new record only
};
