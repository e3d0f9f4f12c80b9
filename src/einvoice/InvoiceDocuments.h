#pragma once

#include "tarvolumera/Attachments.h"

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// The readable documents of received invoices, and their files on the way out.

/// The names under which the readable document of an invoice file is looked for, in this order: "NAME.XML.PDF" and
/// "NAME.PDF", then the spellings that providers use.
std::vector<std::array<std::string, 2>> InvoicePdfNames(std::string_view file_name);

/// True for a document that is one of the invoice's, or of nobody's in particular, as providers file them. Only its
/// name ties it to the invoice then; a received invoice never is one, whatever its name.
bool IsInvoicePdf(const ALLEGATI &candidate, const ALLEGATI &filed);

/// The readable document that the archive has for a filed invoice, with its bytes: of the invoice's year or the
/// company's, the later one first. A document of the same name that belongs to another invoice is not taken.
/// @return false when there is none
bool FindInvoicePdf(SACommand *cmd, const ALLEGATI &filed, ALLEGATI *pdf);

/// The same, rendered and filed when there is none yet. Holds all documents of the file.
/// @throws SAException; FileError when there is none and the invoice itself cannot be read
ALLEGATI StoredInvoicePdf(SACommand *cmd, long code);

/// Writes the readable document of an invoice.
/// @param document  one document of a file that holds several, rendered for the purpose; nothing = the stored one
/// @throws SAException, FileError, ReportError
void ExportInvoicePdf(SACommand *cmd, long code, const std::filesystem::path &file,
                      std::optional<std::size_t> document = {});

/// Deletes the stored readable document after a question; the next export renders a new one.
/// @return how many were deleted; nothing when the user said No
std::optional<long> DeleteInvoicePdf(SACommand *cmd, long code);

struct FilesExport {
    std::vector<long> codes;  ///< filed invoices; one that is named several times is written once
    bool keep_signed = false; ///< signed files as received; else their XML, without ".P7M"
};

struct FilesExported {
    long written = 0;
    std::vector<std::string> faults; ///< a sentence for each file that could not be written
};

/// The filed invoices acquired in a period. @param first, last  day numbers, both included; 0 = no limit
std::vector<long> FiledInvoices(SACommand *cmd, long first, long last);

/// Writes the files into a folder, which is made when missing. A file of the same name and another content is never
/// replaced: the new one gets a number.
/// @throws SAException, FileError when the folder takes no files
FilesExported ExportFiles(SACommand *cmd, const FilesExport &what, const std::filesystem::path &folder);

/// Asks for the folder, writes, tells what could not be written. @return nothing when the user gave up
std::optional<FilesExported> ExportAllFiles(SACommand *cmd, const FilesExport &what);
