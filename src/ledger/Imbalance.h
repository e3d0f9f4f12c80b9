#pragma once

#include "tarvolumera/JournalEntry.h"

#include <string>

/// What the imbalance of an entry looks like, in Italian: how much is missing on which side, and the strongest sign
/// there is of where it comes from: half of it is the amount of a row (wrong side), it is the amount of a row (missing
/// or double), a cent or two beside VAT lines (rounding), divisible by 9 (digits that changed places, in the row named
/// when one explains it). Empty when the entry balances.
std::string DescribeImbalance(const PNOTA &entry);
