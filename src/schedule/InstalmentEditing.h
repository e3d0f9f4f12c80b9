#pragma once

#include "tables/TableChecks.h"
#include "tarvolumera/Schedule.h"

#include <string>
#include <vector>

// One instalment entered, changed, split, deleted or looked at by hand.
//
// What may be changed depends on where the instalment comes from and what became of it. One that a journal entry made
// follows the entry in counterpart, section and invoice; its dates and amounts are the user's, who agrees new ones with
// the counterpart all the time, and a sum that no longer is the document's is told, not refused. One that is paid or
// held in a payment slip stands in other records too: only its description, destination and agent are free then.
// Whether it is paid or held is never typed; payments say so.

/// How storing, deleting or splitting ended.
struct InstalmentOutcome {
    bool done = false;
    std::string column;  ///< the field that was refused, "sca_data"; empty when it was no field's fault
    std::string reason;  ///< why nothing was done; empty when done
    std::string warning; ///< done, but the entry's instalments do not add up to its document; empty when they do
};

/// Asks before a customer who has ceased is taken. @return false = another one is to be chosen
bool ConfirmCounterpart(SACommand *cmd, long side, long code);

/// Sets the counterpart and what is known of it: terms with their payment type, bank, a customer's agent. A destination
/// is the former counterpart's and goes.
void EnterCounterpart(SACommand *cmd, SCADENZE *record, long code);
/// Sets the terms and their payment type.
void EnterTerms(SACommand *cmd, SCADENZE *record, long code);

/// All faults of an instalment in the order of its fields; none when it may be stored.
std::vector<FieldFault> CheckInstalment(SACommand *cmd, const SCADENZE &record);

/// Whether a column of a stored instalment may be changed by hand.
bool MayChange(const SCADENZE &stored, std::string_view column);
/// A fault for each column that was changed and must not be. @param stored  a blank record for a new instalment
std::vector<FieldFault> CheckChanges(const SCADENZE &stored, const SCADENZE &record);

/// Stores an instalment: a new one under the next free number, whatever was proposed. Shows the first refusal.
/// @param record  as it was typed; as it was stored after it
/// @param loaded  as it was read before it was changed, null = a new one. When the archive has another one by now,
/// nothing is stored
/// @throws SAException, and then nothing is stored
InstalmentOutcome StoreInstalment(SACommand *cmd, SCADENZE *record, const SCADENZE *loaded);

/// Deletes an instalment after a question; those of the same invoice are counted anew ("2/3" becomes "2/2"). One that
/// is paid, held in a slip, or changed by another station is refused with a message.
InstalmentOutcome DeleteInstalment(SACommand *cmd, const SCADENZE &loaded);

/// Parts an open instalment in two. No question.
/// @param first  as it was read; keeps number and due date, and what the second one leaves of its amount
/// @param amount  of the second one: of the same sign as the whole and smaller   @param due_day  of the second one
/// @param second  the new instalment
InstalmentOutcome SplitInstalment(SACommand *cmd, SCADENZE *first, double amount, long due_day, SCADENZE *second);

/// The next (previous) instalment of a side by number.
/// @param number  to go on from; 0 = the first (last) one   @param section  0 = of all sections
/// @return false, and the record is untouched, when there is none
bool NeighbourInstalment(SACommand *cmd, short side, long number, bool forward, long section, SCADENZE *record);

/// "pagata", "incassata", "in distinta"; empty for an open one.
std::string InstalmentState(const SCADENZE &record);
