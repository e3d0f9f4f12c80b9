#include "tarvodlg/base/ConsoleUserInterface.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <pwd.h>
#include <unistd.h>
#include <vector>

#include <fmt/format.h>

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Text.h"

namespace {

bool IsTerminal(std::FILE *out)
{
    const int descriptor = fileno(out);
    return descriptor >= 0 && isatty(descriptor) == 1;
}

void Print(std::FILE *out, const std::string &text)
{
    // A terminal that went away must not stop work on the books; there is nobody left to tell either.
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), out));
    static_cast<void>(std::fflush(out));
}

constexpr const char *kEraseLine = "\r\033[K";

/// Where nobody watches, in a log or a pipe, an advance is noise.
class UnseenProgress : public ProgressView {
  public:
    void SetStatus(const std::string &) override {}
    void SetRange(long, long) override {}
    void SetPosition(long) override {}
};

/// One line that is written over itself, at most once per hundredth of the run.
class TerminalProgress : public ProgressView {
  public:
    TerminalProgress(std::FILE *out, const std::string &title) : out_(out), title_(OnOneLine(title)) { Show(); }
    ~TerminalProgress() override { Print(out_, kEraseLine); }
    TerminalProgress(const TerminalProgress &) = delete;
    TerminalProgress &operator=(const TerminalProgress &) = delete;

    void SetStatus(const std::string &text) override
    {
        status_ = OnOneLine(text);
        Show();
    }
    void SetRange(long first, long last) override
    {
        first_ = first;
        last_ = last;
        SetPosition(first);
    }
    void SetPosition(long position) override
    {
        const long length = last_ - first_;
        const long percent =
            length <= 0
                ? -1
                : static_cast<long>(100.0 * static_cast<double>(position - first_) / static_cast<double>(length));
        if (percent == percent_) return;
        percent_ = percent;
        Show();
    }

  private:
    void Show()
    {
        std::string line = title_;
        if (!status_.empty()) line += ' ' + status_;
        if (percent_ >= 0) line += fmt::format(" {}%", std::min(percent_, 100L));
        // A line that wraps cannot be written over; 79 characters stay on one in every terminal of today.
        Print(out_, kEraseLine + std::string(Utf8Prefix(line, 79)));
    }

    std::FILE *out_;
    std::string title_;
    std::string status_;
    long first_ = 0;
    long last_ = 0;
    long percent_ = -1;
};

std::tm LocalTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

unsigned Buttons(unsigned flags)
{
    return flags & 0xF;
}
unsigned Icon(unsigned flags)
{
    return flags & 0xF0;
}

const char *AnswerWord(int answer)
{
    switch (answer) {
    case IDYES:
        return "Sì";
    case IDNO:
        return "No";
    default:
        return "Annulla";
    }
}

} // namespace

int ConsoleUserInterface::MessageBox(const std::string &text, unsigned flags)
{
    const bool is_question = Buttons(flags) == MB_YESNO || Buttons(flags) == MB_YESNOCANCEL;
    int answer = DefaultAnswer(flags);
    if (Buttons(flags) == MB_YESNO && answer_yes) answer = IDYES;
    if (Buttons(flags) == MB_YESNOCANCEL &&
        (answer_choice == IDYES || answer_choice == IDNO || answer_choice == IDCANCEL))
        answer = *answer_choice;

    if (is_question ? answer != IDYES : Icon(flags) == MB_ICONSTOP) last_refusal_ = text;

    const bool is_information = !is_question && (Icon(flags) == MB_ICONINFORMATION || Icon(flags) == 0);
    if (quiet && is_information) return answer;
    std::string line = IsTerminal(out_) ? kEraseLine : ""; // an advance may stand on the line
    line += OnOneLine(text);
    if (is_question) line.append(" -> ").append(AnswerWord(answer));
    Print(out_, line + '\n');
    return answer;
}

void ConsoleUserInterface::Beep(int, int)
{
    ++beeps;
    if (!quiet && IsTerminal(out_)) Print(out_, "\a");
}

std::unique_ptr<ProgressView> ConsoleUserInterface::OpenProgress(const std::string &title)
{
    if (progress && IsTerminal(out_)) return std::make_unique<TerminalProgress>(out_, title);
    return std::make_unique<UnseenProgress>();
}

std::vector<std::filesystem::path> ConsoleUserInterface::PickFiles(const FilePicking &)
{
    return {};
}

std::optional<std::filesystem::path> ConsoleUserInterface::PickFolder(const std::string &)
{
    return std::nullopt;
}

std::optional<long> ConsoleUserInterface::PickDate(const std::string &, long)
{
    return std::nullopt;
}

std::optional<long> ConsoleUserInterface::PickYear(const std::string &, long)
{
    return std::nullopt;
}

long ConsoleUserInterface::Today()
{
    if (today) return *today;
    const std::tm local = LocalTime();
    return DateToJulian(local.tm_mday, local.tm_mon + 1, local.tm_year + 1900);
}

long ConsoleUserInterface::SecondOfDay()
{
    const std::tm local = LocalTime();
    return std::min(local.tm_hour * 3600L + local.tm_min * 60L + local.tm_sec, 86399L); // a leap second has no place
}

std::string ConsoleUserInterface::UserName()
{
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd *found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
        return found->pw_name;
    const char *user = std::getenv("USER"); // containers run under numbers that have no account
    return user != nullptr && *user != '\0' ? user : "utente";
}
