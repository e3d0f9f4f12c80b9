#pragma once

#include "ledger/JournalList.h"
#include "tarvolumera/PSQLpno.h"

#include <optional>

/// Where a search begins: the key and the value typed for it. What a key does not ask for stays unused.
struct JournalSearchValue {
    JournalOrder key = kByNumber;
    long codice = 0; ///< entry number, causale, customer or supplier, by the key
    long data = 0;   ///< day number; 0 = from the first day
    Text<20> doc;
    long rel = kCustomer; ///< of kByCounterpart, whose list stays with one kind
};

/// The value under which an entry stands in an order.
JournalSearchValue SearchValueOf(JournalOrder key, const JournalLine &line);

/// The condition and order of a search: " WHERE pno_codice >= :codice ORDER BY pno_codice".
const char *SearchCondition(JournalOrder key);
/// The order whose first entry is the last one of the key: " ORDER BY pno_codice DESC".
const char *LastEntryOrder(JournalOrder key);

/// The first entries whose key is at or after the value, at most `count`.
std::vector<JournalLine> SearchJournal(SACommand *cmd, const JournalSearchValue &value, std::size_t count);
/// What follows a line of that search, at most `count`.
std::vector<JournalLine> SearchJournalAfter(SACommand *cmd, JournalOrder key, const JournalLine &line,
                                            std::size_t count);
/// The last entry of an order, by document date the last one that has a document date. Nothing when there is none.
std::optional<JournalLine> LastOfOrder(SACommand *cmd, JournalOrder key);
