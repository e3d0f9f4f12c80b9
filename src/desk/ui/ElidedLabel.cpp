#include "desk/ui/ElidedLabel.h"

#include "tarvodlg/widgets/Theme.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>

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

void CElidedLabel::LeadTo(std::function<void()> where)
{
    where_ = std::move(where);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setForegroundRole(QPalette::Link);
}

void CElidedLabel::Go()
{
    QMetaObject::invokeMethod(window(), where_, Qt::QueuedConnection);
}

void CElidedLabel::keyPressEvent(QKeyEvent *event)
{
    const bool is_enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (where_ && is_enter) return Go();
    QLabel::keyPressEvent(event);
}

void CElidedLabel::mouseReleaseEvent(QMouseEvent *event)
{
    if (where_ && event->button() == Qt::LeftButton && rect().contains(event->pos())) return Go();
    QLabel::mouseReleaseEvent(event);
}

void CElidedLabel::focusInEvent(QFocusEvent *event)
{
    QLabel::focusInEvent(event);
    ShowFocus(true);
}

void CElidedLabel::focusOutEvent(QFocusEvent *event)
{
    QLabel::focusOutEvent(event);
    ShowFocus(false);
}

void CElidedLabel::ShowFocus(bool has_focus)
{
    setBackgroundRole(has_focus ? QPalette::Highlight : QPalette::NoRole);
    setForegroundRole(has_focus ? QPalette::HighlightedText : QPalette::Link);
    setAutoFillBackground(has_focus);
}

void CElidedLabel::Elide()
{
    const QString shown = fontMetrics().elidedText(full_, Qt::ElideRight, contentsRect().width());
    if (shown != text()) setText(shown);
    setToolTip(shown == full_ ? QString() : PlainTip(full_));
}
