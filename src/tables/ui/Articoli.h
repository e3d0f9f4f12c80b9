#pragma once

#include "tables/ui/TableEditor.h"

/// The editor of articles. Their codes are texts that the company gives; none is proposed.
class CArticoli : public CTableEditor<ARTICOLI> {
  public:
    explicit CArticoli(CWnd *parent = nullptr);

    ARTICOLI m_proposta; ///< the first new record begins with it; set before DoModal

  protected:
    void OnNewRecord() override;
    void OnRecordShown() override;

  private:
    bool OnLostFocusEventEan();

    CTextField *code_, *ean_;
};
