#pragma once

#include "tables/TableStorage.h"
#include "tables/ui/AccountField.h"
#include "tarvodlg/widgets/TarvoRecordDialog.h"

/// The company and its settings: who it is, its fiscal year, the accounts and causali that the program uses by itself.
/// Both records are stored together.
class CAzienda : public CTarvoTabbedRecordDialog {
  public:
    explicit CAzienda(CWnd *parent = nullptr);

    bool m_saved = false; ///< something was stored; the current company is already the new one

    void OnRecordSalva() override;
    void OnRecordAnnulla() override;
    bool IsRecordLoaded() const override { return true; }
    /// Names of a person for persons only; a master with entries is not changed any more.
    void Protect(SACommand *cmd) override;

  protected:
    bool OnInitDialog() override;

  private:
    void BuildCompany();
    void BuildAccounts();
    void BuildAutomatic();
    template <class FieldType>
    FieldType *Field(const char *column, FieldType *field);
    void Account(FormBuilder &form, const char *column, const QString &label, long &mas, long &con, long &sot);
    bool OnLostFocusEventPiva();
    bool OnLostFocusEventCodFis();
    void OnLogo();
    void OnCartella();
    void ProtectNames();
    void Load();
    bool Store();
    TableOutcome Write(SACommand *cmd);
    void FocusColumn(const std::string &column);

    DITTE company_, loaded_company_;
    FLAG settings_, loaded_settings_;
    std::map<std::string, CTarvoField *> fields_;
    CTextField *vat_number_, *fiscal_code_, *nation_, *surname_, *first_name_, *folder_;
    CChoiceField *person_;
    QLabel *logo_;
};
