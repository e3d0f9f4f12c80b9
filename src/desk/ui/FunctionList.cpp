#include "desk/ui/FunctionList.h"

#include "tarvodlg/widgets/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace {

constexpr int kHintRole = Qt::UserRole + 1, kRightRole = Qt::UserRole + 2;

/// Measures come from the font, so that a row looks the same at every scale.
class RowDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const int line = option.fontMetrics.height();
        const bool has_hint = !index.data(kHintRole).toString().isEmpty();
        return {line * 10, has_hint ? line * 3 : line * 2 + line / 4};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const int line = option.fontMetrics.height(), gap = line / 2;
        const QRect row = option.rect.adjusted(gap / 2, 1, -gap / 2, -1);
        const bool is_selected = (option.state & QStyle::State_Selected) != 0;
        PaintGround(painter, option, row, gap);

        QColor text = option.palette.color(is_selected ? QPalette::HighlightedText : QPalette::Text);
        QColor quiet = is_selected ? text : QuietColour(option.palette);
        const QString hint = index.data(kHintRole).toString(), right = index.data(kRightRole).toString();
        const int icon_side = hint.isEmpty() ? line + line / 4 : line + line / 2;
        const QRect icon(row.left() + gap, row.center().y() - icon_side / 2 + 1, icon_side, icon_side);
        qvariant_cast<QIcon>(index.data(Qt::DecorationRole))
            .paint(painter, icon, Qt::AlignCenter, is_selected ? QIcon::Selected : QIcon::Normal);

        QRect words = row.adjusted(icon_side + 2 * gap, 0, -gap, 0);
        if (!right.isEmpty()) {
            painter->setPen(quiet);
            painter->drawText(words, Qt::AlignRight | Qt::AlignVCenter, right);
            words.setRight(words.right() - option.fontMetrics.horizontalAdvance(right) - gap);
        }
        QRect upper = words;
        if (!hint.isEmpty()) {
            upper.setBottom(words.center().y());
            QRect lower = words;
            lower.setTop(upper.bottom() + 1);
            painter->setPen(quiet);
            painter->drawText(lower, Qt::AlignLeft | Qt::AlignTop,
                              option.fontMetrics.elidedText(hint, Qt::ElideRight, lower.width()));
        }
        painter->setPen(text);
        painter->drawText(
            upper, Qt::AlignLeft | (hint.isEmpty() ? Qt::AlignVCenter : Qt::AlignBottom),
            option.fontMetrics.elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideRight, upper.width()));
        painter->restore();
    }

  private:
    static void PaintGround(QPainter *painter, const QStyleOptionViewItem &option, const QRect &row, int gap)
    {
        QColor ground = option.palette.color(QPalette::Highlight);
        const bool is_selected = (option.state & QStyle::State_Selected) != 0;
        if (!is_selected) {
            if ((option.state & QStyle::State_MouseOver) == 0) return;
            ground.setAlphaF(0.15F);
        }
        painter->setPen(Qt::NoPen);
        painter->setBrush(ground);
        painter->drawRoundedRect(row, gap / 2.0, gap / 2.0);
    }
};

} // namespace

QColor QuietColour(const QPalette &palette)
{
    const QColor text = palette.color(QPalette::Text), ground = palette.color(QPalette::Base);
    const auto mix = [](float a, float b) { return 0.68F * a + 0.32F * b; };
    return QColor::fromRgbF(mix(text.redF(), ground.redF()), mix(text.greenF(), ground.greenF()),
                            mix(text.blueF(), ground.blueF()));
}

CFunctionList::CFunctionList(QWidget *parent) : QListWidget(parent)
{
    setItemDelegate(new RowDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMouseTracking(true);
    setUniformItemSizes(false);
    QObject::connect(this, &QListWidget::itemClicked, this, [this](QListWidgetItem *item) { Run(row(item)); });
}

void CFunctionList::SetRows(std::vector<FunctionRow> rows)
{
    const QSignalBlocker quiet(this);
    clear();
    rows_ = std::move(rows);
    for (const FunctionRow &row : rows_) {
        auto *item = new QListWidgetItem(TarvoIcon(row.icon), row.caption, this);
        item->setData(kHintRole, row.hint);
        item->setData(kRightRole, row.right);
        item->setToolTip(row.hint);
        item->setData(Qt::AccessibleDescriptionRole, row.hint + QLatin1Char(' ') + row.right);
    }
    if (!rows_.empty()) setCurrentRow(0);
}

void CFunctionList::RefreshIcons()
{
    for (int i = 0; i < count(); ++i) item(i)->setIcon(TarvoIcon(rows_[static_cast<std::size_t>(i)].icon));
}

void CFunctionList::RunCurrent()
{
    Run(currentRow());
}

void CFunctionList::Run(int row)
{
    if (row < 0 || row >= count()) return;
    // A copy: what runs may fill the list anew.
    const std::function<void()> run = rows_[static_cast<std::size_t>(row)].run;
    if (run)
        run();
    else if (on_run)
        on_run(row);
}

void CFunctionList::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        RunCurrent();
        return;
    }
    QListWidget::keyPressEvent(event);
}
