#pragma once

#include <QPointer>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QKeyEvent;
class QWidget;

/// The widget base. Dialogs take their parent as a CWnd, the way the hosts of this suite pass it.
using CWnd = QWidget;

/// One match of an incremental search.
struct LookupMatch {
    std::string code;        ///< as the field keeps it; numeric codes in decimal
    std::string description; ///< what the user recognises it by
};

/// Where a code field finds what its code means. The tables of the suite implement it over the database; a dialog may
/// implement it over whatever it holds. Database errors are thrown as SAException and shown by the dialog.
class CodeLookup {
  public:
    virtual ~CodeLookup() = default;

    /// The description of a code, nothing when there is no such code. An empty code and "0" are never asked.
    virtual std::optional<std::string> Describe(const std::string &code) = 0;

    /// What to offer while typing: digits are the beginning of a code, anything else stands anywhere in the
    /// description, whatever its case and accents. In the order of the code, at most `max`.
    virtual std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) = 0;

    /// Opens the browser of the table, positioned on the code or already filtered by the text.
    /// @return the chosen code, nothing when cancelled
    virtual std::optional<std::string> Browse(CWnd *parent, const std::string &code_or_text) = 0;
};

/// What all fields of a form have in common, whatever their widget: completing what was typed, the mark of having been
/// modified by the user, protection.
class CTarvoField {
  public:
    virtual ~CTarvoField(); ///< the widget may outlive it, and is then no field any more

    virtual QWidget *Widget() = 0;

    /// Turns what was typed into a value and shows it in full ("15" becomes "15/03/2026").
    /// @return false when it can't be read; the text stays as typed
    virtual bool Complete() { return true; }
    /// Why Complete gave false the last time, in the few words of a status line; empty = the beep says enough.
    virtual std::string Reason() const { return {}; }

    /// True after the user (not the program) changed the field.
    virtual bool IsModified() const = 0;
    virtual void SetModified(bool modified) = 0;

    /// A protected field shows its value and cannot be entered.
    virtual void Protect(bool is_protected);
    bool IsProtected() const;

    /// Selects all, so that the next key replaces the value; called when the field is entered by key.
    virtual void SelectAll() {}

    /// Called by the field when the user opens its lookup: double click or F4. Empty = the field has none.
    std::function<void()> on_dbl_click;

  private:
    friend void RegisterField(CTarvoField *field);
    QPointer<QWidget> registered_;
};

/// The field a widget is or belongs to; null when it is none.
CTarvoField *FieldOf(QWidget *widget);
/// Makes the field findable from its widget. Fields call it in their constructor.
void RegisterField(CTarvoField *field);
/// Runs the field's on_dbl_click unless the field is protected. What it throws is shown, so that events may call this.
void OpenLookup(CTarvoField *field);

/// Text between the core (UTF-8) and Qt.
inline QString ToQt(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline std::string FromQt(const QString &text)
{
    return text.toStdString();
}
