#pragma once

#include "tarvolumera/fatturapa/XmlFields.h"

namespace fatturapa {

/// Reads the header and every body under a FatturaElettronica root.
/// @throws InvoiceFileError when something is missing without which a document means nothing
void ReadOrdinary(ReadContext &context, FatturaElettronica &fattura);

/// The same for a FatturaElettronicaSemplificata root, whose flat and gross layout is turned into the ordinary one.
void ReadSimplified(ReadContext &context, FatturaElettronica &fattura);

/// Adds a warning for whatever is odd in the header (parties, codes) and in the bodies (sums, codes, attachments).
void WarnOfOddities(ReadContext &context, const FatturaElettronica &fattura);

} // namespace fatturapa
