#pragma once

#include "einvoice/InvoiceBatch.h"
#include "tarvodlg/widgets/TarvoRecordDialog.h"

/// Registers many invoices at once: shows what would be stored and what stays for the editor and why, lets the user
/// take lines out, stores the rest in one run.
///
/// Keys: Space takes a line out or in, Ctrl+A all or none, F2 registers, F4 or Enter opens a line in the editor, F5
/// looks at all of them again, Ctrl+E exports. Esc breaks off what is running, between two documents; else it closes.
class CRegistraFatture : public CTarvoRecordBrowseDialog {
  public:
    explicit CRegistraFatture(CWnd *parent);
    ~CRegistraFatture() override;

    std::vector<BatchTarget> m_targets; ///< set before DoModal; empty = all that are not registered yet
    long m_registered = 0;              ///< how many were stored

    /// Looks at the invoices anew. Errors are shown, and the list then keeps what it showed.
    void LoadTable(SACommand *cmd, bool progress) override;
    void OnRegistra();
    void OnRecordApri() override; ///< the active line in the editor
    void OnTutte();               ///< takes all that are ready, or none when all are taken
    void OnInterrompi();

    QSize sizeHint() const override; ///< all columns, and as many rows as a screen has

    bool PreTranslateMessage(QKeyEvent *message) override;
    void OnUpdateRecordApri(CCmdUI *command) override;

  protected:
    bool OnInitDialog() override;
    void OnCancel() override;

  private:
    struct List;

    void BuildGrid();
    void BuildFoot();
    void AddCommands();

    /// Runs work that lets events through; the window takes no other command meanwhile.
    /// @param what  shown with the count: "Controllo fatture"
    void Run(const char *what, const std::function<void()> &work);
    bool Step(long done, long of); ///< @return false when the user wants to break off

    BatchLine *Active();
    void Toggle(long row);
    void ShowPlan();
    void ShowLine(long row);
    void ShowDetail();
    void ShowSums();
    void ShowState();
    void TakeOutcome(const BatchOutcome &outcome, long place);

    std::unique_ptr<List> list_;
};
