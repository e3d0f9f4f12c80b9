#pragma once

#include "tables/ui/TableEditor.h"

// The editors of the three levels of the chart of accounts.

class CMastri : public CTableEditor<MASTRI> {
  public:
    explicit CMastri(CWnd *parent = nullptr);

  protected:
    /// The company's masters of customers and suppliers are what they are.
    void Protect(SACommand *) override;

  private:
    CFlagField *of_customers_, *of_suppliers_;
};

class CConti : public CTableEditor<CONTI> {
  public:
    explicit CConti(CWnd *parent = nullptr);

  protected:
    /// An account with entries stays the counterparts' or not.
    void Protect(SACommand *cmd) override;

  private:
    CFlagField *of_customers_, *of_suppliers_;
};

class CSottoconti : public CTableEditor<SOTTOCON> {
  public:
    explicit CSottoconti(CWnd *parent = nullptr);

  protected:
    void OnNewRecord() override;
    bool BeforeStore() override;

  private:
    bool OnLostFocusEventDesc();

    CTextField *description_, *list_description_;
};
