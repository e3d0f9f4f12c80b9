#pragma once

#include "tables/ui/TableEditor.h"

class CSpreadSheet;

/// The editor of the causali with their template rows.
class CCausali : public CTableEditor<CAUCONT> {
  public:
    explicit CCausali(CWnd *parent = nullptr);

    void SetField() override;
    void GetField() override;

  protected:
    void OnNewRecord() override;
    bool HasEdits() override;
    void FocusColumn(const std::string &column, int row) override;

  private:
    void BuildRows(FormBuilder &form);
    bool OnLeaveCellSpread(long row, long column);
    bool OnKeyPressSpread(long row, QKeyEvent *key);
    void OnDblClickSpread(long row, long column);
    AccountKey AccountAt(long row) const;
    void ShowRow(long row, const CAUCONT_RIGA &line);
    CAUCONT_RIGA ReadRow(long row) const;
    void ShowDescription(long row);
    void ClearRow(long row);

    CSpreadSheet *rows_;
    std::array<CAUCONT_RIGA, 20> shown_rows_{};
};
