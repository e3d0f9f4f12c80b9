#pragma once

#include "tarvolumera/JournalEntry.h"

/// Where the focus goes when an entry is refused.
enum class EntryField {
    None,
    Causale,
    Section,
    Date,
    Counterpart,
    VatCode,       ///< index = VAT line, from 0
    RowAccount,    ///< index = row, from 0; column 2 of the grid
    RowSubAccount, ///< column 3
    RowSide,       ///< column 8
    Balance
};

struct EntryFault {
    EntryField field = EntryField::None;
    std::size_t index = 0;
    explicit operator bool() const { return field != EntryField::None; }
};

/// The checks before an entry is stored, in their order: a refusal beeps and names the field, a doubt is asked.
/// Refreshes the imbalance. No transaction may be open, since the user may be asked.
/// @return the fault that stops the save; none to go on
EntryFault ValidateEntry(SACommand *cmd, PNOTA *entry);

/// What is wrong with the field, in Italian: the dialog only beeps and moves the focus, a command has to say it.
std::string DescribeFault(const EntryFault &fault);
