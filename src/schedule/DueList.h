#pragma once

#include "tarvodlg/print/Crystal.h"

#include <functional>
#include <string>
#include <vector>

class SACommand;

// The due list: what has to be collected and paid, week by week or month by month.

enum class DueLength { Week, Month };

/// Which open instalments the due list shows. One with both sides off is empty.
struct DueListFilter {
    bool customers = true, suppliers = true;
    long d_start = 0, d_stop = 0; ///< due dates, day numbers, included. 0 = not limited
    DueLength length = DueLength::Week;
};

/// The weeks (Monday to Sunday) or months between two days, numbered from 1. The first and the last one are cut to the
/// days. Number 0 is what was due before them. One more stands for what is due later than kPeriodsMax of them: a year
/// typed as 2926 shall not make fifty thousand.
class DuePeriods {
  public:
    static constexpr long kPeriodsMax = 600;

    struct Range {
        long first_day = 0; ///< 0 = from the beginning
        long last_day = 0;
    };

    /// @param first_day, last_day  day numbers, included
    DuePeriods(DueLength length, long first_day, long last_day);

    DueLength Length() const { return length_; }
    long FirstDay() const { return first_day_; }
    long LastDay() const { return last_day_; }
    long Count() const { return count_; } ///< the one for what is due later is among them
    long NumberOf(long day) const;
    Range RangeOf(long number) const;
    std::string NameOf(long number) const; ///< "Settimana 3 del 2026", "Marzo 2026", "Scadute prima del 01/03/2026"

    /// Weeks or months since the beginning of day numbers: what a query can work out from a date.
    static long IndexOf(DueLength length, long day);
    static long FirstDayOf(DueLength length, long index);

  private:
    DueLength length_;
    long first_day_, last_day_, first_index_, count_;
    bool has_later_ = false;
};

/// The sums of one period, in cents.
struct DueGroup {
    long number = 0; ///< of the period
    DuePeriods::Range range;
    std::string name;
    long count = 0;
    long long collect = 0, pay = 0; ///< credit notes count negative
    long long running = 0;          ///< balance from the first group up to here
    long long Balance() const { return collect - pay; }
};

/// One instalment of the list.
struct DueLine {
    long relaz = 0, num = 0, data = 0;
    double importo = 0;
    long cli_for = 0;
    std::string nome, fattura, desc;
    long data_fattura = 0, rata = 0, rate = 0;
    bool is_parked = false;
};

/// The periods of the filter; where it has no bound, from the first or to the last day on which something open is due.
DuePeriods PeriodsOf(SACommand *cmd, const DueListFilter &filter);

/// The periods in which something is due, in their order.
std::vector<DueGroup> ReadDueGroups(SACommand *cmd, const DueListFilter &filter);
DueGroup TotalOf(const std::vector<DueGroup> &groups); ///< count, collect and pay of all of them

/// Streams the open instalments of a range of days, by due date, customers first.
void ForEachDue(SACommand *cmd, const DueListFilter &filter, const DuePeriods::Range &range,
                const std::function<void(DueLine &&)> &each);

/// Prints the due list ("scadenzario.rpt"). Errors are shown. @param destination  none = the program's
/// @return false when it failed or was cancelled
bool PrintDueList(const DueListFilter &filter, const std::optional<ReportDestination> &destination = {});
