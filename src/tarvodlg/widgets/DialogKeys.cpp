#include "tarvodlg/widgets/DialogKeys.h"

#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/TarvoDialog.h"

#include <QAbstractEventDispatcher>
#include <QAbstractItemView>
#include <QApplication>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTabBar>
#include <QTabWidget>
#include <QTextEdit>

namespace {

constexpr int kIdlePauseMs = 50;

CTarvoDialog *DialogOf(QWidget *widget)
{
    return widget ? dynamic_cast<CTarvoDialog *>(widget->window()) : nullptr;
}

int TabOfKey(const QTabWidget &tabs, const QKeyEvent &key)
{
    const Qt::KeyboardModifiers modifiers = key.modifiers() & ~Qt::KeypadModifier;
    const int count = tabs.count();
    if (count > 1 && modifiers == Qt::ControlModifier) {
        if (key.key() == Qt::Key_PageDown) return (tabs.currentIndex() + 1) % count;
        if (key.key() == Qt::Key_PageUp) return (tabs.currentIndex() + count - 1) % count;
    }
    const int number = key.key() - Qt::Key_1;
    return modifiers == Qt::AltModifier && number >= 0 && number < std::min(count, 9) ? number : -1;
}

} // namespace

void DialogKeys::Install()
{
    static QPointer<DialogKeys> installed;
    if (!installed) installed = new DialogKeys(qApp);
}

DialogKeys::DialogKeys(QObject *parent) : QObject(parent)
{
    later_.setSingleShot(true);
    since_idle_.start();
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget *left, QWidget *entered) { FocusMoved(left, entered); });
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            [this] { AboutToBlock(); });
}

bool DialogKeys::eventFilter(QObject *receiver, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        something_happened_ = true;
        return receiver->isWidgetType() &&
               KeyPressed(static_cast<QWidget *>(receiver), static_cast<QKeyEvent *>(event));
    case QEvent::MouseButtonPress:
        return receiver->isWidgetType() && MousePressed(static_cast<QWidget *>(receiver));
    case QEvent::MouseButtonDblClick:
        return receiver->isWidgetType() &&
               DoubleClicked(static_cast<QWidget *>(receiver), static_cast<QMouseEvent *>(event));
    case QEvent::FocusOut:
        reason_ = static_cast<QFocusEvent *>(event)->reason();
        something_happened_ = true;
        break;
    case QEvent::Timer:
    case QEvent::MetaCall:
        something_happened_ = something_happened_ || receiver != &later_;
        break;
    case QEvent::KeyRelease:
    case QEvent::MouseButtonRelease:
    case QEvent::FocusIn:
    case QEvent::WindowActivate:
    case QEvent::Show:
        something_happened_ = true;
        break;
    default:
        break;
    }
    return false;
}

bool DialogKeys::KeyPressed(QWidget *receiver, QKeyEvent *key)
{
    CTarvoDialog *dialog = DialogOf(receiver);
    if (!dialog) return false;
    // A key that the control does not take is offered to its parents one by one; the dialog had it at the first.
    const QWidget *focus = dialog->focusWidget();
    if (receiver != (focus ? focus : dialog)) return false;
    dialog->ForgetRefusal();
    bool used = false;
    dialog->Guarded(LUMERA_TAG, [&] { used = dialog->PreTranslateMessage(key); });
    if (used) key->accept();
    return used;
}

bool DialogKeys::MousePressed(QWidget *receiver)
{
    CTarvoDialog *dialog = DialogOf(receiver);
    if (!dialog) return false;
    // The press took the focus from a field that was refused: nothing else may come of it.
    if (dialog->IsRefusing()) return true;
    return qobject_cast<QTabBar *>(receiver) && !dialog->LeaveFocusedField();
}

bool DialogKeys::DoubleClicked(QWidget *receiver, QMouseEvent *mouse)
{
    CTarvoDialog *dialog = DialogOf(receiver);
    CTarvoField *field = dialog && mouse->button() == Qt::LeftButton ? FieldOf(receiver) : nullptr;
    if (!field || !field->on_dbl_click || field->IsProtected()) return false;
    dialog->OpenLookup(field);
    return true;
}

void DialogKeys::FocusMoved(QWidget *left, QWidget *entered)
{
    // Without a control that takes the focus the field is not left but hidden or destroyed.
    if (!left || !entered || left->window() != entered->window()) return;
    if (reason_ == Qt::ActiveWindowFocusReason || reason_ == Qt::PopupFocusReason || reason_ == Qt::MenuBarFocusReason)
        return;
    CTarvoDialog *dialog = DialogOf(left);
    CTarvoField *field = dialog ? FieldOf(left) : nullptr;
    if (field && field != FieldOf(entered)) dialog->FieldLeft(field);
}

void DialogKeys::AboutToBlock()
{
    // The signal comes with every turn of the event loop; buttons need not be brought up to date more often than
    // anybody can see, nor when nothing happened.
    if (!something_happened_) return;
    if (!since_idle_.hasExpired(kIdlePauseMs)) {
        if (!later_.isActive()) later_.start(kIdlePauseMs);
        return;
    }
    something_happened_ = false;
    QWidget *window = QApplication::activeModalWidget();
    if (!window) window = QApplication::activeWindow();
    if (CTarvoDialog *dialog = DialogOf(window)) dialog->Idle();
    since_idle_.restart();
}

bool KeepsItsKeys(const QWidget *focus)
{
    for (; focus && !focus->isWindow(); focus = focus->parentWidget())
        if (qobject_cast<const QAbstractItemView *>(focus) || qobject_cast<const QPlainTextEdit *>(focus) ||
            qobject_cast<const QTextEdit *>(focus))
            return true;
    return false;
}

QWidget *EdgeOf(QWidget *page, bool first)
{
    const auto next_of = [first](const QWidget *widget) {
        return first ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    for (QWidget *next = next_of(page); next != page; next = next_of(next)) {
        const bool is_stop = next->isVisible() && next->isEnabled() && (next->focusPolicy() & Qt::TabFocus) &&
                             !next->focusProxy(); // which is a control of its own
        // The editor of a cell belongs to its grid.
        if (is_stop && page->isAncestorOf(next) && !KeepsItsKeys(next->parentWidget())) return next;
    }
    return nullptr;
}

bool TranslateTabKey(CTarvoDialog *dialog, QTabWidget *tabs, QKeyEvent *key)
{
    const int wanted = TabOfKey(*tabs, *key);
    if (wanted < 0) return false;
    const QWidget *focus = dialog->focusWidget();
    // Who walks down a list with pages beside it stays in the list; the key of the page in front then enters it.
    const bool is_in_list = qobject_cast<const QAbstractItemView *>(focus) && !tabs->isAncestorOf(focus);
    const bool is_in_front = wanted == tabs->currentIndex();
    if ((is_in_front && !is_in_list) || !tabs->isTabEnabled(wanted) || !dialog->LeaveFocusedField()) return true;
    tabs->setCurrentIndex(wanted);
    if (is_in_list && !is_in_front) return true;
    QWidget *page = tabs->currentWidget();
    QWidget *field = page->isAncestorOf(dialog->focusWidget()) ? dialog->focusWidget() : EdgeOf(page, true);
    if (field) field->setFocus(Qt::TabFocusReason);
    return true;
}

void BringToFront(QWidget *widget)
{
    for (QWidget *page = widget; page && !page->isWindow(); page = page->parentWidget()) {
        QWidget *stack = page->parentWidget();
        auto *tabs = stack ? qobject_cast<QTabWidget *>(stack->parentWidget()) : nullptr;
        if (tabs && tabs->indexOf(page) >= 0) tabs->setCurrentWidget(page);
    }
}
