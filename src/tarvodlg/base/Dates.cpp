#include "tarvodlg/base/Dates.h"

#include <array>
#include <charconv>
#include <chrono>

#include "tarvodlg/base/Text.h"

namespace {

constexpr long kUnixEpoch = 2440588; // 1 January 1970
constexpr long kFirstDay = 1721426;  // 1 January 1
constexpr long kLastDay = 5373484;   // 31 December 9999

std::chrono::year_month_day ToCalendar(long julian)
{
    return std::chrono::sys_days(std::chrono::days(julian - kUnixEpoch));
}

bool IsDay(long julian)
{
    return julian >= kFirstDay && julian <= kLastDay;
}

} // namespace

long DateToJulian(int day, int month, int year)
{
    if (year < 1 || year > 9999 || day < 1 || day > DaysInMonth(month, year)) return 0;
    const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    return std::chrono::sys_days(date).time_since_epoch().count() + kUnixEpoch;
}

void JulianToDate(long julian, int *day, int *month, int *year)
{
    *day = *month = *year = 0;
    if (!IsDay(julian)) return;
    const std::chrono::year_month_day date = ToCalendar(julian);
    *day = static_cast<int>(static_cast<unsigned>(date.day()));
    *month = static_cast<int>(static_cast<unsigned>(date.month()));
    *year = static_cast<int>(date.year());
}

int Day(long julian)
{
    return IsDay(julian) ? static_cast<int>(static_cast<unsigned>(ToCalendar(julian).day())) : 0;
}

int Month(long julian)
{
    return IsDay(julian) ? static_cast<int>(static_cast<unsigned>(ToCalendar(julian).month())) : 0;
}

int Year(long julian)
{
    return IsDay(julian) ? static_cast<int>(ToCalendar(julian).year()) : 0;
}

bool IsLeapYear(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(int month, int year)
{
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12) return 0;
    return month == 2 && IsLeapYear(year) ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

long LastDayOfMonth(long julian)
{
    if (!IsDay(julian)) return 0;
    int day = 0;
    int month = 0;
    int year = 0;
    JulianToDate(julian, &day, &month, &year);
    return julian + DaysInMonth(month, year) - day;
}

namespace {

void PutNumber(char *to, int width, int number)
{
    for (int i = width - 1; i >= 0; --i, number /= 10) to[i] = static_cast<char>('0' + number % 10);
}

/// A number of the given count of digits and nothing else; -1 otherwise.
int ReadNumber(std::string_view text, std::size_t digits_min, std::size_t digits_max)
{
    if (text.size() < digits_min || text.size() > digits_max || text.front() < '0' || text.front() > '9') return -1;
    int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() ? number : -1;
}

} // namespace

std::string FormatDate(long julian)
{
    if (!IsDay(julian)) return {};
    int day = 0;
    int month = 0;
    int year = 0;
    JulianToDate(julian, &day, &month, &year);
    std::string text = "00/00/0000";
    PutNumber(text.data(), 2, day);
    PutNumber(text.data() + 3, 2, month);
    PutNumber(text.data() + 6, 4, year);
    return text;
}

std::string FormatIsoDate(long julian)
{
    if (!IsDay(julian)) return {};
    int day = 0;
    int month = 0;
    int year = 0;
    JulianToDate(julian, &day, &month, &year);
    std::string text = "0000-00-00";
    PutNumber(text.data(), 4, year);
    PutNumber(text.data() + 5, 2, month);
    PutNumber(text.data() + 8, 2, day);
    return text;
}

std::optional<long> ParseDate(std::string_view text)
{
    text = Trimmed(text);
    const std::size_t first = text.find_first_of("/-.");
    if (first == std::string_view::npos) return std::nullopt;
    const std::size_t second = text.find(text[first], first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    const std::string_view a = text.substr(0, first);
    const std::string_view b = text.substr(first + 1, second - first - 1);
    const std::string_view c = text.substr(second + 1);

    const bool iso = a.size() == 4 && text[first] == '-';
    const long julian = iso ? DateToJulian(ReadNumber(c, 2, 2), ReadNumber(b, 2, 2), ReadNumber(a, 4, 4))
                            : DateToJulian(ReadNumber(a, 1, 2), ReadNumber(b, 1, 2), ReadNumber(c, 4, 4));
    if (julian == 0) return std::nullopt;
    return julian;
}
