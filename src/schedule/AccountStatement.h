#pragma once

#include "tarvodlg/print/Crystal.h"

#include <functional>
#include <string>

class SACommand;

// The statement of account of customers or suppliers: their instalments, what is still open of them and since when.

struct StatementFilter {
    short side = 0;                     ///< 0 customers, 1 suppliers
    long first_code = 0, last_code = 0; ///< counterparts, included; 0 = not limited
    long d_start = 0, d_stop = 0;       ///< due dates, day numbers, included; 0 = not limited
    bool open_only = true;              ///< false: the paid ones too
    long reference_day = 0;             ///< what is open and due before it is overdue
};

enum class StatementState { Open, Overdue, Parked, Settled }; ///< Parked: paid, held in a slip, and still open

/// One instalment of a statement. A credit note is negative and takes from what is open.
struct StatementLine {
    long code = 0;
    std::string name;
    long num = 0;
    std::string fattura, desc;
    long data_fattura = 0, rata = 0, rate = 0;
    long data = 0;
    double importo = 0;
    long data_pag = 0;  ///< day of payment of a settled one, 0 = none
    long days_late = 0; ///< from the due date to the reference day or, settled, to the payment; 0 = in time
    StatementState state = StatementState::Open;
    double open = 0, overdue = 0;
    double balance = 0; ///< what is open of the counterpart from its first line up to here
};

/// Cents.
struct StatementTotals {
    long count = 0;
    long long amount = 0, open = 0, overdue = 0;
};

/// Streams the instalments, counterpart by counterpart in the order of their codes, by due date and number.
void ForEachStatementLine(SACommand *cmd, const StatementFilter &filter,
                          const std::function<void(StatementLine &&)> &each);
StatementTotals ReadStatementTotals(SACommand *cmd, const StatementFilter &filter);

/// "aperta", "scaduta", "in distinta", "incassata" or "pagata".
const char *StatementStateName(StatementState state, short side);

/// Prints the statements ("estrattoconto.rpt") as letters, each counterpart on pages of its own. Errors are shown.
/// @param destination  none = the program's   @return false when it failed or was cancelled
bool PrintStatements(const StatementFilter &filter, const std::optional<ReportDestination> &destination = {});
