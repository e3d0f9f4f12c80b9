#pragma once

#include <QDialog>
#include <QString>
#include <functional>

/// A user with a keyboard and no mouse: keys go to whatever has the focus in the active window, as from the real one.
namespace keys {

/// Types the text, letter by letter.
void Type(const QString &text);
/// Presses a key: Press(Qt::Key_Tab), Press(Qt::Key_S, Qt::ControlModifier).
void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
/// Lets the program do what it put off: focus given back, idle updates.
void Settle();

/// Shows the dialog without waiting for its end, focus on its first field.
void Open(QWidget *window);

/// Runs the steps as soon as a further window (a dialog opened by the next key) is active; one that they leave open is
/// a failure. Call before the key that opens it.
void WhenNextWindowOpens(std::function<void(QWidget *)> steps);

} // namespace keys
