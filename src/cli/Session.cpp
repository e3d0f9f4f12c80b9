#include "cli/Session.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Company.h"

#include <fmt/format.h>
#include <unistd.h>

namespace {

std::string Dump(const nlohmann::json &value)
{
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

std::string Session::ArchiveName() const
{
    return archive.empty() ? DefaultArchive() : archive;
}

void Session::OpenArchive()
{
    const std::string name = ArchiveName();
    OpenCompany(name, IsPostgresTarget(name) ? DataFolderOf(name) : std::filesystem::path{});
}

bool Session::Colours() const
{
    return isatty(STDOUT_FILENO) == 1 && Environment("NO_COLOR").empty();
}

long ParseDateOption(const std::string &option, const std::string &text)
{
    if (text.empty()) return 0;
    const std::optional<long> day = ParseDate(text);
    if (!day) throw UsageError(fmt::format("{}: «{}» non è una data. Scrivere AAAA-MM-GG o GG/MM/AAAA.", option, text));
    return *day;
}

void Print(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintJson(const nlohmann::json &document)
{
    Print(Dump(document) + "\n");
}

JsonListPrinter::State JsonListPrinter::open_ = State::None;

JsonListPrinter::JsonListPrinter(const std::string &name)
{
    open_ = State::Empty;
    Print("{" + Dump(name) + ": [");
}

void JsonListPrinter::Add(const nlohmann::json &item)
{
    Print((open_ == State::Empty ? "\n  " : ",\n  ") + Dump(item));
    open_ = State::Filled;
}

void JsonListPrinter::Finish(const nlohmann::json &more)
{
    FinishOpen(more);
}

bool JsonListPrinter::FinishOpen(const nlohmann::json &more)
{
    if (open_ == State::None) return false;
    std::string tail = open_ == State::Empty ? "]" : "\n]";
    open_ = State::None;
    for (const auto &[key, value] : more.items()) tail += fmt::format(", {}: {}", Dump(key), Dump(value));
    Print(tail + "}\n");
    return true;
}

nlohmann::json JsonAmount(double euro)
{
    return Round(euro, 2);
}

nlohmann::json JsonDate(long day)
{
    return day == 0 ? nlohmann::json(nullptr) : nlohmann::json(FormatIsoDate(day));
}
