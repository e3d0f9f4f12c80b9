#pragma once

#include "sqlapi/SACommand.h"

/// The fiscal year of the books that StoreCleanBooks fills.
inline constexpr long kCleanBooksYear = 2026;

/// Fills an archive of the demo company with entries, instalments and documents in which nothing is wrong, odd as some
/// are: entries 1 to 12 without 10, six instalments, three received invoices.
void StoreCleanBooks(SACommand *cmd);
