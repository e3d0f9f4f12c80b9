#pragma once

#include "tarvodlg/base/UserInterface.h"

#include <cstdio>

/// The user at a terminal, or a script: texts go to standard error followed by the answer taken, on one line
/// ("\n" shown as a blank), e.g. "Vuoi Continuare ? -> No". Questions take their default answer, or Yes with
/// answer_yes; a Yes/No/Cancel question takes the answer set for it, else its default. Files and dates are never asked:
/// nothing.
class ConsoleUserInterface : public UserInterface {
  public:
    explicit ConsoleUserInterface(std::FILE *out = stderr) : out_(out) {}

    bool answer_yes = false;          ///< --si
    std::optional<int> answer_choice; ///< for Yes/No/Cancel questions: IDYES, IDNO or IDCANCEL
    bool quiet = false;               ///< information is not printed; questions and errors are
    bool progress = true;             ///< advance lines, only when `out` is a terminal
    std::optional<long> today;        ///< day number instead of the clock's
    int beeps = 0;

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

    /// The text of the last error or question that was answered No: what a refused command reports.
    const std::string &LastRefusal() const { return last_refusal_; }

  private:
    std::FILE *out_;
    std::string last_refusal_;
};
