#pragma once

#include "tarvolumera/Attachments.h"
#include "tarvolumera/fatturapa/FattureElettronicheDB.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// The received electronic invoices of the company, kept as filed documents: loading, listing, exporting, deleting.

/// Ignored: a notification of the exchange system, which portals put among the invoices; nothing is wrong with it.
enum class ImportOutcome { Loaded, AlreadyThere, Refused, Ignored };

/// "caricata", "già presente", "rifiutata", "ignorata".
const char *ImportOutcomeText(ImportOutcome outcome);

struct ImportResult {
    std::string origin; ///< the file as the user named it
    ImportOutcome outcome = ImportOutcome::Refused;
    long code = 0;    ///< number of the filed document, also of the one that was already there
    std::string text; ///< what was loaded, or why not
    std::vector<std::string> warnings;
    std::string message;   ///< of a file that cannot be read: the same for a window of its own, with its name
    bool may_pass = false; ///< refused for a fault of the archive, not of the file
};

/// What must be set on the company before any invoice is taken in. Empty when all is there, else the message.
std::string CompanyFaultForInvoices(const DITTE &company);

/// Files one invoice: unwraps it if signed, reads it, compares the buyer with the company and asks when it is somebody
/// else's. The same content is never filed twice, whatever its name or signature.
/// @throws SAException; everything wrong with the file itself is in the result
ImportResult ImportInvoice(SACommand *cmd, const std::string &origin, const std::string &name, std::string bytes);

/// Imports files, folders and .zip archives, one result for each file in order.
/// @param each  called as results come, so that a long run can be followed; may be empty
std::vector<ImportResult> ImportInvoices(SACommand *cmd, const std::vector<std::filesystem::path> &paths,
                                         const std::function<void(const ImportResult &)> &each = {});

/// One row of the list: one body of one filed file.
struct InvoiceRow {
    long code = 0, year = 0;  ///< the filed document
    std::size_t document = 0; ///< index of the body within the file
    std::size_t documents = 1;
    Text<200> file_name;
    SADateTime acquired;
    long supplier = 0;         ///< 0 = unknown
    std::string supplier_name; ///< of the supplier found, else "*** SCONOSCIUTO ***"
    std::string seller_name;   ///< as the file names it
    std::string vat_number, fiscal_code;
    std::string type, type_text; ///< "TD01", "FATTURA"
    std::string number;
    long day = 0;
    double total = 0;
    bool is_signed = false;
    bool is_registered = false, is_in_warehouse = false;
    long entry = 0, protocol = 0; ///< of the newest entry that registers it; 0 = not registered
    std::string sdi;              ///< identifier that the exchange system gave the file; empty = not known
    std::string fault;            ///< the filed bytes can no longer be read
};

inline constexpr const char *kUnknownSupplier = "*** SCONOSCIUTO ***";

enum class InvoiceState { Any, ToRegister, Registered, ToLoad, InWarehouse, Unreadable };

/// Which invoices are listed.
struct InvoiceFilter {
    long first = 0, last = 0; ///< moment of filing: day numbers, both included; 0 = no limit
    std::string seller; ///< part of the seller's or supplier's name or of a fiscal number, in any case; empty = all
    std::string number; ///< part of the document's number, in any case; empty = all
    InvoiceState state = InvoiceState::Any;
};

/// Lists invoices from what was kept when they were filed, oldest first; no file is read, unless it was filed before
/// anything was kept. The list streams on a connection of its own, so the callback may use cmd.
/// @param each  false ends the list
void ForEachInvoice(SACommand *cmd, const InvoiceFilter &filter, const std::function<bool(const InvoiceRow &)> &each);
/// All invoices of a period. @param first, last  as in InvoiceFilter
void ForEachInvoice(SACommand *cmd, long first, long last, const std::function<bool(const InvoiceRow &)> &each);
/// The same on the command's own connection, in its transaction if one is open; the callback must leave that connection
/// alone. Files without summary are not in it.
void StreamInvoices(SACommand *cmd, const InvoiceFilter &filter, const std::function<bool(const InvoiceRow &)> &each);

/// The query behind them: the columns of admin.fatture, then supplier, his name, entry, protocol and warehouse; the
/// bounds of the period are the parameters "start" and "stop".
std::string InvoiceListQuery(const InvoiceFilter &filter);

/// Native code of the SAException that a number without a filed invoice gives.
inline constexpr long kNoSuchInvoice = 20060;

/// False for what another station has deleted meanwhile.
bool IsFiled(SACommand *cmd, long code);

/// The bytes and the content of a filed invoice. @throws InvoiceFileError, SAException (kNoSuchInvoice)
ALLEGATI LoadInvoice(SACommand *cmd, long code, CFattureElettronicheDB *content);

/// Whether the journal holds the document; sets the newest entry that does, and its protocol. An entry holds it that
/// was made from it, on whatever supplier, or that has supplier, number and date of it in a purchase register; one that
/// was made from a document of another type does not: sellers number credit notes as they number invoices.
bool CheckPNota(SACommand *cmd, InvoiceRow *row);
/// Whether the warehouse holds the document of that supplier.
bool CheckTestate(SACommand *cmd, long supplier, std::string_view number, long day);

/// The newest supplier with the VAT number or fiscal code; false when there is none.
bool FindSupplierOfRow(SACommand *cmd, std::string_view vat_number, std::string_view fiscal_code, FORNITORI *supplier);

/// Status and texts of one body, from the file. The list shows the same without reading it.
InvoiceRow DescribeInvoice(SACommand *cmd, const ALLEGATI &filed, const CFattureElettronicheDB &content,
                           std::size_t document);

/// Writes the XML of a filed invoice, unwrapped if signed, or the file as it was received.
/// @throws FileError, InvoiceFileError, SAException
void ExportInvoiceXml(SACommand *cmd, long code, const std::filesystem::path &file);
/// Only for a file received signed: "Impossibile esportare il file!..." as FileError otherwise.
void ExportInvoiceP7m(SACommand *cmd, long code, const std::filesystem::path &file);

/// Removes a filed invoice. Entries registered from it keep their own copy.
void DeleteInvoice(SACommand *cmd, long code);

/// The local folder of these files: "<folder>/Fatture_Elettroniche_<VAT number>".
std::filesystem::path GetLocalPathFattureElettroniche();
