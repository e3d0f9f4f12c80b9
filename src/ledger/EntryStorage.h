#pragma once

#include "ledger/EntryValidation.h"

#include <functional>
#include <optional>

/// How the storing of an entry ended.
struct StoreOutcome {
    bool stored = false;
    EntryFault fault;   ///< the field that was refused; none when a question was answered No, or nothing was to be done
    std::string reason; ///< why it was not stored, for a command to report; empty when stored
};

/// What a caller stores in the same transaction as the entry.
struct StoreTogether {
    /// What the entry refers to: its new supplier, whose code the entry takes as it is then.
    std::function<void(SACommand *, PNOTA *entry)> before;
    std::function<void(SACommand *, const PNOTA &)> after; ///< what refers to the entry as it was numbered
    long new_counterpart = 0; ///< code of the counterpart that `before` stores, so that it is not missed by the checks
};

/// Stores an entry as the editor does: checks it, warns of an exported entry, asks about a duplicate document and a
/// closed year, verifies the cost centres, writes everything together and reads it back. All questions come before the
/// write.
/// @param is_new  true inserts, false updates an entry that was loaded
/// @throws SAException, and then nothing is stored
StoreOutcome StoreEntry(SACommand *cmd, PNOTA *entry, bool is_new, const StoreTogether &together = {});

/// Why StoreEntry would refuse a new entry, with the same questions; empty when it would store it. Writes nothing, so
/// that many entries can be looked at before the first is stored.
/// @param new_counterpart  code of the counterpart that would be stored with it, 0 = none
std::string WhyNotStorable(SACommand *cmd, PNOTA *entry, long new_counterpart = 0);

/// Which date of an entry the duplicate search looks at.
enum class DuplicateYear { OfDocument, OfRegistration };

/// The registration date of an entry with the same register, counterpart, document number and year, or for the same
/// received file; 0 when there is none. An entry without document number is never a duplicate.
long FindDuplicateDocument(SACommand *cmd, const PNOTA &entry, DuplicateYear by);

/// Asks whether to store the document that was already registered on that day. True for a day of 0.
bool ConfirmDuplicate(long registered_on);

/// Deletes a stored entry with its rows, files and open instalments; one of a closed year only after the question that
/// storing it there asks. No transaction may be open.
/// @return false when the answer was No, and then nothing is deleted
/// @throws SAException when another station changed it, or instalments of it are paid
[[nodiscard]] bool DeleteEntry(SACommand *cmd, PNOTA *entry);

/// Sets a mark of a stored entry (checked, exported to the accountant) or takes it back: at once, and apart from what
/// is being changed in the record, which keeps it and gets the mark and the new revision.
/// @param value  1 or 0
/// @throws SAException when another station changed or deleted it
void MarkEntry(SACommand *cmd, PNOTA *entry, long PNOTA::*mark, long value);

/// How many files are attached to an entry.
long CountAttachments(SACommand *cmd, long number);

/// Whether the causale of a stored entry asks for attachments.
bool OffersAttachments(SACommand *cmd, const PNOTA &entry);

/// Whether the payment of a stored purchase may be registered at once, by its terms and the company's payment causale.
bool OffersImmediatePayment(SACommand *cmd, const PNOTA &entry);

/// The entry prepared for that payment: causale, register, VAT flag and kind of the payment causale, same dates and
/// supplier, no terms. The user completes and stores it like any other.
PNOTA PrepareImmediatePayment(SACommand *cmd, const PNOTA &invoice);
