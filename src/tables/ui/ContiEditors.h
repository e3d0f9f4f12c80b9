#pragma once

#include "tables/ui/TableEditor.h"

// The editors of the three levels of the chart of accounts.

class CMastri : public CTableEditor<MASTRI> {
  public:
    explicit CMastri(CWnd *parent = nullptr);
};

class CConti : public CTableEditor<CONTI> {
  public:
    explicit CConti(CWnd *parent = nullptr);
};

class CSottoconti : public CTableEditor<SOTTOCON> {
  public:
    explicit CSottoconti(CWnd *parent = nullptr);

  protected:
    void OnNewRecord() override;

  private:
    bool OnLostFocusEventDesc();

    CTextField *description_, *list_description_;
};
