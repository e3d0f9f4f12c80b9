#pragma once

#include "tarvodlg/print/Crystal.h"

/// Prints the chart of accounts ("pianoconti.rpt") with the company's logo: masters, accounts, sub-accounts.
/// @param first, last  masters, included; 0 = from the first, up to the last   @param destination  none = the program's
/// @return false when it failed (the error was shown) or was cancelled
bool PrintChartOfAccounts(long first = 0, long last = 0, const std::optional<ReportDestination> &destination = {});
