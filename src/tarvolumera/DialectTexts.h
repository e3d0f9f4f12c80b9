#pragma once

#include <string>
#include <string_view>

// The places where a query of the module reads differently in the two dialects. Each function gives the text for the
// dialect of the open archive (lumera_db_type).

/// Today's date: "Now()::date" or "CURRENT_DATE".
const char *TodayText();

/// A sum rounded to two decimals under a name: ROUND(COALESCE(SUM(expression),0),2) name, with the cast that PostgreSQL
/// needs to round a double.
std::string RoundedSumText(std::string_view expression, std::string_view name);

/// The key of an account as one text of thirty digits, for ranges that compare master, account and sub-account
/// together.
/// @param mas, con, sot  columns or parameters (":m_start")
/// @param is_range_start  the sub-account at the start of a range is converted to six digits in the zero dialect, all
/// other
///        parts to ten; stored reports depend on it
std::string AccountKeyText(std::string_view mas, std::string_view con, std::string_view sot,
                           bool is_range_start = false);

/// The condition that an account lies between two others, bounds included: parameters m_start, c_start, s_start,
/// m_stop, c_stop, s_stop.
std::string AccountRangeText(std::string_view mas, std::string_view con, std::string_view sot);
