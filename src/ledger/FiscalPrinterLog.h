#pragma once

#include "tarvolumera/JournalEntry.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// Daily closures of a fiscal printer, from a text file (docs/decisions/0011-fiscal-printer-log.md), as receipts of the
// journal.

/// The receipts of one rate in a closure.
struct ClosureVat {
    long line = 0;    ///< line of the file, from 1
    double rate = 0;  ///< per cent
    double gross = 0; ///< euro, VAT included
    long code = 0;    ///< VAT code that the file names; 0 = the company's code of that rate
};

struct DailyClosure {
    long line = 0; ///< line of the file, from 1
    long number = 0;
    long day = 0; ///< day number
    double total = 0;
    std::string serial; ///< of the printer
    std::vector<ClosureVat> vat;

    /// "0123/3EPMC012345": the document number of the entry, different for every closure of every printer.
    std::string Document() const;
};

/// Reads a whole log. @param today  day number; a closure cannot be later
/// @throws FileError naming the line; nothing is taken from a file that has a fault
std::vector<DailyClosure> ParseFiscalLog(std::string_view text, long today);

struct ReceiptsImport {
    long stored = 0;
    long known = 0;      ///< registered before, left alone
    long empty = 0;      ///< days without receipts
    std::string refusal; ///< why an entry was refused and the import ended there, naming the line; empty when all went
};

/// What became of the closures, in Italian.
std::string DescribeImport(const ReceiptsImport &import);

/// Registers the closures of a log, each as an entry of its own under the causale. The file, the causale and all VAT
/// codes are checked before the first entry is stored. A closure that was registered before is passed over, so an
/// import that ended early can be run again.
/// @param causale  of the receipts register, with VAT; 0 = the first one there is
/// @throws FileError for the file, SAException; SA_UserGenerated_Error for a causale that does not serve
ReceiptsImport ImportFiscalLog(SACommand *cmd, const std::filesystem::path &file, long causale);
