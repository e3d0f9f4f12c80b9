#pragma once

#include "tarvolumera/JournalEntry.h"

// The arithmetic of an entry: pure, so that dialog, command line and tests compute the same.

/// What RecalcTotals adds to the figures it computes; for the moment every caller passes none.
struct TotalsAdjustment {
    double document = 0, taxable = 0, tax = 0, non_taxable = 0;
};

/// RecalcTotals always recomputes the totals by kind of VAT code, Dare, Avere and the imbalance.
inline constexpr int kTotalsOnly = 0;
/// The VAT lines changed: the document total and the automatic rows follow them.
inline constexpr int kVatLinesChanged = 1;

/// Recomputes an entry.
///
/// In mode 1 the document total becomes taxable plus tax (for kind 8 the taxable alone: its tax is not owed to the
/// counterpart), and the automatic rows follow: the counterpart's row takes the document total, the rows on the
/// company's VAT accounts their tax, the first other one what balances the entry (without a counterpart's row, as in
/// receipts, the first other one takes the document total and the second balances). A negative amount stands positive
/// on the other side, so a credit note swaps the sides of its causale. An entry without VAT keeps the total that was
/// typed, and its automatic rows follow that in both modes.
void RecalcTotals(PNOTA *entry, const DITTE &company, const FLAG &settings, int mode,
                  const TotalsAdjustment &adjustment = {});

/// Recomputes the five totals by kind of VAT code from the lines.
void RecalcVatTotals(PNOTA *entry, const TotalsAdjustment &adjustment = {});

/// Recomputes Dare, Avere and the imbalance from the rows. True when they differ.
bool Squadratura(PNOTA *entry);

/// What the counterpart is owed for one VAT line.
double OwedForLine(const PNOTA_IVA &line);

/// Compares the cost-centre lines with the rows: the lines of a row must add up to its amount.
/// @param row  the first row that does not match, 0 when a line refers to no row in use
/// @return true when everything matches
bool CheckAnalitica(const PNOTA &entry, int *row);
