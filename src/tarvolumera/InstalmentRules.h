#pragma once

#include "tarvolumera/PaymentTerms.h"

#include <array>
#include <span>
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

/// Where the terms start counting, initial days added. 0 when the start rule is none of the three known texts: the user
/// then types the dates.
long StartDay(const PAGAMENTI &terms, const StartDates &dates);

/// The months (1 to 12) in which nothing falls due; 0 where a name matches no month.
std::array<int, 3> ExcludedMonths(const PAGAMENTI &terms);

/// Splits a total into the amounts of the terms. With separate VAT there is one instalment more than the terms say,
/// also when the equal split wins and none of them is the VAT. What rounding leaves lands on the last one.
/// @param total  VAT included   @param vat  its VAT part
/// @return empty when the total is zero or the terms name no instalment
std::vector<double> SplitTotal(const PAGAMENTI &terms, double total, double vat);

/// The due dates of `count` instalments: each adjusted to the terms' fixed days and moved by whole intervals out of the
/// excluded months; the next one counts on from there. With a start of 0 they are all 0.
std::vector<long> DueDays(const PAGAMENTI &terms, long start_day, std::size_t count);

/// Sum of all amounts, complete rows or not.
double TotalOf(std::span<const Instalment> rows);
