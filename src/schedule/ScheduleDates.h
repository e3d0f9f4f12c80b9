#pragma once

#include "tarvolumera/DateFaults.h"

/// Asks whether to check the dates of the instalments; No is the default.
bool AskScheduleDates();

/// Where the check writes its faults: "out/scadenze.log" in the company's folder.
std::filesystem::path ScheduleDatesLog();

/// Reads the instalments of customers and suppliers and writes each date outside the period into the log, which
/// replaces that of the last check. Due dates are always checked; an empty invoice, issue or payment date is no fault.
/// Tells how many faults there are, when there are any.
/// @return the number of faults     @throws SAException; FileError when the log cannot be written
long CheckScheduleDates(const DatePeriod &period);
