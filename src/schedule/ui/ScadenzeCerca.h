#pragma once

#include "schedule/ScheduleSearch.h"
#include "tarvodlg/widgets/TarvoDialog.h"

/// The search for an instalment of one side: by number, due date, invoice number, customer or supplier. The field typed
/// last says what is looked for; the list begins at its value.
///
/// Keys: Enter goes from a field to the list and chooses the instalment there; Tab goes on to the next field.
class CScadenzeCerca : public CTarvoDialog {
  public:
    /// @param section  VAT section that the search stays in, 0 = all of them
    CScadenzeCerca(short relaz, CWnd *parent, long section = 0);
    ~CScadenzeCerca() override;

    long m_num = 0; ///< the chosen instalment, after IDOK

    bool PreTranslateMessage(QKeyEvent *message) override;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;

  private:
    struct Form;

    void BuildFields();
    bool OnValue(ScheduleKey key); ///< the user typed a value of that key
    void Search(const ScheduleSearchValue &value);

    std::unique_ptr<Form> form_;
};
