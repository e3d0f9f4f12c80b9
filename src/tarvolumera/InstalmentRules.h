#pragma once

#include "tarvolumera/PaymentTerms.h"

#include <array>
#include <span>
#include <string_view>
#include <vector>

// From terms, dates and totals to due dates and amounts: pure rules, no archive.

/// One row of the generator's grid.
struct Instalment {
    long due_day = 0;        ///< day number, 0 = not typed yet
    double amount = 0;       ///< euro
    bool IsComplete() const; ///< both date and amount are there; other rows are neither counted nor stored
};

/// The dates of the entry from which the terms may start.
struct StartDates {
    long registration_day = 0;
    long document_day = 0;  ///< 0 = none, then the registration date stands for it
    long different_day = 0; ///< payment start date, 0 = none
};

/// Rows of the generator's grid. Terms that make more instalments are a mistake.
inline constexpr long kInstalmentsMax = 60;

/// How many instalments the terms make, that of the separate VAT included.
long InstalmentCount(const PAGAMENTI &terms);

/// Where the terms start counting, initial days added. 0 when the start rule is none of the three known texts or there
/// is no date to count from: the user then types the dates.
long StartDay(const PAGAMENTI &terms, const StartDates &dates);

/// The number (1 to 12) of "GENNAIO" ... "DICEMBRE", in capitals and without blanks; 0 for any other text.
int MonthOfName(std::string_view name);

/// The months (1 to 12) in which nothing falls due; 0 where a name matches no month.
std::array<int, 3> ExcludedMonths(const PAGAMENTI &terms);

/// Splits a total into the amounts of the terms. With separate VAT there is one instalment more than the terms say,
/// also when the equal split wins and none of them is the VAT. What rounding leaves lands on the last one.
/// @param total  VAT included   @param vat  its VAT part
/// @return empty when the total is zero, or the terms name no instalment or more than kInstalmentsMax
std::vector<double> SplitTotal(const PAGAMENTI &terms, double total, double vat);

/// The due dates of `count` instalments: each adjusted to the terms' fixed days and moved by whole intervals out of the
/// excluded months; the next one counts on from there. They never go back. From the first date that cannot be found on,
/// all are 0: without a start, past the year 9999, or where ten years of intervals lead from one excluded month into
/// the next (yearly instalments on a fixed day of August).
std::vector<long> DueDays(const PAGAMENTI &terms, long start_day, std::size_t count);

/// Whether DueDays finds its way out of the excluded months from whatever day.
bool LeavesExcludedMonths(const PAGAMENTI &terms);

/// Sum of all amounts, complete rows or not.
double TotalOf(std::span<const Instalment> rows);
