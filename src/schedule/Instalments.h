#pragma once

#include "tarvolumera/InstalmentRules.h"
#include "tarvolumera/JournalEntry.h"

#include <optional>
#include <string>

/// Rows of the generator's grid.
inline constexpr std::size_t kInstalmentRows = static_cast<std::size_t>(kInstalmentsMax);

/// What the generator proposes for a stored entry, and what the user may correct before it is stored.
struct InstalmentProposal {
    std::vector<Instalment> rows;
    double total = 0; ///< document total computed from the VAT lines
    std::string description;
    long bank = 0; ///< the counterpart's own bank, 0 = none
    std::string bank_description;
    /// Why dates or rows are missing and have to be typed, a whole Italian sentence; empty when nothing is missing.
    std::string notice;
};

/// Proposes the instalments of an entry from its terms. Nothing when the entry has no terms or counterpart, the terms
/// make no instalments or do not exist, the total is zero: the generation then ends without a word. Terms that make
/// more instalments than the grid has rows, or whose dates cannot be found, give a proposal without them and a notice.
std::optional<InstalmentProposal> ProposeInstalments(SACommand *cmd, const PNOTA &entry);

/// The same for who stores without showing the proposal: only a whole one, since one with a notice would be stored in
/// part or not at all. Why there is none is told in *why_not, an Italian sentence; empty when nothing is to be
/// generated.
std::optional<InstalmentProposal> ProposeWholeInstalments(SACommand *cmd, const PNOTA &entry, std::string *why_not);

/// Asks whether to go on when the rows do not add up to the document total; beeps before. No transaction may be open.
/// @return false = back to the grid
bool ConfirmTotal(std::span<const Instalment> rows, double total);

/// Stores the instalments of one entry: all of them or none. Rows without date or amount are skipped and not counted.
/// @param entry  a stored entry; gives side, counterpart, terms, section, invoice number, date and total
/// @return how many were stored
/// @throws SAException, and then nothing is stored; also when another station has generated them meanwhile, or changed
/// counterpart, number or total of the entry
long StoreInstalments(SACommand *cmd, const PNOTA &entry, const InstalmentProposal &proposal);

/// Proposes, confirms and stores in one go, as the command line does. An entry that already has instalments is left
/// alone; of a proposal that has to be completed by hand nothing is stored, and the user is told why.
/// @return the number stored; 0 when there is nothing to generate or the user said No
long GenerateInstalments(SACommand *cmd, const PNOTA &entry);
