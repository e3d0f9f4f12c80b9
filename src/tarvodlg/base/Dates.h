#pragma once

#include <optional>
#include <string>
#include <string_view>

// Dates are day numbers: the Julian day of the civil date in the Gregorian calendar (1 January 1970 = 2440588).
// 0 is no date. Every function takes 0 and gives 0, "" or nothing back for it.

/// @return the day number, or 0 when the three do not form a date of the years 1 to 9999
long DateToJulian(int day, int month, int year);

/// Splits a day number; 0 gives 0, 0, 0.
void JulianToDate(long julian, int *day, int *month, int *year);

int Day(long julian);
int Month(long julian);
int Year(long julian);
bool IsLeapYear(int year);
int DaysInMonth(int month, int year);

/// Last day of the month in which the day falls.
long LastDayOfMonth(long julian);

std::string FormatDate(long julian);    ///< "15/03/2026"
std::string FormatIsoDate(long julian); ///< "2026-03-15"

/// Reads "YYYY-MM-DD" or "D/M/YYYY" ('-' and '.' serve as '/'; years of four digits). Blanks around are dropped.
/// Nothing when it is no date.
std::optional<long> ParseDate(std::string_view text);
