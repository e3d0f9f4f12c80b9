#pragma once

#include "tarvodlg/print/Crystal.h"

/// Which entries the journal list shows and prints. 0 = not restricted.
struct JournalPrintFilter {
    long n_start = 0, n_stop = 0; ///< entry numbers, included
    long d_start = 0, d_stop = 0; ///< registration dates, day numbers, included
    long codsez = 0;              ///< VAT section
    long codcac = 0;              ///< causale
};

/// Prints the journal list ("pnotagest.rpt"): one line for each entry of the filter, by date and number, with totals.
/// Errors are shown. @param destination  none = the program's   @return false when it failed or was cancelled
bool PrintJournalList(const JournalPrintFilter &filter, const std::optional<ReportDestination> &destination = {});
