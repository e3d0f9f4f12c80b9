#pragma once

#include "tarvodlg/base/UserInterface.h"
#include "tarvodlg/widgets/Field.h"

#include <QDialog>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QAbstractButton;
class QHBoxLayout;
class QVBoxLayout;
class SACommand;

/// What an update handler may do to its command.
class CCmdUI {
  public:
    void Enable(bool enable) { enabled_ = enable; }
    void SetCheck(bool checked) { checked_ = checked; }
    void SetText(const QString &caption) { caption_ = caption; }

    bool IsEnabled() const { return enabled_; }
    bool IsChecked() const { return checked_; }
    const QString &Caption() const { return caption_; }

  private:
    bool enabled_ = true;
    bool checked_ = false;
    QString caption_; ///< empty = as it is
};

/// A command of a dialog: a button with its key in the caption ("F2 - &Salva"), what it does, when it applies.
struct DialogCommand {
    QString caption{}; ///< a leading "F2 - " .. "F12 - " is also its key
    QString tooltip{};
    QString icon{}; ///< name as TarvoIcon takes it; empty = none
    std::function<void()> run{};
    std::function<void(CCmdUI *)> update{}; ///< asked when the program is idle; empty = always enabled
    QString shortcut{};                     ///< another key, as "Ctrl+P" or "PgUp"; shown in the tooltip
    /// False for commands that throw away what was typed (leaving, reloading): the field with the focus is then not
    /// asked whether its value is good.
    bool checks_field = true;
};

/// The base of all dialogs. Keys reach PreTranslateMessage before any control; fields are checked when the focus leaves
/// them; nothing that a handler throws gets past the dialog.
///
/// How a field behaves: entering it selects its text; Enter and Down go on as Tab does, Up goes back; F4 and a double
/// click open its lookup. When the user changed it and leaves, its text is completed and its handler runs; if either
/// refuses, the dialog beeps and the focus comes back. Buttons with a key, and F2 to F12, first leave the field.
class CTarvoDialog : public QDialog {
  public:
    explicit CTarvoDialog(CWnd *parent = nullptr);
    ~CTarvoDialog() override;

    /// Runs the dialog until it is closed. @return IDOK or IDCANCEL
    virtual int DoModal();

    /// Gets every key pressed in the dialog first. The base runs the command whose caption carries the key, moves on
    /// with Enter, opens lookups with F4, help with F1, leaves with Esc. @return true when the key was used up
    virtual bool PreTranslateMessage(QKeyEvent *message);

    /// Runs when the program has nothing to do: brings commands up to date through their update handlers.
    virtual void OnKickIdle();

    /// Registers what runs when the user changed the field and leaves it: OnLostFocusEvent<Field>. False refuses the
    /// value: beep, focus back. The mark of modification is cleared before the handler runs, and set again on refusal.
    void OnLostFocusEvent(CTarvoField *field, std::function<bool()> handler);

    /// Couples a field with a value of the record: `show` puts the record's value into the control, `read` takes it.
    void Bind(CTarvoField *field, std::function<void()> show, std::function<void()> read);

    QAbstractButton *AddCommand(DialogCommand command); ///< a button in the row at the foot
    /// Text shown at the left of the foot, as a hint or a state.
    void SetStatus(const QString &text);

    /// True when the user changed anything since the record was shown, or a handler said so.
    bool IsChanged() const;
    void SetChanged(bool changed);

    /// Runs work and shows what it throws, with the tag of the place for database errors (see LUMERA_TAG).
    /// @return false when it threw
    static bool Guarded(const char *tag, const std::function<void()> &work);

    /// Completes and checks the field that has the focus, as leaving it would. @return false when it was refused
    bool LeaveFocusedField();
    /// Beeps and puts the focus on the field, with its text selected.
    void RefuseField(CTarvoField *field);
    void SetFocusTo(CTarvoField *field);

    /// Closes the window without any question, as after a save that ends the dialog.
    void EndDialog(int result);

  protected:
    /// Fills the controls before the window shows. False: the dialog does not open and DoModal gives IDCANCEL.
    virtual bool OnInitDialog() { return true; }
    virtual void OnOK();     ///< checks the field with the focus, then closes with IDOK
    virtual void OnCancel(); ///< asks when something was changed, then closes with IDCANCEL
    virtual void OnHelp();   ///< F1: the keys of this dialog

    /// All bound fields: record to controls; clears the marks of modification.
    void ShowFields();
    /// All bound fields: controls to record.
    void ReadFields();

    /// Where the content of the dialog goes; the row of commands stands below it.
    QWidget *Content() const;
    const std::vector<DialogCommand> &Commands() const;

    void reject() override; ///< Esc and the window's cross come here
    void done(int result) override;
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

    /// The layout above the content, for tool bars.
    QVBoxLayout *Frame() const;

  private:
    friend class DialogKeys;
    friend class FormBuilder;
    friend class CTarvoRecordDialog;
    friend class CTarvoRecordBrowseDialog;
    struct State;

    /// Fills and lays out the dialog before it shows. @return false when it shall not open
    bool Initialise();
    virtual bool Prepare() { return OnInitDialog(); }
    virtual void RestoreLayout() {} ///< what this station remembers of the window, before it shows
    virtual void SaveLayout() {}
    void PutButtonsLast();

    /// Takes a command in. @param show  brings the button or action that stands for it up to date
    std::size_t TakeCommand(DialogCommand command, std::function<void(const CCmdUI &)> show);
    bool UpdateCommand(std::size_t index); ///< @return true when it is enabled
    void RunCommand(std::size_t index);
    void SetCaption(std::size_t index, const QString &caption, const QString &tooltip);
    bool RunCommandOfKey(QKeyEvent *message);

    bool CheckField(CTarvoField *field);
    void ShowReason(const QString &reason); ///< in the status line, until ForgetReason; empty shows nothing
    void ForgetReason();
    void FieldLeft(CTarvoField *field); ///< the focus went from it to another control of the dialog
    bool IsRefusing() const;            ///< a field was refused by what the user is just doing
    void ForgetRefusal();
    void OpenLookup(CTarvoField *field);
    bool MayLoseChanges();
    void Idle();

    std::unique_ptr<State> state_;
};

/// The key at the head of a caption: Qt::Key_F2 for "F2 - &Salva", 0 when it has none.
int KeyOfCaption(const QString &caption);
