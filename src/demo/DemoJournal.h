#pragma once

class SACommand;

/// Fills the journal of the demo company with plausible entries over its fiscal year: purchases and sales of several
/// rates and natures, EU operations, receipts, credit notes, payments, collections, bank effects, transfers, wages, VAT
/// payments. Everything goes through the same rules and the same storing path as an entry keyed by hand, instalments
/// included, and every entry balances. The same seed and number give the same books.
/// @param entries  how many, 0 or more; the dates spread over the year, up to yesterday for the current one
/// @throws SAException
void FillDemoJournal(SACommand *cmd, long entries, unsigned seed);
