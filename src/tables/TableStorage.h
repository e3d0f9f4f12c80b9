#pragma once

#include "tables/BrowseDescription.h"
#include "tables/TableChecks.h"

/// How the storing (or deleting) of a record ended.
struct TableOutcome {
    bool done = false;
    std::string column; ///< the field that was refused, for the focus; empty when it was no field's fault
    int row = 0;        ///< template row of a causale, from 1
    std::string reason; ///< why nothing was done, for a command to report; empty when done
};

template <class Record>
struct StoreOptions {
    /// The code of a new record came from ProposeCode and the user left it: one that was taken meanwhile gives way to
    /// the next free one.
    bool proposed_code = false;
    /// The record as it was loaded. When the archive has another one by now, nothing is stored. Null = do not look.
    const Record *loaded = nullptr;
};

// Records: CLIENTI, FORNITORI, CAUCONT, CODIVA, PAGAMENTI, MASTRI, CONTI, SOTTOCON, SEZIONI, BANCHE, CENTRI, AGENTI,
// ARTICOLI, CAUMAG, DITTE, FLAG.

/// Next code for a new record: the highest one plus one, below the same master and account for CONTI and SOTTOCON,
/// whose other keys must be set. Only a proposal: StoreRecord settles it. @return 0 when all are used up, and for
/// ARTICOLI, whose codes are texts
template <class Record>
long ProposeCode(SACommand *cmd, const Record &record);

/// Reads the record whose key members are set. @return false, and the record is untouched, when there is none
template <class Record>
bool LoadRecord(SACommand *cmd, Record *record);

/// Brings the texts into the form in which they are stored: without blanks around; VAT numbers, fiscal codes and IBAN
/// without blanks and points inside; codes of letters (nation, province, BIC, months) in capitals.
template <class Record>
void NormaliseRecord(Record *record);

/// Stores a record: brings it into form, checks it, shows the first refusal or asks the questions (all of them before
/// anything is written), writes in one transaction. Company and settings are loaded again afterwards. Joins a
/// transaction that is open.
/// @param is_new  true inserts, false updates
/// @throws SAException, and then nothing is stored
template <class Record>
TableOutcome StoreRecord(SACommand *cmd, Record *record, bool is_new, const StoreOptions<Record> &options = {});

/// The two halves of StoreRecord, for who stores several records together: the first shows and asks and writes nothing,
/// the second writes without asking, inside the caller's transaction.
template <class Record>
TableOutcome ConfirmRecord(SACommand *cmd, const Record &record, bool is_new);
template <class Record>
TableOutcome WriteRecord(SACommand *cmd, Record *record, bool is_new, const StoreOptions<Record> &options = {});

/// Where a record is used: "12 movimenti di prima nota", "1 cliente". Empty when it may go.
std::vector<std::string> FindUses(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys);

/// Deletes a record after a question, with what belongs to it (template rows, places of delivery,
/// what suppliers call an article). One that is used
/// somewhere is refused, with the places.
TableOutcome DeleteRecord(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys);
