#include "tarvodlg/widgets/LineFilter.h"

LineFilter::LineFilter(QLineEdit *edit, Function function) : QValidator(edit), function_(std::move(function))
{
    edit->setValidator(this);
    // A line that was mended counts as set by the program otherwise.
    connect(edit, &QLineEdit::textEdited, edit, [edit] { edit->setModified(true); });
}

QValidator::State LineFilter::validate(QString &text, int &cursor) const
{
    for (QChar &character : text)
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
            character == QChar::ParagraphSeparator)
            character = QLatin1Char(' ');
    return function_(text, cursor) ? Acceptable : Invalid;
}

void CutTo(std::size_t max_characters, QString &text, int &cursor)
{
    std::size_t characters = static_cast<std::size_t>(text.toUcs4().size());
    if (characters <= max_characters) return;
    if (cursor <= 0) cursor = static_cast<int>(text.size());
    for (; characters > max_characters && cursor > 0; --characters) {
        const bool is_pair =
            cursor > 1 && text.at(cursor - 1).isLowSurrogate() && text.at(cursor - 2).isHighSurrogate();
        const int units = is_pair ? 2 : 1;
        cursor -= units;
        text.remove(cursor, units);
    }
    if (characters > max_characters) {
        cursor = static_cast<int>(text.size());
        CutTo(max_characters, text, cursor);
    }
}

void ShowKeepingMark(QLineEdit *edit, const QString &text)
{
    const bool is_modified = edit->isModified();
    if (edit->text() != text) edit->setText(text);
    edit->setModified(is_modified);
}
