#pragma once

#include "demo/DemoBooks.h"
#include "demo/DemoPlan.h"

// The VAT entries of the demo books.

void BookInvoice(DemoBooks *books, const PlannedEntry &planned);

/// For a part of an earlier invoice; settled with the next payment of the counterpart.
/// @return false when there is no invoice yet that it could be for
bool BookCreditNote(DemoBooks *books, const PlannedEntry &planned);

/// A day's takings of the shop.
void BookReceipts(DemoBooks *books, const PlannedEntry &planned);
