#pragma once

#include "tarvodlg/widgets/TarvoRecordDialog.h"
#include "tarvolumera/Schedule.h"

/// What the editor opens of modules that stand above the schedule, which set it when they are there. A command whose
/// hook is empty is shown, but disabled.
struct InstalmentHooks {
    /// F7: registers the payment (side 1) or the collection (side 0) of an open instalment. Set by the module of
    /// payments. @return true when something was registered; the editor then shows the instalment as it is stored now
    std::function<bool(CWnd *parent, const SCADENZE &instalment)> pay;
    /// Opens a journal entry; the editor then shows the instalment as it is stored now.
    std::function<void(long entry)> open_entry;
};
InstalmentHooks &ScheduleHooks();

/// The editor of one instalment: entered by hand, changed, split, deleted, browsed, printed as a postal slip. What may
/// be changed and how it is stored is in schedule/InstalmentEditing.
class CScadenze : public CTarvoRecordDialog {
  public:
    explicit CScadenze(CWnd *parent);
    ~CScadenze() override;

    short m_relaz = 0;    ///< side, set before DoModal: 0 customers, 1 suppliers
    long m_num = 0;       ///< instalment to open, set before DoModal; 0 = a new one. After it the one stored last
    long m_sez = 0;       ///< browsing stays in this section, set before DoModal; 0 = all of them
    bool m_saved = false; ///< something was stored, split, paid or deleted
    SCADENZE m_scadenza;  ///< as it is typed; fields are taken over when they are left

    void SetField() override;
    void GetField() override;
    void Blank() override;
    void Protect(SACommand *cmd) override;
    bool IsRecordLoaded() const override;

    void OnRecordNuovo() override;
    void OnRecordApri() override;
    void OnRecordSalva() override;
    void OnRecordElimina() override;
    void OnRecordAnnulla() override;
    void OnRecordCerca() override; ///< lists instalments to choose another one from, within m_sez
    void OnRecordPrec() override { GoTo(false); }
    void OnRecordSucc() override { GoTo(true); }
    void OnUpdateRecordApri(CCmdUI *command) override;
    void OnUpdateRecordAnnulla(CCmdUI *command) override;

    bool OnLostFocusEventNumero();
    bool OnLostFocusEventCodClifor();
    bool OnLostFocusEventCodPag();
    void OnPaga();
    void OnBollettino();
    void OnDividi();

  protected:
    bool OnInitDialog() override;
    void EnterFirstField() override;
    void setVisible(bool visible) override;
    bool focusNextPrevChild(bool next) override;

  private:
    struct Form;

    void Build();
    void BuildForm();
    void BuildFacts();
    void AddCommands();
    void ShowFacts();
    void ShowRecord(const SCADENZE &record, bool is_new); ///< as it was read or blanked: nothing is changed
    void ShowTyped();                                     ///< what a handler completed; the record stays changed
    bool Reload();
    void GoTo(bool forward);
    void ShowAfterDelete(long number);
    bool IsOpenAndUnchanged() const;

    std::unique_ptr<Form> form_;
};

/// Opens one instalment in its editor. Nothing happens when there is none of that number.
/// @param side  0 customers, 1 suppliers
void EditScadenza(short side, long number);
