#pragma once

#include "tarvodlg/base/Text.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/TarvoDialog.h"

class CSpreadSheet;
class QGridLayout;

/// Lays a form out in the order in which it is written, so that a dialog's constructor reads like its form:
///
///     FormBuilder form(this);
///     form.Section("Anagrafica");
///     m_codice = form.Code("&Codice", m_record.cli_codice);
///     m_desc = form.Text("&Ragione sociale", m_record.cli_desc);
///     form.Text("CAP", m_record.cli_cap);
///     form.Beside();
///     form.Text("Città", m_record.cli_citta, 30);
///
/// Every field stands on a line of its own, unless Beside() was called before it. Labels are buddies of their fields,
/// the order of writing is the order of Tab, widths are counted in characters of the font. Each field is coupled with
/// the member it is given (CTarvoDialog::Bind), which must live as long as the dialog.
class FormBuilder {
  public:
    /// @param host  where the form goes: a tab, a page; null = the content of the dialog
    explicit FormBuilder(CTarvoDialog *dialog, QWidget *host = nullptr);
    ~FormBuilder(); ///< what is left of the room below stays empty, unless a widget with Fill() takes it

    FormBuilder &Section(const QString &title); ///< a heading over the fields that follow
    FormBuilder &Beside();                      ///< the next field goes on the same line
    FormBuilder &Hint(const QString &text);     ///< a line of explanation

    CTextField *Text(const QString &label, BoundedText &member, int width = 0); ///< width 0 = the member's, at most 50
    CCodeField *Code(const QString &label, long &member, std::shared_ptr<CodeLookup> lookup = {});
    CTextField *TextCode(const QString &label, BoundedText &member, std::shared_ptr<CodeLookup> lookup);
    CAmountField *Amount(const QString &label, double &member, int decimals = 2, int width = 14);
    CAmountField *Number(const QString &label, long &member, long lowest, long highest); ///< a count or a year
    CDateField *Date(const QString &label, long &member);
    CFlagField *Flag(const QString &caption, long &member);
    CChoiceField *Choice(const QString &label, long &member, std::vector<std::pair<long, QString>> choices);
    CChoiceField *Choice(const QString &label, BoundedText &member, CChoiceField::Choices choices);
    CNoteField *Note(const QString &label, BoundedText &member, int lines = 3);

    QLabel *Info(const QString &label); ///< a text that the program fills; cannot be entered
    void Add(const QString &label, QWidget *widget);
    void Add(const QString &label, CTarvoField *field, int width);
    /// A widget over the whole width that takes the room that is left, as a grid.
    void Fill(QWidget *widget);

  private:
    QWidget *Place(const QString &label, QWidget *widget, int width, bool stretch);

    CTarvoDialog *dialog_;
    QWidget *host_;
    QGridLayout *grid_;
    class QHBoxLayout *line_ = nullptr;
    int row_ = 0;
    bool beside_ = false, filled_ = false;
};

/// The width of so many average characters (digits) in the widget's font, margins of a field included.
int CharactersWide(const QWidget *widget, int characters);
