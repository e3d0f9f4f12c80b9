#pragma once

#include "tarvodlg/widgets/TarvoDialog.h"

#include <initializer_list>

class CSpreadSheet;
class QTabWidget;
class QToolBar;

/// The commands of the record toolbar.
enum class RecordCommand { Nuovo, Apri, Salva, Elimina, Annulla, Cerca, Prec, Succ, Stampa };

/// A dialog over one record of a table, with the record toolbar. A derived dialog names the commands it has in its
/// constructor (UseCommands) and overrides their handlers; the toolbar, its keys and its idle updates are here.
///
/// Keys: F3 new, F2 save, F6 delete, Ctrl+R undo, F5 search, PgUp and PgDn previous and next, Ctrl+P print. Enter on
/// the last field leads to the button that saves; saved from there, the dialog goes on at its first field.
class CTarvoRecordDialog : public CTarvoDialog {
  public:
    explicit CTarvoRecordDialog(CWnd *parent = nullptr);
    ~CTarvoRecordDialog() override;

    virtual void OnRecordNuovo() {}
    virtual void OnRecordApri() {}
    virtual void OnRecordSalva() {}
    virtual void OnRecordElimina() {}
    virtual void OnRecordAnnulla() {}
    virtual void OnRecordCerca() {}
    virtual void OnRecordPrec() {}
    virtual void OnRecordSucc() {}
    virtual void OnRecordStampa() {}

    // Asked when idle. By default everything is enabled but what needs a loaded record (Apri, Elimina, Stampa), what
    // needs a change (Annulla).
    virtual void OnUpdateRecordNuovo(CCmdUI *) {}
    virtual void OnUpdateRecordApri(CCmdUI *command);
    virtual void OnUpdateRecordSalva(CCmdUI *) {}
    virtual void OnUpdateRecordElimina(CCmdUI *command);
    virtual void OnUpdateRecordAnnulla(CCmdUI *command);
    virtual void OnUpdateRecordCerca(CCmdUI *) {}
    virtual void OnUpdateRecordPrec(CCmdUI *) {}
    virtual void OnUpdateRecordSucc(CCmdUI *) {}
    virtual void OnUpdateRecordStampa(CCmdUI *command);

    virtual void SetField() { ShowFields(); } ///< record to controls
    virtual void GetField() { ReadFields(); } ///< controls to record
    virtual void Blank() {}                   ///< empty record; the caller shows it with SetField
    virtual void Protect(SACommand *) {}      ///< enables the controls by the state of the record

    /// True when the record on screen is one of the archive, false when it is being made.
    virtual bool IsRecordLoaded() const { return false; }

  protected:
    void UseCommands(std::initializer_list<RecordCommand> commands);
    /// Changes the caption of a command ("F2 - &Salva"); its key follows the caption.
    void SetCommandCaption(RecordCommand command, const QString &caption, const QString &tooltip = {});
    /// A further button in the toolbar, after those of the record ("F7 - &Allegati").
    QAbstractButton *AddToolbarCommand(DialogCommand command);

    virtual void EnterFirstField(); ///< with the focus, as to begin the next record
    /// Asks before what was typed is lost. @return true to go on
    bool ConfirmDiscard();

  private:
    friend class CTarvoRecordBrowseDialog;
    void AddRecordCommand(RecordCommand command);
    std::size_t TakeToolbarCommand(DialogCommand command);
    void ShowCaption(std::size_t index);
    bool RunRecordCommand(RecordCommand command); ///< @return false when the dialog does not have it
    void TreatFieldsAsFilters();
    void LeadToSave();

    struct Toolbar;
    std::unique_ptr<Toolbar> toolbar_;
};

/// A list of records: filter fields above, the grid, the toolbar. Enter and double click open the selected record, Ins
/// or F3 makes a new one. It remembers its size and column widths at this station. The user may sort the list: a record
/// is known by its cells or by RowData, not by the number of its row.
class CTarvoRecordBrowseDialog : public CTarvoRecordDialog {
  public:
    explicit CTarvoRecordBrowseDialog(CWnd *parent = nullptr);
    ~CTarvoRecordBrowseDialog() override;

    /// Fills the list. @param cmd  null = opens its own connection   @param progress  true shows the progress window
    virtual void LoadTable(SACommand *cmd, bool progress) = 0;

    /// True when a row is selected.
    bool IsRecordLoaded() const override;

    bool PreTranslateMessage(QKeyEvent *message) override;

  protected:
    CSpreadSheet *Spread() const; ///< the grid; columns are set by the derived dialog
    QWidget *FilterArea() const;  ///< where a FormBuilder may put filter fields; hidden while empty
    /// Exports what the list shows: CSV or XLSX by the file's extension, asked from the user.
    void OnExport();

  private:
    void RestoreLayout() override;
    void SaveLayout() override;

    struct List;
    std::unique_ptr<List> list_;
};

/// A record dialog whose fields stand on several tabs. Ctrl+PgUp and Ctrl+PgDn, or Alt with the number, change the tab;
/// Enter and Tab on the last field of a tab go on to the next one; a refused field brings its tab to the front.
class CTarvoTabbedRecordDialog : public CTarvoRecordDialog {
  public:
    explicit CTarvoTabbedRecordDialog(CWnd *parent = nullptr);

    bool PreTranslateMessage(QKeyEvent *message) override;

  protected:
    /// A new tab; its content is built on the returned widget with a FormBuilder.
    QWidget *AddTab(const QString &title);
    QTabWidget *Tabs() const { return tabs_; }

    void EnterFirstField() override; ///< the first tab's
    bool focusNextPrevChild(bool next) override;

  private:
    QTabWidget *tabs_;
};
