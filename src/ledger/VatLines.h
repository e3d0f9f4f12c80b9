#pragma once

#include "tarvolumera/JournalEntry.h"

// One VAT line of an entry, by register and kind of code. Lines are counted from 0.

/// Computes a line after its amounts changed. In register 4 (receipts) the amount in the taxable cell is VAT included
/// and becomes net first, each time the line is computed; in register 7 (EU sales) the tax stays as it stands.
/// Recomputes the entry.
void ComputeVatLine(SACommand *cmd, PNOTA *entry, std::size_t line);

/// Completes a line from the VAT code typed into it: what the register does not admit is cleared. Then computes the
/// line. A register outside 1 to 7 takes nothing from the code.
void EnterVatCode(SACommand *cmd, PNOTA *entry, std::size_t line, long code);

/// What a register makes of a kind of VAT code.
enum class VatTreatment {
    RateAndShare, ///< rate and non-deductible per cent from the code
    RateOnly,     ///< rate from the code, non-deductible 0
    NoRate,       ///< rate 0, non-deductible 0
    Cleared,      ///< the line is emptied
    Untouched     ///< a register that does not exist
};
VatTreatment TreatmentOf(long vat_register, long kind);
