#pragma once

#include "tables/ui/TableEditor.h"

/// The editor of the VAT codes.
class CCodiciIva : public CTableEditor<CODIVA> {
  public:
    explicit CCodiciIva(CWnd *parent = nullptr);

  protected:
    void OnNewRecord() override;
    void OnRecordShown() override;

  private:
    /// What the kind leaves to be filled in: a rate only where there is tax, the nature it stands for.
    void OnTipoChanged();

    CChoiceField *kind_;
    CAmountField *rate_, *non_deductible_;
    CTextField *nature_;
};
