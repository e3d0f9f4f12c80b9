#pragma once

#include "ledger/EntryValidation.h"
#include "tarvodlg/widgets/TarvoRecordDialog.h"
#include "tarvolumera/PSQLpno.h"

class CGestionePrimaNota;
class CSpreadSheet;

/// The journal entry editor: one entry ("movimento di Prima Nota") with its header, seven VAT lines and one hundred
/// rows is entered, changed, browsed and deleted. What it computes and checks is in ledger/EntryEditing, VatLines,
/// EntryValidation and EntryStorage; here are controls, focus and keys.
///
/// The record m_pnota is always up to date: fields and cells are taken over when they are left. Lines and rows are
/// counted from 1 in the grids and in the names below.
class CPNota : public CTarvoRecordDialog {
  public:
    /// @param list  the journal list that opened the editor and whose row follows a save; null = none
    CPNota(CGestionePrimaNota *list, CWnd *parent);
    ~CPNota() override;

    PNOTA m_pnota;        ///< the entry; set before DoModal together with m_open
    bool m_open = false;  ///< true: opens on m_pnota, an entry of the archive. False: on a blank new one
    bool m_saved = false; ///< something was stored
    long m_row = 0;       ///< row of the list that shows the entry, from 1; 0 = none
    /// True: opens for m_pnota alone, which its opener prepared to be stored as a new entry or, with m_open, loaded. No
    /// other entry is reached from here, and the editor closes as soon as it is stored: what follows a new entry, its
    /// instalments and files, is then the opener's business.
    bool m_single = false;
    std::string m_note; ///< shown above the entry as long as it is open; empty = nothing

    /// Something to read while an entry is typed, shown left of it. It never gets the focus: the keys are the editor's.
    /// Where the screen has no room for both it waits hidden, and the editor scrolls with the focus when it is shown.
    struct Beside {
        QWidget *widget = nullptr;        ///< the editor's from then on
        QString caption;                  ///< of the key that hides and shows it: "Fattura"
        QString name;                     ///< "la fattura"
        std::function<void(int)> scroll;  ///< by half the widget's height, negative = back
        std::function<void(double)> zoom; ///< by a factor; 1 = as wide as the widget again
    };
    void ShowBeside(Beside beside); ///< before DoModal

    void SetField() override;
    void GetField() override;
    void Blank() override;
    void Protect(SACommand *cmd) override;
    void ProtectIva();
    bool IsRecordLoaded() const override;

    // A VAT line or a row completed from its code. False: there is no such code, and the user stays in the cell.
    bool SincCodIva(SACommand *cmd, int line);
    bool SincMas(int row);
    bool SincCon(int row);
    bool SincSot(int row);
    bool SincCod(int row);
    void CalcIva(SACommand *cmd, int line);
    /// The checks before storing, without storing. @return 1 when one of them refuses, with the focus on its field
    int Cheek(SACommand *cmd);
    /// Asks for a period and checks the dates of all entries.
    void CheckDate();

    void BrowseIva(int line);
    void BrowseMastri(int row);
    void BrowseConti(int row);
    void BrowseSottocon(int row);
    void BrowseCod(int row);

    void OnRecordNuovo() override;
    void OnRecordApri() override { OpenEditor(); }
    void OnRecordSalva() override;
    void OnRecordElimina() override;
    void OnRecordAnnulla() override;
    void OnRecordCerca() override;
    void OnRecordPrec() override;
    void OnRecordSucc() override;
    void OnUpdateRecordNuovo(CCmdUI *command) override { command->Enable(!m_single); }
    void OnUpdateRecordApri(CCmdUI *command) override;
    void OnUpdateRecordCerca(CCmdUI *command) override { command->Enable(!m_single); }
    void OnUpdateRecordPrec(CCmdUI *command) override { command->Enable(!m_single); }
    void OnUpdateRecordSucc(CCmdUI *command) override { command->Enable(!m_single); }

    bool OnLostFocusEventCodCau();
    bool OnLostFocusEventNumero();
    bool OnLostFocusEventDesCau();
    bool OnLostFocusEventSezione();
    bool OnLostFocusEventNumDoc();
    bool OnLostFocusEventCodClifor();
    bool OnLostFocusEventCodPag();
    bool OnLostFocusEventTotDoc();
    bool OnLostFocusEventData();
    bool OnLostFocusEventDataDoc();
    bool OnLostFocusEventProt();
    void OnDblClickCodClifor();
    void OnDblClickCodPag();
    void OnDblClickCodCau();
    void OnDblClickSezione();

    bool OnLeaveCellGridiva(long line, long column);
    void OnChangeGridiva(long line, long column);
    void OnDblClickGridiva(long line, long column);
    void OnAdvanceGridiva(bool forward);
    bool OnKeyPressGridiva(long line, long column, QKeyEvent *key);
    bool OnLeaveCellSpread(long row, long column);
    void OnChangeSpread(long row, long column);
    void OnDblClickSpread(long row, long column);
    void OnClickSpread(long row, long column);
    bool OnKeyPressSpread(long row, long column, QKeyEvent *key);
    void OnAdvanceSpread(bool forward);

    void OnIntegrazioni();
    void OnCointestatari();
    void OnSpesometro();
    void OnImmagini();
    void OnAllegati();
    void OnClickStore();
    void OnCentriCosto();
    void OnCopia(); ///< the stored entry on screen becomes the beginning of a new one
    /// Opens the table record of the code with the focus: causale, counterpart, section, terms, VAT code, account.
    void OpenEditor();

    void OnKickIdle() override;

  protected:
    bool OnInitDialog() override;
    void EnterFirstField() override;
    bool focusNextPrevChild(bool next) override;

  private:
    struct Form;

    void BuildHeader();
    void BuildDetails();
    void BuildTotals();
    void BuildGrids();
    void AddCommands();
    void AddBesideCommands();
    void ShowBesideWidget(bool shown);
    int RoomForBoth() const;
    int BesideWidth() const;
    void ShowNote();
    void KeepFocusInView();
    void RestoreLayout() override;
    void SaveLayout() override;

    void ShowVatLines();
    void ShowRows();
    void ShowTotals();
    void ShowEntry(bool is_new); ///< as it was loaded or blanked: nothing is changed
    void ShowPrepared();         ///< the opener's new entry: to be stored, so leaving it asks
    void FocusMissing();         ///< on the first thing that it lacks, else on its document number
    void TakeAccount(int row, long mas, long con, long sot);
    bool KeepWorkingDate();
    void CountFiles();
    void Mark(long PNOTA::*mark);
    /// Runs work over the entry and shows what it throws, with the tag of the place; the entry then has the values it
    /// had. @return false when it threw
    bool Attempt(const char *tag, const std::function<void()> &work);
    /// The event of a field, to be attempted when the field is left.
    std::function<bool()> Event(std::string tag, bool (CPNota::*handler)());
    void ProposeTaxable(SACommand *cmd, int line, long code);
    void ClearRow(int row);
    bool LeaveVatCell(long line, long column);
    bool LeaveRowCell(long row, long column);
    int ActiveRow() const;
    void FocusFault(const EntryFault &fault);

    void AfterNewStored(const std::string &instalments);
    void ShowInList(bool is_new);
    void Store();
    void Delete();
    void Reread();
    void Find();
    void GoTo(bool forward);
    void ShowAfterDelete();

    std::unique_ptr<Form> form_;
};
