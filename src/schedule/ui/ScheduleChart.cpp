#include "schedule/ui/ScheduleChart.h"

#include "schedule/AmountAxis.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/Field.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>

namespace {

using Side = CScheduleChart::Side;

constexpr const char *kShortMonths[] = {"gen", "feb", "mar", "apr", "mag", "giu",
                                        "lug", "ago", "set", "ott", "nov", "dic"};
constexpr double kBarShare = 0.36; ///< of the width of a month, for one bar

const CashSums &SumsOf(const CashPeriod &period, Side side)
{
    return side == Side::Collect ? period.collect : period.pay;
}

QColor ColourOf(const QPalette &palette, Side side)
{
    return palette.color(side == Side::Collect ? QPalette::Link : QPalette::LinkVisited);
}

/// What is to be paid is drawn with a lighter body than what comes in, so that the two differ without their colours.
void PaintBar(QPainter &painter, const QRectF &bar, const QColor &colour, Side side)
{
    if (bar.height() <= 0) return;
    QColor body = colour;
    if (side == Side::Pay) body.setAlphaF(0.35F);
    painter.setPen(QPen(colour, 0));
    painter.setBrush(body);
    painter.drawRect(bar);
}

QString ShortName(const CashPeriod &period)
{
    if (period.kind == CashPeriod::Kind::Earlier) return QStringLiteral("prima");
    if (period.kind == CashPeriod::Kind::Later) return QStringLiteral("dopo");
    return QString::fromUtf8(kShortMonths[Month(period.first_day) - 1]);
}

QString Euro(long long cents)
{
    return ToQt(FormatAmount(FromCents(cents)));
}

} // namespace

/// Where everything stands for the present size; lengths follow the font.
struct CScheduleChart::Layout {
    QRectF plot;
    AmountAxis axis;
    double group_width = 0, line = 0, character = 0;

    explicit Layout(const CScheduleChart &chart)
    {
        const QFontMetricsF metrics(chart.font());
        line = metrics.lineSpacing();
        character = metrics.averageCharWidth();
        const double top = line * 1.9, bottom = line * 2.4;
        const double height = std::max(line, chart.height() - top - bottom);
        axis = AxisOf(chart.outlook_, std::max(2, static_cast<int>(height / (line * 2))));
        double widest = 0;
        for (const long long mark : axis.Marks())
            widest = std::max(widest, metrics.horizontalAdvance(ToQt(axis.Label(mark))));
        const double left = widest + character * 2;
        plot = QRectF(left, top, std::max(character, chart.width() - left - character), height);
        group_width = plot.width() / std::max(1, chart.Count());
    }

    static AmountAxis AxisOf(const CashOutlook &outlook, int steps)
    {
        long long lowest = std::min(0LL, outlook.cash), highest = std::max(0LL, outlook.cash);
        for (const CashPeriod &period : outlook.periods)
            for (const Side side : {Side::Collect, Side::Pay}) {
                const CashSums &sums = SumsOf(period, side);
                const long long up = std::max(0LL, sums.overdue) + std::max(0LL, sums.expected),
                                down = std::min(0LL, sums.overdue) + std::min(0LL, sums.expected);
                lowest = std::min({lowest, down, period.balance});
                highest = std::max({highest, up, period.balance});
            }
        return AmountAxis::Of(lowest, highest, steps);
    }

    double Y(long long cents) const { return plot.bottom() - axis.ShareOf(cents) * plot.height(); }
    double Centre(int period) const { return plot.left() + (period + 0.5) * group_width; }
    QRectF Group(int period) const
    {
        return {plot.left() + period * group_width, plot.top(), group_width, plot.height()};
    }

    /// The bar between two amounts; its width is bounded, since two months on a wide screen would be two walls.
    QRectF Bar(int period, Side side, long long from, long long to) const
    {
        const double width = std::min(group_width * kBarShare, character * 9);
        const double left = Centre(period) + (side == Side::Collect ? -width - character * 0.2 : character * 0.2);
        return QRectF(QPointF(left, Y(std::max(from, to))), QPointF(left + width, Y(std::min(from, to))));
    }
};

CScheduleChart::CScheduleChart(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(QStringLiteral("Grafico delle scadenze per mese"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void CScheduleChart::SetOutlook(const CashOutlook &outlook)
{
    const long day =
        selected_ >= 0 && selected_ < Count() ? outlook_.periods[static_cast<std::size_t>(selected_)].last_day : -1;
    outlook_ = outlook;
    const auto same = std::find_if(outlook_.periods.begin(), outlook_.periods.end(),
                                   [day](const CashPeriod &period) { return period.last_day == day; });
    selected_ = outlook_.periods.empty()         ? -1
                : same == outlook_.periods.end() ? 0
                                                 : static_cast<int>(same - outlook_.periods.begin());
    Describe();
    update();
}

void CScheduleChart::Select(int period)
{
    if (period < 0 || period >= Count() || period == selected_) return;
    selected_ = period;
    Describe();
    update();
}

void CScheduleChart::MoveTo(int period)
{
    if (Count() == 0) return;
    Select(std::clamp(period, 0, Count() - 1));
    if (on_select) on_select(selected_);
}

/// For those who hear the screen.
void CScheduleChart::Describe()
{
    setAccessibleDescription(
        selected_ < 0 ? QString() : ToQt(DescribePeriod(outlook_.periods[static_cast<std::size_t>(selected_)])));
}

QRectF CScheduleChart::BarOf(int period, Side side) const
{
    if (period < 0 || period >= Count()) return {};
    const CashSums &sums = SumsOf(outlook_.periods[static_cast<std::size_t>(period)], side);
    const long long up = std::max(0LL, sums.overdue) + std::max(0LL, sums.expected),
                    down = std::min(0LL, sums.overdue) + std::min(0LL, sums.expected);
    return up == down ? QRectF() : Layout(*this).Bar(period, side, down, up);
}

int CScheduleChart::PeriodAt(const QPointF &place) const
{
    const Layout layout(*this);
    if (place.x() < layout.plot.left() || place.x() >= layout.plot.right()) return -1;
    return std::min(Count() - 1, static_cast<int>((place.x() - layout.plot.left()) / layout.group_width));
}

QString CScheduleChart::TipAt(const QPointF &place) const
{
    const int number = PeriodAt(place);
    if (number < 0 || outlook_.IsEmpty()) return {};
    const CashPeriod &period = outlook_.periods[static_cast<std::size_t>(number)];
    const QString name = ToQt(period.name);
    for (const Side side : {Side::Collect, Side::Pay}) {
        if (!BarOf(number, side).adjusted(0, -2, 0, 2).contains(place)) continue;
        const CashSums &sums = SumsOf(period, side);
        QString text =
            QStringLiteral("%1\n%2 %3 in %4")
                .arg(name, side == Side::Collect ? QStringLiteral("Da incassare") : QStringLiteral("Da pagare"),
                     Euro(sums.Open()),
                     sums.count == 1 ? QStringLiteral("1 scadenza") : QStringLiteral("%1 scadenze").arg(sums.count));
        if (sums.overdue != 0) text += QStringLiteral("\nScadute %1").arg(Euro(sums.overdue));
        if (sums.paid != 0)
            text += QStringLiteral("\nGià %1 %2")
                        .arg(side == Side::Collect ? QStringLiteral("incassati") : QStringLiteral("pagati"),
                             Euro(sums.paid));
        return text;
    }
    return QStringLiteral("%1\nSaldo %2, progressivo %3")
        .arg(name, Euro(period.collect.Open() - period.pay.Open()), Euro(period.balance));
}

void CScheduleChart::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().base());
    if (outlook_.IsEmpty()) return PaintEmpty(painter);
    const Layout layout(*this);
    PaintLegend(painter, layout);
    PaintSelection(painter, layout);
    PaintAxis(painter, layout);
    PaintBars(painter, layout);
    PaintBalance(painter, layout);
    PaintNames(painter, layout);
}

void CScheduleChart::PaintEmpty(QPainter &painter) const
{
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                     QStringLiteral("Nessuna scadenza aperta.\n"
                                    "Le scadenze nascono dalle fatture registrate in prima nota."));
}

void CScheduleChart::PaintLegend(QPainter &painter, const Layout &layout) const
{
    double x = layout.plot.left();
    const double side = layout.line * 0.6, y = layout.line * 0.5;
    const auto words = [&](const QString &text) {
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QPointF(x, y + painter.fontMetrics().ascent() - layout.line * 0.15), text);
        x += painter.fontMetrics().horizontalAdvance(text) + layout.character * 3;
    };
    const auto bar = [&](const QColor &colour, Side of) {
        PaintBar(painter, QRectF(x, y, side, side), colour, of);
        x += side + layout.character * 0.7;
    };
    bar(ColourOf(palette(), Side::Collect), Side::Collect);
    words(QStringLiteral("Da incassare"));
    bar(ColourOf(palette(), Side::Pay), Side::Pay);
    words(QStringLiteral("Da pagare"));
    bar(palette().color(QPalette::BrightText), Side::Collect);
    x -= layout.character * 0.4;
    bar(palette().color(QPalette::BrightText), Side::Pay);
    words(QStringLiteral("Scadute"));
    painter.setPen(QPen(palette().color(QPalette::Text), layout.line * 0.1));
    painter.drawLine(QPointF(x, y + side / 2), QPointF(x + layout.character * 3, y + side / 2));
    x += layout.character * 3.7;
    words(QStringLiteral("Saldo progressivo"));
}

void CScheduleChart::PaintAxis(QPainter &painter, const Layout &layout) const
{
    for (const long long mark : layout.axis.Marks()) {
        const double y = layout.Y(mark);
        painter.setPen(QPen(palette().color(mark == 0 ? QPalette::Dark : QPalette::Mid), mark == 0 ? 1.5 : 0.5));
        painter.drawLine(QPointF(layout.plot.left(), y), QPointF(layout.plot.right(), y));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRectF(0, y - layout.line / 2, layout.plot.left() - layout.character, layout.line),
                         Qt::AlignRight | Qt::AlignVCenter, ToQt(layout.axis.Label(mark)));
    }
}

void CScheduleChart::PaintSelection(QPainter &painter, const Layout &layout) const
{
    if (selected_ < 0) return;
    QColor shade = palette().color(QPalette::Highlight);
    shade.setAlphaF(0.14F);
    const QRectF group = layout.Group(selected_).adjusted(0, 0, 0, layout.line * 2.2);
    painter.fillRect(group, shade);
    if (!hasFocus()) return;
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(group.adjusted(0.75, 0.75, -0.75, -0.75));
}

void CScheduleChart::PaintBars(QPainter &painter, const Layout &layout) const
{
    const QColor alarm = palette().color(QPalette::BrightText);
    for (int number = 0; number < Count(); ++number)
        for (const Side side : {Side::Collect, Side::Pay}) {
            const CashSums &sums = SumsOf(outlook_.periods[static_cast<std::size_t>(number)], side);
            // What is overdue stands next to the zero line; what is expected goes on from it in the same direction.
            const bool is_same_way = (sums.overdue < 0) == (sums.expected < 0);
            const long long from = is_same_way ? sums.overdue : 0;
            PaintBar(painter, layout.Bar(number, side, 0, sums.overdue), alarm, side);
            PaintBar(painter, layout.Bar(number, side, from, from + sums.expected), ColourOf(palette(), side), side);
        }
}

void CScheduleChart::PaintBalance(QPainter &painter, const Layout &layout) const
{
    QPolygonF points;
    for (int number = 0; number < Count(); ++number)
        points << QPointF(layout.Centre(number), layout.Y(outlook_.periods[static_cast<std::size_t>(number)].balance));
    // A rim in the colour of the paper keeps the line readable over the bars.
    const double width = layout.line * 0.1, dot = layout.line * 0.2;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette().color(QPalette::Base), width * 2.6));
    painter.drawPolyline(points);
    painter.setPen(QPen(palette().color(QPalette::Text), width));
    painter.drawPolyline(points);
    painter.setPen(QPen(palette().color(QPalette::Base), width * 0.8));
    painter.setBrush(palette().color(QPalette::Text));
    for (const QPointF &point : points) painter.drawEllipse(point, dot, dot);
}

/// The month under its bars, the year where it begins; of many months some stay without their name.
void CScheduleChart::PaintNames(QPainter &painter, const Layout &layout) const
{
    const double widest = painter.fontMetrics().horizontalAdvance(QStringLiteral("prima")) + layout.character;
    const int every = std::max(1, static_cast<int>(widest / layout.group_width + 1));
    long year_shown = 0;
    for (int number = 0; number < Count(); number += every) {
        const CashPeriod &period = outlook_.periods[static_cast<std::size_t>(number)];
        const QRectF below(layout.Centre(number) - widest, layout.plot.bottom() + layout.line * 0.25, widest * 2,
                           layout.line);
        const bool is_earlier = period.kind == CashPeriod::Kind::Earlier;
        painter.setPen(palette().color(is_earlier ? QPalette::BrightText : QPalette::Text));
        painter.drawText(below, Qt::AlignHCenter | Qt::AlignTop, ShortName(period));
        if (period.kind != CashPeriod::Kind::Month || Year(period.first_day) == year_shown) continue;
        year_shown = Year(period.first_day);
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(below.translated(0, layout.line * 0.95), Qt::AlignHCenter | Qt::AlignTop,
                         QString::number(year_shown));
    }
}

void CScheduleChart::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        return MoveTo(selected_ - 1);
    case Qt::Key_Right:
        return MoveTo(selected_ + 1);
    case Qt::Key_Home:
        return MoveTo(0);
    case Qt::Key_End:
        return MoveTo(Count() - 1);
    default:
        QWidget::keyPressEvent(event);
    }
}

void CScheduleChart::mousePressEvent(QMouseEvent *event)
{
    if (const int period = PeriodAt(event->position()); period >= 0) MoveTo(period);
}

void CScheduleChart::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (const int period = PeriodAt(event->position()); period >= 0 && on_open) on_open(period);
}

void CScheduleChart::focusInEvent(QFocusEvent *event)
{
    QWidget::focusInEvent(event);
    if (selected_ >= 0 && on_select) on_select(selected_);
    update();
}

void CScheduleChart::focusOutEvent(QFocusEvent *event)
{
    QWidget::focusOutEvent(event);
    update();
}

bool CScheduleChart::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    const QString tip = TipAt(QPointF(help->pos()));
    if (tip.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(help->globalPos(), tip, this);
    return true;
}

QSize CScheduleChart::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 80, fontMetrics().lineSpacing() * 16};
}

QSize CScheduleChart::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 40, fontMetrics().lineSpacing() * 9};
}
