#include "tarvodlg/widgets/SpreadFoot.h"

#include <QPainter>
#include <QStyle>

SpreadHeader::SpreadHeader(QWidget *grid) : QHeaderView(Qt::Horizontal, grid)
{
    setHighlightSections(false);
    setSectionsClickable(false);
}

void SpreadHeader::initStyleOptionForIndex(QStyleOptionHeader *option, int column) const
{
    QHeaderView::initStyleOptionForIndex(option, column);
    option->text.clear(); // drawn below, with the cells' own padding
}

void SpreadHeader::paintSection(QPainter *painter, const QRect &rect, int column) const
{
    painter->save(); // styles leave a clip behind
    QHeaderView::paintSection(painter, rect, column);
    painter->restore();
    const int padding = SpreadPadding(fontMetrics());
    const bool has_arrow = isSortIndicatorShown() && sortIndicatorSection() == column;
    const int arrow = has_arrow ? style()->pixelMetric(QStyle::PM_HeaderMarkSize, nullptr, this) : 0;
    const QRect room = rect.adjusted(padding, 0, -padding - arrow, 0);
    const int alignment = model()->headerData(column, Qt::Horizontal, Qt::TextAlignmentRole).toInt();
    const QString title = model()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    painter->setPen(palette().color(QPalette::ButtonText));
    painter->drawText(room, alignment, fontMetrics().elidedText(title, Qt::ElideRight, room.width()));
}

SpreadFoot::SpreadFoot(QTableView *grid, CellFunction cell) : QWidget(grid), grid_(grid), cell_(std::move(cell))
{
    setAccessibleName(QStringLiteral("Totali"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    QFont bold = font();
    bold.setBold(true);
    setFont(bold);
}

QSize SpreadFoot::sizeHint() const
{
    return {0, fontMetrics().height() * 4 / 3};
}

/// A text that is wider than its column ("600 movimenti" under a narrow number) goes on over the empty cells beside it.
void SpreadFoot::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(rect().topLeft(), rect().topRight());
    painter.setPen(palette().color(QPalette::WindowText));
    const int padding = SpreadPadding(fontMetrics());
    const QHeaderView *header = grid_->horizontalHeader();
    for (int column = 0; column < header->count(); ++column) {
        const Cell cell = cell_(column);
        if (cell.text.isEmpty()) continue;
        QRect room(header->sectionViewportPosition(column), 0, header->sectionSize(column), height());
        const int wanted = fontMetrics().horizontalAdvance(cell.text) + 2 * padding;
        const bool to_the_left = cell.alignment & Qt::AlignRight;
        const int step = to_the_left ? -1 : 1;
        for (int next = column + step; next >= 0 && next < header->count() && room.width() < wanted; next += step) {
            if (!cell_(next).text.isEmpty()) break;
            const int more = header->sectionSize(next);
            room.adjust(to_the_left ? -more : 0, 0, to_the_left ? 0 : more, 0);
        }
        room.adjust(padding, 0, -padding, 0);
        painter.drawText(room, static_cast<int>(cell.alignment) | Qt::TextSingleLine,
                         fontMetrics().elidedText(cell.text, Qt::ElideRight, room.width()));
    }
}

int SpreadPadding(const QFontMetrics &metrics)
{
    return metrics.horizontalAdvance(QLatin1Char('0')) * 2 / 3;
}
