#pragma once

#include "tarvolumera/PSQLpno.h"

#include <filesystem>

// The batches that look after the whole journal. They show their progress; their questions are asked by AskMaintenance
// alone, so that a command and the editor ask alike.

enum class MaintenanceBatch { CheckDates, Renumber, Rewrite, ImportReceipts };

/// Asks whether to run a batch; No is the default.
bool AskMaintenance(MaintenanceBatch batch);

/// Where the date check writes its faults: "out/pnota.log" in the company's folder.
std::filesystem::path DateCheckLog();

/// Reads every entry and every row and writes each date outside the period into the log, which replaces that of the
/// last check. Registration dates are always checked; an empty document, payment or adjustment date is no fault. Tells
/// how many faults there are, when there are any.
/// @param first, last  day numbers, both included     @return the number of faults
/// @throws SAException; FileError when the log cannot be written
long CheckDate(long first, long last);

struct RewriteResult {
    long rewritten = 0, failed = 0;
};

/// Writes every entry again, so that what is derived from its rows and from its header is derived anew: totals, sorting
/// form of the document number, copies of the header in the rows. An entry that cannot be read or written is told with
/// the number of the error and left as it is; the others go on.
/// @throws SAException when the archive itself fails
RewriteResult RewriteEntries(SACommand *cmd);

/// Offers the batches in their order when the company asks for them, runs those that are wanted, then takes the wish
/// back. It stays when one of them failed. Errors are shown.
/// @param followed  number of an entry that the caller has open: gets its number after a renumbering; null = none
/// @return true when a batch ran, so that what the caller shows of the journal may be out of date
bool OfferMaintenance(long *followed = nullptr);
