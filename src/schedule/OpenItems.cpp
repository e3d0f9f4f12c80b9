#include "schedule/OpenItems.h"

#include "tarvodlg/base/Dates.h"

#include <fmt/format.h>

std::string CentsText(const std::string &condition)
{
    return fmt::format("CAST(COALESCE(SUM(CASE WHEN {} THEN CAST(ROUND(sca_importo * 100) AS BIGINT) ELSE 0 END), 0)"
                       " AS BIGINT)",
                       condition);
}

std::string MonthName(long day)
{
    constexpr const char *kMonths[] = {"Gennaio", "Febbraio", "Marzo",     "Aprile",  "Maggio",   "Giugno",
                                       "Luglio",  "Agosto",   "Settembre", "Ottobre", "Novembre", "Dicembre"};
    return fmt::format("{} {}", kMonths[Month(day) - 1], Year(day));
}

std::string FormulaDate(long day)
{
    return fmt::format("Date({},{},{})", Year(day), Month(day), Day(day));
}
