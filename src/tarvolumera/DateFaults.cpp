#include "tarvolumera/DateFaults.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Company.h"

#include <algorithm>
#include <fmt/printf.h>

namespace {

/// Paths in texts are written with the separator of the desks the books come from; here it is the system's own. The
/// folder put in afterwards may contain any character.
std::string WithFolder(std::string format)
{
    std::replace(format.begin(), format.end(), '\\', static_cast<char>(std::filesystem::path::preferred_separator));
    return format;
}

} // namespace

std::optional<DatePeriod> PickDatePeriod()
{
    const int year = static_cast<int>(lumera_db_impo.dit_anno);
    const auto first = CurrentUserInterface().PickDate("Dalla data", DateToJulian(1, 1, year));
    if (!first) return std::nullopt;
    const auto last = CurrentUserInterface().PickDate("Alla data", DateToJulian(31, 12, year));
    if (!last) return std::nullopt;
    return DatePeriod{*first, *last};
}

std::filesystem::path DateFaults::LogFile(const std::string &name)
{
    return fmt::sprintf(WithFolder("%-s\\out\\%-s"), lumera_db_folder.string(), name);
}

void DateFaults::Conclude(const std::string &name) const
{
    CompanyFolder("out");
    WriteFileWhole(LogFile(name), text_);
    if (count_ == 0) return;
    AfxMessageBox(fmt::sprintf(WithFolder(" Trovati %ld errori!\n\nConsultare il file %-s\\out\\%-s"), count_,
                               lumera_db_folder.string(), name),
                  MB_OK | MB_ICONEXCLAMATION);
}
