#pragma once

#include "tarvodlg/print/Crystal.h"

#include <string>
#include <vector>

class SACommand;

// The dashboard of the schedule: what was to come in and go out, what is late, and where that leads month by month.

/// How many months the outlook covers, the current one included.
inline constexpr long kOutlookMonths = 6, kOutlookMonthsMax = 36;

/// How many late customers are named.
inline constexpr std::size_t kLateCustomers = 10;

/// The sums of one side over some time, in cents. Credit notes count negative.
struct CashSums {
    long count = 0;         ///< open instalments
    long long paid = 0;     ///< settled so far
    long long overdue = 0;  ///< open, due before today
    long long expected = 0; ///< open, due today or later

    long long Open() const { return overdue + expected; }
    long long Due() const { return paid + Open(); }
    void Add(const CashSums &more);
};

struct CashPeriod {
    enum class Kind {
        Earlier, ///< what was due before the first month and is still open
        Month,
        Later ///< what is due after the last month
    };
    Kind kind = Kind::Month;
    long first_day = 0, last_day = 0; ///< due dates, day numbers, included. 0 = without a bound
    std::string name;                 ///< "Marzo 2026", "Prima di marzo 2026", "Dopo agosto 2026"
    CashSums collect, pay;
    long long balance = 0; ///< cash at hand and all that is open up to the end of the period

    bool IsEmpty() const;
};

struct LateCustomer {
    long code = 0;
    std::string name;
    long count = 0;
    long oldest_day = 0; ///< due date of the first one
    long long cents = 0;
};

struct OutlookFilter {
    long months = kOutlookMonths; ///< 1 to kOutlookMonthsMax
    double cash = 0;              ///< at hand today, euro; where the balance begins
};

struct CashOutlook {
    long today = 0; ///< day number
    long long cash = 0;
    std::vector<CashPeriod> periods; ///< Earlier and Later only where something is open; all months
    CashSums collect, pay;           ///< of all periods
    std::vector<LateCustomer> late;  ///< who owes most first

    bool IsEmpty() const; ///< nothing is open and nothing was due in the months
};

/// @param today  day number; its month is the first one. Months out of range are taken as the nearest that is not.
CashOutlook ReadCashOutlook(SACommand *cmd, const OutlookFilter &filter, long today);

/// "Marzo 2026: da incassare 1.200,00 (3), da pagare 800,00 (2), saldo 400,00, progressivo 1.900,00", with what is
/// overdue and what was paid where there is any.
std::string DescribePeriod(const CashPeriod &period);

/// Prints the figures ("cruscotto.rpt"). Errors are shown. @param destination  none = the program's
/// @return false when it failed or was cancelled
bool PrintCashOutlook(const OutlookFilter &filter, long today,
                      const std::optional<ReportDestination> &destination = {});
