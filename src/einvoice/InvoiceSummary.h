#pragma once

#include "tarvolumera/ReceivedInvoices.h"
#include "tarvolumera/fatturapa/FattureElettronicheDB.h"

// What the list shows of a received invoice, written when the invoice is filed.

/// One summary for each document of the file.
std::vector<FATTURE> SummariesOf(const ALLEGATI &filed, const CFattureElettronicheDB &content);

/// The same from the bytes alone: a file that cannot be read has one summary, with its fault.
/// @param filed  with its bytes
std::vector<FATTURE> SummariesOf(const ALLEGATI &filed);

/// Files an invoice together with its summaries: both or none.
/// @param content  null when the file cannot be read but is to be kept
/// @throws SAException
void StoreInvoice(SACommand *cmd, ALLEGATI *filed, const CFattureElettronicheDB *content);

/// Files a document whose content the archive has only once, an invoice with its summaries. Another station may be a
/// moment earlier: the document then becomes what is there, without its bytes.
/// @param document  with its digest; of any kind
/// @return false when it was there already
/// @throws SAException
bool StoreOnce(SACommand *cmd, ALLEGATI *document, const CFattureElettronicheDB *content = nullptr);

/// Reads the files that were filed before summaries were kept and writes theirs, a hundred files at a time in a
/// transaction of their own: a run that breaks off goes on where it stopped. Costs two counts when there are none. No
/// transaction may be open.
/// @param most  files read at most; 0 = all of them, then with progress
/// @return how many files are left without summary
long SummariseOlderInvoices(SACommand *cmd, long most = 0);
