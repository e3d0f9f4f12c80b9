#pragma once

#include "tarvolumera/PaymentTerms.h"

#include <string>

/// What payment terms lead to, in one sentence: the instalments of an invoice of 1.220,00 (1.000,00 and 220,00 of VAT),
/// "fattura di 1.220,00 del 15/01/2026: 610,00 il 28/02/2026, 610,00 il 31/03/2026". Long lists are cut short. Without
/// instalments it says why there are none.
/// @param day  date of the invoice and of its registration, day number
std::string ExampleOfTerms(const PAGAMENTI &terms, long day);
