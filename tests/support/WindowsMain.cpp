#include "tarvodlg/widgets/QtUserInterface.h"

#include <QApplication>
#include <QStandardPaths>
#include <gtest/gtest.h>

// Fonts are found by libraries that keep their tables until the end of the program; those are no leaks of ours.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libQt6Gui\nleak:libQt6XcbQpa\nleak:libdbus\nleak:libglib\n";
}

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true); // settings of a real user are neither read nor written
    QApplication application(argc, argv);
    SetUpApplication();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
