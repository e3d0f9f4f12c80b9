#include "tarvodlg/base/ScriptedUserInterface.h"

#include <algorithm>

#include <fmt/format.h>

#include "tarvodlg/base/Dates.h"

namespace {

/// Keeps the texts of a progress window where the test can read them.
class RecordedProgress : public ProgressView {
  public:
    explicit RecordedProgress(std::vector<std::string> *texts) : texts_(texts) {}
    void SetStatus(const std::string &text) override { texts_->push_back(text); }
    void SetRange(long, long) override {}
    void SetPosition(long) override {}

  private:
    std::vector<std::string> *texts_;
};

bool IsButtonOf(int answer, unsigned flags)
{
    switch (flags & 0xF) {
    case MB_YESNO:
        return answer == IDYES || answer == IDNO;
    case MB_YESNOCANCEL:
        return answer == IDYES || answer == IDNO || answer == IDCANCEL;
    default:
        return answer == IDOK;
    }
}

} // namespace

void ScriptedUserInterface::Expect(std::string text, int answer)
{
    script_.push_back({"MessageBox: " + text, answer, {}, std::nullopt});
}

void ScriptedUserInterface::ExpectFiles(std::vector<std::filesystem::path> answer)
{
    script_.push_back({"PickFiles", 0, std::move(answer), std::nullopt});
}

void ScriptedUserInterface::ExpectFolder(std::optional<std::filesystem::path> answer)
{
    Step step{"PickFolder", 0, {}, std::nullopt};
    if (answer) step.files.push_back(*std::move(answer));
    script_.push_back(std::move(step));
}

void ScriptedUserInterface::ExpectDate(std::string title, std::optional<long> answer)
{
    script_.push_back({"PickDate: " + title, 0, {}, answer});
}

void ScriptedUserInterface::ExpectYear(std::string title, std::optional<long> answer)
{
    script_.push_back({"PickYear: " + title, 0, {}, answer});
}

std::string ScriptedUserInterface::Faults() const
{
    std::string all = faults_;
    for (const Step &step : script_) all += fmt::format("never came: {}\n", step.text);
    return all;
}

ScriptedUserInterface::Step ScriptedUserInterface::Next(const std::string &kind_and_text, const Step &fallback)
{
    const auto met =
        std::find_if(script_.begin(), script_.end(), [&](const Step &step) { return step.text == kind_and_text; });
    if (met == script_.end()) {
        faults_ += fmt::format("unexpected: {}\n", kind_and_text);
        return fallback;
    }
    // What was left out before it is a fault of its own; the script goes on from here, so that one fault stays one.
    for (auto skipped = script_.begin(); skipped != met; ++skipped)
        faults_ += fmt::format("left out: {}\n", skipped->text);
    Step step = std::move(*met);
    script_.erase(script_.begin(), met + 1);
    return step;
}

namespace {

/// A message ends with the place it comes from, "[PNota:2227]"; the line is no matter of a test.
std::string WithoutTag(const std::string &text)
{
    const std::size_t tag = text.rfind("\n\n[");
    return tag != std::string::npos && text.ends_with(']') && text.find(':', tag) != std::string::npos
               ? text.substr(0, tag)
               : text;
}

} // namespace

int ScriptedUserInterface::MessageBox(const std::string &text, unsigned box_flags)
{
    shown.push_back(text);
    flags.push_back(box_flags);
    const int by_default = DefaultAnswer(box_flags);
    const int answer = Next("MessageBox: " + WithoutTag(text), {"", by_default, {}, std::nullopt}).answer;
    if (IsButtonOf(answer, box_flags)) return answer;
    faults_ += fmt::format("answer {} is no button of: {}\n", answer, text);
    return by_default;
}

void ScriptedUserInterface::Beep(int, int)
{
    ++beeps;
}

std::unique_ptr<ProgressView> ScriptedUserInterface::OpenProgress(const std::string &title)
{
    progress.push_back(title);
    return std::make_unique<RecordedProgress>(&progress);
}

std::vector<std::filesystem::path> ScriptedUserInterface::PickFiles(const FilePicking &)
{
    return Next("PickFiles", {}).files;
}

std::optional<std::filesystem::path> ScriptedUserInterface::PickFolder(const std::string &)
{
    const Step step = Next("PickFolder", {});
    if (step.files.empty()) return std::nullopt;
    return step.files.front();
}

std::optional<long> ScriptedUserInterface::PickDate(const std::string &title, long)
{
    return Next("PickDate: " + title, {}).value;
}

std::optional<long> ScriptedUserInterface::PickYear(const std::string &title, long)
{
    return Next("PickYear: " + title, {}).value;
}

long ScriptedUserInterface::Today()
{
    return today != 0 ? today : DateToJulian(1, 6, 2026);
}
