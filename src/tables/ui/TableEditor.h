#pragma once

#include "tables/TableStorage.h"
#include "tables/ui/LookupBrowser.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/TarvoRecordDialog.h"

#include <map>

/// What an editor knows of its table without knowing its record type: keys and description by the names of the columns,
/// the field of each column, the texts of title and status.
class TableEditorSupport {
  public:
    /// @param table  name of the table's description
    explicit TableEditorSupport(const char *table);

    const BrowseDescription &Description() const { return description_; }

    RecordKeys KeysOf(const void *record) const;
    void SetKeys(void *record, const RecordKeys &keys) const; ///< "0" empties a code that is a text
    long CodeOf(const void *record) const;                    ///< the last key; 0 when it is a text
    std::string DescriptionOf(const void *record) const;
    void SetDescription(void *record, std::string_view description) const; ///< cut to its length
    /// True when the columns of the two records that are no keys hold the same values.
    bool HaveSameValues(const void *one, const void *other) const;

    void SetField(const std::string &column, CTarvoField *field) { fields_[column] = field; }
    CTarvoField *FieldOfColumn(const std::string &column) const; ///< null when there is none

    QString Title(const void *record, bool is_loaded) const; ///< "Clienti", "Modifica Clienti - 12 ROSSI SRL"
    QString Name(const void *record) const;                  ///< "12 ROSSI SRL"

  private:
    const BrowseDescription &description_;
    std::map<std::string, CTarvoField *> fields_;
};

/// The editor of a table that the company maintains. A derived class builds the form over m_record and names its
/// fields:
///
///     CSezioni::CSezioni(CWnd *parent) : CTableEditor("sezioni", parent)
///     {
///         FormBuilder form(this);
///         KeyField("sez_codice", form.Code("&Codice", m_record.sez_codice));
///         Field("sez_desc", form.Text("&Descrizione", m_record.sez_desc));
///     }
///
/// The rest is here: a blank start with the next code proposed; the code of an existing record loads it; what is stored
/// and deleted passes the checks of the core, which ask the questions, and a refused field gets the focus; after a new
/// record was stored the form is blank for the next one.
///
/// @tparam Record  one of the records of TableStorage.h
/// @tparam Base  CTarvoRecordDialog or CTarvoTabbedRecordDialog
template <class Record, class Base = CTarvoRecordDialog>
class CTableEditor : public Base {
  public:
    CTableEditor(const char *table, CWnd *parent) : Base(parent), support_(table)
    {
        using enum RecordCommand;
        this->UseCommands({Nuovo, Salva, Elimina, Annulla, Cerca, Prec, Succ});
    }

    long m_codice = 0;     ///< record to open, set before DoModal, 0 = a new one; after it the one stored last
    RecordKeys m_keys;     ///< the same for tables with several keys; wins over m_codice when it is not empty
    std::string m_typed;   ///< what the user looked for before a new record was asked for, see EditorFunction
    bool m_saved = false;  ///< a record was stored
    bool m_single = false; ///< the editor closes after a record was stored or deleted

    void OnRecordNuovo() override;
    void OnRecordSalva() override;
    void OnRecordElimina() override;
    void OnRecordAnnulla() override;
    void OnRecordCerca() override;
    void OnRecordPrec() override { GoTo(false); }
    void OnRecordSucc() override { GoTo(true); }

    void SetField() override;
    /// Empty record with the next code. Keys before the last one stay, so that the next account is one of the same
    /// master.
    void Blank() override;
    bool IsRecordLoaded() const override { return loaded_.has_value(); }

  protected:
    bool OnInitDialog() override;

    // What derived editors add.
    virtual void OnNewRecord() {}   ///< preset values of a new record, in m_record, before it is shown
    virtual void OnRecordShown() {} ///< after the record went to the controls, before Protect: labels
    virtual bool BeforeStore()
    {
        return true;
    } ///< completes m_record; false: it is not stored, the editor has said why
    virtual void AfterStore() {}
    /// True when the user changed the record that is shown, but for its keys. With more in the form than the columns of
    /// the table (template rows), derived editors look at that too.
    virtual bool HasEdits();

    /// Names the field of a column, for the focus after a refusal.
    template <class FieldType>
    FieldType *Field(const std::string &column, FieldType *field)
    {
        support_.SetField(column, field);
        return field;
    }
    /// Field for (a part of) the key: entering that of an existing record loads the record, F4 browses the table.
    template <class FieldType>
    FieldType *KeyField(const std::string &column, FieldType *field)
    {
        this->OnLostFocusEvent(field, [this] { return OnKeyEntered(); });
        field->on_dbl_click = [this] { OnRecordCerca(); };
        return Field(column, field);
    }

    /// Loads a record and shows it, without asking about the present one. @return false when there is none
    bool Open(const RecordKeys &keys);
    /// Starts a new record with these keys, as Blank does with the proposed ones, and shows it.
    /// @param description  it begins with; empty = none
    void StartNew(const RecordKeys &keys, std::string_view description = {});
    const Record *Loaded() const { return loaded_ ? &*loaded_ : nullptr; } ///< as it was read; null for a new one
    const TableEditorSupport &Support() const { return support_; }
    /// Puts the focus on the field of a column, or beside a template row (overridden by who has rows).
    virtual void FocusColumn(const std::string &column, int row);

    Record m_record{};

  private:
    bool OnKeyEntered();
    void StartTyped();
    bool Read(Record *record);
    void Show(const Record &record, bool is_loaded);
    void GoTo(bool forward);
    void AfterStored(bool was_new);
    long CodeOf(const Record &record) const;

    TableEditorSupport support_;
    std::optional<Record> loaded_;
    Record shown_{};    ///< what the form showed before the user typed
    long proposed_ = 0; ///< code proposed for the new record; 0 = the user's own
};

/// A text that can only be meant as a code: a few digits. More of them may be part of a VAT number or a telephone.
bool IsTypedCode(std::string_view typed);
bool IsTypedDescription(std::string_view typed); ///< has letters

/// Runs an editor as RegisterEditor wants it.
template <class Editor>
std::optional<RecordKeys> EditWith(CWnd *parent, const RecordKeys &keys, bool is_single, const std::string &typed = {})
{
    Editor editor(parent);
    editor.m_keys = keys;
    editor.m_typed = typed;
    editor.m_single = is_single;
    editor.DoModal();
    if (!editor.m_saved) return std::nullopt;
    return editor.m_keys;
}

/// Opens one record of a table with one key, 0 = a new one. @return the code stored, 0 when nothing was
template <class Editor>
long EditCode(CWnd *parent, long code)
{
    const auto stored = EditWith<Editor>(parent, {std::to_string(code)}, true);
    return stored ? std::stol(stored->back()) : 0;
}

/// Makes an editor known to the browsers; one object per editor, beside its class.
template <class Editor>
struct TableEditorRegistration {
    explicit TableEditorRegistration(const char *table) { RegisterEditor(table, EditWith<Editor>); }
};

// ------------------------------------------------------------------------------------------------------------------

template <class Record, class Base>
bool CTableEditor<Record, Base>::OnInitDialog()
{
    if (m_keys.empty() && m_codice != 0) m_keys = {std::to_string(m_codice)};
    bool is_ready = true;
    const bool is_read = this->Guarded(LUMERA_TAG, [&] {
        if (m_keys.empty()) {
            Blank();
            SetField();
        } else if (m_keys.back() == "0") {
            StartTyped();
        } else {
            is_ready = Open(m_keys);
            if (!is_ready) AfxMessageBox("Il codice " + m_keys.back() + " non esiste più in archivio.", MB_ICONERROR);
        }
    });
    return is_read && is_ready;
}

template <class Record, class Base>
void CTableEditor<Record, Base>::OnRecordNuovo()
{
    if (!this->ConfirmDiscard()) return;
    this->Guarded(LUMERA_TAG, [&] {
        Blank();
        SetField();
        FocusColumn(support_.Description().keys.back(), 0);
    });
}

template <class Record, class Base>
void CTableEditor<Record, Base>::OnRecordSalva()
{
    this->GetField();
    if (!BeforeStore()) return;
    this->Guarded(LUMERA_TAG, [&] {
        const bool is_new = !IsRecordLoaded();
        StoreOptions<Record> options;
        options.proposed_code = is_new && proposed_ != 0 && CodeOf(m_record) == proposed_;
        options.loaded = Loaded();
        CommandScope scope(nullptr);
        const TableOutcome outcome = StoreRecord(scope.get(), &m_record, is_new, options);
        if (outcome.done)
            AfterStored(is_new);
        else if (!outcome.column.empty())
            FocusColumn(outcome.column, outcome.row);
    });
}

template <class Record, class Base>
void CTableEditor<Record, Base>::AfterStored(bool was_new)
{
    m_keys = support_.KeysOf(&m_record);
    m_codice = CodeOf(m_record);
    m_saved = true;
    AfterStore();
    if (m_single) return this->EndDialog(IDOK);
    const QString name = support_.Name(&m_record);
    if (was_new) {
        Blank();
        SetField();
        FocusColumn(support_.Description().keys.back(), 0);
    } else {
        Open(m_keys);
    }
    this->SetStatus("Registrato: " + name);
}

template <class Record, class Base>
void CTableEditor<Record, Base>::OnRecordElimina()
{
    if (!loaded_) return;
    this->Guarded(LUMERA_TAG, [&] {
        CommandScope scope(nullptr);
        const QString name = support_.Name(&*loaded_);
        if (!DeleteRecord(scope.get(), support_.Description(), support_.KeysOf(&*loaded_)).done) return;
        if (m_single) return this->EndDialog(IDOK);
        Blank();
        SetField();
        this->SetStatus("Eliminato: " + name);
    });
}

template <class Record, class Base>
void CTableEditor<Record, Base>::OnRecordAnnulla()
{
    if (!this->ConfirmDiscard()) return;
    this->Guarded(LUMERA_TAG, [&] {
        if (loaded_ && Open(support_.KeysOf(&*loaded_))) return;
        Blank();
        SetField();
    });
}

template <class Record, class Base>
void CTableEditor<Record, Base>::OnRecordCerca()
{
    if (!this->ConfirmDiscard()) return;
    this->Guarded(LUMERA_TAG, [&] {
        CLookupBrowser browser(this, support_.Description());
        browser.m_sola_scelta = true;
        if (loaded_) browser.m_keys = support_.KeysOf(&*loaded_);
        if (browser.DoModal() == IDOK) Open(browser.m_keys);
    });
}

template <class Record, class Base>
void CTableEditor<Record, Base>::GoTo(bool forward)
{
    if (!this->ConfirmDiscard()) return;
    this->Guarded(LUMERA_TAG, [&] {
        CommandScope scope(nullptr);
        RecordKeys neighbour;
        const RecordKeys from = loaded_ ? support_.KeysOf(&*loaded_) : RecordKeys{};
        if (NeighbourRecord(scope.get(), support_.Description(), from, forward, &neighbour) && Open(neighbour)) return;
        BeepRefused();
        this->SetStatus(forward ? "Non c'è un record successivo" : "Non c'è un record precedente");
    });
}

template <class Record, class Base>
void CTableEditor<Record, Base>::SetField()
{
    Base::SetField();
    shown_ = m_record;
    this->setWindowTitle(support_.Title(&m_record, IsRecordLoaded()));
    this->SetStatus({});
    OnRecordShown();
    this->SetChanged(false);
    CommandScope scope(nullptr);
    this->Protect(scope.get());
}

template <class Record, class Base>
void CTableEditor<Record, Base>::Blank()
{
    RecordKeys keys = support_.KeysOf(&m_record);
    keys.back() = "0";
    m_record = Record{};
    support_.SetKeys(&m_record, keys);
    OnNewRecord();
    CommandScope scope(nullptr);
    proposed_ = ProposeCode(scope.get(), m_record);
    keys = support_.KeysOf(&m_record);
    keys.back() = std::to_string(proposed_);
    support_.SetKeys(&m_record, keys);
    loaded_.reset();
}

/// A new record from what was typed in a list: a free code is the user's own, words are the description.
template <class Record, class Base>
void CTableEditor<Record, Base>::StartTyped()
{
    const std::string typed = std::exchange(m_typed, {});
    RecordKeys keys = m_keys;
    Record found{};
    if (IsTypedCode(typed)) {
        keys.back() = typed;
        support_.SetKeys(&found, keys);
        if (!Read(&found)) return StartNew(keys);
    }
    StartNew(m_keys, IsTypedDescription(typed) ? typed : std::string());
}

template <class Record, class Base>
void CTableEditor<Record, Base>::StartNew(const RecordKeys &keys, std::string_view description)
{
    m_record = Record{};
    support_.SetKeys(&m_record, keys);
    Blank();
    if (!keys.empty() && keys.back() != "0") { // the user's own code
        support_.SetKeys(&m_record, keys);
        proposed_ = 0;
    }
    if (!description.empty()) support_.SetDescription(&m_record, description);
    SetField();
}

template <class Record, class Base>
bool CTableEditor<Record, Base>::Open(const RecordKeys &keys)
{
    Record record{};
    support_.SetKeys(&record, keys);
    if (!Read(&record)) return false;
    Show(record, true);
    return true;
}

template <class Record, class Base>
bool CTableEditor<Record, Base>::Read(Record *record)
{
    CommandScope scope(nullptr);
    return LoadRecord(scope.get(), record);
}

template <class Record, class Base>
void CTableEditor<Record, Base>::Show(const Record &record, bool is_loaded)
{
    m_record = record;
    loaded_.reset();
    if (is_loaded) loaded_ = record;
    SetField();
}

template <class Record, class Base>
bool CTableEditor<Record, Base>::HasEdits()
{
    this->GetField();
    return !support_.HaveSameValues(&m_record, &shown_);
}

template <class Record, class Base>
bool CTableEditor<Record, Base>::OnKeyEntered()
{
    const bool has_edits = HasEdits(); // reads the form too
    const RecordKeys entered = support_.KeysOf(&m_record);
    if (entered == support_.KeysOf(&shown_)) return true;
    Record found{};
    support_.SetKeys(&found, entered);
    const bool exists = Read(&found);
    if (!exists && !IsRecordLoaded()) { // still the same new record, under a code of the user's own
        support_.SetKeys(&shown_, entered);
        return true;
    }
    if (has_edits && !this->ConfirmDiscard()) {
        support_.SetKeys(&m_record, support_.KeysOf(&shown_));
        this->ShowFields();
        this->SetChanged(true); // the marks of the single fields went, the changes did not
        return true;
    }
    if (exists)
        Show(found, true);
    else
        StartNew(entered);
    return true;
}

template <class Record, class Base>
void CTableEditor<Record, Base>::FocusColumn(const std::string &column, int)
{
    if (CTarvoField *field = support_.FieldOfColumn(column)) this->SetFocusTo(field);
}

template <class Record, class Base>
long CTableEditor<Record, Base>::CodeOf(const Record &record) const
{
    return support_.CodeOf(&record);
}
