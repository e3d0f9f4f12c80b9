#pragma once

#include "tarvodlg/widgets/TarvoDialog.h"
#include "tests/support/TestArchive.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>

/// Windows over the archive of the demo company, driven by keys.
class TablesWindowTest : public ArchiveTest {
  protected:
    /// The accessible name of the field that has the focus: "Partita IVA".
    static std::string Focused()
    {
        const QWidget *focus = QApplication::focusWidget();
        return focus ? focus->accessibleName().toStdString() : std::string("(nessuno)");
    }

    /// Goes on with Enter, as one who types a form does, until the field of that name has the focus.
    static void EnterTo(const std::string &name)
    {
        for (int presses = 0; presses < 40 && Focused() != name; ++presses) keys::Press(Qt::Key_Return);
        EXPECT_EQ(Focused(), name);
    }

    /// Back with Shift+Tab.
    static void BackTo(const std::string &name)
    {
        for (int presses = 0; presses < 40 && Focused() != name; ++presses)
            keys::Press(Qt::Key_Backtab, Qt::ShiftModifier);
        EXPECT_EQ(Focused(), name);
    }

    /// What a window manager does after a dialog in front of the window was closed.
    static void ComeBack(QWidget *window)
    {
        QApplication::setActiveWindow(window);
        keys::Settle();
    }

    static QLineEdit *Field(const QWidget &window, const std::string &name)
    {
        for (auto *field : window.findChildren<QLineEdit *>())
            if (field->accessibleName().toStdString() == name) return field;
        ADD_FAILURE() << "no field " << name;
        return nullptr;
    }

    static std::string TextOf(const QWidget &window, const std::string &name)
    {
        const QLineEdit *field = Field(window, name);
        return field ? field->text().toStdString() : std::string();
    }

    /// Any label that shows the text, as the status line does.
    static bool Shows(const QWidget &window, const std::string &text)
    {
        for (const auto *label : window.findChildren<QLabel *>())
            if (label->text().toStdString() == text) return true;
        return false;
    }
};
