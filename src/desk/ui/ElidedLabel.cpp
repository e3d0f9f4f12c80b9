#include "desk/ui/ElidedLabel.h"

#include <QEvent>
#include <QFontMetrics>

CElidedLabel::CElidedLabel(const QString &text, QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    SetText(text);
}

void CElidedLabel::SetText(const QString &text)
{
    full_ = text;
    setAccessibleName(text);
    updateGeometry();
    Elide();
}

QSize CElidedLabel::minimumSizeHint() const
{
    return {fontMetrics().horizontalAdvance(QStringLiteral("Mmm…")), QLabel::minimumSizeHint().height()};
}

QSize CElidedLabel::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(full_) + fontMetrics().averageCharWidth(), QLabel::sizeHint().height()};
}

void CElidedLabel::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    Elide();
}

void CElidedLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange) Elide();
}

void CElidedLabel::Elide()
{
    const QString shown = fontMetrics().elidedText(full_, Qt::ElideRight, contentsRect().width());
    if (shown != text()) setText(shown);
    setToolTip(shown == full_ ? QString() : full_);
}
