#pragma once

#include "tables/BrowseDescription.h"
#include "tarvodlg/widgets/TarvoDialog.h"

/// The list of a table to choose a record from, one class for all tables: what it shows comes from the table's
/// description. The focus stays in the search field: typing filters, arrows move in the list, Enter chooses.
///
/// Keys: F2 or Enter choose, Esc leaves, F3 makes a new record and comes back with it chosen, F4 edits the selected one
/// (both only where the table has an editor), F5 shows the ceased ones too.
class CLookupBrowser : public CTarvoDialog {
  public:
    /// @param fixed  limits the list: the accounts of one master
    CLookupBrowser(CWnd *parent, const BrowseDescription &description, FixedKeys fixed = {});
    ~CLookupBrowser() override;

    RecordKeys m_keys;          ///< record to stand on, set before DoModal; the chosen one after IDOK
    std::string m_search;       ///< text of the search field at the start
    bool m_tutti = false;       ///< customers and suppliers that ceased are listed too
    bool m_sola_scelta = false; ///< true: no new records, no editing

    bool PreTranslateMessage(QKeyEvent *message) override;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    void RestoreLayout() override;
    void SaveLayout() override;

    /// Takes the chosen record over from m_keys, before the browser closes.
    virtual void OnChosen() {}
    void SetFixedKeys(FixedKeys fixed); ///< before OnInitDialog

  private:
    struct List;

    void BuildForm();
    void AddCommands();
    void LoadRows();
    void Filter(); ///< lists the rows that the search field and the F5 switch leave
    void FillSome();
    void FillThrough(std::size_t shown);
    void Select(std::size_t shown);
    bool MoveSelection(QKeyEvent *message);
    void ShowCount();
    void OnNew();
    void OnEdit();
    const BrowseRow *Selected() const;

    std::unique_ptr<List> list_;
};

/// Opens the editor of a table.
/// @param keys  the record in the order of BrowseDescription::keys; its last key "0" = a new one below the others
/// @param is_single  true: the editor closes after the record was stored. Otherwise it goes on with the next new one
/// @param typed  what the user looked for and did not find, for a new record: digits become its code, words its
/// description
/// @return the keys of the record stored last, nothing when none was
using EditorFunction = std::function<std::optional<RecordKeys>(CWnd *parent, const RecordKeys &keys, bool is_single,
                                                               const std::string &typed)>;

/// Makes an editor known under the name of its table, so that a browser opens it without knowing it. Editors register
/// themselves (see TableEditorRegistration); a second registration replaces the first.
void RegisterEditor(std::string_view table, EditorFunction editor);
bool HasEditor(std::string_view table);
/// Opens it, see EditorFunction. Nothing when the table has none.
std::optional<RecordKeys> OpenEditor(std::string_view table, CWnd *parent, const RecordKeys &keys, bool is_single,
                                     const std::string &typed = {});
