#pragma once

#include "ledger/JournalPrint.h"
#include "tarvolumera/JournalEntry.h"

#include <functional>

class SACommand;

/// One line of the journal list and of the search: what is shown of an entry, without its rows.
struct JournalLine {
    long codice = 0;
    long data = 0, data_doc = 0; ///< day numbers, 0 = none
    long sez = 0, cau = 0, reg = 0;
    long rel = kNoCounterpart, cli_for = 0;
    double tot_doc = 0, dare = 0, avere = 0;
    std::string desc;   ///< free description of the entry; where it has none, that of its causale
    std::string doc;    ///< document number
    std::string clifor; ///< description of the customer or supplier
};

JournalLine LineOf(const PNOTA &entry);
/// "C" customer, "F" supplier, "N" none.
const char *CounterpartLetter(long rel);

/// The condition of the list's queries, with its parameters by name: " WHERE pno_codice BETWEEN :n_start AND ...".
std::string JournalListCondition(const JournalPrintFilter &filter);
/// Whether an entry is one of those that the condition selects.
bool PassesFilter(const JournalPrintFilter &filter, const PNOTA &entry);

/// How many entries the filter selects.
long CountJournal(SACommand *cmd, const JournalPrintFilter &filter);
/// Streams the entries of the filter, newest first.
void ForEachJournalLine(SACommand *cmd, const JournalPrintFilter &filter,
                        const std::function<void(JournalLine &&)> &each);

long LowestEntry(SACommand *cmd);  ///< 0 = the journal is empty
long HighestEntry(SACommand *cmd); ///< 0 = the journal is empty

/// The columns of a JournalLine, to stand between SELECT and FROM, and the joins that give them behind the journal.
const std::string &JournalLineColumns();
const std::string &JournalLineJoins();
/// The current row of a query of those columns.
JournalLine ReadJournalLine(SACommand *query);
