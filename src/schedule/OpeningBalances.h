#pragma once

#include "schedule/OpeningBalanceSheet.h"

class SACommand;

/// A row of the sheet that was not taken.
struct DiscardedBalance {
    OpeningBalanceRow row;
    std::string reason; ///< Italian
};

struct OpeningBalancesOutcome {
    long stored = 0;                     ///< in a trial, what would be
    double customers = 0, suppliers = 0; ///< euro stored of each side
    std::vector<DiscardedBalance> discarded;
    std::filesystem::path log; ///< empty when nothing was discarded, and in a trial
};

/// Takes opening balances from a workbook: one instalment "SALDO INIZIALE" for each row whose customer or supplier is
/// found by VAT number, fiscal code or name, in this order; the code finds only where the row has none of the three.
/// What cannot be taken is listed in a log file in the company's folder "log". A balance that is there already, of the
/// same counterpart, day and amount, is not taken again; so the same sheet may be imported twice, and rows alike within
/// one sheet are all taken the first time. All rows are stored or, after a failure, none.
/// @param trial  stores nothing and writes no log
/// @throws FileError when the workbook or the log fails, OpeningBalancesError for a sheet of another kind, SAException
OpeningBalancesOutcome ImportOpeningBalances(SACommand *cmd, const std::filesystem::path &workbook, bool trial = false);
