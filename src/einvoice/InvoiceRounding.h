#pragma once

#include "tarvolumera/fatturapa/FatturaElettronica.h"

#include <string>

/// What the declared total of a document is made of, beside its VAT summary.
struct TotalReading {
    double rounding = 0; ///< declared total minus VAT summary, signs as in the file; 0 when they agree
    double left_out = 0; ///< what the seller took off the total because it is not paid to him; then rounding is 0
    bool is_stamp_duty = false; ///< the difference is the declared stamp duty, charged on to the buyer
    bool closes = true;         ///< a known reading closes to the cent
    std::string how;            ///< which reading was used, Italian; empty when the totals simply agree
};

/// Sellers put roundings inside the taxable amounts, beside them, in the document or nowhere, and some add the stamp
/// duty to the total. Computes every reading and keeps the first that closes to the cent.
TotalReading ReadTotal(const fatturapa::FatturaElettronicaBody &body);

/// Tax that is withheld from the seller's fee when it is paid, and tax that the buyer pays to the state himself: both
/// belong to the total and are not paid to the seller.
double WithheldFrom(const fatturapa::FatturaElettronicaBody &body);
double SplitTaxOf(const fatturapa::FatturaElettronicaBody &body);

/// The sign that a document's amounts take in the books: -1 turns a credit note written with positive amounts, +1
/// leaves the file's signs. A credit note written with negative amounts already is one.
int SignOf(const fatturapa::FatturaElettronicaBody &body);
