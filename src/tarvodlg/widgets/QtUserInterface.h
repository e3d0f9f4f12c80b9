#pragma once

#include "tarvodlg/base/UserInterface.h"

#include <QWidget>

/// The user at the desk: message boxes, pickers, the progress window.
class QtUserInterface : public UserInterface {
  public:
    QtUserInterface();
    ~QtUserInterface() override;

    /// Buttons in Italian ("Sì", "No", "OK", "Annulla"), the default one as the flags say; S and N answer, Esc is No.
    int MessageBox(const std::string &text, unsigned flags) override;
    void Beep(int hertz, int milliseconds) override;
    std::unique_ptr<ProgressView> OpenProgress(const std::string &title) override;
    std::vector<std::filesystem::path> PickFiles(const FilePicking &picking) override;
    std::optional<std::filesystem::path> PickFolder(const std::string &title) override;
    std::optional<long> PickDate(const std::string &title, long proposed) override;
    std::optional<long> PickYear(const std::string &title, long proposed) override;
    long Today() override;
    long SecondOfDay() override;
    std::string UserName() override;
};

/// The window over which a further one opens: the one that blocks the others, else the active one; may be null.
QWidget *WindowInFront();

/// Prepares the one QApplication for the programs of the suite: Italian locale and standard texts, style, icon,
/// routing of keys to the dialogs. Call once after making the application.
void SetUpApplication();
