#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace keys {

namespace {

/// Keys go where the window system sends them: an open list or menu first, then the control with the focus.
QWidget *Target()
{
    if (QWidget *popup = QApplication::activePopupWidget()) return popup->focusWidget() ? popup->focusWidget() : popup;
    QWidget *focus = QApplication::focusWidget();
    return focus ? focus : QApplication::activeWindow();
}

/// The code that a keyboard sends with a character.
Qt::Key KeyOf(QChar character)
{
    const ushort code = character.toUpper().unicode();
    return code < 0x100 ? static_cast<Qt::Key>(code) : Qt::Key_unknown;
}

} // namespace

void Type(const QString &text)
{
    for (const QChar character : text)
        if (QWidget *target = Target())
            QTest::sendKeyEvent(QTest::Click, target, KeyOf(character), QString(character), Qt::NoModifier);
    Settle();
}

void Press(int key, Qt::KeyboardModifiers modifiers)
{
    if (QWidget *target = Target()) QTest::keyClick(target, static_cast<Qt::Key>(key), modifiers);
    Settle();
}

void Settle()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
}

void Open(QWidget *window)
{
    window->show();
    window->activateWindow();
    QApplication::setActiveWindow(window);
    Settle();
}

void WhenNextWindowOpens(std::function<void(QWidget *)> steps)
{
    // Those that stand there now: when the last one closes, the one behind it is no further window.
    std::vector<QPointer<QWidget>> before;
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window->isVisible()) before.push_back(window);
    auto *timer = new QTimer(qApp);
    timer->setInterval(5);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, before, steps = std::move(steps)] {
        QPointer<QWidget> window = QApplication::activeModalWidget();
        if (!window || std::find(before.begin(), before.end(), window) != before.end()) return;
        timer->stop();
        const auto keep = steps; // the timer and what it holds may go while the steps run
        timer->deleteLater();
        QApplication::setActiveWindow(window);
        Settle();
        keep(window);
        if (!window || !window->isVisible()) return;
        ADD_FAILURE() << "the window is still open: " << window->windowTitle().toStdString();
        if (auto *dialog = qobject_cast<QDialog *>(window)) dialog->QDialog::done(0); // no question that waits for ever
    });
    timer->start();
}

} // namespace keys
