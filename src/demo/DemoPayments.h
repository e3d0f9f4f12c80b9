#pragma once

#include "demo/DemoBooks.h"

/// Pays instalments of one supplier, or collects those of one customer, that are due by the day: up to half a dozen at
/// once, credit notes set off, and marks them as paid. Some are left overdue, as in life.
/// @param side  kCustomer or kSupplier   @return false when nothing is due
bool BookSettlement(DemoBooks *books, long side, long day);
