#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class CTarvoDialog;
class CTarvoField;
class QKeyEvent;
class QMouseEvent;
class QTabWidget;
class QWidget;

/// Sees every event of the program before its receiver and brings to the dialogs what concerns them: keys, fields that
/// are left, idle moments. One for the application, see SetUpApplication.
class DialogKeys : public QObject {
  public:
    static void Install();

  protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;

  private:
    explicit DialogKeys(QObject *parent);
    bool KeyPressed(QWidget *receiver, QKeyEvent *key);
    bool MousePressed(QWidget *receiver);
    bool DoubleClicked(QWidget *receiver, QMouseEvent *mouse);
    void FocusMoved(QWidget *left, QWidget *entered);
    void AboutToBlock();

    Qt::FocusReason reason_ = Qt::OtherFocusReason; ///< of the last FocusOut
    bool something_happened_ = false;               ///< since the last idle update
    QElapsedTimer since_idle_;
    QTimer later_; ///< an idle update that was put off
};

/// The control in which Enter, arrows and page keys have a meaning of their own: a grid, a list, their editors, a text
/// of several lines.
bool KeepsItsKeys(const QWidget *focus);

/// Ctrl+PgUp, Ctrl+PgDn and Alt with a number change the tab, when the field with the focus may be left.
/// @return true when the key was used up
bool TranslateTabKey(CTarvoDialog *dialog, QTabWidget *tabs, QKeyEvent *key);

/// The first (last) control of the page that Enter and Tab stop at; null when it has none. The page must be in front.
QWidget *EdgeOf(QWidget *page, bool first);

/// Brings the tabs on which the widget stands to the front.
void BringToFront(QWidget *widget);
