#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The words of the message box keep their names: callers and texts come from a desktop world.
inline constexpr unsigned MB_OK = 0x0, MB_YESNOCANCEL = 0x3, MB_YESNO = 0x4;
inline constexpr unsigned MB_ICONSTOP = 0x10, MB_ICONERROR = 0x10, MB_ICONQUESTION = 0x20, MB_ICONEXCLAMATION = 0x30,
                          MB_ICONINFORMATION = 0x40;
inline constexpr unsigned MB_DEFBUTTON1 = 0x0, MB_DEFBUTTON2 = 0x100, MB_DEFBUTTON3 = 0x200;
inline constexpr int IDOK = 1, IDCANCEL = 2, IDYES = 6, IDNO = 7;

/// The answer that the flags name as default: IDOK, IDYES, IDNO or IDCANCEL.
int DefaultAnswer(unsigned flags);

/// A file to be picked: title of the window and filters as "Documenti Excel (*.xls)|*.xls||".
struct FilePicking {
    std::string title;
    std::string filter;
    std::string default_extension;
    std::filesystem::path proposed;
    bool save = false;
    bool several = false;
};

/// A progress window in the course of a long run.
class ProgressView {
  public:
    virtual ~ProgressView() = default;
    virtual void SetStatus(const std::string &text) = 0;
    virtual void SetRange(long first, long last) = 0;
    virtual void SetPosition(long position) = 0;
};

/// The one way in which the core talks to the user: Qt windows on the desk, the terminal for the command line, a script
/// in the tests. An algorithm with a question in its middle is written once, against this port.
class UserInterface {
  public:
    virtual ~UserInterface() = default;

    /// Shows a text and waits for one of its buttons. @param flags  MB_* or-ed. @return IDOK, IDCANCEL, IDYES or IDNO
    virtual int MessageBox(const std::string &text, unsigned flags) = 0;
    virtual void Beep(int hertz, int milliseconds) = 0;
    virtual std::unique_ptr<ProgressView> OpenProgress(const std::string &title) = 0;

    /// Empty when the user cancelled.
    virtual std::vector<std::filesystem::path> PickFiles(const FilePicking &picking) = 0;
    virtual std::optional<std::filesystem::path> PickFolder(const std::string &title) = 0;
    /// A day number; nothing when cancelled.
    virtual std::optional<long> PickDate(const std::string &title, long proposed) = 0;
    virtual std::optional<long> PickYear(const std::string &title, long proposed) = 0;

    virtual long Today() = 0;           ///< day number
    virtual long SecondOfDay() = 0;     ///< 0 to 86399, local time
    virtual std::string UserName() = 0; ///< who works at this station, for "who did it" columns
};

/// The interface in use. A program sets it before any work; the caller keeps ownership.
UserInterface &CurrentUserInterface();
/// @return the one in use before
UserInterface *SetUserInterface(UserInterface *user_interface);

int AfxMessageBox(const std::string &text, unsigned flags = MB_OK);
void Beep(int hertz, int milliseconds);
/// The beep of a refused field or action: 1000 Hz for 10 ms.
void BeepRefused();
