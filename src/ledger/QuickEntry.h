#pragma once

#include "tarvolumera/JournalEntry.h"

// What spares keys when an invoice is entered from its total.

/// The VAT code that entries of this causale and counterpart usually have: that of the last one with a single VAT line,
/// else that of the causale's last one. 0 when there is none.
long UsualVatCode(SACommand *cmd, const PNOTA &entry);

/// What to type as taxable amount so that a line with the code comes to the gross amount: net of the tax where the
/// register adds it, the gross amount itself in receipts, which are entered so, and where no tax is added. To the cent
/// that the rate allows. @param code  one that does not exist gives 0
double TaxableOfGross(SACommand *cmd, const PNOTA &entry, long code, double gross);
