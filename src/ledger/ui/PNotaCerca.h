#pragma once

#include "tarvodlg/widgets/TarvoDialog.h"
#include "tarvolumera/PSQLpno.h"

class FormBuilder;

/// The search for an entry by one of six keys. The list begins at the first entry whose key is at or after the value;
/// what follows is read while the user looks. The key chosen becomes the order in which the journal is browsed.
///
/// Keys: 1 to 6 or the arrows choose the key (with Alt from anywhere), Enter goes on to the value, from there to the
/// list, and chooses the entry.
class CPNotaCerca : public CTarvoDialog {
  public:
    /// @param entry  the caller's record: its fields are proposed as values; gets the chosen entry after IDOK
    CPNotaCerca(PNOTA *entry, CWnd *parent);
    ~CPNotaCerca() override;

    bool PreTranslateMessage(QKeyEvent *message) override;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;

  private:
    struct Form;

    void BuildKeys();
    void BuildValues();
    void BuildList();
    void AddDate(FormBuilder &form, const QString &label, long &member);

    void ChooseKey(int key); ///< shows its value fields and searches
    void EnterValue();
    bool OnValue(); ///< searches from the value as it stands
    void Propose();
    void Search();
    void LoadMore();
    void LoadMoreSoon();

    PNOTA *entry_;
    std::unique_ptr<Form> form_;
};
