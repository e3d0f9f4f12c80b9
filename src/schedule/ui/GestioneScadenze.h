#pragma once

#include "tarvodlg/widgets/TarvoRecordDialog.h"

class CScadenze;

/// The list of the instalments of customers or suppliers, filtered by due date, section, counterpart, destination,
/// agent and state; from it instalments are opened, made, found, printed and exported.
///
/// The window shows at once and is filled a moment later, by a timer of its own.
class CGestioneScadenze : public CTarvoRecordBrowseDialog {
  public:
    explicit CGestioneScadenze(CWnd *parent);
    ~CGestioneScadenze() override;

    short m_relaz = 0; ///< side, set before DoModal: 0 customers, 1 suppliers
    long m_stato = 0;  ///< state shown at first, set before DoModal, as ScheduleFilter has it

    /// Fills the list from the archive. Errors are shown, and the list then keeps what it showed.
    void LoadTable(SACommand *cmd, bool progress) override;
    /// The row of an instalment, 0 = not listed.
    long RowOf(long number) const;

    void OnRecordApri() override;
    void OnRecordNuovo() override;
    void OnRecordStampa() override;
    void OnRecordTrova();
    void OnAltroLato(); ///< from customers to suppliers and back
    void OnControllaDate();

    void OnUpdateRecordApri(CCmdUI *command) override;
    void OnUpdateRecordStampa(CCmdUI *command) override;

  protected:
    bool OnInitDialog() override;
    void OnCancel() override;
    void SetField() override;

  private:
    struct List;

    void BuildFilters();
    void BuildSums();
    void AddCommands();

    bool TakeFilter();
    bool OnCounterpart();
    void ShowSide();
    void ShowRestrictions();
    void ShowSums();
    long Selected() const; ///< number of the selected instalment, 0 = none
    void Select(long number, long row_otherwise = 1);
    void Follow(const CScadenze &editor);

    std::unique_ptr<List> list_;
};
