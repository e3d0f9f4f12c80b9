#include "tarvodlg/widgets/QtUserInterface.h"

#include <QApplication>
#include <QStandardPaths>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true); // settings of a real user are neither read nor written
    QApplication application(argc, argv);
    SetUpApplication();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
