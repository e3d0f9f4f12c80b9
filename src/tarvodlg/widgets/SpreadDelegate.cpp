#include "tarvodlg/widgets/SpreadDelegate.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/widgets/SpreadState.h"
#include "tarvodlg/widgets/Theme.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <cmath>

namespace {

constexpr double kReadableContrast = 4.5; ///< of WCAG 2.1, level AA

QColor Mixed(const QColor &a, const QColor &b, double part_of_b)
{
    const auto mix = [part_of_b](float from, float to) {
        return static_cast<float>(from * (1 - part_of_b) + to * part_of_b);
    };
    return QColor::fromRgbF(mix(a.redF(), b.redF()), mix(a.greenF(), b.greenF()), mix(a.blueF(), b.blueF()));
}

double Luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double Contrast(const QColor &a, const QColor &b)
{
    const double first = Luminance(a) + 0.05, second = Luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

/// Of the frame around the active cell of an entry grid.
int FrameWidth(const QFontMetrics &metrics)
{
    return std::max(1, metrics.height() / 7);
}

} // namespace

QColor ReadableOn(const QColor &background, QColor colour)
{
    const QColor goal = Contrast(background, Qt::white) > Contrast(background, Qt::black) ? Qt::white : Qt::black;
    for (int step = 0; step < 9 && Contrast(background, colour) < kReadableContrast; ++step)
        colour = Mixed(colour, goal, 0.25);
    return Contrast(background, colour) < kReadableContrast ? goal : colour;
}

SpreadDelegate::SpreadDelegate(CSpreadSheet *sheet) : QStyledItemDelegate(sheet), sheet_(sheet) {}

void SpreadDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const auto &state = *sheet_->state_;
    const bool is_entry = state.IsEntry();
    const bool active = index == sheet_->currentIndex();
    const bool selected = (option.state & QStyle::State_Selected) && !is_entry;
    const QColor background = Background(option, index, selected);
    painter->fillRect(option.rect, background);
    if (is_entry) { // the style's own grid can't be seen in the dark
        painter->setPen(option.palette.color(QPalette::Mid));
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
        painter->drawLine(option.rect.topRight(), option.rect.bottomRight());
    }

    const QString text = ToQt(state.model.Shown(index.row(), index.column()));
    if (!text.isEmpty()) {
        const int padding = SpreadPadding(option.fontMetrics);
        const QRect room = option.rect.adjusted(padding, 0, -padding, 0);
        painter->setPen(Foreground(option, index, background));
        painter->setFont(option.font);
        painter->drawText(room, static_cast<int>(state.model.Alignment(index.column())) | Qt::TextSingleLine,
                          Fitting(text, option.fontMetrics, room.width(), index.column()));
    }
    if (!active) return;
    // The active cell must be found at a glance, and in a list tell the column that typing searches.
    const bool focused = sheet_->hasFocus() || state.IsEditing();
    const int line = is_entry ? FrameWidth(option.fontMetrics) : 1;
    QColor frame = option.palette.color(is_entry ? QPalette::Highlight : QPalette::HighlightedText);
    if (!focused) frame = Mixed(frame, background, is_entry ? 0.5 : 1);
    painter->setPen(QPen(frame, line, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    const int inside = line / 2;
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(option.rect.adjusted(inside, inside, -inside - line % 2, -inside - line % 2));
}

QColor SpreadDelegate::Background(const QStyleOptionViewItem &option, const QModelIndex &index, bool selected) const
{
    const auto &state = *sheet_->state_;
    const QPalette &palette = option.palette;
    const QColor base = palette.color(QPalette::Base);
    if (selected) {
        const QColor highlight = palette.color(QPalette::Highlight);
        return sheet_->hasFocus() ? highlight : Mixed(highlight, base, 0.5);
    }
    if (state.IsEntry()) {
        const bool open = state.IsOpen({index.row(), index.column()});
        const QColor muted = Mixed(palette.color(QPalette::Window), palette.color(QPalette::Mid), 0.15);
        return open && sheet_->isEnabled() ? base : muted;
    }
    return index.row() % 2 == 1 ? palette.color(QPalette::AlternateBase) : base;
}

QColor SpreadDelegate::Foreground(const QStyleOptionViewItem &option, const QModelIndex &index,
                                  const QColor &background) const
{
    const auto &state = *sheet_->state_;
    const QColor own = state.colors[state.model.Store().RowColor(index.row())];
    if (own.isValid()) return ReadableOn(background, Readable(own));
    const bool on_highlight = background == option.palette.color(QPalette::Highlight);
    return ReadableOn(background, option.palette.color(on_highlight ? QPalette::HighlightedText : QPalette::Text));
}

/// A text is cut with an ellipsis. A number never is: half an amount looks like another amount.
QString SpreadDelegate::Fitting(const QString &text, const QFontMetrics &metrics, int width, int column) const
{
    const bool is_text = sheet_->state_->model.Store().Kind(column) == SpreadKind::Text;
    const int widest = metrics.horizontalAdvance(is_text ? QLatin1Char('W') : QLatin1Char('0'));
    if (text.size() * widest <= width) return text; // measuring costs as much as drawing
    if (metrics.horizontalAdvance(text) <= width) return text;
    if (is_text) return metrics.elidedText(text, Qt::ElideRight, width);
    return QString(std::max(1, width / std::max(1, metrics.horizontalAdvance(QLatin1Char('#')))), QLatin1Char('#'));
}

QWidget *SpreadDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &index) const
{
    auto &state = *sheet_->state_;
    auto *line = new QLineEdit(parent);
    line->setFrame(false);
    line->setAlignment(state.model.Alignment(index.column()));
    line->setAccessibleName(state.model.Column(index.column()).title);
    const int limit = state.model.Column(index.column()).max_characters;
    if (limit > 0)
        connect(line, &QLineEdit::textEdited, line, [line, limit](const QString &text) {
            // The archive counts characters, QLineEdit's own limit counts code units.
            const QString kept = ToQt(Utf8Prefix(FromQt(text), static_cast<std::size_t>(limit)));
            if (kept == text) return;
            const int cursor = line->cursorPosition();
            line->setText(kept);
            line->setModified(true);
            line->setCursorPosition(cursor);
        });
    state.EditorMade(line, index);
    return line;
}

void SpreadDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *line = qobject_cast<QLineEdit *>(editor); // a window may put a widget of its own over a cell, as an icon
    if (line) line->setText(ToQt(sheet_->state_->model.Shown(index.row(), index.column())));
}

void SpreadDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                          const QModelIndex &) const
{
    constexpr int kLineEditsOwn = 2; // QLineEdit keeps so many pixels at each side for itself
    const int frame = FrameWidth(option.fontMetrics);
    const int padding = std::max(0, SpreadPadding(option.fontMetrics) - kLineEditsOwn - frame);
    auto *line = qobject_cast<QLineEdit *>(editor);
    if (line == nullptr) return QStyledItemDelegate::updateEditorGeometry(editor, option, {});
    line->setTextMargins(padding, 0, padding, 0);
    editor->setGeometry(option.rect.adjusted(frame, frame, -frame, -frame));
}

/// What does not fit is shown whole in a tip.
bool SpreadDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                               const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const QString text = ToQt(sheet_->state_->model.Shown(index.row(), index.column()));
    const QFontMetrics metrics(view->font());
    const int room = view->visualRect(index).width() - 2 * SpreadPadding(metrics);
    QToolTip::showText(event->globalPos(), metrics.horizontalAdvance(text) > room ? PlainTip(text) : QString(), view);
    return true;
}

/// The view drops editors by itself too, with their rows.
void SpreadDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (editor == sheet_->state_->editor) sheet_->state_->editor = nullptr;
    sheet_->setState(QAbstractItemView::NoState);
    QStyledItemDelegate::destroyEditor(editor, index);
}

bool SpreadDelegate::eventFilter(QObject *editor, QEvent *event)
{
    auto &state = *sheet_->state_;
    if (editor != state.editor) return false;
    switch (event->type()) {
    case QEvent::KeyPress:
        return state.EditorKey(static_cast<QKeyEvent *>(event));
    case QEvent::ShortcutOverride:
        // Esc gives the cell back before it closes the dialog.
        if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) event->accept();
        return false;
    case QEvent::MouseButtonPress:
        state.replaces = false;
        return false;
    case QEvent::FocusOut:
        state.FocusLeftEditor(static_cast<QFocusEvent *>(event)->reason());
        return false;
    default:
        return false;
    }
}
