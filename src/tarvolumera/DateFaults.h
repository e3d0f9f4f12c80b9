#pragma once

#include <filesystem>
#include <optional>
#include <string>

struct DatePeriod {
    long first = 0, last = 0; ///< day numbers, both included
};

/// Asks for the period of a date check and proposes the fiscal year. Nothing when the user cancelled.
std::optional<DatePeriod> PickDatePeriod();

/// What a date check of the whole archive finds: a line for each date outside the period, written into a log.
class DateFaults {
  public:
    explicit DateFaults(const DatePeriod &period) : period_(period) {}

    bool Outside(long day) const { return day < period_.first || day > period_.last; }
    bool OutsideIfSet(long day) const { return day != 0 && Outside(day); }
    void Add(const std::string &line)
    {
        text_ += line;
        ++count_;
    }
    long Count() const { return count_; }

    /// Where the check writes: a file in the folder "out" of the company's folder.
    static std::filesystem::path LogFile(const std::string &name);

    /// Writes the log, which replaces that of the last check, and tells how many faults there are, when there are any.
    /// @param name  of the log, "pnota.log"     @throws FileError when it cannot be written
    void Conclude(const std::string &name) const;

  private:
    DatePeriod period_;
    long count_ = 0;
    std::string text_;
};
