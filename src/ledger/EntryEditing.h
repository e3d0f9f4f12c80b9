#pragma once

#include "tarvolumera/JournalEntry.h"

struct CAUCONT;

// What the fields of an entry do to the rest of it when they change. Each function is called after the user left the
// field, only when it was modified.

/// The causale drives the whole entry: register, VAT flag, section, protocol, counterpart, rows from its template.
/// @param code  a causale that does not exist leaves the entry without one
void EnterCausale(SACommand *cmd, PNOTA *entry, long code);
/// The same with the causale at hand. @param causale  as read, with its template rows; blank = none
void EnterCausale(SACommand *cmd, PNOTA *entry, const CAUCONT &causale);

/// Takes the counterpart code typed and completes name, terms, and the rows on the counterpart's account.
/// @return false when no such customer or supplier exists; the entry then has none
bool EnterCounterpart(SACommand *cmd, PNOTA *entry, long code);

/// The rows that carry the header's causale get the new text as their description.
void EnterCausaleDescription(PNOTA *entry, std::string_view text);

/// Rows in use with the header's causale take the new number when theirs was empty or the previous header number.
void EnterDocumentNumber(PNOTA *entry, std::string_view number);

/// Looks the section up and renumbers the protocol, unless the user fixed it.
/// @return false when the section does not exist; the entry then has none
bool EnterSection(SACommand *cmd, PNOTA *entry, long code);

/// Looks the terms up. An empty payment start date becomes the document date where the terms start there.
/// @return false when the terms do not exist; the entry then has none
bool EnterTerms(SACommand *cmd, PNOTA *entry, long code);

void EnterDocumentTotal(SACommand *cmd, PNOTA *entry, double total);

/// Rows that carry the header's document follow it to its new date; those of another document keep theirs.
/// @param day  day number, 0 = the entry has no document
void EnterDocumentDate(PNOTA *entry, long day);

/// An entry to be stored as a new one with the header, VAT lines, rows and cost centres of another: next free number
/// and protocol, registered on that day. What belongs to the life of the other one is left behind: export and check
/// marks, origin, received invoice, group, start of its instalments.
PNOTA CopyAsNew(SACommand *cmd, const PNOTA &original, long day);

/// Says when the entry stands before an entry of an earlier protocol, or behind one of a later protocol, in the same
/// register, section and year: the register is to be kept in the order of dates. Empty when it does not.
std::string DescribeProtocolOrder(SACommand *cmd, const PNOTA &entry);

// Row grid, on leaving a cell. Rows are counted from 0; an index beyond the grid does nothing.

void LeaveRowCausale(PNOTA *entry, std::size_t row);
void LeaveRowDocument(PNOTA *entry, std::size_t row);
/// An empty amount takes the absolute imbalance of the entry; the side stays with the user.
void LeaveRowAmount(SACommand *cmd, PNOTA *entry, std::size_t row);
