#pragma once

#include <string>
#include <string_view>

/// A calendar date with an optional time of day, as it travels to and from SQL. All zero = no date, bound as NULL.
/// Day numbers (the suite's Julian day) are turned into it by the data library.
class SADateTime {
  public:
    SADateTime() = default;
    SADateTime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
        : year_(year), month_(month), day_(day), hour_(hour), minute_(minute), second_(second)
    {
    }

    int GetYear() const { return year_; }
    int GetMonth() const { return month_; }
    int GetDay() const { return day_; }
    int GetHour() const { return hour_; }
    int GetMinute() const { return minute_; }
    int GetSecond() const { return second_; }

    bool IsNull() const { return year_ == 0; }
    bool HasTime() const { return hour_ != 0 || minute_ != 0 || second_ != 0; }

    /// "YYYY-MM-DD"; empty when null.
    std::string DateText() const;
    /// "YYYY-MM-DD HH:MM:SS"; empty when null.
    std::string DateTimeText() const;

    /// Reads "YYYY-MM-DD", optionally followed by 'T' or a blank and "HH:MM[:SS[.fff]]". A null date when malformed.
    static SADateTime Parse(std::string_view text);

    friend bool operator==(const SADateTime &, const SADateTime &) = default;

  private:
    int year_ = 0, month_ = 0, day_ = 0, hour_ = 0, minute_ = 0, second_ = 0;
};
