#include "sqlapi/SADateTime.h"

#include <fmt/format.h>

#include <chrono>

namespace {

/// Reads exactly `digits` digits at the start of the text and takes them away from it. -1 when they are not there.
int TakeNumber(std::string_view &text, std::size_t digits)
{
    if (text.size() < digits) return -1;
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        if (text[i] < '0' || text[i] > '9') return -1;
        value = value * 10 + (text[i] - '0');
    }
    text.remove_prefix(digits);
    return value;
}

bool TakeCharacter(std::string_view &text, char c)
{
    if (text.empty() || text.front() != c) return false;
    text.remove_prefix(1);
    return true;
}

bool IsDate(int year, int month, int day)
{
    using namespace std::chrono;
    return year > 0 && month > 0 && day > 0 &&
           year_month_day{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                          std::chrono::day{static_cast<unsigned>(day)}}
               .ok();
}

/// What may follow the seconds: a fraction, and the time zone a server adds to its own time stamps.
bool IsFractionOrZone(std::string_view text)
{
    return text.find_first_not_of("0123456789.+-:Z") == std::string::npos;
}

} // namespace

std::string SADateTime::DateText() const
{
    return IsNull() ? std::string() : fmt::format("{:04}-{:02}-{:02}", year_, month_, day_);
}

std::string SADateTime::DateTimeText() const
{
    if (IsNull()) return {};
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", year_, month_, day_, hour_, minute_, second_);
}

SADateTime SADateTime::Parse(std::string_view text)
{
    const int year = TakeNumber(text, 4);
    if (!TakeCharacter(text, '-')) return {};
    const int month = TakeNumber(text, 2);
    if (!TakeCharacter(text, '-')) return {};
    const int day = TakeNumber(text, 2);
    if (!IsDate(year, month, day)) return {};
    if (text.empty()) return {year, month, day};

    if (!TakeCharacter(text, ' ') && !TakeCharacter(text, 'T')) return {};
    const int hour = TakeNumber(text, 2);
    if (!TakeCharacter(text, ':')) return {};
    const int minute = TakeNumber(text, 2);
    const int second = TakeCharacter(text, ':') ? TakeNumber(text, 2) : 0;
    const bool is_time = hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
    if (!is_time || !IsFractionOrZone(text)) return {};
    return {year, month, day, hour, minute, second};
}
