#pragma once

#include "tarvodlg/base/UserInterface.h"

#include <deque>

/// The user of a test: expects exact texts in their order and gives the prepared answers. What comes unexpected is
/// recorded as a fault and answered with the default; so is an answer that the box has no button for. A test ends with
/// EXPECT_EQ(ui.Faults(), "").
class ScriptedUserInterface : public UserInterface {
  public:
    /// @param text  without the tag of the place, which is cut from what is shown too
    void Expect(std::string text, int answer = IDOK);
    void ExpectFiles(std::vector<std::filesystem::path> answer);
    void ExpectFolder(std::optional<std::filesystem::path> answer);
    void ExpectDate(std::string title, std::optional<long> answer);
    void ExpectYear(std::string title, std::optional<long> answer);

    /// Everything that went another way, expectations never met included; empty when all was as expected.
    std::string Faults() const;

    int beeps = 0;
    long today = 0;                    ///< day number given by Today(); 0 = 1 June 2026
    std::vector<std::string> shown;    ///< every text of MessageBox in order
    std::vector<unsigned> flags;       ///< the flags it was shown with
    std::vector<std::string> progress; ///< titles and status texts of progress windows

    int MessageBox(const std::string &text, unsigned flags) override;
    void Beep(int hertz, int milliseconds) override;
    std::unique_ptr<ProgressView> OpenProgress(const std::string &title) override;
    std::vector<std::filesystem::path> PickFiles(const FilePicking &picking) override;
    std::optional<std::filesystem::path> PickFolder(const std::string &title) override;
    std::optional<long> PickDate(const std::string &title, long proposed) override;
    std::optional<long> PickYear(const std::string &title, long proposed) override;
    long Today() override;
    long SecondOfDay() override { return 0; }
    std::string UserName() override { return "prova"; }

  private:
    struct Step {
        std::string text;
        int answer = 0;
        std::vector<std::filesystem::path> files;
        std::optional<long> value;
    };
    Step Next(const std::string &kind_and_text, const Step &fallback);

    std::deque<Step> script_;
    std::string faults_;
};
