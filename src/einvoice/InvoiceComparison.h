#pragma once

#include "tarvolumera/JournalEntry.h"
#include "tarvolumera/fatturapa/FatturaElettronica.h"

#include <string>
#include <vector>

/// What an entry says otherwise than the document that it registers: a sentence for each field (number, date, taxable
/// amount and tax by rate and nature, total, balance), with both values. Empty when they agree.
///
/// A line for stamp duty charged on and a posted rounding are no differences: the total then is the document's. Neither
/// are lines that were merged or split within a rate, nor the tax that the buyer adds in reverse charge.
std::vector<std::string> CompareWithInvoice(const fatturapa::FatturaElettronicaBody &body, const PNOTA &entry);
