#pragma once

#include "einvoice/InvoiceProvider.h"
#include "tarvolumera/Attachments.h"

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// Taking up what a provider has received for the company.

/// Stored with each file (syn_esito): the numbers stay.
enum class SyncOutcome { Loaded = 0, AlreadyThere = 1, Notification = 2, Pdf = 3, Waiting = 4, Refused = 5 };

/// "caricata", "già presente", "notifica", "PDF", "rimandato", "rifiutato".
const char *SyncOutcomeText(SyncOutcome outcome);

struct SyncLine {
    std::string name; ///< as the provider names it; "archivio.zip: nome.xml" for what is in an archive
    SyncOutcome outcome = SyncOutcome::Refused;
    long code = 0;    ///< number of the filed document, 0 = none
    std::string text; ///< what it is, or why it was put off or refused
    std::vector<std::string> warnings;
};

struct SyncResult {
    std::vector<SyncLine> lines;
    std::array<long, 6> counts{}; ///< by outcome

    long Count(SyncOutcome outcome) const { return counts.at(static_cast<std::size_t>(outcome)); }
};

/// Takes up what is new: invoices are filed as an import would do it, notifications and readable documents as documents
/// of their own kinds. What is still being written waits for the next time, as does a readable document whose invoice
/// is not there yet. What is refused is listed once and tried again when it changes or is copied again. The identifier
/// of a metadata file is noted on its invoice, whichever of the two comes first.
///
/// Each file is filed and remembered for itself: an interrupted run goes on where it was.
/// @param progress  called with each line as it comes; may be empty
/// @throws FileError when the provider is not there, SAException
SyncResult SynchroniseInvoices(SACommand *cmd, InvoiceProvider &provider,
                               const std::function<void(const SyncLine &)> &progress = {});
