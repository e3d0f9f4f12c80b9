#pragma once

#include "desk/NewCompany.h"
#include "tarvodlg/widgets/TarvoDialog.h"

class CAmountField;
class CChoiceField;
class CTextField;

/// Asks for a new company: who it is, its fiscal year, where its archive goes. IDOK when it was created; then it is
/// open.
class CNuovaAzienda : public CTarvoDialog {
  public:
    explicit CNuovaAzienda(CWnd *parent = nullptr);

  protected:
    bool OnInitDialog() override;
    void OnOK() override;

  private:
    bool OnLostFocusEventCap(const std::string &postcode);
    bool OnLostFocusEventProv(const std::string &province);
    bool OnLostFocusEventPiva();
    bool OnLostFocusEventCodFis();
    void OnDove();
    void OnSfoglia();
    DITTE Company() const;
    /// The first field that keeps the company from being created, with the reason in the status; null when none does.
    CTarvoField *FindFault();
    void Create();

    Text<80> name_;
    Text<28> vat_number_;
    Text<16> fiscal_code_;
    Text<70> address_;
    Text<5> postcode_;
    Text<60> town_;
    Text<2> province_;
    long year_ = 0;
    long where_ = 0; ///< 0 folder, 1 PostgreSQL
    Text<500> folder_, server_;

    CTextField *name_field_, *vat_field_, *fiscal_field_, *folder_field_, *server_field_;
    CAmountField *year_field_;
    CChoiceField *where_field_;
};
