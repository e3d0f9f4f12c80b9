#pragma once

#include "tarvolumera/Schedule.h"

#include <functional>

inline constexpr long kBothSides = -1; ///< customers and suppliers in one list

/// Which instalments a list shows by what became of them. A paid one that is still held in a payment slip is a paid
/// one.
inline constexpr long kAllInstalments = 0, kOpenInstalments = 1, kPaidInstalments = 2;

/// Which instalments the list shows, prints and exports. 0 = not restricted.
struct ScheduleFilter {
    long relaz = kCustomer; ///< side: kCustomer, kSupplier or kBothSides
    long state = kAllInstalments;
    long d_start = 0, d_stop = 0; ///< due dates, day numbers, included
    long codsez = 0;              ///< VAT section of the entry that made them
    long codclf = 0;              ///< customer or supplier; means something on one side only
    long coddst = 0;              ///< destination of that customer or supplier
    long codage = 0;              ///< agent
};

/// One line of the list: the instalment with the names behind its codes.
struct ScheduleLine {
    SCADENZE scadenza;
    std::string name;     ///< of the customer or supplier
    std::string dst_desc; ///< destination
    std::string age_desc; ///< agent
    std::string terms;    ///< short name of the payment type in its terms, "RI.BA."
};

/// What stands at the foot of a list, in cents.
struct ScheduleSums {
    long count = 0;
    long long total = 0;
    long long open = 0;    ///< to pay or to collect
    long long overdue = 0; ///< of these, due before today
    long long paid = 0;

    /// @param today  day number
    void Add(const SCADENZE &instalment, long today);
};

bool IsOverdue(const SCADENZE &instalment, long today);
/// Which of its invoice's instalments it is: "2/3"; empty for one entered by hand.
std::string InstalmentOfInvoice(const SCADENZE &instalment);
std::string InstalmentOfInvoice(long rata, long rate);

/// The words of a state, as a side has them: "NON PAGATE" (suppliers), "DA INCASSARE" (customers).
const char *StateWords(long relaz, long state);
/// "Clienti", "Fornitori", or "Clienti e fornitori".
const char *SideWords(long relaz);

/// The condition of the list's queries, with its parameters by name: " WHERE sca_relaz = :rel AND sca_data >= ...".
std::string ScheduleCondition(const ScheduleFilter &filter);

/// How many instalments the filter selects.
long CountSchedule(SACommand *cmd, const ScheduleFilter &filter);

/// Streams the instalments of the filter by due date and number, with both sides by due date, side and number. The line
/// is the same object every time.
void ForEachScheduleLine(SACommand *cmd, const ScheduleFilter &filter,
                         const std::function<void(const ScheduleLine &)> &each);

/// Whether the instalment is there and the filter selects it.
bool PassesFilter(SACommand *cmd, const ScheduleFilter &filter, long number);

/// Columns of a ScheduleLine with the tables they come from, "SELECT ... FROM admin.scadenze LEFT JOIN ...", and the
/// current row of a query of them.
const std::string &ScheduleLineQuery();
void ReadScheduleLine(SACommand *query, ScheduleLine *line);
