#pragma once

#include "einvoice/InvoiceInbox.h"
#include "tarvolumera/JournalEntry.h"
#include "tarvolumera/VatCodes.h"

#include <functional>
#include <string>
#include <vector>

struct PreparedInvoice;

/// What the registration asks for beside questions: browsers and editors on the desk, options on the command line. A
/// function that is not set, or gives 0 or false, means that the user gave up.
struct RegistrationChoices {
    std::function<long(const fatturapa::PartyType &seller)> choose_supplier; ///< supplier browser: a code
    /// The supplier editor on a new record, which it may store or leave to be stored with the entry; either way the
    /// record holds what was confirmed.
    std::function<bool(FORNITORI *prepared)> confirm_supplier;
    std::function<long(long proposed)> choose_causale;                            ///< causale browser: a code
    std::function<long(const fatturapa::DatiRiepilogoType &row)> choose_vat_code; ///< VAT code browser: a code
    long registration_day = 0;                                                    ///< 0 = the document's date
    bool skip_duplicates = false; ///< in a bulk run a document that is already registered is never asked about
    bool leave_doubtful = false;  ///< in a bulk run what somebody should look at first stays for the editor
    /// Looks at the entry before it is stored; a text says why it is not. Not set = stored.
    std::function<std::string(const PreparedInvoice &)> why_not;
};

/// A body of a filed invoice turned into an entry that is ready to be completed or stored.
struct PreparedInvoice {
    PNOTA entry;
    FORNITORI supplier;
    FORNITORI new_supplier;         ///< to be inserted with the entry when for_codice is set in it
    std::vector<std::string> notes; ///< what the bookkeeper should know: rounding, reverse charge, credit note signs
    /// Of the notes, those that call for a look at the entry before it is stored: it may be another supplier's, or owe
    /// less than its total.
    std::vector<std::string> doubts;
};

/// How a registration ended.
struct RegistrationOutcome {
    bool registered = false;
    std::string reason; ///< why not
    PNOTA entry;        ///< as stored
    long instalments = 0;
    std::vector<std::string> notes;
};

/// The supplier of an invoice: by VAT number, then by fiscal code, the highest code winning. When neither finds one the
/// user decides: search by hand, a new supplier from the seller's data, or give up.
/// @param is_new  set when the supplier is still to be stored: a new one that its editor has not stored already
/// @return false when the registration stops
bool CreaFornnitore(SACommand *cmd, const fatturapa::PartyType &seller, const RegistrationChoices &choices,
                    FORNITORI *supplier, bool *is_new);

/// The supplier of an invoice that the archive has: by VAT number, then by fiscal code, the highest code winning; 0
/// when there is none.
long FindSupplierOf(SACommand *cmd, const fatturapa::PartyType &seller);

/// A supplier record prepared from the seller's data: number proposed, nothing stored.
FORNITORI SupplierFromSeller(SACommand *cmd, const fatturapa::PartyType &seller);

/// Turns the VAT summary into the VAT lines of the entry: code by rate and nature, the rate's preferred code first; a
/// credit note takes the other sign. At most seven rows fit.
/// @return false when the registration stops; the user was told why
bool FillVatLines(SACommand *cmd, const fatturapa::FatturaElettronicaBody &body, const RegistrationChoices &choices,
                  PNOTA *entry);

/// Builds the entry of one body: supplier, causale, header, VAT lines, duplicate check, rows, rounding; its files are
/// for AttachFiles. Asks on the way; writes nothing itself. A document of more VAT rows than an entry holds is refused
/// before anything is asked.
/// @param causale  0 = the supplier's preset one, else the browser
/// @return false when the registration stops; reason says why
bool PrepareInvoiceEntry(SACommand *cmd, const ALLEGATI &filed, const CFattureElettronicheDB &content,
                         std::size_t document, long causale, const RegistrationChoices &choices,
                         PreparedInvoice *prepared, std::string *reason);

/// Attaches to an entry that is not stored yet the invoice file, and its readable document when the archive has one, of
/// the invoice's year or the company's.
void AttachFiles(SACommand *cmd, const ALLEGATI &filed, PNOTA *entry);

/// Attaches the readable document to an entry that is not stored yet, unless it has it already.
void AttachReadable(const ALLEGATI &pdf, PNOTA *entry);

/// The whole way without a window: prepares, checks as the editor does, and stores supplier, entry, files and
/// instalments in one transaction.
RegistrationOutcome RegisterInvoice(SACommand *cmd, long code, std::size_t document, long causale,
                                    const RegistrationChoices &choices);
