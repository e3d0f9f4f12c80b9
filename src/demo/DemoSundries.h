#pragma once

#include "demo/DemoBooks.h"
#include "demo/DemoPlan.h"

/// The entries without VAT and counterpart: bank, cash, wages, taxes. Their amounts follow from the books so far: the
/// wages that are owed are paid, the VAT of the registers is settled.
/// @return false when there is nothing to do, because nothing is owed or the till is empty
bool BookSundry(DemoBooks *books, const PlannedEntry &planned);
