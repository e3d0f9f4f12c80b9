#pragma once

#include "tarvodlg/widgets/Field.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

/// A line of text of at most so many characters (code points, as the archive counts).
class CTextField : public QLineEdit, public CTarvoField {
  public:
    explicit CTextField(std::size_t max_characters, CWnd *parent = nullptr);
    ~CTextField() override;

    std::string Value() const; ///< without blanks at the ends
    void SetValue(std::string_view text);
    /// Codes of persons and provinces are typed in capitals whatever the keyboard says.
    void SetUpperCase(bool upper);
    /// Offers matches while typing and opens the browser with F4 or a double click; the code is a text.
    void SetLookup(std::shared_ptr<CodeLookup> lookup, QLabel *description = nullptr);

    QWidget *Widget() override { return this; }
    bool Complete() override; ///< with a lookup as CCodeField does
    std::string Reason() const override;
    bool IsModified() const override { return QLineEdit::isModified(); }
    void SetModified(bool modified) override { QLineEdit::setModified(modified); }
    void SelectAll() override { selectAll(); }

  protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

  private:
    std::size_t max_characters_;
    bool upper_ = false;
    std::unique_ptr<class LookupSupport> lookup_;
};

/// A code of a table with its description beside it. Digits are a code; letters search the descriptions while typing.
class CCodeField : public QLineEdit, public CTarvoField {
  public:
    explicit CCodeField(CWnd *parent = nullptr);
    ~CCodeField() override;

    long Value() const; ///< 0 when empty
    void SetValue(long code);
    /// @param description  label that always shows what the code means; null = none
    void SetLookup(std::shared_ptr<CodeLookup> lookup, QLabel *description = nullptr);
    /// Opens the browser and takes the chosen code as typed by the user. @return false when cancelled
    bool Browse();
    /// Shows the description of the current value again.
    void RefreshDescription();

    QWidget *Widget() override { return this; }
    /// Letters that match one row only become its code; a code the lookup does not know is refused. 0 and empty pass.
    bool Complete() override;
    std::string Reason() const override { return reason_; }
    bool IsModified() const override { return QLineEdit::isModified(); }
    void SetModified(bool modified) override { QLineEdit::setModified(modified); }
    void SelectAll() override { selectAll(); }

  protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

  private:
    std::unique_ptr<class LookupSupport> lookup_;
    std::string reason_;
};

/// An amount: decimal comma, thousands point; the point of the keypad is the comma. Simple sums as "100+22" or
/// "3*12,50" are worked out on leaving. Right aligned. Without decimals it holds a count or a year, shown without
/// thousands point.
class CAmountField : public QLineEdit, public CTarvoField {
  public:
    /// @param decimals  0 to 6; what is typed is rounded to them
    explicit CAmountField(int decimals = 2, CWnd *parent = nullptr);

    /// What is typed, worked out and rounded; while it can't be read, the last value that could. A value set by the
    /// program comes back as it was, decimals that are not shown included.
    double Value() const;
    void SetValue(double value);
    void SetBlankZero(bool blank);                ///< zero shows as an empty field; the default
    void SetRange(double lowest, double highest); ///< bounds included; what lies outside is refused

    QWidget *Widget() override { return this; }
    bool Complete() override;
    std::string Reason() const override { return decimals_ == 0 ? "Numero non valido" : "Importo non valido"; }
    bool IsModified() const override { return QLineEdit::isModified(); }
    void SetModified(bool modified) override { QLineEdit::setModified(modified); }
    void SelectAll() override { selectAll(); }

  protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

  private:
    QString Shown(double value) const;
    /// The value of the text, rounded; zero for an empty text, nothing when it can't be read.
    std::optional<double> Typed() const;

    int decimals_;
    bool blank_zero_ = true;
    double value_ = 0, lowest_ = -1e15, highest_ = 1e15;
};

/// Works out what was typed in an amount: an amount as ParseAmount reads it, or sums and products of such
/// ("100+22", "1.000,00-3*2,5", parentheses too). Nothing when it is none or divides by zero.
std::optional<double> EvaluateAmount(std::string_view typed);

/// A date. Takes "15", "1503", "150326", "15032026", "15/3", "15/3/26" with / . or -; what is missing is completed from
/// the working date. "+" and "-" step a day ("-" behind a day or a month just typed is a separator), Ctrl+Up and
/// Ctrl+Down a month, "t" or "o" is today, "f" the end of the month. An empty date stays empty.
class CDateField : public QLineEdit, public CTarvoField {
  public:
    explicit CDateField(CWnd *parent = nullptr);

    /// Day number, 0 when empty. What is being typed is completed; while it can't be, the last date that could.
    long Value() const;
    void SetValue(long day);

    QWidget *Widget() override { return this; }
    bool Complete() override;
    std::string Reason() const override { return "Data non valida"; }
    bool IsModified() const override { return QLineEdit::isModified(); }
    void SetModified(bool modified) override { QLineEdit::setModified(modified); }
    void SelectAll() override { selectAll(); }

    /// The year whose entries are made, 0 = no company is open. The working date starts anew: it is today, or the day
    /// of the year nearest to it. Called by the host when it opens a company or changes the year.
    static void SetFiscalYear(long year);
    /// The date from which missing parts are completed, in forms and grids alike. Day number.
    static long WorkingDate();
    static void SetWorkingDate(long day); ///< 0 = as after SetFiscalYear
    /// Tells of a date that the user typed: it becomes the working date when it falls into the fiscal year (without
    /// one, into the working date's). A birthday or an old document does not take the next entries along.
    static void NoteTypedDate(long day);

  protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override; ///< opens CData

  private:
    bool OnDateKey(QChar key);
    void StepMonth(int months);
    long DayShown() const; ///< from which keys step: what is typed, else the value, else the working date
    void TakeTyped(long day);

    long value_ = 0;
    bool typed_ = false; ///< by the user since it was shown
};

/// Reads a date as a bookkeeper types it (see CDateField). @param working_day  gives month and year when missing
/// @return nothing when it is no date; 0 for an empty text
std::optional<long> CompleteDate(std::string_view typed, long working_day);

/// Yes or no.
class CFlagField : public QCheckBox, public CTarvoField {
  public:
    explicit CFlagField(const QString &caption, CWnd *parent = nullptr);
    long Value() const { return isChecked() ? 1 : 0; }
    void SetValue(long flag);

    QWidget *Widget() override { return this; }
    bool IsModified() const override { return modified_; }
    void SetModified(bool modified) override { modified_ = modified; }

  private:
    bool modified_ = false;
};

/// One of a few values, each with the words for it.
class CChoiceField : public QComboBox, public CTarvoField {
  public:
    using Choices = std::vector<std::pair<std::string, QString>>; ///< value, words
    explicit CChoiceField(Choices choices, CWnd *parent = nullptr);

    std::string Value() const;
    void
    SetValue(const std::string &value); ///< a value that is not among the choices is added, so that nothing is lost
    long Code() const;                  ///< the value as a number
    void SetCode(long value) { SetValue(std::to_string(value)); }

    QWidget *Widget() override { return this; }
    bool IsModified() const override { return modified_; }
    void SetModified(bool modified) override { modified_ = modified; }

  protected:
    void wheelEvent(QWheelEvent *event) override;

  private:
    int known_;          ///< rows of the choices; one more holds a value that is not among them
    int shown_row_ = -1; ///< to tell a choice from a list opened and closed again
    bool modified_ = false;
};

/// Text of several lines. Enter makes a line; Tab goes on.
class CNoteField : public QPlainTextEdit, public CTarvoField {
  public:
    explicit CNoteField(std::size_t max_characters, CWnd *parent = nullptr);
    std::string Value() const;
    void SetValue(std::string_view text);

    QWidget *Widget() override { return this; }
    bool IsModified() const override;
    void SetModified(bool modified) override;

  private:
    void CutToMax();

    std::size_t max_characters_;
};
