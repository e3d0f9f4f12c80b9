#include "tarvolumera/DialectTexts.h"

#include "tarvolumera/Company.h"

#include <fmt/format.h>

namespace {

constexpr int kFullWidth = 10, kStartWidth = 6;

std::string ZeroPart(std::string_view value, int width)
{
    return fmt::format("LPAD(CONVERT(VARCHAR({}), {}), 10, '0')", width, value);
}

} // namespace

const char *TodayText()
{
    return lumera_db_type != 0 ? "Now()::date" : "CURRENT_DATE";
}

std::string RoundedSumText(std::string_view expression, std::string_view name)
{
    if (lumera_db_type != 0) return fmt::format("ROUND(COALESCE(SUM({}),0)::numeric,2) {}", expression, name);
    return fmt::format("ROUND(COALESCE(SUM({}),0),2) {}", expression, name);
}

std::string AccountKeyText(std::string_view mas, std::string_view con, std::string_view sot, bool is_range_start)
{
    if (lumera_db_type != 0)
        return fmt::format("CONCAT(LPAD(CAST({} AS VARCHAR), 10, '0'), LPAD(CAST({} AS VARCHAR), 10, '0'), "
                           "LPAD(CAST({} AS VARCHAR), 10, '0'))",
                           mas, con, sot);
    return fmt::format("{} + {} + {}", ZeroPart(mas, kFullWidth), ZeroPart(con, kFullWidth),
                       ZeroPart(sot, is_range_start ? kStartWidth : kFullWidth));
}

std::string AccountRangeText(std::string_view mas, std::string_view con, std::string_view sot)
{
    return fmt::format("{} BETWEEN {} AND {}", AccountKeyText(mas, con, sot),
                       AccountKeyText(":m_start", ":c_start", ":s_start", true),
                       AccountKeyText(":m_stop", ":c_stop", ":s_stop"));
}
