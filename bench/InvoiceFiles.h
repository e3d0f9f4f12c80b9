#pragma once

#include <string>

/// An invoice of the bench, as a file has it.
struct InvoiceFile {
    std::string name;
    std::string bytes;
};

/// A wholesaler's invoice to the demo company: as many lines of 12.50 euro, one rate; supplier 1 of the demo company.
/// @param number  of the document; different numbers make different files
InvoiceFile LongInvoice(long lines, long number = 2500);
