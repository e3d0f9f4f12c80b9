#pragma once

#include <span>
#include <vector>

class SACommand;

/// One change of an entry number.
struct NumberMove {
    long from = 0, to = 0;
    friend bool operator==(const NumberMove &, const NumberMove &) = default;
};

/// The moves that give the numbers 1, 2, 3 ... to entries in the order in which they stand, in a sequence in which the
/// number moved to is always free: numbers that change places go round by a spare one beyond all others.
/// @param numbers  the present numbers, all different, none below 1
std::vector<NumberMove> PlanRenumbering(std::span<const long> numbers);

/// Numbers the entries from 1 by registration date and present number. Rows, cost centres, co-holders, receipts,
/// attachments, images, instalments and received invoices follow their entry; protocols stay. All or nothing. Shows its
/// progress.
/// @param followed  number of an entry that the caller has open: gets the number it has now; null = none
/// @return how many entries have another number now     @throws SAException, and then nothing has changed
long RenumberEntries(SACommand *cmd, long *followed = nullptr);
