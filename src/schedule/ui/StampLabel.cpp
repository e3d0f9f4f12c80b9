#include "schedule/ui/ScadenzeForm.h"

#include "tarvodlg/base/Dates.h"

#include <QPainter>
#include <cmath>

namespace {

constexpr double kAngle = -7; ///< degrees: as a hand puts it down
constexpr double kRadians = 3.14159265358979 / 180;

} // namespace

StampLabel::StampLabel(QWidget *parent) : QLabel(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void StampLabel::SetStamp(const QString &words, long day)
{
    day_ = ToQt(FormatDate(day));
    setText(words);
    setAccessibleName(words);
    setVisible(!words.isEmpty());
    updateGeometry();
    update();
}

QFont StampLabel::WordsFont() const
{
    QFont words = font();
    words.setPointSizeF(words.pointSizeF() * 1.5);
    words.setBold(true);
    return words;
}

/// The outer frame before it is turned.
QSizeF StampLabel::FrameSize() const
{
    const QFontMetricsF words(WordsFont()), small(font());
    return {words.horizontalAdvance(text()) + words.height() * 1.6, words.height() * 1.7 + small.height()};
}

QSize StampLabel::sizeHint() const
{
    const QSizeF frame = FrameSize();
    const double sine = std::fabs(std::sin(kAngle * kRadians)), cosine = std::cos(kAngle * kRadians);
    return QSizeF(frame.width() * cosine + frame.height() * sine, frame.width() * sine + frame.height() * cosine)
               .toSize() +
           QSize(2, 2);
}

void StampLabel::paintEvent(QPaintEvent *)
{
    const QSizeF frame = FrameSize();
    const QFontMetricsF words(WordsFont());
    const double line = words.height() / 14;
    QColor ink = palette().color(QPalette::Link), wash = ink;
    wash.setAlphaF(0.08F);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    painter.rotate(kAngle);
    QRectF outer(QPointF(-frame.width() / 2, -frame.height() / 2), frame);
    outer.adjust(line, line, -line, -line);
    painter.setPen(QPen(ink, line));
    painter.setBrush(wash);
    painter.drawRoundedRect(outer, line * 4, line * 4);
    const QRectF inner = outer.adjusted(line * 2.2, line * 2.2, -line * 2.2, -line * 2.2);
    painter.setPen(QPen(ink, line / 2.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(inner, line * 2.5, line * 2.5);

    painter.setPen(ink);
    painter.setFont(WordsFont());
    const bool is_dated = !day_.isEmpty();
    const QRectF head = is_dated ? inner.adjusted(0, 0, 0, -QFontMetricsF(font()).height()) : inner;
    painter.drawText(head, Qt::AlignCenter, text());
    painter.setFont(font());
    if (is_dated) painter.drawText(inner.adjusted(0, 0, 0, -line * 2), Qt::AlignHCenter | Qt::AlignBottom, day_);
}
