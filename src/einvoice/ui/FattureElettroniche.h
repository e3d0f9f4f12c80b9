#pragma once

#include "einvoice/InvoiceInbox.h"
#include "tarvodlg/widgets/TarvoRecordDialog.h"

/// The desk of received electronic invoices: the documents of a period, the chosen one in five pages; from here files
/// are loaded, fetched, registered, loaded into the warehouse, exported and deleted.
///
/// Commands work on the row with the cursor, and with it on one document of a file that may hold several. Rows are
/// marked with Space or a click on their mark, all of them with Ctrl+A, for what is done with many at once.
class CFattureElettroniche : public CTarvoRecordBrowseDialog {
  public:
    explicit CFattureElettroniche(CWnd *parent);
    ~CFattureElettroniche() override;

    /// Set before DoModal: the list opens on these days of acquisition without asking. 0 = asks.
    long m_first = 0, m_last = 0;
    bool m_only_open = false; ///< opens on what is not registered yet
    long m_select = 0;        ///< file to stand on, 0 = the first

    /// Lists the period from what is kept of each file. No transaction may be open.
    void LoadTable(SACommand *cmd, bool progress) override;

    void OnRecordAggiungi();
    void OnSincronizza();
    void OnContabilizza();
    void OnCaricoMerci();
    void OnRecordElimina() override;
    void OnEsportaFileXml();
    void OnEsportaP7m();
    void OnEsportaPfd();
    void OnEliminaPfd();
    void OnEsporta(); ///< the menu of exports
    void OnFiltra();
    void OnTrova();
    void OnRegistraTutte();
    void OnLeggi();     ///< the readable invoice
    void OnMovimento(); ///< the entry that registers the document

    bool PreTranslateMessage(QKeyEvent *message) override;
    void OnKickIdle() override;
    QSize sizeHint() const override; ///< all columns, and as many rows as a screen has

  protected:
    bool OnInitDialog() override;
    void OnCancel() override;
    void done(int result) override;

  private:
    struct Row;
    struct Opened;
    struct List;

    void BuildFilters();
    void BuildGrid();
    void BuildPages();
    void AddCommands();
    void AddFootCommands();
    void AddExportMenu(QAbstractButton *button);

    bool AskPeriod();
    bool TakeFilter();
    bool HasFilters() const;
    void ShowTitle();
    void CountRows(); ///< how many are open and marked, for ShowState
    void ShowState(); ///< in the status line: how many, or what is wrong with the chosen one
    void ShowRow(long grid_row);
    void Mark(long grid_row, bool marked);
    void MarkAll();
    bool OnKeyPressSpread(long grid_row, QKeyEvent *key);

    Row *Active() const;                          ///< null when there is none
    void Select(long code, std::size_t document); ///< or the first row
    void RowChosen();                             ///< the pages follow a moment later
    void ShowChosen();                            ///< they follow now
    void ShowNothing();
    std::unique_ptr<Opened> Open(long code);            ///< reads a file for the pages
    void RefreshRow();                                  ///< status of the active row
    void PutWithSupplier(const InvoiceRow &registered); ///< other rows of its seller, who was unknown
    void GoToNextOpen();
    bool IsIdentifier(long row, const QString &text) const;
    void RemoveFile(long code);
    bool RemoveWhatIsGone(long code); ///< @return true when another station has deleted the file
    QString ShowFiled(const std::vector<long> &codes);
    std::string DeletionQuestion(const InvoiceRow &invoice) const;

    std::vector<long> SelectedFiles() const; ///< of the marked rows, or of the active one
    std::vector<long> ListedFiles() const;
    void ExportMany(bool only_selected, bool keep_signed);

    std::unique_ptr<List> list_;
};
