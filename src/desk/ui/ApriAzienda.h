#pragma once

#include "desk/Companies.h"
#include "tarvodlg/widgets/TarvoDialog.h"

class CSpreadSheet;

/// The companies known at this station, to open one of them or to look for another. IDOK when one was opened.
class CApriAzienda : public CTarvoDialog {
  public:
    explicit CApriAzienda(CWnd *parent = nullptr);

  protected:
    bool OnInitDialog() override;
    void OnOK() override; ///< opens the selected company

  private:
    void Fill();
    void OnCartella();
    void OnIndirizzo();
    void OnTogli();
    void Open(const std::string &archive);
    const KnownCompany *Selected() const;

    Companies companies_;
    CSpreadSheet *spread_;
};
