#pragma once

#include "ledger/JournalPrint.h"
#include "tarvodlg/widgets/TarvoDialog.h"

/// Asks which entries the printed journal list shall have, and prints it.
class CStampaPrimaNota : public CTarvoDialog {
  public:
    explicit CStampaPrimaNota(CWnd *parent = nullptr);

  protected:
    bool OnInitDialog() override;
    void OnOK() override; ///< prints; the dialog stays for the next print
    void OnCancel() override;

  private:
    JournalPrintFilter filter_;
    class CAmountField *n_stop_;
    class CDateField *d_stop_;
};
