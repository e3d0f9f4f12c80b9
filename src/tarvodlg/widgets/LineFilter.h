#pragma once

#include <QLineEdit>
#include <QValidator>
#include <functional>

/// Looks at every change of a line before it is taken, typed, pasted or dropped: may mend it or refuse it.
/// Characters that are no part of a line (the line end behind a cell copied from a spreadsheet) are blanks by then.
class LineFilter : public QValidator {
  public:
    /// @return false to refuse the change; the cursor stands behind what was put in
    using Function = std::function<bool(QString &text, int &cursor)>;

    LineFilter(QLineEdit *edit, Function function);
    State validate(QString &text, int &cursor) const override;

  private:
    Function function_;
};

/// Takes away what exceeds that many code points just before the cursor, as a line that is full refuses what is typed.
void CutTo(std::size_t max_characters, QString &text, int &cursor);

/// Sets a text that the field worked out from what the user typed: the mark of modification stays as it was.
void ShowKeepingMark(QLineEdit *edit, const QString &text);
